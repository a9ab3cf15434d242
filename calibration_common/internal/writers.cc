#include "calibration_common/internal/writers.h"

#include <string.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace zarvo {
namespace calibration_internal {

namespace {

template <typename T>
inline void WriteBehind(uint8 tag, T value, uint8* target) {
  *target = tag;
  ::std::memcpy(target + 1, &value, sizeof(T));
}

template <typename T>
uint8* WriteRange(uint8 tag, const T* values, int count, uint8* target) {
  const size_t kStride = 1 + sizeof(T);
  const T* const whole_fours = values + (count & ~3);
  for (; values != whole_fours; values += 4, target += 4 * kStride) {
    WriteBehind(tag, values[0], target);
    WriteBehind(tag, values[1], target + kStride);
    WriteBehind(tag, values[2], target + 2 * kStride);
    WriteBehind(tag, values[3], target + 3 * kStride);
  }
  if ((count & 2) != 0) {
    WriteBehind(tag, values[0], target);
    WriteBehind(tag, values[1], target + kStride);
    values += 2;
    target += 2 * kStride;
  }
  if ((count & 1) == 0) return target;
  WriteBehind(tag, values[0], target);
  return target + kStride;
}

template <typename T>
void WriteBlocks(uint8 tag, const RepeatedField<T>& values, CodedOutputStream* output) {
  const int kPerBlock = 64;
  uint8 block[kPerBlock * (1 + sizeof(T))];
  for (int i = 0; i < values.size(); i += kPerBlock) {
    const int count = ::std::min(values.size() - i, kPerBlock);
    const uint8* end = WriteRange(tag, values.data() + i, count, block);
    output->WriteRaw(block, static_cast<int>(end - block));
  }
}

}  // namespace

uint8* WriteVarintToArray(uint64 value, uint8* target) {
  if (value >> 49 == 0) return CodedOutputStream::WriteVarint64ToArray(value, target);
  // Eight bytes or more, as all negative numbers have and times that are counted in microseconds or
  // less: the lower 56 bits at once. In three steps, upper halves move up by 4, 2 and 1 bits, until
  // each byte holds seven bits.
  uint64 bytes = value & 0x00FFFFFFFFFFFFFF;
  bytes += (bytes & 0x00FFFFFFF0000000) * 15;
  bytes += (bytes & 0x0FFFC0000FFFC000) * 3;
  bytes += (bytes & 0x3F803F803F803F80);
  const uint64 upper = value >> 56;
  bytes |= upper == 0 ? 0x0080808080808080 : 0x8080808080808080;
  target = CodedOutputStream::WriteLittleEndian64ToArray(bytes, target);
  if (upper == 0) return target;
  return CodedOutputStream::WriteVarint32ToArray(static_cast<uint32>(upper), target);
}

uint8* WriteLongLengthToArray(uint32 length, uint8* target) {
  return CodedOutputStream::WriteVarint32ToArray(length, target);
}

uint8* WriteTextBehindTagToArray(const ::std::string& value, uint8* target) {
  const size_t size = value.size();
  target = WriteLengthToArray(static_cast<uint32>(size), target);
  // The C library's call that returns the end: nothing is left to do behind it.
  return static_cast<uint8*>(::mempcpy(target, value.data(), size));
}

uint8* BeginMessage(int number, int size, CodedOutputStream* output) {
  WireFormatLite::WriteTag(number, WireFormatLite::WIRETYPE_LENGTH_DELIMITED, output);
  output->WriteVarint32(static_cast<uint32>(size));
  return output->GetDirectBufferForNBytesAndAdvance(size);
}

void WriteWithOneByteTag(uint8 tag, const RepeatedField<double>& values,
                         CodedOutputStream* output) {
  WriteBlocks(tag, values, output);
}
void WriteWithOneByteTag(uint8 tag, const RepeatedField<float>& values, CodedOutputStream* output) {
  WriteBlocks(tag, values, output);
}
uint8* WriteWithOneByteTagToArray(uint8 tag, const RepeatedField<double>& values, uint8* target) {
  return WriteRange(tag, values.data(), values.size(), target);
}
uint8* WriteWithOneByteTagToArray(uint8 tag, const RepeatedField<float>& values, uint8* target) {
  return WriteRange(tag, values.data(), values.size(), target);
}

}  // namespace calibration_internal
}  // namespace zarvo
