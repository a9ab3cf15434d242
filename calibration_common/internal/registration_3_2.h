// Reflection from 3.2 to 3.6 (see registration.h): the run-time makes it from tables when it is
// told to, and calls back when its message factory is asked first.
#ifndef ZARVO_CALIBRATION_INTERNAL_REGISTRATION_3_2_H_
#define ZARVO_CALIBRATION_INTERNAL_REGISTRATION_3_2_H_

#include <string>

#include "calibration_common/internal/registration_tables.h"

namespace zarvo {
namespace calibration_internal {

// Ties one schema file's classes to the run-time's descriptors and reflection.
template <unsigned kMessageCount, unsigned kFieldCount>
class FileReflection : public RegistrationTables<kMessageCount, kFieldCount> {
 public:
  void Register(const char* file_name, void (*register_types)(const ::std::string&),
                const MessageLayout* layouts) {
    this->Fill(layouts);
    file_name_ = file_name;
    ::google::protobuf::MessageFactory::InternalRegisterGeneratedFile(file_name, register_types);
  }

  void BeginAssign() { Assign(&::google::protobuf::internal::AssignDescriptors); }

 private:
  typedef const ::google::protobuf::internal::MigrationSchema* Schemas;
  typedef const ::google::protobuf::Message* const* DefaultInstances;
  typedef const ::google::protobuf::uint32* Offsets;
  typedef const ::google::protobuf::EnumDescriptor** Enums;
  typedef const ::google::protobuf::ServiceDescriptor** Services;

  void Assign(void (*assign)(const ::std::string&, Schemas, DefaultInstances, Offsets,
                             ::google::protobuf::Metadata*, Enums, Services)) {
    assign(file_name_, this->schemas_, this->default_instances_, this->offsets_, this->metadata_,
           nullptr, nullptr);
  }
  // Until 3.5 the factory can be named.
  void Assign(void (*assign)(const ::std::string&, Schemas, DefaultInstances, Offsets,
                             ::google::protobuf::MessageFactory*, ::google::protobuf::Metadata*,
                             Enums, Services)) {
    assign(file_name_, this->schemas_, this->default_instances_, this->offsets_, nullptr,
           this->metadata_, nullptr, nullptr);
  }

  const char* file_name_;
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_REGISTRATION_3_2_H_
