// Streams that fail after each byte, through every call that takes one: input that breaks off with
// an error is never taken for a record that ends, and output that did not arrive is never reported
// as written.
//
// That input which merely ends is judged rightly is the truncation tests' matter, and that memory
// may run out is the allocation tests'.
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <istream>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/robustness/agreement.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"
#include "tests/support/strict_reader.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::LogSilencer;
using ::google::protobuf::Message;
using ::google::protobuf::io::CodedInputStream;
using ::google::protobuf::io::ZeroCopyInputStream;

template <class T>
class FaultTest : public ::testing::Test {
 protected:
  FaultTest() : full_(SmallFullRecord(T::descriptor()->name())) {
    bytes_ = full_->SerializeAsString();
  }

  const T& full() const { return static_cast<const T&>(*full_); }
  const Message& message() const { return *full_; }

  std::string bytes_;

 private:
  std::unique_ptr<Message> full_;
  LogSilencer no_remarks_on_errors_;
};
TYPED_TEST_SUITE(FaultTest, AllRecords);

// --- Input ---------------------------------------------------------------------------------------

enum class Fault { kReported, kThrown };

// An istream's buffer over `bytes` that fails behind them.
class FailingSource : public std::streambuf {
 public:
  FailingSource(std::string bytes, Fault fault) : bytes_(std::move(bytes)), fault_(fault) {
    setg(&bytes_[0], &bytes_[0], &bytes_[0] + bytes_.size());
  }

 protected:
  int_type underflow() override {
    if (fault_ == Fault::kThrown) throw std::runtime_error("the device is gone");
    return traits_type::eof();
  }
  // A read that comes up short is an ordinary end to an istream: an error must be thrown at once.
  std::streamsize xsgetn(char* target, std::streamsize count) override {
    const std::streamsize rest = egptr() - gptr();
    if (rest < count && fault_ == Fault::kThrown) underflow();
    return std::streambuf::xsgetn(target, std::min(rest, count));
  }

 private:
  std::string bytes_;
  Fault fault_;
};

// Calls parse(record) on the class and on Message&, and expects the outcome of both.
template <class T, class Parse>
void ExpectBoth(bool expected, Parse parse) {
  T on_class, on_message;
  EXPECT_EQ(parse(&on_class), expected) << "on the class";
  EXPECT_EQ(parse(static_cast<Message*>(&on_message)), expected) << "on Message&";
}

TYPED_TEST(FaultTest, AnIstreamThatBreaksOffIsNoRecord) {
  for (size_t size = 0; size <= this->bytes_.size(); ++size) {
    SCOPED_TRACE("breaks off after " + std::to_string(size));
    const std::string prefix = this->bytes_.substr(0, size);
    ExpectBoth<TypeParam>(false, [&](auto* record) {
      FailingSource source(prefix, Fault::kThrown);
      std::istream stream(&source);
      return record->ParseFromIstream(&stream);
    });
    ExpectBoth<TypeParam>(false, [&](auto* record) {
      FailingSource source(prefix, Fault::kThrown);
      std::istream stream(&source);
      return record->ParsePartialFromIstream(&stream);
    });
    // The same buffer at an ordinary end.
    ExpectBoth<TypeParam>(Judge(TypeParam::descriptor()->name(), prefix).accepted,
                          [&](auto* record) {
                            FailingSource source(prefix, Fault::kReported);
                            std::istream stream(&source);
                            return record->ParsePartialFromIstream(&stream);
                          });
    if (this->HasFailure()) return;
  }
}

// What a process at the other end of a connection has sent before it went: in packets, one a read,
// if it closed the connection; in one piece with an error behind it if it died.
class Connection {
 public:
  enum End { kClosed, kBroken };

  Connection(const std::string& bytes, End end) {
    const int type = end == kClosed ? SOCK_SEQPACKET : SOCK_STREAM;
    Require(socketpair(AF_UNIX, type, 0, ends_) == 0);
    // Of no size that the bytes or the run-time's buffer are a multiple of.
    const size_t packet_size = end == kClosed ? 97 : bytes.size();
    for (size_t i = 0; i < bytes.size(); i += packet_size) Send(1, bytes.substr(i, packet_size));
    // What the other side has not read when it closes makes the connection count as broken.
    if (end == kBroken) Send(0, "unread");
    close(ends_[1]);
  }
  ~Connection() { close(ends_[0]); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  int descriptor() const { return ends_[0]; }

 private:
  void Send(int end, const std::string& bytes) {
    Require(write(ends_[end], bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
  }
  static void Require(bool ok) {
    if (!ok) throw std::runtime_error("a local connection failed");
  }

  int ends_[2];
};

TYPED_TEST(FaultTest, AFileThatBreaksOffIsNoRecord) {
  for (size_t size = 0; size <= this->bytes_.size(); ++size) {
    SCOPED_TRACE("breaks off after " + std::to_string(size));
    const std::string prefix = this->bytes_.substr(0, size);
    ExpectBoth<TypeParam>(Judge(TypeParam::descriptor()->name(), prefix).accepted,
                          [&](auto* record) {
                            const Connection connection(prefix, Connection::kClosed);
                            return record->ParsePartialFromFileDescriptor(connection.descriptor());
                          });
    ExpectBoth<TypeParam>(false, [&](auto* record) {
      const Connection connection(prefix, Connection::kBroken);
      return record->ParsePartialFromFileDescriptor(connection.descriptor());
    });
    ExpectBoth<TypeParam>(false, [&](auto* record) {
      const Connection connection(prefix, Connection::kBroken);
      return record->ParseFromFileDescriptor(connection.descriptor());
    });
    if (this->HasFailure()) return;
  }
}

// A stream over `bytes` whose blocks are of `block` bytes, every second one of none, and which
// fails `room` bytes in.
class UnevenStream : public ZeroCopyInputStream {
 public:
  UnevenStream(const std::string& bytes, int block, size_t room)
      : bytes_(bytes), block_(block), room_(static_cast<int>(room)) {}

  bool Next(const void** data, int* size) override {
    empty_ = !empty_;
    *data = bytes_.data() + position_;
    *size = empty_ ? 0 : std::min(block_, room_ - position_);
    position_ += *size;
    return empty_ || *size > 0;
  }
  void BackUp(int count) override { position_ -= count; }
  bool Skip(int count) override {
    position_ = std::min(position_ + count, room_);
    return position_ < room_;
  }
  ::google::protobuf::int64 ByteCount() const override { return position_; }

 private:
  const std::string& bytes_;
  int block_;
  int room_;
  int position_ = 0;
  bool empty_ = false;
};

TYPED_TEST(FaultTest, AStreamThatFailsHalfwayEndsTheInputThere) {
  const std::string& name = TypeParam::descriptor()->name();
  const int whole = static_cast<int>(this->bytes_.size());
  for (size_t size = 0; size <= this->bytes_.size(); ++size) {
    SCOPED_TRACE("fails after " + std::to_string(size));
    const bool accepted = Judge(name, this->bytes_.substr(0, size)).accepted;
    for (const int block : {1, 5, 64}) {
      const auto open = [&] { return UnevenStream(this->bytes_, block, size); };
      ExpectBoth<TypeParam>(accepted, [&](auto* record) {
        UnevenStream stream = open();
        return record->ParsePartialFromZeroCopyStream(&stream);
      });
      // A bound that the stream does not reach.
      ExpectBoth<TypeParam>(size == this->bytes_.size(), [&](auto* record) {
        UnevenStream stream = open();
        return record->ParsePartialFromBoundedZeroCopyStream(&stream, whole);
      });
      ExpectBoth<TypeParam>(accepted, [&](auto* record) {
        UnevenStream stream = open();
        CodedInputStream input(&stream);
        return record->MergePartialFromCodedStream(&input) && input.ConsumedEntireMessage();
      });
      // A limit that it does not reach.
      ExpectBoth<TypeParam>(size == this->bytes_.size(), [&](auto* record) {
        UnevenStream stream = open();
        CodedInputStream input(&stream);
        const CodedInputStream::Limit limit = input.PushLimit(whole);
        return record->MergePartialFromCodedStream(&input) &&
               input.CheckEntireMessageConsumedAndPopLimit(limit) &&
               input.CurrentPosition() == whole;
      });
    }
    if (this->HasFailure()) return;
  }
}

// --- Output --------------------------------------------------------------------------------------

// An ostream's buffer that takes `room` bytes, and then fails.
class FailingSink : public std::streambuf {
 public:
  FailingSink(size_t room, Fault fault) : room_(room), fault_(fault) {}

  const std::string& written() const { return written_; }

 protected:
  int_type overflow(int_type byte) override {
    if (written_.size() == room_) {
      if (fault_ == Fault::kThrown) throw std::runtime_error("the disk is full");
      return traits_type::eof();
    }
    written_.push_back(traits_type::to_char_type(byte));
    return byte;
  }

 private:
  size_t room_;
  Fault fault_;
  std::string written_;
};

// Whether the call is declared by the run-time: true of calls that the class merely inherits.
template <class Owner, class... Arguments>
constexpr bool IsOfRunTime(bool (Owner::*)(Arguments...) const) {
  return std::is_same<Owner, Message>::value ||
         std::is_same<Owner, ::google::protobuf::MessageLite>::value;
}

struct Outcome {
  bool reported_written;
  std::string arrived;
};

// Calls write(record, room) on the class and on Message&, for a target that has room for the first
// `room` of the bytes.
//
// Some calls of the run-time hand over what they have held back in a destructor, which cannot tell
// that it failed. Whether the one in question does is seen from a message that is not ours and
// holds the same, and which on 3.0 tells of large ones by a fatal error; whatever call the class
// brings itself must tell.
template <class T, class Write>
void ExpectFailureIsTold(const T& record, const std::string& bytes, size_t room,
                         bool inherited_by_class, Write write) {
  const std::unique_ptr<Message> other = DynamicTwin(record);
  bool run_time_tells = true;
  try {
    run_time_tells = !write(static_cast<const Message&>(*other), room).reported_written;
  } catch (const ::google::protobuf::FatalException&) {
  }

  const bool fits = room == bytes.size();
  const Outcome on_class = write(record, room);
  EXPECT_EQ(on_class.reported_written, fits || (inherited_by_class && !run_time_tells))
      << "on the class";
  EXPECT_EQ(on_class.arrived, bytes.substr(0, room)) << "on the class";
  const Outcome on_message = write(static_cast<const Message&>(record), room);
  EXPECT_EQ(on_message.reported_written, fits || !run_time_tells) << "on Message&";
  EXPECT_EQ(on_message.arrived, bytes.substr(0, room)) << "on Message&";
}

// For an ostream that has room for the first `room` of the bytes.
template <class T>
void ExpectOstreamFailureIsTold(const T& record, const std::string& bytes, size_t room) {
  SCOPED_TRACE("room for " + std::to_string(room) + " of " + std::to_string(bytes.size()));
  for (const Fault fault : {Fault::kReported, Fault::kThrown}) {
    const auto expect = [&](bool inherited, auto write) {
      ExpectFailureIsTold(record, bytes, room, inherited,
                          [&](const auto& written, size_t space) -> Outcome {
                            FailingSink sink(space, fault);
                            std::ostream stream(&sink);
                            const bool ok = write(written, &stream);
                            return {ok, sink.written()};
                          });
    };
    expect(IsOfRunTime(&T::SerializeToOstream),
           [](const auto& r, std::ostream* out) { return r.SerializeToOstream(out); });
    expect(IsOfRunTime(&T::SerializePartialToOstream),
           [](const auto& r, std::ostream* out) { return r.SerializePartialToOstream(out); });
  }
}

TYPED_TEST(FaultTest, AnOstreamThatFailsIsReported) {
  for (size_t room = 0; room <= this->bytes_.size(); ++room) {
    ExpectOstreamFailureIsTold(this->full(), this->bytes_, room);
    if (this->HasFailure()) return;
  }
}

// Up to 64 KiB are written at once, more in blocks.
TYPED_TEST(FaultTest, AnOstreamThatFailsIsReportedForLargeRecordsToo) {
  constexpr size_t kAtOnce = 1 << 16;
  for (const size_t size : {kAtOnce, kAtOnce + 1, 3 * kAtOnce + 1000}) {
    TypeParam record(this->full());
    // An unknown text makes up the rest; its tag and its length take five bytes.
    record.mutable_unknown_fields()->AddLengthDelimited(100)->assign(size - this->bytes_.size() - 5,
                                                                     'x');
    const std::string bytes = record.SerializeAsString();
    ASSERT_EQ(bytes.size(), size);
    for (const size_t room : {size_t{0}, size_t{1}, kAtOnce - 1, kAtOnce, size - 1, size}) {
      ExpectOstreamFailureIsTold(record, bytes, room);
      if (this->HasFailure()) return;
    }
  }
}

// While it lives, no file of this process grows beyond `size` bytes: a write that would take it
// there is cut short, the next one fails.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(size_t size) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    rlimit limit = before_;
    limit.rlim_cur = size;
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) throw std::runtime_error("no limit of file sizes");
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_;
  void (*handler_)(int);
};

TYPED_TEST(FaultTest, AFileThatTakesNoMoreIsReported) {
  using T = TypeParam;
  for (size_t room = 0; room <= this->bytes_.size(); ++room) {
    SCOPED_TRACE("room for " + std::to_string(room));
    const auto expect = [&](bool inherited, auto write) {
      ExpectFailureIsTold(this->full(), this->bytes_, room, inherited,
                          [&](const auto& record, size_t space) -> Outcome {
                            const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
                                std::tmpfile(), &std::fclose);
                            if (file == nullptr) throw std::runtime_error("no temporary file");
                            const int descriptor = fileno(file.get());
                            bool ok;
                            {
                              const FileSizeLimit limit(space);
                              ok = write(record, descriptor);
                            }
                            std::string arrived(this->bytes_.size(), '\0');
                            const ssize_t size = pread(descriptor, &arrived[0], arrived.size(), 0);
                            arrived.resize(static_cast<size_t>(size));
                            return {ok, arrived};
                          });
    };
    expect(IsOfRunTime(&T::SerializeToFileDescriptor),
           [](const auto& r, int file) { return r.SerializeToFileDescriptor(file); });
    expect(IsOfRunTime(&T::SerializePartialToFileDescriptor),
           [](const auto& r, int file) { return r.SerializePartialToFileDescriptor(file); });
    if (this->HasFailure()) return;
  }
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
