// Many records in one file: each stands behind its length, as a varint. That is the framing of
// protobuf's own delimited streams, which C++, Java, Python and Go read and write.
//
//   std::ofstream file("checks.FocusCheckProto.binpb.log", std::ios::binary);
//   google::protobuf::io::OstreamOutputStream stream(&file);
//   zarvo::calibration::RecordLogWriter writer(&stream);
//   writer.Write(check);  // RecordLogWriter::Result::kWritten
//
//   zarvo::calibration::RecordLogReader reader(&stream);  // an IstreamInputStream
//   while ((result = reader.Read(&check)) == RecordLogReader::Result::kRecord) ...
//   // RecordLogReader::Result::kEnd, unless the log is torn or damaged
//
// Both take a class of calibration.pb.h, whose own calls they make, or any Message&. Reading is
// strict: nothing that is cut off passes for a record or for the end of a log. The framing has no
// checksum, though: a record whose bytes were altered is found only where they are no record.
//
// Nothing here throws, nor is anything here thrown through that cannot go on: only memory that runs
// out (std::bad_alloc) and what a stream throws reach the caller. All of it is inline; the library
// exports nothing for it.
#ifndef ZARVO_CALIBRATION_RECORD_LOG_H_
#define ZARVO_CALIBRATION_RECORD_LOG_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream.h>
#include <google/protobuf/stubs/common.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace zarvo {
namespace calibration {

// Reads a log from a stream, which must outlive it. Holds memory for the largest record so far that
// did not lie in one of the stream's blocks, and no more than the stream had bytes for, whatever a
// length announces.
class RecordLogReader {
 public:
  enum class Result {
    kRecord,      // the next record
    kIncomplete,  // the next record; required fields of it are not set
    kMalformed,   // the next record's bytes are all there, but are no record of this type
    // Behind these nothing more can be read, and each further call returns the same.
    kEnd,      // the stream ended where a record would begin
    kTorn,     // the stream ended within a record or its length, as when a writer was stopped
    kTooLong,  // the next record announces more bytes than it may have
    kDamaged   // no record's length begins with what is there; or a call was left by an exception
  };

  // Refuses records of more than `most_bytes`. A stream that fails is one that ends: where that is
  // possible, ask it (FileInputStream::GetErrno(), the istream's bad()).
  explicit RecordLogReader(::google::protobuf::io::ZeroCopyInputStream* stream,
                           int most_bytes = INT_MAX)
      : stream_(stream), most_bytes_(most_bytes) {}

  // Gives back to the stream what it had of it and did not use.
  ~RecordLogReader() {
    if (next_ != block_end_) stream_->BackUp(static_cast<int>(block_end_ - next_));
  }

  RecordLogReader(const RecordLogReader&) = delete;
  RecordLogReader& operator=(const RecordLogReader&) = delete;

  // Reads the next record into *record, which keeps its memory. With kMalformed it holds what came
  // ahead of what is wrong, with the results that are final what it held.
  template <class Record>
  Result Read(Record* record) {
    const Result result = Next();
    if (result != Result::kRecord) return result;
    if (!Parse(record)) return Result::kMalformed;
    return record->IsInitialized() ? Result::kRecord : Result::kIncomplete;
  }

  // Goes to the next record without parsing it: kRecord, or a result that is final. data() and
  // size() are its bytes, which stay until the next call.
  Result Next() {
    if (final_ != Result::kRecord) return final_;
    begin_ = offset_;
    final_ = Result::kDamaged;  // stays, if an exception leaves from here on
    std::uint32_t length = 0;
    const Result result = ReadLength(&length);
    if (result != Result::kRecord) return final_ = result;
    if (length > static_cast<std::uint32_t>(most_bytes_)) return final_ = Result::kTooLong;
    size_ = length;
    if (!Collect()) return final_ = Result::kTorn;
    return final_ = Result::kRecord;
  }
  const char* data() const { return data_; }
  int size() const { return static_cast<int>(size_); }

  // Parses the bytes of the record that Next() went to. Required fields may be missing.
  template <class Record>
  bool Parse(Record* record) const {
#if GOOGLE_PROTOBUF_VERSION < 3002000
    // Behind 64 MiB these run-times stop unless told otherwise.
    ::google::protobuf::io::CodedInputStream input(reinterpret_cast<const unsigned char*>(data_),
                                                   size());
    input.SetTotalBytesLimit(INT_MAX, -1);
    record->Clear();
    return record->MergePartialFromCodedStream(&input) && input.ConsumedEntireMessage();
#else
    return record->ParsePartialFromArray(data_, size());
#endif
  }

  // Where the latest record begins, its length included, or with a result that is final what is no
  // record; and where the latest record ends. In bytes from where the reader began.
  std::int64_t begin() const { return begin_; }
  std::int64_t end() const { return offset_; }

 private:
  // Makes *next_ a byte of the stream. False if there is none.
  bool Fill() {
    const void* block;
    int size = 0;
    while (next_ == block_end_) {
      next_ = block_end_ = nullptr;
      if (!stream_->Next(&block, &size)) return false;
      next_ = static_cast<const char*>(block);
      block_end_ = next_ + size;
    }
    return true;
  }

  Result ReadLength(std::uint32_t* length) {
    constexpr int kMostBits = 31;
    for (int shift = 0; shift < kMostBits; shift += 7) {
      if (!Fill()) return shift == 0 ? Result::kEnd : Result::kTorn;
      const std::uint32_t byte = static_cast<unsigned char>(*next_++);
      ++offset_;
      if (shift == 28 && byte > 7) return Result::kDamaged;  // of a longer varint, or beyond 2 GiB
      *length |= (byte & 0x7f) << shift;
      if (byte < 0x80) break;
    }
    return Result::kRecord;
  }

  // Makes data_ the next size_ bytes: where they are, or in a copy where they lie in several
  // blocks.
  bool Collect() {
    buffer_.clear();
    std::size_t left = size_;
    while (left > 0) {
      if (!Fill()) return false;
      const std::size_t there = static_cast<std::size_t>(block_end_ - next_);
      const std::size_t taken = there < left ? there : left;
      if (taken == size_) {
        data_ = next_;
      } else {
        buffer_.insert(buffer_.end(), next_, next_ + taken);
        data_ = buffer_.data();
      }
      next_ += taken;
      offset_ += static_cast<std::int64_t>(taken);
      left -= taken;
    }
    return true;
  }

  ::google::protobuf::io::ZeroCopyInputStream* const stream_;
  const int most_bytes_;
  Result final_ = Result::kRecord;
  const char* next_ = nullptr;  // of the stream's block
  const char* block_end_ = nullptr;
  std::int64_t begin_ = 0;
  std::int64_t offset_ = 0;
  const char* data_ = "";
  std::size_t size_ = 0;
  std::vector<char> buffer_;
};

// Writes a log to a stream, which must outlive it. Holds memory for the largest record so far.
// Whether what the stream took has reached the file, the stream knows: see its Flush() and Close().
class RecordLogWriter {
 public:
  enum class Result {
    kWritten,
    // Nothing of the record was written, and others can be.
    kIncomplete,  // required fields of it are not set
    kTooLarge,    // it takes 2 GiB or more
    // Part of the record may have been written, and each further call returns the same.
    kFailed  // the stream takes no more; or a call was left by an exception that it threw
  };

  explicit RecordLogWriter(::google::protobuf::io::ZeroCopyOutputStream* stream)
      : stream_(stream) {}

  RecordLogWriter(const RecordLogWriter&) = delete;
  RecordLogWriter& operator=(const RecordLogWriter&) = delete;

  // Hands the record and its length to the stream.
  template <class Record>
  Result Write(const Record& record) {
    if (failed_) return Result::kFailed;
    if (!record.IsInitialized()) return Result::kIncomplete;
#if GOOGLE_PROTOBUF_VERSION < 3002000
    const int announced = record.ByteSize();
    if (announced < 0) return Result::kTooLarge;
    const std::size_t size = static_cast<std::size_t>(announced);
#else
    const std::size_t size = record.ByteSizeLong();
    if (size > INT_MAX) return Result::kTooLarge;
#endif
    if (buffer_.size() < size) buffer_.resize(size);
    record.SerializeWithCachedSizesToArray(buffer_.data());
    return WriteBytes(buffer_.data(), size);
  }

  // The same of a record that is encoded already, which is not looked at.
  Result WriteBytes(const void* data, std::size_t size) {
    if (failed_) return Result::kFailed;
    if (size > INT_MAX) return Result::kTooLarge;
    unsigned char length[5];
    std::size_t count = 0;
    for (std::size_t rest = size; count == 0 || rest > 0; rest >>= 7) {
      length[count++] = static_cast<unsigned char>(rest < 0x80 ? rest : (rest & 0x7f) | 0x80);
    }
    failed_ = true;  // stays, if an exception leaves from here on
    failed_ = !Copy(length, count) || !Copy(static_cast<const unsigned char*>(data), size);
    return failed_ ? Result::kFailed : Result::kWritten;
  }

 private:
  bool Copy(const unsigned char* data, std::size_t size) {
    while (size > 0) {
      void* block;
      int room;
      if (!stream_->Next(&block, &room)) return false;
      const std::size_t there = static_cast<std::size_t>(room);
      const std::size_t copied = there < size ? there : size;
      std::memcpy(block, data, copied);
      if (copied < there) stream_->BackUp(static_cast<int>(there - copied));
      data += copied;
      size -= copied;
    }
    return true;
  }

  ::google::protobuf::io::ZeroCopyOutputStream* const stream_;
  bool failed_ = false;
  std::vector<unsigned char> buffer_;
};

}  // namespace calibration
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_RECORD_LOG_H_
