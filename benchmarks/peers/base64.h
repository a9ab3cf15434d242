// Octets as text, for the formats that know text only (RFC 4648, with padding).
#ifndef CALIBRATION_BENCHMARKS_PEERS_BASE64_H_
#define CALIBRATION_BENCHMARKS_PEERS_BASE64_H_

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace zarvo {
namespace calibration {
namespace benchmarks {

constexpr std::string_view kBase64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

inline std::string ToBase64(std::string_view octets) {
  std::string text((octets.size() + 2) / 3 * 4, '=');
  char* out = text.data();
  for (size_t i = 0; i < octets.size(); i += 3) {
    const size_t count = std::min<size_t>(3, octets.size() - i);
    uint32_t bits = 0;
    for (size_t j = 0; j < 3; ++j) {
      bits = bits << 8 | (j < count ? static_cast<unsigned char>(octets[i + j]) : 0);
    }
    for (size_t j = 0; j <= count; ++j) out[j] = kBase64Digits[bits >> (18 - 6 * j) & 63];
    out += 4;
  }
  return text;
}

// Whatever is no digit counts as 0: what is read here was written here.
inline std::string FromBase64(std::string_view text) {
  static const std::array<uint8_t, 256> values = [] {
    std::array<uint8_t, 256> table{};
    for (size_t i = 0; i < kBase64Digits.size(); ++i) {
      table[static_cast<unsigned char>(kBase64Digits[i])] = static_cast<uint8_t>(i);
    }
    return table;
  }();
  std::string octets(text.size() / 4 * 3, '\0');
  char* out = octets.data();
  for (size_t i = 0; i + 4 <= text.size(); i += 4) {
    uint32_t bits = 0;
    for (size_t j = 0; j < 4; ++j)
      bits = bits << 6 | values[static_cast<unsigned char>(text[i + j])];
    *out++ = static_cast<char>(bits >> 16);
    *out++ = static_cast<char>(bits >> 8);
    *out++ = static_cast<char>(bits);
  }
  while (!text.empty() && text.back() == '=') {
    text.remove_suffix(1);
    octets.pop_back();
  }
  return octets;
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_BENCHMARKS_PEERS_BASE64_H_
