// Logs of records: what is written is read back through any blocks, nothing that is cut off or
// damaged passes, and every failure of a stream or of memory is told.
#include "calibration_common/record_log.h"

#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "calibration_common/calibration.pb.h"
#include "tests/support/allocations.h"
#include "tests/support/random_record.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;
using ::google::protobuf::io::ArrayInputStream;
using ::google::protobuf::io::ZeroCopyOutputStream;
using Read = RecordLogReader::Result;
using Written = RecordLogWriter::Result;

constexpr int kBlocks[] = {1, 2, 7, 64, 1 << 20};

// --- Streams -------------------------------------------------------------------------------------

// Takes `room` bytes in blocks, and fails behind them, or throws.
class BoundedOutput : public ZeroCopyOutputStream {
 public:
  enum Fault { kReported, kThrown };
  explicit BoundedOutput(size_t room, int block = 7, Fault fault = kReported)
      : room_(room), block_(static_cast<size_t>(block)), fault_(fault) {
    bytes_.reserve(100000);  // so that only what is tested allocates
  }

  bool Next(void** data, int* size) override {
    const size_t there = std::min(block_, room_ - bytes_.size());
    if (there == 0 && fault_ == kThrown) throw std::runtime_error("the device is gone");
    if (there == 0) return false;
    bytes_.resize(bytes_.size() + there, '?');
    *data = &bytes_[bytes_.size() - there];
    *size = static_cast<int>(there);
    return true;
  }
  void BackUp(int count) override { bytes_.resize(bytes_.size() - static_cast<size_t>(count)); }
  ::google::protobuf::int64 ByteCount() const override {
    return static_cast<::google::protobuf::int64>(bytes_.size());
  }
  const std::string& bytes() const { return bytes_; }

 private:
  size_t room_, block_;
  Fault fault_;
  std::string bytes_;
};

// --- Logs ----------------------------------------------------------------------------------------

FocusCheckProto Check(int bins) {
  FocusCheckProto check;
  check.set_name("spot " + std::to_string(bins));
  for (int i = 0; i < bins; ++i) check.add_bins(0.5f * static_cast<float>(i));
  return check;
}

// Records of 0, 8, 310 and 8 bytes, and where each begins; the last place is the end.
struct Log {
  std::vector<FocusCheckProto> records = {FocusCheckProto(), Check(0), Check(60), Check(0)};
  std::vector<size_t> begins = {0};
  std::string bytes;

  Log() {
    for (const FocusCheckProto& record : records) {
      const std::string encoded = record.SerializeAsString();
      size_t rest = encoded.size();
      for (; rest >= 0x80; rest >>= 7) bytes += static_cast<char>((rest & 0x7f) | 0x80);
      bytes += static_cast<char>(rest);
      bytes += encoded;
      begins.push_back(bytes.size());
    }
  }
};

// Calls test(reader) with a reader of the bytes for each size of blocks.
template <class Test>
void WithReaders(const std::string& bytes, Test test) {
  for (const int block : kBlocks) {
    SCOPED_TRACE("blocks of " + std::to_string(block));
    ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()), block);
    RecordLogReader reader(&stream);
    test(&reader);
  }
}

TEST(RecordLogTest, WritesLengthsAheadOfRecords) {
  const Log log;
  for (const int block : kBlocks) {
    BoundedOutput stream(100000, block);
    RecordLogWriter writer(&stream);
    for (const FocusCheckProto& record : log.records) {
      ASSERT_EQ(writer.Write(record), Written::kWritten);
    }
    EXPECT_EQ(stream.bytes(), log.bytes);
  }
}

TEST(RecordLogTest, ReadsEveryClassThroughItselfAndThroughMessage) {
  for (const int block : kBlocks) {
    ForEachRecord([&](auto record) {
      using T = typename decltype(record)::Type;
      T full;
      FillFully(&full);
      const Message& message = full;
      BoundedOutput output(100000, block);
      RecordLogWriter writer(&output);
      ASSERT_EQ(writer.Write(full), Written::kWritten);
      ASSERT_EQ(writer.Write(message), Written::kWritten);
      ArrayInputStream input(output.bytes().data(), static_cast<int>(output.bytes().size()), block);
      RecordLogReader reader(&input);
      for (int i = 0; i < 2; ++i) {
        T read;
        Message* const as_message = &read;
        ASSERT_EQ(i == 0 ? reader.Read(as_message) : reader.Read(&read), Read::kRecord);
        EXPECT_TRUE(EqualByReflection(read, full));
      }
      T untouched(full);
      EXPECT_EQ(reader.Read(&untouched), Read::kEnd);
      EXPECT_EQ(reader.Read(&untouched), Read::kEnd);
      EXPECT_TRUE(EqualByReflection(untouched, full));
    });
  }
}

TEST(RecordLogTest, TellsWhereRecordsAreAndWhatTheyAreMadeOf) {
  const Log log;
  WithReaders(log.bytes, [&](RecordLogReader* reader) {
    for (size_t i = 0; i < log.records.size(); ++i) {
      ASSERT_EQ(reader->Next(), Read::kRecord);
      EXPECT_EQ(reader->begin(), static_cast<std::int64_t>(log.begins[i]));
      EXPECT_EQ(reader->end(), static_cast<std::int64_t>(log.begins[i + 1]));
      EXPECT_EQ(std::string(reader->data(), static_cast<size_t>(reader->size())),
                log.records[i].SerializeAsString());
      FocusCheckProto parsed;
      EXPECT_TRUE(reader->Parse(&parsed));
      EXPECT_TRUE(EqualByReflection(parsed, log.records[i]));
    }
    EXPECT_EQ(reader->Next(), Read::kEnd);
  });
}

TEST(RecordLogTest, GivesBackWhatItDidNotUse) {
  const Log log;
  for (const int block : kBlocks) {
    ArrayInputStream stream(log.bytes.data(), static_cast<int>(log.bytes.size()), block);
    for (size_t i = 0; i < log.records.size(); ++i) {
      RecordLogReader reader(&stream);
      ASSERT_EQ(reader.Next(), Read::kRecord);
      EXPECT_EQ(reader.begin(), 0);
      EXPECT_EQ(reader.end(), static_cast<std::int64_t>(log.begins[i + 1] - log.begins[i]));
    }
    EXPECT_EQ(stream.ByteCount(), static_cast<std::int64_t>(log.bytes.size()));
  }
}

// --- What is cut off or damaged ------------------------------------------------------------------

TEST(RecordLogTest, ALogThatIsCutOffEndsOnlyBetweenRecords) {
  const Log log;
  for (size_t size = 0; size <= log.bytes.size(); ++size) {
    SCOPED_TRACE("cut off behind " + std::to_string(size));
    const size_t whole = static_cast<size_t>(
        std::upper_bound(log.begins.begin(), log.begins.end(), size) - log.begins.begin() - 1);
    const bool between = log.begins[whole] == size;
    WithReaders(log.bytes.substr(0, size), [&](RecordLogReader* reader) {
      FocusCheckProto record;
      for (size_t i = 0; i < whole; ++i) {
        ASSERT_EQ(reader->Read(&record), Read::kRecord);
        EXPECT_TRUE(EqualByReflection(record, log.records[i]));
      }
      for (int call = 0; call < 2; ++call) {
        EXPECT_EQ(reader->Read(&record), between ? Read::kEnd : Read::kTorn);
        EXPECT_EQ(reader->begin(), static_cast<std::int64_t>(log.begins[whole]));
      }
    });
  }
}

TEST(RecordLogTest, TakesLengthsOfFiveBytesAtMost) {
  const struct {
    std::string bytes;
    Read result;
  } cases[] = {
      {std::string("\0", 1), Read::kRecord},
      {std::string("\x80\0", 2), Read::kRecord},
      {std::string("\x80\x80\x80\x80\0", 5), Read::kRecord},
      {std::string("\x80\x80\x80\x80\x80\0", 6), Read::kDamaged},
      {"\xff\xff\xff\xff\x07", Read::kTorn},
      {"\xff\xff\xff\xff\x08", Read::kDamaged},
      {"\xff\xff\xff\xff\x0f", Read::kDamaged},
      {"\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01", Read::kDamaged},
      {"\x80", Read::kTorn},
      {"\x80\x80\x80\x80", Read::kTorn},
      {"\x01", Read::kTorn},
  };
  for (const auto& c : cases) {
    WithReaders(c.bytes, [&](RecordLogReader* reader) {
      EXPECT_EQ(reader->Next(), c.result) << ::testing::PrintToString(c.bytes);
      if (c.result == Read::kRecord) {
        EXPECT_EQ(reader->size(), 0);
        EXPECT_EQ(reader->Next(), Read::kEnd);
      } else {
        EXPECT_EQ(reader->Next(), c.result);
      }
    });
  }
}

TEST(RecordLogTest, RefusesRecordsThatAreLongerThanAsked) {
  const Log log;
  ArrayInputStream stream(log.bytes.data(), static_cast<int>(log.bytes.size()));
  RecordLogReader reader(&stream, static_cast<int>(log.records[2].SerializeAsString().size()) - 1);
  EXPECT_EQ(reader.Next(), Read::kRecord);
  EXPECT_EQ(reader.Next(), Read::kRecord);
  EXPECT_EQ(reader.Next(), Read::kTooLong);
  EXPECT_EQ(reader.Next(), Read::kTooLong);
  EXPECT_EQ(reader.begin(), static_cast<std::int64_t>(log.begins[2]));
}

// A length that lies takes no memory that the stream has no bytes for.
TEST(RecordLogTest, ALengthTakesNoMemory) {
  const std::string bytes = "\xff\xff\xff\xff\x07 and not much more";
  WithReaders(bytes, [&](RecordLogReader* reader) {
    const size_t before = AllocatedBytes();
    EXPECT_EQ(reader->Next(), Read::kTorn);
    EXPECT_LE(AllocatedBytes() - before, 10 * bytes.size());
  });
}

TEST(RecordLogTest, GoesOnBehindRecordsThatAreMalformedOrIncomplete) {
  CameraIntrinsics whole;
  FillFully(&whole);
  CameraIntrinsics incomplete(whole);
  incomplete.clear_cy();
  BoundedOutput stream(100000);
  RecordLogWriter writer(&stream);
  ASSERT_EQ(writer.Write(incomplete), Written::kIncomplete);
  ASSERT_EQ(stream.bytes(), "");
  for (const std::string& bytes : {incomplete.SerializePartialAsString(),
                                   std::string("\x09\x01\x02"), whole.SerializeAsString()}) {
    ASSERT_EQ(writer.WriteBytes(bytes.data(), bytes.size()), Written::kWritten);
  }
  WithReaders(stream.bytes(), [&](RecordLogReader* reader) {
    CameraIntrinsics read;
    EXPECT_EQ(reader->Read(&read), Read::kIncomplete);
    EXPECT_TRUE(EqualByReflection(read, incomplete));
    EXPECT_EQ(reader->Read(&read), Read::kMalformed);
    EXPECT_EQ(reader->Read(&read), Read::kRecord);
    EXPECT_TRUE(EqualByReflection(read, whole));
    EXPECT_EQ(reader->Read(&read), Read::kEnd);
  });
}

// --- What fails ----------------------------------------------------------------------------------

TEST(RecordLogTest, AStreamThatTakesNoMoreIsToldAndEndsTheLog) {
  const Log log;
  for (size_t room = 0; room < log.bytes.size(); ++room) {
    for (const auto fault : {BoundedOutput::kReported, BoundedOutput::kThrown}) {
      SCOPED_TRACE("room for " + std::to_string(room));
      BoundedOutput stream(room, 7, fault);
      RecordLogWriter writer(&stream);
      size_t written = 0;
      const auto write = [&] {
        try {
          return writer.Write(log.records[written]);
        } catch (const std::runtime_error&) {
          return Written::kFailed;
        }
      };
      while (write() == Written::kWritten) ++written;
      ASSERT_LT(written, log.records.size());
      EXPECT_GE(room, log.begins[written]);
      EXPECT_LT(room, log.begins[written + 1]);
      EXPECT_EQ(writer.Write(FocusCheckProto()), Written::kFailed);
      EXPECT_EQ(writer.WriteBytes("", 0), Written::kFailed);
      EXPECT_EQ(stream.bytes(), log.bytes.substr(0, room));
    }
  }
}

// A stream that throws in the middle of a record.
TEST(RecordLogTest, ALogWhoseStreamThrewIsDamaged) {
  class Throwing : public ArrayInputStream {
   public:
    using ArrayInputStream::ArrayInputStream;
    bool Next(const void** data, int* size) override {
      if (ArrayInputStream::Next(data, size)) return true;
      throw std::runtime_error("the device is gone");
    }
  };
  const Log log;
  Throwing stream(log.bytes.data(), static_cast<int>(log.bytes.size()) - 1, 7);
  RecordLogReader reader(&stream);
  FocusCheckProto record;
  for (int i = 0; i < 3; ++i) ASSERT_EQ(reader.Read(&record), Read::kRecord);
  EXPECT_THROW(reader.Read(&record), std::runtime_error);
  EXPECT_EQ(reader.Read(&record), Read::kDamaged);
}

// Stands for a record of any size.
struct Huge {
  size_t size;
  bool IsInitialized() const { return true; }
  int ByteSize() const { return size > INT_MAX ? -1 : static_cast<int>(size); }
  size_t ByteSizeLong() const { return size; }
  unsigned char* SerializeWithCachedSizesToArray(unsigned char*) const {
    throw std::logic_error("is too large to be written");
  }
};

TEST(RecordLogTest, RefusesToWriteWhatIsTooLarge) {
  BoundedOutput stream(10);
  RecordLogWriter writer(&stream);
  EXPECT_EQ(writer.Write(Huge{size_t{1} << 31}), Written::kTooLarge);
  EXPECT_EQ(writer.WriteBytes("", size_t{1} << 31), Written::kTooLarge);
  EXPECT_EQ(stream.bytes(), "");
  EXPECT_EQ(writer.Write(FocusCheckProto()), Written::kWritten);
  EXPECT_EQ(stream.bytes(), std::string(1, '\0'));
}

// Calls run() with its n-th allocation failing, for every n that it comes to. Returns their number.
int ForEachFailure(const std::function<void(long n)>& run) {
  run(LONG_MAX);  // makes what the run-time keeps for the process
  for (long n = 1;; ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    const long live = LiveBlocks();
    try {
      run(n);
      return static_cast<int>(n) - 1;
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(LiveBlocks(), live);
    }
  }
}

// Of a record that could not be buffered nothing is written, and it can be written after all.
TEST(RecordLogTest, MemoryThatRunsOutWhileWritingLeavesTheLogWhole) {
  const Log log;
  const FocusCheckProto& record = log.records[2];
  EXPECT_GT(ForEachFailure([&](long n) {
              BoundedOutput stream(100000);
              RecordLogWriter writer(&stream);
              try {
                const FailingAllocation failing(n, FailingAllocation::kOnce);
                writer.Write(record);
              } catch (const std::bad_alloc&) {
                EXPECT_EQ(stream.bytes(), "");
                EXPECT_EQ(writer.Write(record), Written::kWritten);
                EXPECT_EQ(stream.bytes(),
                          log.bytes.substr(log.begins[2], log.begins[3] - log.begins[2]));
                throw;
              }
            }),
            0);
}

// The records ahead are as they were, and what cannot be read is not passed over: a record that was
// whole in memory can be read again from where it is, and else the log counts as damaged.
TEST(RecordLogTest, MemoryThatRunsOutWhileReadingIsToldAndPassesOverNothing) {
  const Log log;
  for (const int block : kBlocks) {
    const int failures = ForEachFailure([&](long n) {
      ArrayInputStream stream(log.bytes.data(), static_cast<int>(log.bytes.size()), block);
      RecordLogReader reader(&stream);
      FocusCheckProto record;
      size_t read = 0;
      try {
        const FailingAllocation failing(n, FailingAllocation::kOnce);
        while (reader.Read(&record) == Read::kRecord) ++read;
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(reader.begin(), static_cast<std::int64_t>(log.begins[read]));
        if (reader.end() == static_cast<std::int64_t>(log.begins[read + 1])) {
          EXPECT_TRUE(reader.Parse(&record));
          EXPECT_TRUE(EqualByReflection(record, log.records[read]));
          EXPECT_EQ(reader.Next(), read + 1 == log.records.size() ? Read::kEnd : Read::kRecord);
        } else {
          EXPECT_EQ(reader.Next(), Read::kDamaged);
        }
        throw;
      }
      EXPECT_EQ(read, log.records.size());
    });
    EXPECT_GT(failures, 0);
  }
}

// A program that reads or writes one record after the other takes no memory once it has had one of
// the shape.
TEST(RecordLogTest, RecordsOfOneShapeTakeNoMemory) {
  const Log log;
  std::string bytes;
  for (int i = 0; i < 3; ++i) {
    bytes += log.bytes.substr(log.begins[2], log.begins[3] - log.begins[2]);
  }
  WithReaders(bytes, [&](RecordLogReader* reader) {
    FocusCheckProto record;
    BoundedOutput stream(100000);
    RecordLogWriter writer(&stream);
    long before = 0;
    for (int i = 0; i < 3; ++i) {
      if (i == 2) before = Allocations();
      ASSERT_EQ(reader->Read(&record), Read::kRecord);
      ASSERT_EQ(writer.Write(record), Written::kWritten);
    }
    EXPECT_EQ(Allocations(), before);
  });
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
