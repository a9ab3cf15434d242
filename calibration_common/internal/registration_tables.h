// What the run-times from 3.2 on make reflection objects from: tables of positions, one row of them
// for each message (see registration.h).
#ifndef ZARVO_CALIBRATION_INTERNAL_REGISTRATION_TABLES_H_
#define ZARVO_CALIBRATION_INTERNAL_REGISTRATION_TABLES_H_

#include <google/protobuf/generated_message_reflection.h>
#include <google/protobuf/generated_message_util.h>
#include <google/protobuf/message.h>

#include <cstring>

#include "calibration_common/internal/registration.h"
#include ZARVO_CALIBRATION_INLINED_STRINGS
#include ZARVO_CALIBRATION_REFLECTION_OWNER

namespace zarvo {
namespace calibration_internal {

typedef const ::google::protobuf::Reflection Reflection;

// Has no constructor: REQUIRES static storage, which is zero from the start.
template <unsigned kMessageCount, unsigned kFieldCount>
class RegistrationTables {
 public:
  // Takes the default instances in message order.
  void SetDefaultInstances(const ::google::protobuf::Message* const* default_instances) {
    ::std::memcpy(default_instances_, default_instances, sizeof(default_instances_));
  }

  // The reflection object of message number `index`; Delete() frees it where the run-time does not.
  // REQUIRES BeginAssign().
  Reflection* New(int index, const ::google::protobuf::Descriptor* /* descriptor */,
                  const ::google::protobuf::Message* /* default_instance */,
                  const MessageLayout& /* layout */) {
    return metadata_[index].reflection;
  }

  static void Delete(Reflection* reflection) { DeleteReflection(reflection); }

 protected:
  void Fill(const MessageLayout* layouts) {
    int next = 0;
    for (unsigned i = 0; i < kMessageCount; ++i) {
      const MessageLayout& layout = layouts[i];
      schemas_[i].offsets_index = next;
      offsets_[next++] = static_cast< ::google::protobuf::uint32>(layout.has_bits_offset);
      offsets_[next++] = static_cast< ::google::protobuf::uint32>(layout.metadata_offset);
      for (int none = 0; none < kNoOffsets; ++none) offsets_[next++] = ~0u;
      for (int field = 0; field < layout.field_count; ++field) {
        offsets_[next++] = static_cast< ::google::protobuf::uint32>(layout.field_offsets[field]);
      }
      schemas_[i].has_bit_indices_index = next;
      for (int field = 0; field < layout.field_count; ++field) {
        offsets_[next++] = static_cast< ::google::protobuf::uint32>(field);
      }
      SetNoInlinedStrings(&schemas_[i]);
      schemas_[i].object_size = layout.object_size;
    }
  }

  // Extensions, oneofs, weak fields and inlined strings, of which there are none.
  static const int kNoOffsets = 3 + kInlinedStringOffsets;

  ::google::protobuf::internal::MigrationSchema schemas_[kMessageCount];
  ::google::protobuf::uint32 offsets_[(2 + kNoOffsets) * kMessageCount + 2 * kFieldCount];
  const ::google::protobuf::Message* default_instances_[kMessageCount];
  ::google::protobuf::Metadata metadata_[kMessageCount];
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_REGISTRATION_TABLES_H_
