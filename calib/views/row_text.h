// Text that grows at its end, where numbers are written in place: a std::string would fill that
// room with zeros first.
#ifndef CALIB_VIEWS_ROW_TEXT_H_
#define CALIB_VIEWS_ROW_TEXT_H_

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace calib {

class RowText {
 public:
  std::string_view view() const { return {text_.get(), size_}; }
  size_t size() const { return size_; }
  // Keeps the memory.
  void clear() { size_ = 0; }

  // Where `most` characters may be written, until anything else is appended; End() says where they
  // end.
  char* Room(size_t most) {
    if (capacity_ - size_ < most) Grow(most);
    return text_.get() + size_;
  }
  void End(const char* end) { size_ = static_cast<size_t>(end - text_.get()); }

  RowText& operator+=(char c) {
    *Room(1) = c;
    ++size_;
    return *this;
  }
  RowText& operator+=(std::string_view text) {
    std::copy(text.begin(), text.end(), Room(text.size()));
    size_ += text.size();
    return *this;
  }

 private:
  void Grow(size_t most) {
    capacity_ = std::max(2 * capacity_, size_ + most);
    std::unique_ptr<char[]> larger(new char[capacity_]);
    std::copy_n(text_.get(), size_, larger.get());
    text_ = std::move(larger);
  }

  std::unique_ptr<char[]> text_;
  size_t size_ = 0, capacity_ = 0;
};

}  // namespace calib

#endif  // CALIB_VIEWS_ROW_TEXT_H_
