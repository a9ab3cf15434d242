// How the parsers read, through the calls of a coded stream, what has a length and what they do not
// know.
//
// The run-time's own calls forgive too much: a length that cannot be read counts as 0, one beyond
// 32 bits is cut off, and one that runs past the enclosing message shrinks to fit. Here a length is
// what the wire says, and a nested message must end exactly where it was announced to end;
// everything else is malformed and makes the parse fail. All calls return false for malformed or
// truncated input and then leave in place what they have read so far. None allocates more than the
// input that has arrived warrants, whatever length it announces.
#ifndef CALIBRATION_COMMON_WIRE_READING_H_
#define CALIBRATION_COMMON_WIRE_READING_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/repeated_field.h>
#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/wire_format_lite.h>

#include <string>

#include "calibration_common/elements.h"
#include "calibration_common/runtime.h"
#include "calibration_common/wire_writing.h"

namespace zarvo {
namespace calibration {
namespace wire {

using ::google::protobuf::int64;
using ::google::protobuf::RepeatedField;
using ::google::protobuf::RepeatedPtrField;
using ::google::protobuf::uint32;
using ::google::protobuf::uint64;
using ::google::protobuf::uint8;
using ::google::protobuf::UnknownFieldSet;
using ::google::protobuf::internal::WireFormatLite;
using ::google::protobuf::io::CodedInputStream;

// End of the input or of a limit, a zero tag, or the end of a group: the parser's caller judges
// which are welcome.
inline bool EndsMessage(uint32 tag) {
  return tag == 0 || WireFormatLite::GetTagWireType(tag) == WireFormatLite::WIRETYPE_END_GROUP;
}

// Reads a string or bytes value, replacing what `value` held.
bool ReadString(CodedInputStream* input, ::std::string* value);

// Reads a packed run and appends its values.
bool ReadPacked(CodedInputStream* input, RepeatedField<double>* values);
bool ReadPacked(CodedInputStream* input, RepeatedField<float>* values);

// A nested message that is being read: between Enter() and Leave() the stream ends where the
// message was announced to end.
class NestedMessage {
 public:
  // Enters a message of `length` bytes. Its unit of depth has been taken.
  void Enter(CodedInputStream* input, int length);
  // False unless the message ended just there.
  bool Leave(CodedInputStream* input);

 private:
  int64 end_;
  CodedInputStream::Limit limit_;
};

// A class's MergePartialFromCodedStream(). The first argument is the message.
typedef bool (*MergeStream)(void*, CodedInputStream*);
template <typename T>
bool MergeStreamInto(void* message, CodedInputStream* input) {
  return static_cast<T*>(message)->T::MergePartialFromCodedStream(input);
}

// Read a sub-message behind its tag and merge it into *message; it takes one unit of the stream's
// depth budget. That of an element has been taken.
bool ReadMessage(CodedInputStream* input, void* message, MergeStream merge);
bool ReadElement(CodedInputStream* input, void* element, MergeStream merge);

template <typename T>
inline bool ReadMessage(CodedInputStream* input, T* message) {
  return ReadMessage(input, message, &MergeStreamInto<T>);
}
// Makes no element where none may be nested.
template <typename T>
inline bool ReadElement(CodedInputStream* input, RepeatedPtrField<T>* elements) {
  return input->IncrementRecursionDepth() &&
         ReadElement(input, runtime::AddElement(elements), &MergeStreamInto<T>);
}

// Keeps a field that the message does not know, or whose wire type it does not expect, in
// `unknown`. Field number 0 and wire types that do not exist are malformed.
bool KeepUnknownField(CodedInputStream* input, uint32 tag, UnknownFieldSet* unknown);

// What a stream has next.
struct StreamField {
  enum Kind {
    kEnd,  // the end of the message (see EndsMessage)
    kMalformed,
    kKept,             // a group, which has been kept as an unknown field
    kLengthDelimited,  // `tag` has been read, its length is next
    kValue,            // a varint or a value of fixed width; it stands in `bytes`, tag and value in
                       // their shortest form
  };

  // Reads it. `metadata` is that of the message.
  Kind Read(CodedInputStream* input, runtime::Metadata* metadata);

  uint32 tag;
  int size;
  uint8 bytes[kMaxTagSize + kMaxVarintSize];
};

}  // namespace wire
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_COMMON_WIRE_READING_H_
