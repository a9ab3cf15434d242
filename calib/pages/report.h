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

// A line and a small chart for each record; `failures` are the files that are none.
std::string OverviewReport(const std::vector<ReportedRecord>& records,
                           const std::vector<std::string>& failures, const ChartOptions& options);

}  // namespace calib

#endif  // CALIB_PAGES_REPORT_H_
