// Numbers and text one behind the other in bytes that nobody vouches for. What would lie behind the
// end reads as 0 or "", and the cursor has failed from then on.
#ifndef CALIB_TOOLS_BYTE_CURSOR_H_
#define CALIB_TOOLS_BYTE_CURSOR_H_

#include <cstddef>
#include <cstring>
#include <string_view>

namespace calib {

class ByteCursor {
 public:
  // The low byte of a number comes first, or last if `high_first`. With `align`, a number stands at
  // a multiple of its size.
  explicit ByteCursor(std::string_view bytes, bool high_first = false, bool align = false)
      : bytes_(bytes), high_first_(high_first), align_(align) {}

  bool ok() const { return ok_; }
  size_t at() const { return at_; }
  size_t left() const { return bytes_.size() - at_; }

  template <typename Number>
  Number Read() {
    if (align_ && at_ % sizeof(Number) != 0) Take(sizeof(Number) - at_ % sizeof(Number));
    const std::string_view bytes = Take(sizeof(Number));
    char ordered[sizeof(Number)] = {};
    for (size_t i = 0; i < bytes.size(); ++i) {
      ordered[high_first_ == kHighFirst ? i : bytes.size() - 1 - i] = bytes[i];
    }
    Number number;
    std::memcpy(&number, ordered, sizeof number);
    return number;
  }

  // The next bytes; none if there are not so many.
  std::string_view Take(size_t size) {
    if (!ok_ || size > left()) {
      ok_ = false;
      return {};
    }
    at_ += size;
    return bytes_.substr(at_ - size, size);
  }

  // Bytes whose number stands ahead of them.
  template <typename Size>
  std::string_view TakeSized() {
    const Size size = Read<Size>();
    return Take(size <= left() ? static_cast<size_t>(size) : left() + 1);
  }

 private:
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  static constexpr bool kHighFirst = true;
#else
  static constexpr bool kHighFirst = false;
#endif

  std::string_view bytes_;
  size_t at_ = 0;
  bool high_first_, align_, ok_ = true;
};

}  // namespace calib

#endif  // CALIB_TOOLS_BYTE_CURSOR_H_
