// What reading does with the content: every number, text and octet is handed to a sink, in the
// order of the field numbers.
//
// Sum is the cheapest sink that leaves no number out. Trace writes down everything: equal traces
// are equal contents. Since not every peer can tell a zero or an empty text from one that is
// absent, neither of them counts.
#ifndef CALIBRATION_BENCHMARKS_PEERS_SINKS_H_
#define CALIBRATION_BENCHMARKS_PEERS_SINKS_H_

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "benchmarks/peers/values.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {

// The sum of all numbers' bits, of the texts' lengths and of the octets, eight at a time. Such a
// sum is the same in any order and exact, and no addition has to wait long for the one before.
class Sum {
 public:
  void Number(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    total_ += bits;
  }
  void Number(double value) {
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    total_ += bits;
  }
  void Number(int32_t value) { total_ += static_cast<uint64_t>(int64_t{value}); }
  void Number(int64_t value) { total_ += static_cast<uint64_t>(value); }
  void Text(std::string_view text) { total_ += text.size(); }
  void Octets(std::string_view octets) {
    const char* data = octets.data();
    const char* const end = data + octets.size() / 8 * 8;
    uint64_t sum = 0;
    for (; data != end; data += 8) {
      uint64_t eight;
      std::memcpy(&eight, data, sizeof eight);
      sum += eight;
    }
    for (size_t i = 0; i < octets.size() % 8; ++i) sum += static_cast<unsigned char>(end[i]);
    total_ += sum;
  }

  uint64_t total() const { return total_; }

 private:
  uint64_t total_ = 0;
};

class Trace {
 public:
  template <class N>
  void Number(N value) {
    if (value == 0) return;
    Sum one;
    one.Number(value);
    Line(std::to_string(one.total()));
  }
  void Text(std::string_view text) {
    if (!text.empty()) Line(text);
  }
  void Octets(std::string_view octets) { Text(octets); }

  const std::string& lines() const { return lines_; }

 private:
  void Line(std::string_view text) { lines_.append(text) += '\n'; }

  std::string lines_;
};

template <class T>
struct IsList : std::false_type {};
template <class T>
struct IsList<std::vector<T>> : std::true_type {};
template <class T>
constexpr bool kIsList = IsList<T>::value;

// Hands a program's own values to the sink.
template <class T, class Sink>
void Visit(const T& value, Sink* sink) {
  if constexpr (std::is_arithmetic_v<T>) {
    sink->Number(value);
  } else if constexpr (std::is_same_v<T, std::string>) {
    sink->Text(value);
  } else if constexpr (std::is_same_v<T, Octets>) {
    sink->Octets(value.data);
  } else if constexpr (kIsList<T>) {
    for (const auto& element : value) Visit(element, sink);
  } else if constexpr (std::is_same_v<T, SamplePoint>) {
    for (const float number : {value.img_x, value.img_y, value.tgt_x, value.tgt_y}) {
      sink->Number(number);
    }
  } else {
    T::Fields(value, [sink](const char*, const auto& member) { Visit(member, sink); });
  }
}

// The values' trace.
template <class R>
std::string Contents(const R& values) {
  Trace trace;
  Visit(values, &trace);
  return trace.lines();
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_BENCHMARKS_PEERS_SINKS_H_
