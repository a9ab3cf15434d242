// How a record is read by code that only knows it as a Message&: from 3.10 on the run-time hands it
// a ParseContext. Inline, so that the library need not export it.
//
// Where the rest of the message lies in the context's block, a coded stream reads it from there.
// Elsewhere whole fields are collected and merged, 64 KiB at a time.
#ifndef ZARVO_CALIBRATION_RUNTIME_RECORD_PARSE_3_10_H_
#define ZARVO_CALIBRATION_RUNTIME_RECORD_PARSE_3_10_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/parse_context.h>
#include <google/protobuf/wire_format_lite.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "calibration_common/runtime/record_3_10.h"

namespace zarvo {
namespace calibration_internal {

using ::google::protobuf::uint32;
using ::google::protobuf::uint64;
using ::google::protobuf::internal::WireFormatLite;

// Collects whole fields from a ParseContext as they stand on the wire. Its one member has the name
// that ParseContext::ParseGroup calls, so that an unknown group is collected by the same code, one
// level deeper.
class FieldCollector {
 public:
  enum Stop { kEnd, kEndTag, kFull, kCutOff };

  explicit FieldCollector(::std::string* out) : out_(out), stop_(kEnd) {}

  // Appends fields until the end of the stream or a limit (kEnd), a tag that ends a message
  // (kEndTag), or `max_bytes` (kFull). Null if a field is cut off or malformed (kCutOff), of which
  // nothing is appended then: how much the context hands over of it depends on its blocks.
  const char* Collect(const char* ptr, ParseContext* context, size_t max_bytes) {
    stop_ = kCutOff;
    size_t whole = out_->size();
    while (ptr != nullptr && !context->Done(&ptr)) {
      whole = out_->size();
      if (whole >= max_bytes) {
        stop_ = kFull;
        return ptr;
      }
      uint32 tag;
      ptr = ::google::protobuf::internal::ReadTag(ptr, &tag);
      if (ptr == nullptr) break;
      if (tag == 0 || WireFormatLite::GetTagWireType(tag) == WireFormatLite::WIRETYPE_END_GROUP) {
        context->SetLastTag(tag);
        stop_ = kEndTag;
        return ptr;
      }
      ptr = CollectField(tag, ptr, context);
      stop_ = kCutOff;  // a group has been collected by this call, too
    }
    // Done() tells of a last value that was read beyond the end of the stream; but before 3.14 not
    // where that end was also expected there.
    if (ptr != nullptr && context->IsExceedingLimit(ptr)) ptr = nullptr;
    if (ptr == nullptr) {
      out_->resize(whole);
    } else {
      stop_ = kEnd;
    }
    return ptr;
  }

  Stop stop() const { return stop_; }

  // NOLINTNEXTLINE(bugprone-reserved-identifier)
  const char* _InternalParse(const char* ptr, ParseContext* context) {
    return Collect(ptr, context, SIZE_MAX);
  }

 private:
  const char* CollectField(uint32 tag, const char* ptr, ParseContext* context) {
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
        // In pieces: the run-time's own call makes room for as much as was announced, or 50 MB.
        for (uint32 rest = length; rest > 0 && ptr != nullptr;) {
          const uint32 piece = rest < 4096 ? rest : 4096;
          ptr = context->AppendString(ptr, static_cast<int>(piece), out_);
          rest -= piece;
        }
        return ptr;
      }
      case WireFormatLite::WIRETYPE_START_GROUP:
        ptr = context->ParseGroup(this, ptr, tag);
        if (ptr != nullptr) AppendVarint(tag + 1);  // the end-group tag of the same number
        return ptr;
      case WireFormatLite::WIRETYPE_END_GROUP:
      default:
        return nullptr;
    }
  }

  __attribute__((noinline)) void AppendVarint(uint64 value) {
    uint8 bytes[10];
    const uint8* end = CodedOutputStream::WriteVarint64ToArray(value, bytes);
    out_->append(reinterpret_cast<const char*>(bytes), static_cast<size_t>(end - bytes));
  }

  ::std::string* out_;
  Stop stop_;
};

// A tag that ends a message (zero, or the end of a group) counts as malformed here: no record is a
// group, and the run-time's bounded streams cannot step back from one.
inline const char* Record::_InternalParse(const char* ptr, ParseContext* context) {
  // The limit of a nested message, or the end of an array, is known. If it lies in the block that
  // is being read, a coded stream can read straight from that block. BytesUntilLimit() is only
  // asked where its sum cannot overflow. The context compares addresses, and takes them beyond its
  // block as its own parsers do.
  const int kMaxBlock = 1 << 30;  // more than this is never read as one block
  const int kSlopBytes = 16;      // a context can read as far beyond its block's end
  if (context->IsExceedingLimit(ptr + kMaxBlock)) {
    const int rest = context->BytesUntilLimit(ptr);
    if (rest >= 0 && context->DataAvailable(ptr + rest - kSlopBytes - 1) &&
        !context->IsExceedingLimit(ptr + rest)) {
      return MergeFromBlock(ptr, rest, context);
    }
  }
  return MergeFieldByField(ptr, context);
}

inline const char* Record::MergeFromBlock(const char* ptr, int size, ParseContext* context) {
  CodedInputStream input(reinterpret_cast<const uint8*>(ptr), size);
  input.SetRecursionLimit(context->depth());
  if (!MergePartialFromCodedStream(&input) || !input.ConsumedEntireMessage()) return nullptr;
  return ptr + size;
}

// The rest comes in any pieces: whole fields are collected and merged in turn, which comes to the
// same as merging them at once. Of one that is cut off nothing is merged; of a sub-message
// that is malformed inside, what is in front of the defect.
inline const char* Record::MergeFieldByField(const char* ptr, ParseContext* context) {
  ::std::string fields;
  FieldCollector collector(&fields);
  const size_t kBytesPerMerge = 1 << 16;
  do {
    fields.clear();
    ptr = collector.Collect(ptr, context, kBytesPerMerge);
    CodedInputStream input(reinterpret_cast<const uint8*>(fields.data()),
                           static_cast<int>(fields.size()));
    input.SetRecursionLimit(context->depth());
    if (!MergePartialFromCodedStream(&input) || !input.ConsumedEntireMessage()) return nullptr;
  } while (collector.stop() == FieldCollector::kFull);
  return collector.stop() == FieldCollector::kEnd ? ptr : nullptr;
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_RECORD_PARSE_3_10_H_
