// What was found in files, for people and for what runs checks: as lines of text, as JSON, as
// GitHub's annotations or as JUnit's XML.
#ifndef CALIB_CHECKS_REPORT_H_
#define CALIB_CHECKS_REPORT_H_

#include <cstddef>
#include <string>
#include <vector>

#include "calib/checks/finding.h"

namespace calib {

struct CheckedFile {
  std::string name;    // as messages call it
  std::string type;    // of the record; "" if it is not known
  size_t size = 0;     // in bytes
  bool empty = false;  // nothing is set in the record
  Findings findings;
  std::string summary;  // of a file of many records: what there is to say of all
  std::string trouble;  // why the file could not be checked; "" if it was
};

enum class ReportFormat { kText, kJson, kGithub, kJunit };

// "text", "json", "github" and "junit".
std::vector<std::string> ReportFormatNames();
// The format of a name that is one of ReportFormatNames().
ReportFormat ReportFormatNamed(const std::string& name);

// Writes a report to standard output: what stands for a file at once if the format allows that, the
// rest at the end.
class Report {
 public:
  explicit Report(ReportFormat format) : format_(format) {}

  void Add(CheckedFile file);
  void End();

  size_t whole() const { return whole_; }
  size_t found() const { return found_; }
  size_t failed() const { return failed_; }

 private:
  std::string Count() const;
  std::string Json() const;
  std::string Junit() const;

  ReportFormat format_;
  std::vector<CheckedFile> files_;  // but for text and annotations
  size_t whole_ = 0, found_ = 0, failed_ = 0;
};

}  // namespace calib

#endif  // CALIB_CHECKS_REPORT_H_
