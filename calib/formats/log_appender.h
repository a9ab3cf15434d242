// Appends to a log so that a crash at any moment leaves the earlier records whole.
//
// The log is locked (flock()) while it is worked on. Its lengths are walked first; what a writer
// left behind that was stopped in the middle of a record is cut off, with a note on standard error.
// So are empty records at the end, since some file systems leave zeros where they did not come to
// write, and the framing reads each as a record in which nothing is set. New records are written
// behind the end, and reach the disk before the command ends; if one cannot be written, those of
// the same command are taken back.
//
// A length in the middle that was damaged looks like the torn end of a log, too. What is cut off
// therefore holds no whole record that reaches the end; if it does, the log is damaged and refused.
#ifndef CALIB_FORMATS_LOG_APPENDER_H_
#define CALIB_FORMATS_LOG_APPENDER_H_

#include <google/protobuf/descriptor.h>

#include <cstdint>
#include <string>

#include "calib/console/open_file.h"

namespace calib {

class LogAppender {
 public:
  // Opens the log or makes it. Throws Failure if it is damaged, or if its last record is not of the
  // type.
  LogAppender(const std::string& path, const google::protobuf::Descriptor* type, bool keep_empty);
  // What was appended is taken back, unless Commit() was called.
  ~LogAppender();
  LogAppender(const LogAppender&) = delete;
  LogAppender& operator=(const LogAppender&) = delete;

  // Writes an encoded record. Throws Failure; one in which nothing is set is refused, unless empty
  // records are kept.
  void Append(const std::string& name, const std::string& bytes);
  // The records are on the disk from now on.
  void Commit();

  // How many records are in the log, and where the next one will begin.
  int64_t records() const { return records_; }
  int64_t end() const { return end_; }

 private:
  struct Scan;
  Scan Walk() const;
  void CheckLast(const Scan& scan) const;
  void CutOff(int64_t end, const std::string& what);

  std::string name_, path_;
  const google::protobuf::Descriptor* const type_;
  const bool keep_empty_;
  bool made_ = false;
  OpenFile file_;
  bool appended_ = false, committed_ = false;
  int64_t begin_ = 0;  // of what is appended
  int64_t end_ = 0;
  int64_t records_ = 0;
};

}  // namespace calib

#endif  // CALIB_FORMATS_LOG_APPENDER_H_
