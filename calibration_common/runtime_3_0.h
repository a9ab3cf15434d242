// The run-time binding for the 3.0 series (see runtime.h). The records' object model is this
// run-time's own, so that there is next to nothing to bind: every function below is one call.
#ifndef CALIBRATION_COMMON_RUNTIME_3_0_H_
#define CALIBRATION_COMMON_RUNTIME_3_0_H_

#include <google/protobuf/arenastring.h>
#include <google/protobuf/generated_message_reflection.h>
#include <google/protobuf/generated_message_util.h>
#include <google/protobuf/message.h>
#include <google/protobuf/metadata.h>
#include <google/protobuf/stubs/once.h>
#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/wire_format_lite_inl.h>

#include <string>

#define CALIBRATION_RECORD_METADATA \
  ::google::protobuf::internal::InternalMetadataWithArena _internal_metadata_;

namespace zarvo {
namespace calibration {
namespace runtime {

typedef ::google::protobuf::Message Record;
typedef ::google::protobuf::internal::InternalMetadataWithArena Metadata;
typedef ::google::protobuf::internal::GeneratedMessageReflection Reflection;

inline const ::google::protobuf::UnknownFieldSet& UnknownFields(const Metadata& metadata) {
  return metadata.unknown_fields();
}
inline ::google::protobuf::UnknownFieldSet* MutableUnknownFields(Metadata* metadata) {
  return metadata->mutable_unknown_fields();
}
inline void SwapUnknownFields(Metadata* a, Metadata* b) { a->Swap(b); }

// Makes sure that the run-time's shared empty string exists. REQUIRED before StringField::Init().
inline void InitSharedEmptyString() { ::google::protobuf::internal::GetEmptyString(); }

// A string or bytes member. Points at the shared empty string until first written, then owns a
// string on the heap. Init() must come first; Destroy() last.
class StringField {
 public:
  void Init() { ptr_.UnsafeSetDefault(Default()); }
  void Destroy() { ptr_.DestroyNoArena(Default()); }
  const ::std::string& Get() const { return ptr_.GetNoArena(Default()); }
  ::std::string* Mutable() { return ptr_.MutableNoArena(Default()); }
  void Set(const ::std::string& value) { ptr_.SetNoArena(Default(), value); }
  void Assign(const StringField& from) { ptr_.AssignWithDefault(Default(), from.ptr_); }
  ::std::string* Release() { return ptr_.ReleaseNoArena(Default()); }
  void SetAllocated(::std::string* value) { ptr_.SetAllocatedNoArena(Default(), value); }
  void Clear() { ptr_.ClearToEmptyNoArena(Default()); }
  void Swap(StringField* other) { ptr_.Swap(&other->ptr_); }

 private:
  static const ::std::string* Default() {
    return &::google::protobuf::internal::GetEmptyStringAlreadyInited();
  }

  ::google::protobuf::internal::ArenaStringPtr ptr_;
};

// Ends the process unless the run-time that is loaded can serve the classes.
inline void VerifyVersion(const char* source_path) {
  ::google::protobuf::internal::VerifyVersion(3000000, 3000000, source_path);
}

// Runs a function once for all threads. Has no constructor: a static Once is ready before any code
// runs.
struct Once {
  void Call(void (*function)()) { ::google::protobuf::GoogleOnceInit(&state, function); }

  ::google::protobuf::ProtobufOnceType state;
};

// Ties one schema file's classes to the run-time's descriptors and reflection.
template <int kMessageCount, int kFieldCount>
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

inline void WriteMessage(int number, const ::google::protobuf::MessageLite& value,
                         ::google::protobuf::io::CodedOutputStream* output) {
  ::google::protobuf::internal::WireFormatLite::WriteMessageMaybeToArray(number, value, output);
}

}  // namespace runtime
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_COMMON_RUNTIME_3_0_H_
