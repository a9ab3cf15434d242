// How a message is read: fields that lie whole in the stream's buffer by the class's
// MergeBuffered(), any other by the stream's own calls.
//
// A class's MergeBuffered() reads the fields that it knows from [p, end) and stops in front of any
// other and of what it cannot read: a value that the buffer holds only in part, a tag that ends the
// message, anything malformed. If it is an unknown field, TakeUnknown() goes on, but for a group
// that the buffer may hold only in part. Otherwise, MessageReader::MergeFromStream() reads that one
// field through the stream's own calls (stream_reader.h), which refuse what is malformed, and goes
// on behind it. So there is one place for each field's rules and, with two exceptions, one place
// that refuses: a packed run that holds no whole number of values, and a group that TakeUnknown()
// has begun, are refused at once.
#ifndef ZARVO_CALIBRATION_INTERNAL_MESSAGE_READER_H_
#define ZARVO_CALIBRATION_INTERNAL_MESSAGE_READER_H_

#include "calibration_common/elements.h"
#include "calibration_common/internal/buffer_reader.h"
#include "calibration_common/internal/element_blocks.h"
#include "calibration_common/internal/stream_reader.h"
#include "calibration_common/internal/wire_constants.h"
#include "calibration_common/runtime.h"

namespace zarvo {
namespace calibration_internal {

// Where a message or a group keeps its unknown fields. A message's set is made when the first
// comes.
class UnknownFieldStore {
 public:
  explicit UnknownFieldStore(Metadata* metadata) : metadata_(metadata), fields_(nullptr) {}
  explicit UnknownFieldStore(UnknownFieldSet* group) : metadata_(nullptr), fields_(group) {}

  UnknownFieldSet* Get() {
    if (fields_ == nullptr) Make();
    return fields_;
  }

 private:
  void Make();

  Metadata* metadata_;
  UnknownFieldSet* fields_;
};

class MessageReader;

// Keeps the field at p as it is, known or not, and those behind it as long as their tags are
// `tags_end` or above, so that they are not known, either. With 0 for it, no tag is known: all
// fields are kept, and a tag may be longer than need be. REQUIRES p < end.
//
// Without a `group_reader` it stops in front of groups. Who passes one promises that [p, end) ends
// where the message does, so that a group of which it holds a part is malformed.
const uint8* TakeUnknown(const uint8* p, const uint8* end, uint32 tags_end,
                         UnknownFieldStore* unknown, MessageReader* group_reader);

// How many elements of a repeated sub-message follow each other in the buffer, all of them whole;
// at most `most`. REQUIRES that one stands at p.
template <uint32 kTag>
int CountElements(const uint8* p, const uint8* end, int most) {
  const int tag_size = kTag < 0x80 ? 1 : 2;
  int count = 0;
  while (count < most && NextIs<kTag>(p, end)) {
    size_t length;
    const uint8* body = FindBody(p + tag_size, end, &length);
    if (body == nullptr) break;
    const uint8* const first = p;
    p = body + length;
    ++count;
    if (length >= 0x80) continue;
    // Short neighbours mostly have the same length.
    const ::std::ptrdiff_t size = p - first;
    const ::std::ptrdiff_t most_size = size * (most - count);
    const uint8* const last = (most_size < end - p ? p + most_size : end) - size;
    for (; p <= last && StartsWith<kTag>(p) && p[tag_size] == length; p += size) ++count;
  }
  return count;
}

// Reads a message from a stream, and its tree of sub-messages from one buffer after the other.
class MessageReader {
 public:
  // A class's MergePartialFromCodedStream(), put together from its MergeBuffered() and its
  // MergeLengthDelimited(). Merges until the input or a limit ends or a tag ends the message; false
  // if the input is malformed.
  template <typename T>
  static bool MergeFromStream(T* message, CodedInputStream* input) {
    return MergeFromStream(message, input, PartsOf<T>());
  }

  // Read a sub-message behind its tag, through the stream's calls, and merge it into *message, or
  // append it to *elements. It takes one unit of the stream's depth budget. False if it is
  // malformed or nested too deep.
  template <typename T>
  static bool ReadMessage(CodedInputStream* input, T* message) {
    return ReadMessage(input, message, PartsOf<T>());
  }
  // Makes no element where none may be nested.
  template <typename T>
  static bool ReadElement(CodedInputStream* input, RepeatedPtrField<T>* elements) {
    ElementMemory memory;
    return input->IncrementRecursionDepth() &&
           ReadNested(input, AppendElement(elements, &memory, [] { return 1; }), PartsOf<T>());
  }

  // Reads the sub-message whose tag stands at p and merges it into *message.
  template <int kTagSize, typename T>
  const uint8* TakeMessage(const uint8* p, const uint8* end, T* message) {
    return TakeMessage(kTagSize, p, end, message, PartsOf<T>());
  }

  // For TakeUnknown(): keeps the group `number`; p stands behind the tag that starts it. Returns
  // the position behind the tag that ends it, or null if it is malformed or nested too deep.
  const uint8* TakeGroup(int number, const uint8* p, const uint8* end, UnknownFieldStore* unknown);

  // Appends elements, as many as follow each other; they take one unit of the stream's depth budget
  // together.
  template <uint32 kTag, typename T>
  const uint8* TakeElements(const uint8* p, const uint8* end, RepeatedPtrField<T>* elements) {
    const int tag_size = kTag < 0x80 ? 1 : 2;
    if (!input_->IncrementRecursionDepth()) return nullptr;
    ElementMemory memory;
    do {
      size_t length;
      const uint8* body = FindBody(p + tag_size, end, &length);
      if (body == nullptr) break;
      const uint8* const body_end = body + length;
      T* element = AppendElement(
          elements, &memory, [=] { return CountElements<kTag>(p, end, MostInBlock(sizeof(T))); });
      p = MergeBody(body, body_end, element);
    } while (p != nullptr && NextIs<kTag>(p, end));
    input_->UnsafeDecrementRecursionDepth();
    return p;
  }

 private:
  // What a class contributes to the calls below that are there once for all classes. The first
  // argument is the message.
  struct Parts {
    Metadata* (*metadata)(void*);
    const uint8* (*merge_buffered)(void*, const uint8* p, const uint8* end, MessageReader*);
    bool (*merge_length_delimited)(void*, uint32 tag, CodedInputStream*);
    uint32 tags_end;  // above the tags of all fields
  };
  template <typename T>
  static const Parts& PartsOf() {
    static const Parts parts = {&MetadataOf<T>, &MergeBuffered<T>, &MergeLengthDelimited<T>,
                                T::kTagsEnd};
    return parts;
  }
  template <typename T>
  static Metadata* MetadataOf(void* message) {
    return &static_cast<T*>(message)->_internal_metadata_;
  }
  template <typename T>
  static const uint8* MergeBuffered(void* message, const uint8* p, const uint8* end,
                                    MessageReader* reader) {
    return static_cast<T*>(message)->MergeBuffered(p, end, reader);
  }
  template <typename T>
  static bool MergeLengthDelimited(void* message, uint32 tag, CodedInputStream* input) {
    return static_cast<T*>(message)->MergeLengthDelimited(tag, input);
  }

  MessageReader(CodedInputStream* input, const uint8* position)
      : input_(input), position_(position) {}

  static bool MergeFromStream(void* message, CodedInputStream* input, const Parts& parts);
  static bool ReadMessage(CodedInputStream* input, void* message, const Parts& parts);
  // Reads a sub-message whose unit of depth has been taken.
  static bool ReadNested(CodedInputStream* input, void* message, const Parts& parts);

  const uint8* TakeMessage(int tag_size, const uint8* p, const uint8* end, void* message,
                           const Parts& parts);

  // Lets the stream go on at p. The caller is done with the buffer, or sets `position_`. False if p
  // lies beyond a limit of the stream, which cuts its buffer off but not the bytes behind it.
  bool MoveTo(const uint8* p);

  // Merges the bytes [body, end) into *message; returns `end`, or null if they are malformed.
  template <typename T>
  const uint8* MergeBody(const uint8* body, const uint8* end, T* message) {
    const uint8* stop = message->MergeBuffered(body, end, this);
    if (stop == end || stop == nullptr) return stop;
    return Finish(stop, end, message, PartsOf<T>());
  }

  // Goes on at p, where MergeBuffered() has stopped. Returns where neither it nor TakeUnknown(),
  // which gets the `group_reader`, can go on, or null.
  const uint8* TakeMore(const uint8* p, const uint8* end, void* message, const Parts& parts,
                        MessageReader* group_reader);

  // Merges the rest of a sub-message, [p, end), where MergeBuffered() has stopped, by the stream's
  // own calls if need be. As MergeBody().
  const uint8* Finish(const uint8* p, const uint8* end, void* message, const Parts& parts);

  CodedInputStream* input_;
  const uint8* position_;  // what `input_` stands at
};

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_MESSAGE_READER_H_
