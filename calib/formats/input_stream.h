// A file as a stream of the run-time's.
#ifndef CALIB_FORMATS_INPUT_STREAM_H_
#define CALIB_FORMATS_INPUT_STREAM_H_

#include <google/protobuf/io/zero_copy_stream.h>
#include <google/protobuf/stubs/common.h>

#include <vector>

#include "calib/console/input_file.h"

namespace calib {

// Reads a file in blocks; throws Failure where it cannot be read. `file` must outlive it.
class InputStream : public google::protobuf::io::ZeroCopyInputStream {
 public:
  explicit InputStream(InputFile* file) : file_(file), block_(size_t{1} << 18) {}

  bool Next(const void** data, int* size) override {
    if (next_ == end_) {
      next_ = 0;
      end_ = file_->Read(block_.data(), block_.size());
      if (end_ == 0) return false;
    }
    *data = &block_[next_];
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

 private:
  InputFile* const file_;
  std::vector<char> block_;
  size_t next_ = 0, end_ = 0;
  google::protobuf::int64 count_ = 0;
};

}  // namespace calib

#endif  // CALIB_FORMATS_INPUT_STREAM_H_
