#include "calib/formats/log_appender.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/input_file.h"
#include "calib/console/mapped_file.h"
#include "calib/console/system_error.h"
#include "calib/fields/unknown.h"
#include "calib/formats/binary_codec.h"
#include "calib/formats/codec.h"
#include "calib/formats/input_stream.h"
#include "calib/formats/log_recovery.h"
#include "calibration_common/record_log.h"

namespace calib {

using Result = zarvo::calibration::RecordLogReader::Result;

namespace {

constexpr char kRecover[] = "'calib log recover' saves what is whole.";

int Open(const std::string& path, const std::string& name, bool* made) {
  *made = true;
  int fd = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0 && errno == EEXIST) {
    *made = false;
    fd = open(path.c_str(), O_RDWR | O_CLOEXEC);
  }
  if (fd < 0) FailForSystem(name, "cannot be opened", errno);
  return fd;
}

// The name of a new file is kept in its folder.
void SyncFolderOf(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  const OpenFile file(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (file.fd() >= 0) fsync(file.fd());
}

// Whether the bytes are a record of the type, or of a newer schema's: no field of the record itself
// has a value of another kind than the field's.
bool MayBe(const google::protobuf::Descriptor* type, const std::string& bytes) {
  const auto record = DecodeIfFits(Format::kBinary, type, bytes);
  if (record == nullptr) return false;
  for (const UnknownField& unknown : OwnUnknownFields(*record, "")) {
    if (type->FindFieldByNumber(unknown.number) != nullptr) return false;
  }
  return true;
}

}  // namespace

struct LogAppender::Scan {
  Result result;
  int64_t records = 0, empty_at_end = 0;
  int64_t last_begin = 0, empty_begin = 0, end = 0;  // of the last record, empty ones, all
};

LogAppender::LogAppender(const std::string& path, const google::protobuf::Descriptor* type,
                         bool keep_empty)
    : name_(OutputName(path)),
      path_(path),
      type_(type),
      keep_empty_(keep_empty),
      file_(Open(path, name_, &made_)) {
  struct stat status;
  if (fstat(file_.fd(), &status) != 0) FailForSystem(name_, "cannot be opened", errno);
  if (!S_ISREG(status.st_mode)) {
    throw Failure(name_ + ": is no regular file, which a log must be to be appended to",
                  "Name a file.");
  }
  while (flock(file_.fd(), LOCK_EX) != 0) {
    if (errno != EINTR) FailForSystem(name_, "cannot be locked", errno);
  }
  const Scan scan = Walk();
  if (scan.result == Result::kDamaged) {
    throw Failure(name_ + ": byte " + std::to_string(scan.end) + ": is damaged: no record's length",
                  kRecover);
  }
  begin_ = end_ = scan.end;
  records_ = scan.records;
  if (scan.result == Result::kTorn) {
    const MappedFile whole(path_);
    const ByteView bytes = whole.bytes();
    LogRecovery recovery(type_, bytes);
    const LogStretch chain = recovery.LongestChain(static_cast<size_t>(end_) + 1);
    if (chain.records > 0 && chain.end == bytes.size) {
      throw Failure(name_ + ": byte " + std::to_string(end_) +
                        ": is damaged: whole records lie behind " +
                        "a length that announces more than there is",
                    kRecover);
    }
    CutOff(end_, std::to_string(bytes.size - static_cast<size_t>(end_)) +
                     " bytes of a record that was not written to its end");
  }
  if (scan.empty_at_end > 0 && !keep_empty_) {
    records_ -= scan.empty_at_end;
    CutOff(scan.empty_begin, std::to_string(scan.empty_at_end) +
                                 " empty records at the end, as where a file was not written to "
                                 "its end (--keep-empty keeps them)");
  }
  CheckLast(scan);
}

LogAppender::~LogAppender() {
  if (appended_ && !committed_) (void)!ftruncate(file_.fd(), begin_);
}

LogAppender::Scan LogAppender::Walk() const {
  InputFile file(path_);
  InputStream stream(&file);
  zarvo::calibration::RecordLogReader reader(&stream);
  Scan scan = {};
  while ((scan.result = reader.Next()) == Result::kRecord) {
    ++scan.records;
    if (reader.size() == 0) {
      if (scan.empty_at_end++ == 0) scan.empty_begin = reader.begin();
    } else {
      scan.empty_at_end = 0;
      scan.last_begin = reader.begin();
    }
    scan.end = reader.end();
  }
  return scan;
}

// A log of another type would be spoiled by what is appended.
void LogAppender::CheckLast(const Scan& scan) const {
  if (records_ == 0 || scan.empty_at_end > 0) return;
  const MappedFile whole(path_);
  ByteView record;
  size_t next = 0;
  if (LogRecovery(type_, whole.bytes())
          .Frame(static_cast<size_t>(scan.last_begin), &record, &next) &&
      MayBe(type_, std::string(record.data, record.size))) {
    return;
  }
  throw Failure(name_ + ": byte " + std::to_string(scan.last_begin) + ": the last record is no " +
                    type_->name(),
                std::string("Check that the type is right; if the log is damaged, ") + kRecover);
}

void LogAppender::CutOff(int64_t end, const std::string& what) {
  Note(name_ + ": byte " + std::to_string(end) + ": cut off " + what);
  if (ftruncate(file_.fd(), end) != 0) FailForSystem(name_, "cannot be cut off", errno);
  begin_ = end_ = end;
}

void LogAppender::Append(const std::string& name, const std::string& bytes) {
  if (bytes.empty() && !keep_empty_) {
    throw Failure(name +
                      ": not appended, since nothing is set in it: at the end of a log it could "
                      "not be told from what was not written to its end",
                  "Leave it out, or append it with --keep-empty.");
  }
  const std::string framed = FrameRecord(bytes);
  appended_ = true;
  for (size_t done = 0; done < framed.size();) {
    const ssize_t written = pwrite(file_.fd(), framed.data() + done, framed.size() - done, end_);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) {
      throw Failure(name_ + ": cannot be written: " + std::strerror(errno),
                    "Make room. The log holds what it held before.");
    }
    done += static_cast<size_t>(written);
    end_ += written;
  }
  ++records_;
}

void LogAppender::Commit() {
  if (fsync(file_.fd()) != 0) FailForSystem(name_, "cannot be written", errno);
  committed_ = true;
  if (made_) SyncFolderOf(path_);
}

}  // namespace calib
