// Where bytes go in pieces, so that nobody has to hold all of them.
#ifndef CALIB_CONSOLE_SINK_H_
#define CALIB_CONSOLE_SINK_H_

#include <cstddef>
#include <functional>
#include <string>

namespace calib {

// Takes the next bytes.
using Sink = std::function<void(const char* bytes, size_t size)>;

// Gathers small pieces into larger ones.
class BufferedSink {
 public:
  explicit BufferedSink(const Sink& sink) : sink_(sink) {}

  void Write(const char* bytes, size_t size) {
    if (buffer_.size() + size > kBlock) Flush();
    if (size > kBlock) return sink_(bytes, size);
    buffer_.append(bytes, size);
  }
  void Write(const std::string& bytes) { Write(bytes.data(), bytes.size()); }
  // To be called at the end.
  void Flush() {
    if (!buffer_.empty()) sink_(buffer_.data(), buffer_.size());
    buffer_.clear();
  }

 private:
  static constexpr size_t kBlock = size_t{1} << 16;

  const Sink& sink_;
  std::string buffer_;
};

}  // namespace calib

#endif  // CALIB_CONSOLE_SINK_H_
