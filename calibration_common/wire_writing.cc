#include "calibration_common/wire_writing.h"

#include <google/protobuf/wire_format.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace zarvo {
namespace calibration {
namespace wire {

namespace {

template <typename T>
inline void WriteBehind(uint8 tag, T value, uint8* target) {
  *target = tag;
  ::std::memcpy(target + 1, &value, sizeof(T));
}

template <typename T>
uint8* WriteRange(uint8 tag, const T* begin, const T* end, uint8* target) {
  const size_t kStride = 1 + sizeof(T);
  for (; end - begin >= 4; begin += 4, target += 4 * kStride) {
    WriteBehind(tag, begin[0], target);
    WriteBehind(tag, begin[1], target + kStride);
    WriteBehind(tag, begin[2], target + 2 * kStride);
    WriteBehind(tag, begin[3], target + 3 * kStride);
  }
  for (; begin != end; ++begin, target += kStride) WriteBehind(tag, *begin, target);
  return target;
}

template <typename T>
void WriteBlocks(uint8 tag, const RepeatedField<T>& values, CodedOutputStream* output) {
  const ::std::ptrdiff_t kPerBlock = 64;
  uint8 block[kPerBlock * (1 + sizeof(T))];
  const T* const end = values.data() + values.size();
  for (const T* begin = values.data(); begin != end;) {
    const T* const block_end = begin + ::std::min(end - begin, kPerBlock);
    const uint8* written = WriteRange(tag, begin, block_end, block);
    output->WriteRaw(block, static_cast<int>(written - block));
    begin = block_end;
  }
}

}  // namespace

int SizeWithUnknownFields(uint32 known_size, const runtime::Metadata& metadata, int* cached_size) {
  *cached_size = static_cast<int>(
      known_size +
      static_cast<uint32>(::google::protobuf::internal::WireFormat::ComputeUnknownFieldsSize(
          runtime::UnknownFields(metadata))));
  return *cached_size;
}

uint8* WriteInt32ToArray(int number, int32 value, uint8* target) {
  return WireFormatLite::WriteInt32ToArray(number, value, target);
}
uint8* WriteInt64ToArray(int number, int64 value, uint8* target) {
  return WireFormatLite::WriteInt64ToArray(number, value, target);
}

uint8* WriteLongLengthToArray(uint32 length, uint8* target) {
  return CodedOutputStream::WriteVarint32ToArray(length, target);
}

uint8* WriteTextBehindTagToArray(const ::std::string& value, uint8* target) {
  target = WriteLengthToArray(static_cast<uint32>(value.size()), target);
  return CodedOutputStream::WriteRawToArray(value.data(), static_cast<int>(value.size()), target);
}

uint8* BeginMessage(int number, int size, CodedOutputStream* output) {
  WireFormatLite::WriteTag(number, WireFormatLite::WIRETYPE_LENGTH_DELIMITED, output);
  output->WriteVarint32(static_cast<uint32>(size));
  return output->GetDirectBufferForNBytesAndAdvance(size);
}

void WriteSomeElements(uint8 tag, const RepeatedField<double>& values, CodedOutputStream* output) {
  WriteBlocks(tag, values, output);
}
void WriteSomeElements(uint8 tag, const RepeatedField<float>& values, CodedOutputStream* output) {
  WriteBlocks(tag, values, output);
}
uint8* WriteSomeElementsToArray(uint8 tag, const RepeatedField<double>& values, uint8* target) {
  return WriteRange(tag, values.data(), values.data() + values.size(), target);
}
uint8* WriteSomeElementsToArray(uint8 tag, const RepeatedField<float>& values, uint8* target) {
  return WriteRange(tag, values.data(), values.data() + values.size(), target);
}

// What WireFormat::SerializeUnknownFieldsToArray() writes, without the stream that it sets up for
// each message.
uint8* WriteUnknownFieldsToArray(const UnknownFieldSet& fields, uint8* target) {
  typedef ::google::protobuf::UnknownField UnknownField;
  for (int i = 0; i < fields.field_count(); ++i) {
    const UnknownField& field = fields.field(i);
    const int number = field.number();
    switch (field.type()) {
      case UnknownField::TYPE_VARINT:
        target = WireFormatLite::WriteUInt64ToArray(number, field.varint(), target);
        break;
      case UnknownField::TYPE_FIXED32:
        target = WireFormatLite::WriteFixed32ToArray(number, field.fixed32(), target);
        break;
      case UnknownField::TYPE_FIXED64:
        target = WireFormatLite::WriteFixed64ToArray(number, field.fixed64(), target);
        break;
      case UnknownField::TYPE_LENGTH_DELIMITED:
        target = WireFormatLite::WriteBytesToArray(number, field.length_delimited(), target);
        break;
      case UnknownField::TYPE_GROUP:
        target =
            WireFormatLite::WriteTagToArray(number, WireFormatLite::WIRETYPE_START_GROUP, target);
        target = WriteUnknownFieldsToArray(field.group(), target);
        target =
            WireFormatLite::WriteTagToArray(number, WireFormatLite::WIRETYPE_END_GROUP, target);
        break;
    }
  }
  return target;
}

}  // namespace wire
}  // namespace calibration
}  // namespace zarvo
