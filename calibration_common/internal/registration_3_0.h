// Reflection on 3.0 and 3.1 (see registration.h): objects that we make and own, one for each
// message.
#ifndef ZARVO_CALIBRATION_INTERNAL_REGISTRATION_3_0_H_
#define ZARVO_CALIBRATION_INTERNAL_REGISTRATION_3_0_H_

#include <google/protobuf/generated_message_reflection.h>
#include <google/protobuf/message.h>

#include <string>

namespace zarvo {
namespace calibration_internal {

typedef ::google::protobuf::internal::GeneratedMessageReflection Reflection;

// Ties one schema file's classes to the run-time's descriptors and reflection.
template <unsigned kMessageCount, unsigned kFieldCount>
class FileReflection {
 public:
  void Register(const char* file_name, void (*register_types)(const ::std::string&),
                const MessageLayout*) {
    ::google::protobuf::MessageFactory::InternalRegisterGeneratedFile(file_name, register_types);
  }

  // Takes the default instances in message order. Here each reflection object is given its own when
  // it is made.
  void SetDefaultInstances(const ::google::protobuf::Message* const*) {}

  void BeginAssign() {}

  // Makes the reflection object of message number `index`; Delete() frees it.
  Reflection* New(int /* index */, const ::google::protobuf::Descriptor* descriptor,
                  const ::google::protobuf::Message* default_instance,
                  const MessageLayout& layout) {
    return Reflection::NewGeneratedMessageReflection(
        descriptor, default_instance, layout.field_offsets, layout.has_bits_offset, -1, -1,
        layout.object_size, layout.metadata_offset, -1);
  }

  static void Delete(Reflection* reflection) { delete reflection; }
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_REGISTRATION_3_0_H_
