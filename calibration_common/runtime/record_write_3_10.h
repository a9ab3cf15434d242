// How a record is written by code that only knows it as a Message&: from 3.10 on the run-time hands
// it an EpsCopyOutputStream. Inline, so that the library need not export it.
#ifndef ZARVO_CALIBRATION_RUNTIME_RECORD_WRITE_3_10_H_
#define ZARVO_CALIBRATION_RUNTIME_RECORD_WRITE_3_10_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream.h>

#include <memory>

#include "calibration_common/runtime/record_3_10.h"

namespace zarvo {
namespace calibration_internal {

using ::google::protobuf::int64;

// Lets a CodedOutputStream write into an EpsCopyOutputStream, a block at a time; strings that the
// coded stream may alias are handed on without the detour.
class EpsCopySink final : public ZeroCopyOutputStream {
 public:
  EpsCopySink(uint8* target, EpsCopyOutputStream* stream)
      : target_(target), stream_(stream), used_(0), flushed_(0), block_(new uint8[kBlockSize]) {}

  bool Next(void** data, int* size) override {
    Flush();
    *data = block_.get();
    *size = used_ = kBlockSize;
    return !stream_->HadError();
  }
  void BackUp(int count) override { used_ -= count; }
  int64 ByteCount() const override { return flushed_ + used_; }
  bool AllowsAliasing() const override { return true; }
  bool WriteAliasedRaw(const void* data, int size) override {
    Flush();
    target_ = stream_->WriteRawMaybeAliased(data, size, target_);
    flushed_ += size;
    return !stream_->HadError();
  }

  // Hands over what is still held; returns where the EpsCopyOutputStream now stands.
  uint8* Flush() {
    target_ = stream_->WriteRaw(block_.get(), used_, target_);
    flushed_ += used_;
    used_ = 0;
    return target_;
  }

  static const int kBlockSize = 1 << 16;

 private:
  uint8* target_;
  EpsCopyOutputStream* stream_;
  int used_;
  int64 flushed_;
  ::std::unique_ptr<uint8[]> block_;
};

inline uint8* Record::_InternalSerialize(uint8* target, EpsCopyOutputStream* stream) const {
  uint8 small[1024];
  const int size = GetCachedSize();
  if (static_cast<size_t>(size) <= sizeof(small)) {
    SerializeWithCachedSizesToArray(small);
    return stream->WriteRaw(small, size, target);
  }
  EpsCopySink sink(target, stream);
  {
    CodedOutputStream output(&sink);
    output.EnableAliasing(true);
    SerializeWithCachedSizes(&output);
  }
  return sink.Flush();
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RUNTIME_RECORD_WRITE_3_10_H_
