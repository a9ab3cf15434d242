// The run-time binding for 3.21 (see runtime.h).
//
// 3.21 asks its messages other questions than the 3.0 series did: it parses through ParseContext
// and writes through EpsCopyOutputStream. Record stands between: it declares the 3.0-series
// virtuals, which the classes implement, and answers 3.21's own through them, so that code that
// only knows a Message& works. Calls on a concrete class do not take that way: Record declares the
// run-time's parse and serialize calls again, with plain bodies over the coded streams.
#ifndef CALIBRATION_COMMON_RUNTIME_3_21_H_
#define CALIBRATION_COMMON_RUNTIME_3_21_H_

#include <google/protobuf/arenastring.h>
#include <google/protobuf/generated_message_reflection.h>
#include <google/protobuf/generated_message_util.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/message.h>
#include <google/protobuf/metadata_lite.h>
#include <google/protobuf/parse_context.h>
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/wire_format_lite.h>

#include <atomic>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <istream>
#include <mutex>
#include <ostream>
#include <string>

// Message brings the metadata word, at the offset where the 3.0 series has it.
#define CALIBRATION_RECORD_METADATA

namespace zarvo {
namespace calibration {
namespace runtime {

using ::google::protobuf::int64;
using ::google::protobuf::Message;
using ::google::protobuf::uint32;
using ::google::protobuf::uint64;
using ::google::protobuf::uint8;
using ::google::protobuf::UnknownFieldSet;
using ::google::protobuf::internal::ParseContext;
using ::google::protobuf::internal::WireFormatLite;
using ::google::protobuf::io::CodedInputStream;
using ::google::protobuf::io::CodedOutputStream;
using ::google::protobuf::io::EpsCopyOutputStream;
using ::google::protobuf::io::ZeroCopyInputStream;
using ::google::protobuf::io::ZeroCopyOutputStream;

typedef ::google::protobuf::internal::InternalMetadata Metadata;
typedef const ::google::protobuf::Reflection Reflection;

inline const UnknownFieldSet& UnknownFields(const Metadata& metadata) {
  return metadata.unknown_fields<UnknownFieldSet>(UnknownFieldSet::default_instance);
}
inline UnknownFieldSet* MutableUnknownFields(Metadata* metadata) {
  return metadata->mutable_unknown_fields<UnknownFieldSet>();
}
inline void SwapUnknownFields(Metadata* a, Metadata* b) { a->Swap<UnknownFieldSet>(b); }

// Collects whole fields from a ParseContext as they stand on the wire. Its one member has the name
// that ParseContext::ParseGroup calls, so that an unknown group is collected by the same code, one
// level deeper.
class FieldCollector {
 public:
  explicit FieldCollector(::std::string* out) : out_(out) {}

  // Appends fields until the limit, the end of the stream or a tag that ends a message. Null if a
  // field is cut off.
  const char* _InternalParse(const char* ptr, ParseContext* context) {
    while (!context->Done(&ptr)) {
      uint32 tag;
      ptr = ::google::protobuf::internal::ReadTag(ptr, &tag);
      if (ptr == nullptr) return nullptr;
      if (EndsMessage(tag)) {
        context->SetLastTag(tag);
        return ptr;
      }
      ptr = Collect(tag, ptr, context);
      if (ptr == nullptr) return nullptr;
    }
    return ptr;
  }

  static bool EndsMessage(uint32 tag) {
    return tag == 0 || WireFormatLite::GetTagWireType(tag) == WireFormatLite::WIRETYPE_END_GROUP;
  }

  // Appends one field whose tag has been read; null if it is cut off or of no known wire type.
  const char* Collect(uint32 tag, const char* ptr, ParseContext* context) {
    AppendVarint(tag);
    switch (WireFormatLite::GetTagWireType(tag)) {
      case WireFormatLite::WIRETYPE_VARINT: {
        uint64 value;
        ptr = ::google::protobuf::internal::VarintParse(ptr, &value);
        if (ptr != nullptr) AppendVarint(value);
        return ptr;
      }
      case WireFormatLite::WIRETYPE_FIXED64:
        out_->append(ptr, 8);
        return ptr + 8;
      case WireFormatLite::WIRETYPE_FIXED32:
        out_->append(ptr, 4);
        return ptr + 4;
      case WireFormatLite::WIRETYPE_LENGTH_DELIMITED: {
        const uint32 length = ::google::protobuf::internal::ReadSize(&ptr);
        if (ptr == nullptr) return nullptr;
        AppendVarint(length);
        return context->AppendString(ptr, static_cast<int>(length), out_);
      }
      case WireFormatLite::WIRETYPE_START_GROUP:
        ptr = context->ParseGroup(this, ptr, tag);
        if (ptr != nullptr) AppendVarint(tag + 1);  // the end-group tag of the same number
        return ptr;
      default:
        return nullptr;
    }
  }

 private:
  void AppendVarint(uint64 value) {
    uint8 bytes[10];
    const uint8* end = CodedOutputStream::WriteVarint64ToArray(value, bytes);
    out_->append(reinterpret_cast<const char*>(bytes), static_cast<size_t>(end - bytes));
  }

  ::std::string* out_;
};

// Lets a CodedOutputStream write into an EpsCopyOutputStream, a small block at a time; strings that
// the coded stream may alias are handed on without the detour.
class EpsCopySink final : public ZeroCopyOutputStream {
 public:
  EpsCopySink(uint8* target, EpsCopyOutputStream* stream)
      : target_(target), stream_(stream), used_(0), flushed_(0) {}

  bool Next(void** data, int* size) override {
    Flush();
    *data = block_;
    *size = used_ = static_cast<int>(sizeof(block_));
    return !stream_->HadError();
  }
  void BackUp(int count) override { used_ -= count; }
  int64 ByteCount() const override { return flushed_ + used_; }
  bool AllowsAliasing() const override { return true; }
  bool WriteAliasedRaw(const void* data, int size) override {
    Flush();
    target_ = stream_->WriteRawMaybeAliased(data, size, target_);
    flushed_ += size;
    return !stream_->HadError();
  }

  // Hands over what is still held; returns where the EpsCopyOutputStream now stands.
  uint8* Flush() {
    target_ = stream_->WriteRaw(block_, used_, target_);
    flushed_ += used_;
    used_ = 0;
    return target_;
  }

 private:
  uint8* target_;
  EpsCopyOutputStream* stream_;
  int used_;
  int64 flushed_;
  uint8 block_[4096];
};

class CALIBRATION_EXPORT Record : public Message {
 public:
  Record() {}
  ~Record() override { _internal_metadata_.Delete<UnknownFieldSet>(); }

  // What the classes implement.
  virtual Message* New() const = 0;
  Message* New(::google::protobuf::Arena* arena) const override = 0;
  virtual bool MergePartialFromCodedStream(CodedInputStream* input) = 0;
  virtual int ByteSize() const = 0;
  virtual void SerializeWithCachedSizes(CodedOutputStream* output) const = 0;
  virtual uint8* SerializeWithCachedSizesToArray(uint8* target) const = 0;
  virtual void CopyFrom(const Message& from) = 0;

  // What 3.21 asks. A size of 2 GiB or more has wrapped around and comes out as an impossible one,
  // which the run-time refuses to write.
  size_t ByteSizeLong() const final { return static_cast<size_t>(ByteSize()); }

  const char* _InternalParse(const char* ptr, ParseContext* context) final {
    // The limit of a nested message, or the end of an array, is known. If it lies in the block that
    // is being read (which always has 16 bytes beyond its end), a coded stream can read straight
    // from that block. BytesUntilLimit() is only asked where its sum cannot overflow.
    if (context->IsExceedingLimit(ptr + kMaxBlock)) {
      const int rest = context->BytesUntilLimit(ptr);
      if (rest >= 0 && context->DataAvailable(ptr + rest - 17) &&
          !context->IsExceedingLimit(ptr + rest)) {
        return MergeFromBlock(ptr, rest, context);
      }
    }
    return MergeFieldByField(ptr, context);
  }

  uint8* _InternalSerialize(uint8* target, EpsCopyOutputStream* stream) const final {
    uint8 small[256];
    const int size = GetCachedSize();
    if (static_cast<size_t>(size) <= sizeof(small)) {
      SerializeWithCachedSizesToArray(small);
      return stream->WriteRaw(small, size, target);
    }
    EpsCopySink sink(target, stream);
    {
      CodedOutputStream output(&sink);
      output.EnableAliasing(true);
      SerializeWithCachedSizes(&output);
    }
    return sink.Flush();
  }

  // The run-time's calls for a whole record, on a concrete class. They accept, refuse, write and
  // report what the run-time's own do: see google/protobuf/message_lite.h.
  bool MergeFromCodedStream(CodedInputStream* input) {
    return MergePartialFromCodedStream(input) && IsInitializedWithErrors();
  }
  bool ParseFromCodedStream(CodedInputStream* input) {
    Clear();
    return MergeFromCodedStream(input);
  }
  bool ParsePartialFromCodedStream(CodedInputStream* input) {
    Clear();
    return MergePartialFromCodedStream(input);
  }
  bool ParseFromZeroCopyStream(ZeroCopyInputStream* input) {
    CodedInputStream decoder(input);
    return ParseFromCodedStream(&decoder) && decoder.ConsumedEntireMessage();
  }
  bool ParsePartialFromZeroCopyStream(ZeroCopyInputStream* input) {
    CodedInputStream decoder(input);
    return ParsePartialFromCodedStream(&decoder) && decoder.ConsumedEntireMessage();
  }
  bool MergeFromBoundedZeroCopyStream(ZeroCopyInputStream* input, int size) {
    return MergePartialFromBoundedZeroCopyStream(input, size) && IsInitializedWithErrors();
  }
  bool MergePartialFromBoundedZeroCopyStream(ZeroCopyInputStream* input, int size) {
    if (size < 0) return false;
    CodedInputStream decoder(input);
    decoder.PushLimit(size);
    return MergePartialFromCodedStream(&decoder) && decoder.ConsumedEntireMessage() &&
           decoder.BytesUntilLimit() == 0;
  }
  bool ParseFromBoundedZeroCopyStream(ZeroCopyInputStream* input, int size) {
    Clear();
    return MergeFromBoundedZeroCopyStream(input, size);
  }
  bool ParsePartialFromBoundedZeroCopyStream(ZeroCopyInputStream* input, int size) {
    Clear();
    return MergePartialFromBoundedZeroCopyStream(input, size);
  }
  bool MergeFromString(const ::std::string& data) {
    return MergeFromBytes(data) && IsInitializedWithErrors();
  }
  bool ParseFromString(const ::std::string& data) {
    Clear();
    return MergeFromString(data);
  }
  bool ParsePartialFromString(const ::std::string& data) {
    Clear();
    return MergeFromBytes(data);
  }
  bool ParseFromArray(const void* data, int size) {
    return ParsePartialFromArray(data, size) && IsInitializedWithErrors();
  }
  bool ParsePartialFromArray(const void* data, int size) {
    Clear();
    return MergeFromBytes(data, size);
  }
  bool ParseFromIstream(::std::istream* input) {
    ::google::protobuf::io::IstreamInputStream stream(input);
    return ParseFromZeroCopyStream(&stream) && input->eof();
  }
  bool ParsePartialFromIstream(::std::istream* input) {
    ::google::protobuf::io::IstreamInputStream stream(input);
    return ParsePartialFromZeroCopyStream(&stream) && input->eof();
  }
  bool ParseFromFileDescriptor(int file_descriptor) {
    ::google::protobuf::io::FileInputStream stream(file_descriptor);
    return ParseFromZeroCopyStream(&stream) && stream.GetErrno() == 0;
  }
  bool ParsePartialFromFileDescriptor(int file_descriptor) {
    ::google::protobuf::io::FileInputStream stream(file_descriptor);
    return ParsePartialFromZeroCopyStream(&stream) && stream.GetErrno() == 0;
  }

  bool SerializeToCodedStream(CodedOutputStream* output) const {
    DebugCheckInitialized();
    return SerializePartialToCodedStream(output);
  }
  bool SerializePartialToCodedStream(CodedOutputStream* output) const {
    const int size = ByteSize();
    if (!SizeFits(size)) return false;
    uint8* buffer = output->GetDirectBufferForNBytesAndAdvance(size);
    if (buffer != nullptr) {
      CheckWritten(SerializeWithCachedSizesToArray(buffer) - buffer, size);
      return true;
    }
    const int start = output->ByteCount();
    SerializeWithCachedSizes(output);
    if (output->HadError()) return false;
    CheckWritten(output->ByteCount() - start, size);
    return true;
  }
  bool SerializeToZeroCopyStream(ZeroCopyOutputStream* output) const {
    DebugCheckInitialized();
    return SerializePartialToZeroCopyStream(output);
  }
  bool SerializePartialToZeroCopyStream(ZeroCopyOutputStream* output) const {
    CodedOutputStream encoder(output);
    if (!SerializePartialToCodedStream(&encoder)) return false;
    encoder.Trim();
    return !encoder.HadError();
  }
  bool AppendToString(::std::string* output) const {
    DebugCheckInitialized();
    return AppendPartialToString(output);
  }
  bool AppendPartialToString(::std::string* output) const {
    const int size = ByteSize();
    if (!SizeFits(size)) return false;
    const size_t old_size = output->size();
    output->resize(old_size + static_cast<size_t>(size));
    uint8* start = reinterpret_cast<uint8*>(&(*output)[0]) + old_size;
    CheckWritten(SerializeWithCachedSizesToArray(start) - start, size);
    return true;
  }
  bool SerializeToString(::std::string* output) const {
    output->clear();
    return AppendToString(output);
  }
  bool SerializePartialToString(::std::string* output) const {
    output->clear();
    return AppendPartialToString(output);
  }
  ::std::string SerializeAsString() const {
    ::std::string output;
    if (!AppendToString(&output)) output.clear();
    return output;
  }
  ::std::string SerializePartialAsString() const {
    ::std::string output;
    if (!AppendPartialToString(&output)) output.clear();
    return output;
  }
  bool SerializeToArray(void* data, int size) const {
    DebugCheckInitialized();
    return SerializePartialToArray(data, size);
  }
  bool SerializePartialToArray(void* data, int size) const {
    const int needed = ByteSize();
    if (!SizeFits(needed) || size < needed) return false;
    uint8* start = static_cast<uint8*>(data);
    CheckWritten(SerializeWithCachedSizesToArray(start) - start, needed);
    return true;
  }
  bool SerializeToOstream(::std::ostream* output) const {
    DebugCheckInitialized();
    return SerializePartialToOstream(output);
  }
  bool SerializePartialToOstream(::std::ostream* output) const {
    {
      ::google::protobuf::io::OstreamOutputStream stream(output);
      if (!SerializePartialToZeroCopyStream(&stream)) return false;
    }
    return output->good();
  }
  bool SerializeToFileDescriptor(int file_descriptor) const {
    DebugCheckInitialized();
    return SerializePartialToFileDescriptor(file_descriptor);
  }
  bool SerializePartialToFileDescriptor(int file_descriptor) const {
    ::google::protobuf::io::FileOutputStream stream(file_descriptor);
    return SerializePartialToZeroCopyStream(&stream) && stream.Flush();
  }

 protected:
  // The run-time takes two messages with one ClassData for comparable; all records share this one,
  // and CopyFrom() and MergeFrom() look at the classes themselves.
  const ClassData* GetClassData() const final { return SharedClassData(); }

 private:
  enum {
    kMaxBlock = 1 << 30,        // more than this is never read as one block
    kFieldsPerMerge = 1 << 16,  // bytes of fields collected before they are merged
  };

  CALIBRATION_HIDDEN static const ClassData* SharedClassData() {
    static const ClassData data = {&CopyRecord, &MergeRecord};
    return &data;
  }
  static void CopyRecord(Message& to, const Message& from) {
    static_cast<Record&>(to).CopyFrom(from);
  }
  static void MergeRecord(Message& to, const Message& from) { to.MergeFrom(from); }

  // Both calls below merge the rest of the message; null if it is malformed. A tag that ends a
  // message (zero, or the end of a group) counts as malformed here: no record is a group, and the
  // run-time's bounded streams cannot step back from one.

  // The rest lies at [ptr, ptr + size).
  const char* MergeFromBlock(const char* ptr, int size, ParseContext* context) {
    CodedInputStream input(reinterpret_cast<const uint8*>(ptr), size);
    input.SetRecursionLimit(context->depth());
    if (!MergePartialFromCodedStream(&input) || !input.ConsumedEntireMessage()) return nullptr;
    return ptr + size;
  }

  // The rest comes in any pieces: whole fields are collected and merged in turn, which comes to the
  // same as merging them at once.
  const char* MergeFieldByField(const char* ptr, ParseContext* context) {
    ::std::string fields;
    FieldCollector collector(&fields);
    while (!context->Done(&ptr)) {
      uint32 tag;
      ptr = ::google::protobuf::internal::ReadTag(ptr, &tag);
      if (ptr == nullptr || FieldCollector::EndsMessage(tag)) return nullptr;
      ptr = collector.Collect(tag, ptr, context);
      if (ptr == nullptr) return nullptr;
      if (fields.size() >= kFieldsPerMerge) {
        if (!MergeFields(fields, context->depth())) return nullptr;
        fields.clear();
      }
    }
    if (ptr == nullptr || !MergeFields(fields, context->depth())) return nullptr;
    return ptr;
  }

  bool MergeFields(const ::std::string& fields, int depth) {
    CodedInputStream input(reinterpret_cast<const uint8*>(fields.data()),
                           static_cast<int>(fields.size()));
    input.SetRecursionLimit(depth);
    return MergePartialFromCodedStream(&input) && input.ConsumedEntireMessage();
  }

  bool MergeFromBytes(const ::std::string& data) {
    return data.size() <= static_cast<size_t>(INT_MAX) &&
           MergeFromBytes(data.data(), static_cast<int>(data.size()));
  }
  bool MergeFromBytes(const void* data, int size) {
    if (size < 0) return false;
    CodedInputStream input(static_cast<const uint8*>(data), size);
    return MergePartialFromCodedStream(&input) && input.ConsumedEntireMessage();
  }

  void DebugCheckInitialized() const {
    GOOGLE_DCHECK(IsInitialized())
        << "Can't serialize message of type \"" << GetTypeName()
        << "\" because it is missing required fields: " << InitializationErrorString();
  }
  bool SizeFits(int size) const {
    if (size >= 0) return true;
    GOOGLE_LOG(ERROR) << GetTypeName() << " exceeded maximum protobuf size of 2GB";
    return false;
  }
  void CheckWritten(::std::ptrdiff_t written, int size) const {
    GOOGLE_CHECK_EQ(written, size) << GetTypeName() << " was modified while it was serialized.";
  }
};

// Makes sure that the run-time's shared empty string exists. REQUIRED before StringField::Init().
inline void InitSharedEmptyString() { ::google::protobuf::internal::InitProtobufDefaults(); }

// A string or bytes member. Points at the shared empty string until first written, then owns a
// string on the heap. Init() must come first; Destroy() last.
class StringField {
 public:
  void Init() { ptr_.InitDefault(); }
  void Destroy() { ptr_.Destroy(); }
  const ::std::string& Get() const { return ptr_.Get(); }
  ::std::string* Mutable() { return ptr_.Mutable(nullptr); }
  void Set(const ::std::string& value) { ptr_.Set(value, nullptr); }
  void Assign(const StringField& from) { Set(from.Get()); }
  ::std::string* Release() { return ptr_.Release(); }
  // Not ArenaStringPtr's own SetAllocated(), which in a run-time built for debugging moves the text
  // to another string.
  void SetAllocated(::std::string* value) {
    ptr_.Destroy();
    if (value != nullptr) {
      ptr_.InitAllocated(value, nullptr);
    } else {
      ptr_.InitDefault();
    }
  }
  void Clear() { ptr_.ClearToEmpty(); }
  void Swap(StringField* other) {
    ::google::protobuf::internal::ArenaStringPtr::InternalSwap(&ptr_, nullptr, &other->ptr_,
                                                               nullptr);
  }

 private:
  ::google::protobuf::internal::ArenaStringPtr ptr_;
};

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
template <int kMessageCount, int kFieldCount>
class FileReflection {
 public:
  // The type-registration callback of the 3.0 series is not needed: the factory reads the types
  // from the table.
  void Register(const char* file_name, void (* /* register_types */)(const ::std::string&),
                const MessageLayout* layouts) {
    int next = 0;
    for (int i = 0; i < kMessageCount; ++i) {
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

template <int kMessageCount, int kFieldCount>
::google::protobuf::internal::once_flag FileReflection<kMessageCount, kFieldCount>::once_;

// Not the run-time's WriteMessageMaybeToArray, which would come back through _InternalSerialize.
template <typename T>
void WriteMessage(int number, const T& value, CodedOutputStream* output) {
  WireFormatLite::WriteTag(number, WireFormatLite::WIRETYPE_LENGTH_DELIMITED, output);
  const int size = value.GetCachedSize();
  output->WriteVarint32(static_cast<uint32>(size));
  uint8* target = output->GetDirectBufferForNBytesAndAdvance(size);
  if (target != nullptr) {
    value.T::SerializeWithCachedSizesToArray(target);
  } else {
    value.T::SerializeWithCachedSizes(output);
  }
}

}  // namespace runtime
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_COMMON_RUNTIME_3_21_H_
