// Registration and reflection on 3.21 (see registration.h).
#ifndef ZARVO_CALIBRATION_INTERNAL_REGISTRATION_3_21_H_
#define ZARVO_CALIBRATION_INTERNAL_REGISTRATION_3_21_H_

#include <google/protobuf/generated_message_reflection.h>
#include <google/protobuf/generated_message_util.h>
#include <google/protobuf/message.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <string>

namespace zarvo {
namespace calibration_internal {

using ::google::protobuf::uint32;

typedef const ::google::protobuf::Reflection Reflection;

// Ends the process unless the run-time that is loaded can serve the classes.
inline void VerifyVersion(const char* source_path) {
  ::google::protobuf::internal::VerifyVersion(GOOGLE_PROTOBUF_VERSION,
                                              GOOGLE_PROTOBUF_MIN_LIBRARY_VERSION, source_path);
}

// Runs a function once for all threads; later calls cost one read of a flag. Its constructor is
// constant: a static Once is ready before any code runs.
class Once {
 public:
  constexpr Once() : done_(false) {}

  void Call(void (*function)()) {
    if (!done_.load(::std::memory_order_acquire)) CallSlow(function);
  }

 private:
  void CallSlow(void (*function)()) {
    ::std::lock_guard< ::std::mutex> lock(mutex_);
    if (done_.load(::std::memory_order_relaxed)) return;
    function();
    done_.store(true, ::std::memory_order_release);
  }

  ::std::mutex mutex_;
  ::std::atomic<bool> done_;
};

// Ties one schema file's classes to the run-time's descriptors and reflection. This run-time builds
// the reflection objects itself, from a DescriptorTable, and may do so behind our back when its
// message factory is asked first; so the table must be complete once the file is loaded. Has
// no constructor: REQUIRES static storage, which is zero from the start.
template <unsigned kMessageCount, unsigned kFieldCount>
class FileReflection {
 public:
  // The type-registration callback of the 3.0 series is not needed: the factory reads the types
  // from the table.
  void Register(const char* file_name, void (* /* register_types */)(const ::std::string&),
                const MessageLayout* layouts) {
    int next = 0;
    for (unsigned i = 0; i < kMessageCount; ++i) {
      const MessageLayout& layout = layouts[i];
      schemas_[i].offsets_index = next;
      offsets_[next++] = static_cast<uint32>(layout.has_bits_offset);
      offsets_[next++] = static_cast<uint32>(layout.metadata_offset);
      for (int none = 0; none < 4; ++none)
        offsets_[next++] = ~0u;  // extensions, oneofs, weak and inlined fields
      for (int field = 0; field < layout.field_count; ++field) {
        offsets_[next++] = static_cast<uint32>(layout.field_offsets[field]);
      }
      schemas_[i].has_bit_indices_index = next;
      for (int field = 0; field < layout.field_count; ++field) {
        offsets_[next++] = static_cast<uint32>(field);
      }
      schemas_[i].inlined_string_indices_index = -1;
      schemas_[i].object_size = layout.object_size;
    }
    table_.is_initialized = true;  // the file's bytes have been handed over already
    table_.filename = file_name;
    table_.once = &once_;
    table_.num_messages = kMessageCount;
    table_.schemas = schemas_;
    table_.default_instances = default_instances_;
    table_.offsets = offsets_;
    table_.file_level_metadata = metadata_;
    ::google::protobuf::MessageFactory::InternalRegisterGeneratedFile(&table_);
  }

  // Takes the default instances in message order.
  void SetDefaultInstances(const Message* const* default_instances) {
    ::std::memcpy(default_instances_, default_instances, sizeof(default_instances_));
  }

  void BeginAssign() { ::google::protobuf::internal::AssignDescriptors(&table_); }

  // The reflection object of message number `index`, which the run-time owns. REQUIRES
  // BeginAssign().
  Reflection* New(int index, const ::google::protobuf::Descriptor* /* descriptor */,
                  const Message* /* default_instance */, const MessageLayout& /* layout */) {
    return metadata_[index].reflection;
  }

  static void Delete(Reflection*) {}

 private:
  ::google::protobuf::internal::DescriptorTable table_;
  ::google::protobuf::internal::MigrationSchema schemas_[kMessageCount];
  uint32 offsets_[6 * kMessageCount + 2 * kFieldCount];
  const Message* default_instances_[kMessageCount];
  ::google::protobuf::Metadata metadata_[kMessageCount];
  static ::google::protobuf::internal::once_flag once_;
};

template <unsigned kMessageCount, unsigned kFieldCount>
::google::protobuf::internal::once_flag FileReflection<kMessageCount, kFieldCount>::once_;

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_REGISTRATION_3_21_H_
