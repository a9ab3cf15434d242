#include "calib/tools/opencv_base64.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace calib {

namespace {

constexpr std::string_view kMark = "$base64$";  // in JSON
constexpr size_t kHeadSize = 24, kEncodedHeadSize = kHeadSize / 3 * 4;
constexpr std::string_view kBlanks = "ICAgICAgICAgICAgICAgICAg";  // 18 of them

[[noreturn]] void Refuse(const Foreign& value, const std::string& what) {
  value.Refuse("is no base64 of OpenCV's: " + what, "Get the file anew.");
}

// Of a character, or -1.
int Digit(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  return c == '+' ? 62 : c == '/' ? 63 : -1;
}

std::string Decode(const Foreign& value, std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  uint32_t bits = 0;
  int digits = 0, padding = 0;
  for (const char c : text) {
    if (c == ' ' || c == '\n' || c == '\r' || c == '\t') continue;
    const int digit = c == '=' ? 0 : Digit(c);
    if (digit < 0 || (padding != 0 && c != '='))
      Refuse(value, "a character in it is none of base64");
    padding += c == '=' ? 1 : 0;
    bits = bits << 6 | static_cast<uint32_t>(digit);
    if (++digits % 4 != 0) continue;
    for (const int shift : {16, 8, 0}) bytes += static_cast<char>(bits >> shift & 0xff);
  }
  if (digits % 4 != 0 || padding > 2) Refuse(value, "it is cut off");
  bytes.resize(bytes.size() - static_cast<size_t>(padding));
  return bytes;
}

template <typename Number>
double Read(const char* bytes) {
  uint64_t bits = 0;
  for (size_t i = 0; i < sizeof(Number); ++i) {
    bits |= uint64_t{static_cast<unsigned char>(bytes[i])} << 8 * i;
  }
  // Of the unsigned type of that size, whatever the order of this computer's bytes is.
  Number number;
  if constexpr (sizeof(Number) == 8) {
    std::memcpy(&number, &bits, sizeof number);
  } else if constexpr (sizeof(Number) == 4) {
    const auto part = static_cast<uint32_t>(bits);
    std::memcpy(&number, &part, sizeof number);
  } else if constexpr (sizeof(Number) == 2) {
    const auto part = static_cast<uint16_t>(bits);
    std::memcpy(&number, &part, sizeof number);
  } else {
    const auto part = static_cast<uint8_t>(bits);
    std::memcpy(&number, &part, sizeof number);
  }
  return static_cast<double>(number);
}

struct Type {
  char letter;
  size_t size;
  double (*read)(const char* bytes);
};
constexpr Type kTypes[] = {{'u', 1, Read<uint8_t>},  {'c', 1, Read<int8_t>},
                           {'w', 2, Read<uint16_t>}, {'s', 2, Read<int16_t>},
                           {'i', 4, Read<int32_t>},  {'f', 4, Read<float>},
                           {'d', 8, Read<double>}};

// The one type of "2f" and the like.
const Type& ReadHead(const Foreign& value, std::string_view head) {
  const size_t letter = head.find_first_not_of("0123456789");
  if (letter != std::string_view::npos &&
      head.find_first_not_of(' ', letter + 1) == std::string_view::npos) {
    for (const Type& type : kTypes) {
      if (type.letter == head[letter]) return type;
    }
  }
  Refuse(value, "its head names no type of a number");
}

std::vector<double> ReadList(const Foreign& value, const std::string& bytes) {
  if (bytes.size() < kHeadSize) Refuse(value, "it is shorter than the head");
  const Type& type = ReadHead(value, std::string_view(bytes).substr(0, kHeadSize));
  if ((bytes.size() - kHeadSize) % type.size != 0) Refuse(value, "it ends within a number");
  std::vector<double> numbers;
  numbers.reserve((bytes.size() - kHeadSize) / type.size);
  for (size_t at = kHeadSize; at < bytes.size(); at += type.size) {
    numbers.push_back(type.read(bytes.data() + at));
    if (!std::isfinite(numbers.back())) Refuse(value, "it has a number that is not finite");
  }
  return numbers;
}

// Whether the text begins with a head, of which all but the first bytes are blanks.
bool HasHead(std::string_view text) {
  if (text.substr(0, kMark.size()) == kMark) text.remove_prefix(kMark.size());
  return text.size() >= kEncodedHeadSize && text.substr(8, kBlanks.size()) == kBlanks;
}

}  // namespace

bool IsBase64(const Foreign& value) { return HasHead(value.PeekFirst()); }

std::vector<std::vector<double>> Base64Lists(const Foreign& value) {
  std::vector<std::string> lists;
  for (const std::string& text : value.Texts()) {
    if (HasHead(text) || lists.empty()) {
      lists.push_back(text.substr(text.compare(0, kMark.size(), kMark) == 0 ? kMark.size() : 0));
    } else {
      lists.back() += text;  // of XML, which is read piece by piece
    }
  }
  std::vector<std::vector<double>> numbers;
  numbers.reserve(lists.size());
  for (const std::string& list : lists) numbers.push_back(ReadList(value, Decode(value, list)));
  return numbers;
}

std::vector<double> Base64Numbers(const Foreign& value) {
  std::vector<double> numbers;
  for (const std::vector<double>& list : Base64Lists(value)) {
    numbers.insert(numbers.end(), list.begin(), list.end());
  }
  return numbers;
}

}  // namespace calib
