// Reflection on 3.7 (see registration.h): the run-time makes it from a table of tables, and may do
// so behind our back when its message factory is asked first; so the table must be complete once
// the file is loaded.
#ifndef ZARVO_CALIBRATION_INTERNAL_REGISTRATION_3_7_H_
#define ZARVO_CALIBRATION_INTERNAL_REGISTRATION_3_7_H_

#include <string>

#include "calibration_common/internal/registration_tables.h"

namespace zarvo {
namespace calibration_internal {

// Ties one schema file's classes to the run-time's descriptors and reflection. Has no constructor:
// REQUIRES static storage, which is zero from the start.
template <unsigned kMessageCount, unsigned kFieldCount>
class FileReflection : public RegistrationTables<kMessageCount, kFieldCount> {
 public:
  // The type-registration callback of earlier releases is not needed: the factory reads the types
  // from the table.
  void Register(const char* file_name, void (* /* register_types */)(const ::std::string&),
                const MessageLayout* layouts) {
    this->Fill(layouts);
    table_.add_descriptors = &AddDescriptors;
    table_.filename = file_name;
    table_.schemas = this->schemas_;
    table_.default_instances = this->default_instances_;
    table_.offsets = this->offsets_;
    table_.file_level_metadata = this->metadata_;
    table_.num_messages = kMessageCount;
    ::google::protobuf::MessageFactory::InternalRegisterGeneratedFile(file_name, &table_);
  }

  void BeginAssign() { ::google::protobuf::internal::AssignDescriptors(&table_); }

 private:
  static void AddDescriptors() {}  // the file's bytes have been handed over already

  static ::google::protobuf::internal::AssignDescriptorsTable table_;
};

template <unsigned kMessageCount, unsigned kFieldCount>
::google::protobuf::internal::AssignDescriptorsTable
    FileReflection<kMessageCount, kFieldCount>::table_ = {};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_REGISTRATION_3_7_H_
