// What is in an MCAP file whose chunks are not compressed, and in its messages in protobuf, read as
// their specifications have it and by nothing of calib's.
#ifndef TESTS_CALIB_MCAP_BY_HAND_H_
#define TESTS_CALIB_MCAP_BY_HAND_H_

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace by_hand {

// A number in little-endian bytes.
template <typename T>
T Little(const std::string& bytes, size_t at) {
  T value;
  std::memcpy(&value, bytes.data() + at, sizeof value);
  return value;
}

// Topics and messages, in the order of the file.
class Mcap {
 public:
  explicit Mcap(const std::string& file) { Read(file, 8, file.size() - 8); }  // between the magics
  std::vector<std::pair<std::string, std::string>> messages;

 private:
  enum : uint8_t { kChannel = 4, kMessage = 5, kChunk = 6 };

  void Read(const std::string& bytes, size_t at, size_t end) {
    while (at < end) {
      const auto kind = static_cast<uint8_t>(bytes[at]);
      const auto size = static_cast<size_t>(Little<uint64_t>(bytes, at + 1));
      const std::string record = bytes.substr(at + 9, size);
      at += 9 + size;
      if (kind == kChannel) {
        topics_[Little<uint16_t>(record, 0)] = record.substr(8, Little<uint32_t>(record, 4));
      } else if (kind == kMessage) {
        messages.emplace_back(topics_[Little<uint16_t>(record, 0)], record.substr(22));
      } else if (kind == kChunk) {
        const size_t records = 28 + 4 + Little<uint32_t>(record, 28) + 8;
        Read(record, records, record.size());
      }
    }
  }

  std::map<uint16_t, std::string> topics_;
};

// The fields of a message, the last of each number; repeated doubles are packed.
struct Fields {
  explicit Fields(const std::string& message) {
    for (size_t at = 0; at < message.size();) {
      const uint64_t tag = Varint(message, &at);
      const auto number = static_cast<int>(tag >> 3);
      if ((tag & 7) == 0) Varint(message, &at);
      if ((tag & 7) == 5) at += 4;
      if ((tag & 7) == 1) {
        doubles[number] = Little<double>(message, at);
        at += 8;
      } else if ((tag & 7) == 2) {
        const auto size = static_cast<size_t>(Varint(message, &at));
        bytes[number] = message.substr(at, size);
        at += size;
      }
    }
  }

  std::vector<double> List(int number) {
    std::vector<double> list(bytes[number].size() / sizeof(double));
    for (size_t i = 0; i < list.size(); ++i) list[i] = Little<double>(bytes[number], 8 * i);
    return list;
  }

  std::map<int, double> doubles;  // what is not there is 0
  std::map<int, std::string> bytes;

 private:
  static uint64_t Varint(const std::string& message, size_t* at) {
    uint64_t value = 0;
    for (int shift = 0;; shift += 7) {
      const auto byte = static_cast<uint8_t>(message[(*at)++]);
      value |= uint64_t{byte & 127u} << shift;
      if (byte < 128) return value;
    }
  }
};

}  // namespace by_hand

#endif  // TESTS_CALIB_MCAP_BY_HAND_H_
