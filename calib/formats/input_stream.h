// A file as a stream of the run-time's.
#ifndef CALIB_FORMATS_INPUT_STREAM_H_
#define CALIB_FORMATS_INPUT_STREAM_H_

#include <google/protobuf/io/zero_copy_stream.h>
#include <google/protobuf/stubs/common.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "calib/console/input_file.h"

namespace calib {

// Reads a file in blocks; throws Failure where it cannot be read. `file` must outlive it. A block
// that somebody else holds, too, is not overwritten: the next bytes go to a new one.
class InputStream : public google::protobuf::io::ZeroCopyInputStream {
 public:
  explicit InputStream(InputFile* file) : file_(file) {}

  bool Next(const void** data, int* size) override {
    if (next_ == end_) {
      if (block_.use_count() != 1) TakeBlock();
      next_ = 0;
      end_ = file_->Read(block_.get(), kBlock);
      if (end_ == 0) return false;
    }
    *data = block_.get() + next_;
    *size = static_cast<int>(end_ - next_);
    count_ += *size;
    next_ = end_;
    return true;
  }
  void BackUp(int count) override {
    next_ -= static_cast<size_t>(count);
    count_ -= count;
  }
  bool Skip(int count) override {
    const void* data;
    int size;
    while (count > 0 && Next(&data, &size)) {
      if (size > count) BackUp(size - count);
      count -= size;
    }
    return count <= 0;
  }
  google::protobuf::int64 ByteCount() const override { return count_; }

  // The block that the bytes, which were handed out, lie in, until more are read; null if that was
  // an earlier one, or one that is not full, of which a copy takes less memory.
  const std::shared_ptr<char>* BlockOf(std::string_view bytes) const {
    const std::less_equal<const char*> up_to;
    const char* const begin = block_.get();
    const bool inside = begin != nullptr && end_ == kBlock && up_to(begin, bytes.data()) &&
                        up_to(bytes.data() + bytes.size(), begin + end_);
    return inside ? &block_ : nullptr;
  }

 private:
  static constexpr size_t kBlock = size_t{1} << 18;

  // One that nobody holds any more, or a new one.
  void TakeBlock() {
    for (std::shared_ptr<char>& other : others_) {
      if (other.use_count() == 1) return block_.swap(other);
    }
    if (block_ != nullptr) others_.push_back(std::move(block_));
    block_.reset(new char[kBlock], std::default_delete<char[]>());
  }

  InputFile* const file_;
  std::shared_ptr<char> block_;
  std::vector<std::shared_ptr<char>> others_;  // that were held when the next one was needed
  size_t next_ = 0, end_ = 0;
  google::protobuf::int64 count_ = 0;
};

}  // namespace calib

#endif  // CALIB_FORMATS_INPUT_STREAM_H_
