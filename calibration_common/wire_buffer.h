// How the parsers read what lies in a coded stream's buffer, which is nearly everything: straight
// from there.
//
// A class's MergeBuffered() reads the fields that it knows from [p, end) and stops in front of any
// other and of what it cannot read: a value that the buffer holds only in part, a tag that ends the
// message, anything malformed. If it is an unknown field, TakeUnknown() goes on, but for a group
// that the buffer may hold only in part. Otherwise, MessageReader::MergeFromStream() reads that one
// field through the stream's own calls, which refuse what is malformed, and goes on behind it. So
// there is one place for each field's rules and, with two exceptions, one place that refuses.
#ifndef CALIBRATION_COMMON_WIRE_BUFFER_H_
#define CALIBRATION_COMMON_WIRE_BUFFER_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/repeated_field.h>

#include <cstring>
#include <string>

#include "calibration_common/element_blocks.h"
#include "calibration_common/elements.h"
#include "calibration_common/runtime.h"
#include "calibration_common/wire_reading.h"

namespace zarvo {
namespace calibration {
namespace wire {

using ::google::protobuf::int32;

// The Take... calls: p stands at a field's tag, which is known and has kTagSize bytes. They read
// the field and return the position behind it; if they cannot, p, and leave the value as it was; if
// the field is malformed, null. What such a call of a known field declines by returning p,
// TakeUnknown() must decline, too: it would keep it as unknown. Hence the first exception: a packed
// run that holds no whole number of values is refused at once. The second is a group that
// TakeUnknown() has begun.

// Moves *p to `next`, what such a call has returned. False if MergeBuffered() is to stop there.
inline bool Advance(const uint8** p, const uint8* next) {
  const bool moved = next != *p && next != nullptr;
  *p = next;
  return moved;
}

// Reads a varint from [p, end). Returns the position behind it, or null if it is cut off or too
// long.
const uint8* ReadLongVarint(const uint8* p, const uint8* end, uint64* value);
inline const uint8* ReadVarint(const uint8* p, const uint8* end, uint64* value) {
  if (p < end && *p < 0x80) {
    *value = *p;
    return p + 1;
  }
  return ReadLongVarint(p, end, value);
}

template <int kTagSize, typename T>
inline const uint8* TakeFixed(const uint8* p, const uint8* end, T* value) {
  const int size = kTagSize + static_cast<int>(sizeof(T));
  if (end - p < size) return p;
  ::std::memcpy(value, p + kTagSize, sizeof(T));
  return p + size;
}
template <int kTagSize>
inline const uint8* TakeValue(const uint8* p, const uint8* end, double* value) {
  return TakeFixed<kTagSize>(p, end, value);
}
template <int kTagSize>
inline const uint8* TakeValue(const uint8* p, const uint8* end, float* value) {
  return TakeFixed<kTagSize>(p, end, value);
}
template <int kTagSize>
inline const uint8* TakeValue(const uint8* p, const uint8* end, int32* value) {
  uint64 number;
  const uint8* behind = ReadVarint(p + kTagSize, end, &number);
  if (behind == nullptr) return p;
  *value = static_cast<int32>(number);
  return behind;
}
// Of the two kinds that are rare, not inline.
template <int kTagSize>
const uint8* TakeValue(const uint8* p, const uint8* end, int64* value) {
  uint64 number;
  const uint8* behind = ReadVarint(p + kTagSize, end, &number);
  if (behind == nullptr) return p;
  *value = static_cast<int64>(number);
  return behind;
}
template <int kTagSize>
const uint8* TakeValue(const uint8* p, const uint8* end, bool* value) {
  uint64 number;
  const uint8* behind = ReadVarint(p + kTagSize, end, &number);
  if (behind == nullptr) return p;
  *value = number != 0;
  return behind;
}

// What follows a length. Returns its first byte and sets *length, or returns null if [p, end) does
// not hold all of it.
inline const uint8* FindBody(const uint8* p, const uint8* end, size_t* length) {
  uint64 announced;
  const uint8* body = ReadVarint(p, end, &announced);
  if (body == nullptr || announced > static_cast<uint64>(end - body)) return nullptr;
  *length = static_cast<size_t>(announced);
  return body;
}

// Replaces what `value` held.
const uint8* TakeString(int tag_size, const uint8* p, const uint8* end, ::std::string* value);

// A packed run of a repeated number.
const uint8* TakePacked(int tag_size, const uint8* p, const uint8* end,
                        RepeatedField<double>* values);
const uint8* TakePacked(int tag_size, const uint8* p, const uint8* end,
                        RepeatedField<float>* values);

// Where a message or a group keeps its unknown fields. A message's set is made when the first
// comes.
class UnknownFieldStore {
 public:
  explicit UnknownFieldStore(runtime::Metadata* metadata) : metadata_(metadata), fields_(nullptr) {}
  explicit UnknownFieldStore(UnknownFieldSet* group) : metadata_(nullptr), fields_(group) {}

  UnknownFieldSet* Get() {
    if (fields_ == nullptr) Make();
    return fields_;
  }

 private:
  void Make();

  runtime::Metadata* metadata_;
  UnknownFieldSet* fields_;
};

// The tag at p if it has one or two bytes and is written no longer than need be, otherwise 0.
// REQUIRES p < end.
inline uint32 PeekTag(const uint8* p, const uint8* end) {
  if (*p < 0x80) return *p;
  if (end - p < 2 || p[1] == 0 || p[1] >= 0x80) return 0;
  return static_cast<uint32>(p[1]) << 7 | (p[0] & 0x7Fu);
}

class MessageReader;

// Keeps the field at p as it is, known or not, and those behind it as long as their tags are
// `tags_end` or above, so that they are not known, either. With 0 for it, no tag is known: all
// fields are kept, and a tag may be longer than need be. REQUIRES p < end.
//
// Without a `group_reader` it stops in front of groups. Who passes one promises that [p, end) ends
// where the message does, so that a group of which it holds a part is malformed.
const uint8* TakeUnknown(const uint8* p, const uint8* end, uint32 tags_end,
                         UnknownFieldStore* unknown, MessageReader* group_reader);

// Whether kTag, a tag of one or two bytes, stands at p.
template <uint32 kTag>
inline bool NextIs(const uint8* p, const uint8* end) {
  if (kTag < 0x80) return p != end && *p == kTag;
  return end - p >= 2 && p[0] == ((kTag & 0x7F) | 0x80) && p[1] == (kTag >> 7);
}

// Elements of a repeated number, one behind each tag, as many as follow each other. A tag of one
// byte is the case that is made fast.
const uint8* TakeElements(uint8 tag, const uint8* p, const uint8* end,
                          RepeatedField<double>* values);
const uint8* TakeElements(uint8 tag, const uint8* p, const uint8* end,
                          RepeatedField<float>* values);
template <uint32 kTag, typename T>
inline const uint8* TakeElements(const uint8* p, const uint8* end, RepeatedField<T>* values) {
  if (kTag < 0x80) return TakeElements(static_cast<uint8>(kTag), p, end, values);
  do {
    T value;
    const uint8* behind = TakeValue<2>(p, end, &value);
    if (behind == p) break;
    values->Add(value);
    p = behind;
  } while (NextIs<kTag>(p, end));
  return p;
}

// How many elements of a repeated sub-message follow each other in the buffer, all of them whole;
// at most ElementBlock::kMaxElements. REQUIRES that one stands at p.
int CountElements(uint32 tag, const uint8* p, const uint8* end);

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

  // Merges the sub-message into *message.
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
    do {
      size_t length;
      const uint8* body = FindBody(p + tag_size, end, &length);
      if (body == nullptr) break;
      while (elements->ClearedCount() <= 0) {  // as in AddElement()
        runtime::AddClearedElements(elements, CountElements(kTag, p, end));
      }
      p = MergeBody(body, body + length, elements->Add());
    } while (p != nullptr && NextIs<kTag>(p, end));
    input_->UnsafeDecrementRecursionDepth();
    return p;
  }

 private:
  // What a class contributes to the calls below that are there once for all classes. The first
  // argument is the message.
  struct Parts {
    runtime::Metadata* (*metadata)(void*);
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
  static runtime::Metadata* MetadataOf(void* message) {
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

  const uint8* TakeMessage(int tag_size, const uint8* p, const uint8* end, void* message,
                           const Parts& parts);

  // Lets the stream go on at p. The caller is done with the buffer, or sets `position_`.
  void MoveTo(const uint8* p);

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

}  // namespace wire
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_COMMON_WIRE_BUFFER_H_
