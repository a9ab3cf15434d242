#include <algorithm>

#include "calib/charts/chart_svg.h"
#include "calib/charts/svg.h"
#include "calib/pages/html.h"
#include "calib/pages/report.h"
#include "calib/pages/report_page.h"

namespace calib {

namespace {

constexpr size_t kMostOfDrawings = 1400000, kMostOfRows = 1000000, kMostOfFailures = 200000;
constexpr double kSmallWidth = 240;

std::string Count(size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string FindingsCell(const std::vector<std::string>& findings) {
  if (findings.empty()) return Tag("span", " class=\"fine\"", "\xe2\x9c\x93 no finding");
  return Tag("span", " class=\"finding\"",
             "\xe2\x9c\x97 " + std::to_string(findings.size()) + ": " + XmlText(findings.front()) +
                 (findings.size() > 1 ? " \xe2\x80\xa6" : ""));
}

}  // namespace

std::string OverviewReport::Drawing(const Record& record) {
  if (undrawn_ > 0) {
    undrawn_ += DrawnParts(record).empty() ? 0 : 1;
    return "";
  }
  std::vector<Chart> charts = ChartsOf(DrawnParts(record), options_);
  const auto first =
      std::find_if(charts.begin(), charts.end(), [](const Chart& chart) { return chart.plot; });
  if (first == charts.end()) return "";
  Chart& chart = *first;
  chart.size = ChartSize::kSmall;
  chart.heading.clear();
  chart.heading_note.clear();
  chart.notes.clear();
  chart.labels.clear();
  chart.area_picture.clear();
  chart.group.clear();
  // Views are not told apart in so little room.
  while (chart.series.size() > 1 && !chart.series[0].connected) {
    std::vector<ChartPoint>& points = chart.series[0].points;
    const std::vector<ChartPoint>& more = chart.series.back().points;
    points.insert(points.end(), more.begin(), more.end());
    chart.series.pop_back();
  }
  std::string drawing = SmallChartAsElement(chart, kSmallWidth);
  if (size_of_drawings_ + drawing.size() > kMostOfDrawings) {
    ++undrawn_;
    return "";
  }
  size_of_drawings_ += drawing.size();
  return drawing;
}

void OverviewReport::Add(const ReportedRecord& reported) {
  const Record& record = *reported.record;
  ++records_;
  if (!reported.findings.empty()) ++found_;
  if (listed_ + 1 < records_) return;
  const std::string row = Tag("th", " scope=\"row\"", XmlText(record.name)) +
                          Tag("td", "", XmlText(record.type->name())) +
                          Tag("td", "", XmlText(Contents(record))) +
                          Tag("td", "", FindingsCell(reported.findings));
  if (rows_.size() - size_of_drawings_ + row.size() > kMostOfRows) return;
  rows_ += Tag("tr", "", row + Tag("td", "", Drawing(record)));
  ++listed_;
}

void OverviewReport::AddFailure(const std::string& failure) {
  ++failed_;
  const std::string item = Tag("li", "", XmlText(failure));
  if (listed_failures_ + 1 < failed_ || failures_.size() + item.size() > kMostOfFailures) return;
  failures_ += item;
  ++listed_failures_;
}

std::string OverviewReport::Html() const {
  std::string head;
  for (const char* column : {"record", "type", "holds", "findings", "drawing"}) {
    head += Tag("th", " scope=\"col\"", column);
  }
  const std::string caption = listed_ == records_ ? Count(records_, "record")
                                                  : "The first " + std::to_string(listed_) +
                                                        " of " + Count(records_, "record");
  const std::string table =
      Tag("div", " class=\"wide\" role=\"region\" tabindex=\"0\" aria-label=\"Records\"",
          Tag("table", " class=\"records\"",
              Tag("caption", "", caption) + Tag("thead", "", Tag("tr", "", head)) +
                  Tag("tbody", "", rows_)));
  std::string intro =
      Paragraph(Count(records_, "record") + ", " + std::to_string(found_) + " with findings, " +
                std::to_string(failed_) + " that could not be read.");
  if (undrawn_ > 0) {
    intro += Paragraph(Count(undrawn_, "record") +
                       " of those below would make the page too large, and have no drawing.");
  }
  std::vector<Section> sections = {{"records", "Records", table}};
  if (failed_ > 0) {
    const size_t more = failed_ - listed_failures_;
    sections.push_back(
        {"failures", "Not read",
         Tag("ul", "", failures_) +
             (more == 0 ? "" : Paragraph("And " + std::to_string(more) + " more."))});
  }
  return PageOf("Calibration records", intro, sections);
}

}  // namespace calib
