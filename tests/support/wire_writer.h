// Builds encoded bytes one piece at a time, valid or not, without any of the run-time's code.
//
//   WireWriter().Tag(1, kFixed64).Double(2.5).Tag(8, kVarint).Varint(7).bytes()
//
// Nothing is checked: a test may leave a value out, announce a wrong length or spell a number with
// more bytes than it needs.
#ifndef CALIBRATION_TESTS_SUPPORT_WIRE_WRITER_H_
#define CALIBRATION_TESTS_SUPPORT_WIRE_WRITER_H_

#include <cstdint>
#include <cstring>
#include <string>

#include "tests/support/schema_table.h"

namespace zarvo {
namespace calibration {
namespace testing {

class WireWriter {
 public:
  const std::string& bytes() const { return bytes_; }

  WireWriter& Tag(int number, WireType type) {
    return Varint(static_cast<uint64_t>(number) << 3 | type);
  }

  WireWriter& Varint(uint64_t value) {
    while (value > 127) {
      bytes_.push_back(static_cast<char>(value | 0x80));
      value >>= 7;
    }
    bytes_.push_back(static_cast<char>(value));
    return *this;
  }

  // The value in exactly `length` bytes: padded with continuation bytes, or cut to what fits.
  WireWriter& OverlongVarint(uint64_t value, int length) {
    for (int i = 0; i < length; ++i) {
      const uint64_t low = value & 0x7F;
      bytes_.push_back(static_cast<char>(i + 1 < length ? low | 0x80 : low));
      value >>= 7;
    }
    return *this;
  }

  // As int32 and int64 fields are written: a negative value takes ten bytes.
  WireWriter& Int(int64_t value) { return Varint(static_cast<uint64_t>(value)); }

  WireWriter& Fixed32(uint32_t value) { return LittleEndian(value, 4); }
  WireWriter& Fixed64(uint64_t value) { return LittleEndian(value, 8); }

  WireWriter& Float(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return Fixed32(bits);
  }

  WireWriter& Double(double value) {
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return Fixed64(bits);
  }

  // Length and contents.
  WireWriter& LengthDelimited(const std::string& contents) {
    return Varint(contents.size()).Raw(contents);
  }

  // Start tag, contents, end tag.
  WireWriter& Group(int number, const std::string& contents) {
    return Tag(number, kStartGroup).Raw(contents).Tag(number, kEndGroup);
  }

  WireWriter& Raw(const std::string& bytes) {
    bytes_ += bytes;
    return *this;
  }

 private:
  WireWriter& LittleEndian(uint64_t value, int length) {
    for (int i = 0; i < length; ++i) bytes_.push_back(static_cast<char>(value >> (8 * i)));
    return *this;
  }

  std::string bytes_;
};

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_WIRE_WRITER_H_
