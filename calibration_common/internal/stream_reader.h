// How the parsers read, through the calls of a coded stream, what has a length and what they do not
// know.
//
// The run-time's own calls forgive too much: a length that cannot be read counts as 0, one beyond
// 32 bits is cut off, and one that runs past the enclosing message shrinks to fit. Here a length is
// what the wire says, and a nested message must end exactly where it was announced to end;
// everything else is malformed and makes the parse fail. All calls return false for malformed or
// truncated input and then leave in place what they have read so far. None allocates more than the
// input that has arrived warrants, whatever length it announces.
#ifndef ZARVO_CALIBRATION_INTERNAL_STREAM_READER_H_
#define ZARVO_CALIBRATION_INTERNAL_STREAM_READER_H_

#include <string>

#include "calibration_common/internal/wire_constants.h"
#include "calibration_common/runtime.h"

namespace zarvo {
namespace calibration_internal {

// End of the input or of a limit, a zero tag, or the end of a group: the parser's caller judges
// which are welcome.
inline bool EndsMessage(uint32 tag) {
  return tag == 0 || WireFormatLite::GetTagWireType(tag) == WireFormatLite::WIRETYPE_END_GROUP;
}

// Whether the stream, which has ended, ends at its total-bytes limit. That is no end of a message
// unless a pushed limit is there, too; the run-time's ExpectAtEnd() does not tell the two apart.
inline bool IsCutOff(const CodedInputStream& input) {
  return input.BytesUntilTotalBytesLimit() == 0 && input.BytesUntilLimit() != 0;
}

// Reads the length of what is length-delimited. False if there is none, or one above INT_MAX.
bool ReadLength(CodedInputStream* input, int* length);

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
  Kind Read(CodedInputStream* input, Metadata* metadata);

  uint32 tag;
  int size;
  uint8 bytes[kMaxTagSize + kMaxVarintSize];
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_STREAM_READER_H_
