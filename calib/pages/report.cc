#include "calib/pages/report.h"

#include <map>

#include "calib/charts/chart_svg.h"
#include "calib/charts/overlay.h"
#include "calib/charts/svg.h"
#include "calib/console/failure.h"
#include "calib/fields/compare.h"
#include "calib/fields/walk.h"
#include "calib/images/calibration_image.h"
#include "calib/pages/html.h"
#include "calib/pages/page_style.h"
#include "calib/pages/record_tables.h"
#include "calib/pages/turnable_rig.h"
#include "calib/views/rig.h"

namespace calib {

using google::protobuf::Message;
using namespace zarvo::calibration;  // NOLINT: the types that are told of

namespace {

// Together with what stands around them they make less than 3 MB.
constexpr size_t kMostOfCharts = 1200000, kMostOfTables = 1200000;
constexpr size_t kMostOfSmallCharts = 1500000;
constexpr double kSmallWidth = 240;

// A part of the page, with what it is called in the list of contents.
struct Section {
  std::string id, title, html;
};

std::string PageOf(const std::string& title, const std::string& intro,
                   const std::vector<Section>& sections) {
  std::string contents, body;
  for (const Section& section : sections) {
    contents += Tag("li", "", Tag("a", " href=\"#" + section.id + "\"", XmlText(section.title)));
    body += Tag("section", " id=\"" + section.id + "\"",
                Tag("h2", "", XmlText(section.title)) + section.html);
  }
  const std::string head =
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; "
      "style-src 'unsafe-inline'; script-src " +
      TurnScriptSource() + "\">\n" + Tag("style", "", PageStyle());
  return Page(title, head,
              "<a class=\"skip\" href=\"#main\">Skip to the content</a>\n" +
                  Tag("header", "", Tag("h1", "", XmlText(title)) + intro) +
                  Tag("nav", " aria-label=\"Contents\"", Tag("ul", "", contents)) +
                  Tag("main", " id=\"main\"", body) + TurnScript());
}

std::vector<Part> DrawnParts(const Record& record) {
  return CameraFlag().Choose(*record.message, record.name, DrawableTypes());
}

std::vector<Part> PartsOfType(const Record& record, const google::protobuf::Descriptor* type) {
  return CameraFlag().Choose(*record.message, record.name, {type});
}

std::string FindingsHtml(const std::vector<std::string>& findings) {
  if (findings.empty()) return Tag("p", " class=\"fine\"", "\xe2\x9c\x93 No check found anything.");
  std::string items;
  for (const std::string& finding : findings) items += Tag("li", "", XmlText(finding));
  return Tag("p", " class=\"finding\"",
             "\xe2\x9c\x97 " + std::to_string(findings.size()) +
                 (findings.size() == 1 ? " finding:" : " findings:")) +
         Tag("ul", "", items);
}

// "2 cameras, 54 sample points".
std::string Contents(const Record& record) {
  std::map<std::string, size_t> counts;
  size_t points = 0, passed = 0, checks = 0;
  ForEachMessage(*record.message, [&](const Message& message, const std::string& /*path*/) {
    const auto* type = message.GetDescriptor();
    if (type == CameraCalibration::descriptor()) ++counts["camera"];
    if (type == CalibrationImage::descriptor()) ++counts["image"];
    if (type == FocusInfoItem::descriptor()) ++counts["focus measurement"];
    if (type == PTZIntrinsicsItem::descriptor()) ++counts["zoom sample"];
    if (type == CameraIntrinsicsSamplePoints::descriptor()) ++points;
    if (type == FocusCheckProto::descriptor()) {
      ++checks;
      if (static_cast<const FocusCheckProto&>(message).ok()) ++passed;
    }
  });
  if (points > 0) counts["sample point"] = points;
  std::string text;
  for (const auto& count : counts) {
    text += (text.empty() ? "" : ", ") + std::to_string(count.second) + " " + count.first +
            (count.second == 1 ? "" : "s");
  }
  if (checks > 0) {
    text += (text.empty() ? "" : ", ") + std::to_string(passed) + " of " + std::to_string(checks) +
            " focus checks ok";
  }
  return text;
}

std::string FiguresOf(const std::vector<Chart>& charts) {
  if (charts.empty()) return "";
  return Tag("figure", " tabindex=\"0\" role=\"group\" aria-label=\"Drawings\"",
             ChartsAsElement(charts, kMostOfCharts));
}

std::string ImagesHtml(const Record& record) {
  std::string html;
  for (const Part& part : PartsOfType(record, CalibrationImage::descriptor())) {
    const auto& image = static_cast<const CalibrationImage&>(*part.message);
    const std::string name = part.path.empty() ? record.name : part.path;
    try {
      const std::string url = ImageUrl(image, name);
      html += Tag("figure", "",
                  "<img src=\"" + url + "\" alt=\"" + XmlText(name) + "\">\n" +
                      Tag("figcaption", "", XmlText(name)));
    } catch (const Failure& failure) {
      html += Paragraph(std::string("Not shown: ") + failure.what());
    }
  }
  return html;
}

}  // namespace

std::string RecordReport(const ReportedRecord& reported, const Schema& schema,
                         const ChartOptions& options) {
  const Record& record = *reported.record;
  std::string intro =
      Paragraph("A " + record.type->name() + " of " + std::to_string(record.encoded_size) +
                " bytes" + (Contents(record).empty() ? "" : ": " + Contents(record)) + ".");
  intro += Paragraph(schema.Comment(record.type));
  std::vector<Section> sections = {{"findings", "Findings", FindingsHtml(reported.findings)}};
  const Rig rig = RigOf(PartsOfType(record, CameraCalibration::descriptor()), options.extrinsics);
  const std::string turnable = rig.cameras > 0 ? TurnableRig(rig) : "";
  const std::string figures = FiguresOf(ChartsOf(DrawnParts(record), options));
  if (!figures.empty()) sections.push_back({"drawings", "Drawings", turnable + figures});
  const std::string images = ImagesHtml(record);
  if (!images.empty()) sections.push_back({"images", "Images", images});
  const auto comment = [&](const google::protobuf::FieldDescriptor* field) {
    return schema.Comment(field);
  };
  sections.push_back(
      {"numbers", "All fields", RecordTables(*record.message, comment, kMostOfTables)});
  return PageOf(record.name, intro, sections);
}

std::string DifferenceReport(const ReportedRecord& before, const ReportedRecord& after,
                             const ChartOptions& options) {
  const Record &old_record = *before.record, &new_record = *after.record;
  std::vector<std::vector<std::string>> rows;
  for (const Difference& difference :
       Compare(*old_record.message, *new_record.message, Tolerance())) {
    rows.push_back({difference.path, difference.before, difference.after});
  }
  const std::string intro = Paragraph("Two " + new_record.type->name() + " records, of " +
                                      std::to_string(old_record.encoded_size) + " and " +
                                      std::to_string(new_record.encoded_size) +
                                      " bytes. Drawings show the first dashed.");
  std::vector<Section> sections = {
      {"differences", "Differences",
       rows.empty() ? Paragraph("No field differs.")
                    : TableOf(std::to_string(rows.size()) +
                                  (rows.size() == 1 ? " field differs" : " fields differ"),
                              {"field", old_record.name, new_record.name}, rows, kMostOfTables)}};
  for (const ReportedRecord* one : {&before, &after}) {
    sections.push_back({one == &before ? "findings-before" : "findings-after",
                        "Findings in " + one->record->name, FindingsHtml(one->findings)});
  }
  const std::string figures =
      FiguresOf(Overlay(ChartsOf(DrawnParts(new_record), options), new_record.name,
                        ChartsOf(DrawnParts(old_record), options), old_record.name));
  if (!figures.empty()) sections.push_back({"drawings", "Drawings", figures});
  return PageOf(new_record.name + " against " + old_record.name, intro, sections);
}

std::string OverviewReport(const std::vector<ReportedRecord>& records,
                           const std::vector<std::string>& failures, const ChartOptions& options) {
  std::string rows;
  size_t found = 0, drawn = 0;
  for (const ReportedRecord& reported : records) {
    const Record& record = *reported.record;
    std::string chart;
    std::vector<Chart> charts = ChartsOf(DrawnParts(record), options);
    if (!charts.empty() && drawn < kMostOfSmallCharts) {
      charts.resize(1);
      charts[0].size = ChartSize::kSmall;
      charts[0].heading.clear();
      charts[0].heading_note.clear();
      charts[0].notes.clear();
      charts[0].labels.clear();
      charts[0].area_label.clear();
      charts[0].area_picture.clear();
      charts[0].group.clear();
      chart = SmallChartAsElement(charts[0], kSmallWidth);
      drawn += chart.size();
    }
    const size_t count = reported.findings.size();
    if (count > 0) ++found;
    const std::string verdict = count == 0 ? Tag("span", " class=\"fine\"", "\xe2\x9c\x93 none")
                                           : Tag("span", " class=\"finding\"",
                                                 "\xe2\x9c\x97 " + std::to_string(count) + ": " +
                                                     XmlText(reported.findings.front()) +
                                                     (count > 1 ? " \xe2\x80\xa6" : ""));
    rows += Tag("tr", "",
                Tag("th", " scope=\"row\"", XmlText(record.name)) +
                    Tag("td", "", XmlText(record.type->name())) +
                    Tag("td", "", XmlText(Contents(record))) + Tag("td", "", verdict) +
                    Tag("td", "", chart));
  }
  std::string head;
  for (const char* column : {"file", "type", "holds", "findings", "drawing"}) {
    head += Tag("th", " scope=\"col\"", column);
  }
  const std::string table =
      Tag("div", " class=\"wide\" role=\"region\" tabindex=\"0\" aria-label=\"Records\"",
          Tag("table", "",
              Tag("caption", "", std::to_string(records.size()) + " records") +
                  Tag("thead", "", Tag("tr", "", head)) + Tag("tbody", "", rows)));
  std::vector<Section> sections = {{"records", "Records", table}};
  if (!failures.empty()) {
    std::string items;
    for (const std::string& failure : failures) items += Tag("li", "", XmlText(failure));
    sections.push_back({"failures", "Not read", Tag("ul", "", items)});
  }
  return PageOf("Calibration records",
                Paragraph(std::to_string(records.size()) + " records, " + std::to_string(found) +
                          " with findings, " + std::to_string(failures.size()) +
                          (failures.size() == 1 ? " file" : " files") + " that could not be read."),
                sections);
}

}  // namespace calib
