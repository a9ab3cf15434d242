// One self-contained page on records: it loads nothing, and runs nothing but its own script.
#ifndef CALIB_PAGES_REPORT_H_
#define CALIB_PAGES_REPORT_H_

#include <string>
#include <vector>

#include "calib/formats/record_reader.h"
#include "calib/formats/schema.h"
#include "calib/views/record_charts.h"

namespace calib {

struct ReportedRecord {
  const Record* record;
  std::vector<std::string> findings;  // of checks; a line each
};

// What a record is, what was found, drawings, images and all numbers.
std::string RecordReport(const ReportedRecord& reported, const Schema& schema,
                         const ChartOptions& options);

// What differs between two records of one type, as a table and as drawings.
std::string DifferenceReport(const ReportedRecord& before, const ReportedRecord& after,
                             const ChartOptions& options);

// A line and a small chart for each of many records, of which none is kept: as many as make less
// than 3 MB, and the page says how many more there are.
class OverviewReport {
 public:
  explicit OverviewReport(const ChartOptions& options) : options_(options) {}

  void Add(const ReportedRecord& reported);
  // What cannot be read, as messages tell it.
  void AddFailure(const std::string& failure);
  size_t records() const { return records_; }

  std::string Html() const;

 private:
  std::string Drawing(const Record& record);

  const ChartOptions options_;
  size_t records_ = 0, listed_ = 0, undrawn_ = 0, found_ = 0, failed_ = 0, listed_failures_ = 0;
  size_t size_of_drawings_ = 0;
  std::string rows_, failures_;
};

}  // namespace calib

#endif  // CALIB_PAGES_REPORT_H_
