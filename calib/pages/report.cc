#include "calib/pages/report.h"

#include "calib/charts/chart_svg.h"
#include "calib/charts/overlay.h"
#include "calib/charts/svg.h"
#include "calib/console/failure.h"
#include "calib/fields/camera_match.h"
#include "calib/fields/compare.h"
#include "calib/images/calibration_image.h"
#include "calib/pages/html.h"
#include "calib/pages/record_tables.h"
#include "calib/pages/report_page.h"
#include "calib/pages/turnable_rig.h"
#include "calib/views/rig.h"

namespace calib {

using google::protobuf::Message;
using namespace zarvo::calibration;  // NOLINT: the types that are told of

namespace {

// Together with what stands around them they make less than 3 MB.
constexpr size_t kMostOfCharts = 1200000, kMostOfTables = 800000, kMostOfFindings = 200000;

std::vector<Part> PartsOfType(const Record& record, const google::protobuf::Descriptor* type) {
  return CameraFlag().Choose(*record.message, record.name, {type});
}

std::string FindingsHtml(const std::vector<std::string>& findings) {
  if (findings.empty()) return Tag("p", " class=\"fine\"", "\xe2\x9c\x93 No check found anything.");
  std::string items;
  size_t shown = 0;
  for (; shown < findings.size() && items.size() <= kMostOfFindings; ++shown) {
    items += Tag("li", "", XmlText(findings[shown]));
  }
  const size_t more = findings.size() - shown;
  return Tag("p", " class=\"finding\"",
             "\xe2\x9c\x97 " + std::to_string(findings.size()) +
                 (findings.size() == 1 ? " finding:" : " findings:")) +
         Tag("ul", "", items) +
         (more == 0 ? ""
                    : Paragraph("And " + std::to_string(more) +
                                " more: calib check --plausible prints all."));
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
  const std::string turnable = !rig.poses.empty() ? TurnableRig(rig) : "";
  const std::string figures = FiguresOf(ChartsOf(DrawnParts(record), options));
  if (!figures.empty()) sections.push_back({"drawings", "Drawings", turnable + figures});
  const std::string images = ImagesHtml(record);
  if (!images.empty()) sections.push_back({"images", "Images", images});
  const auto comment = [&](const google::protobuf::FieldDescriptor* field) {
    return schema.Comment(field);
  };
  const std::string tables = RecordTables(*record.message, comment, kMostOfTables);
  sections.push_back(
      {"numbers", "All fields", tables.empty() ? Paragraph("No field is set.") : tables});
  return PageOf(record.name, intro, sections);
}

std::string DifferenceReport(const ReportedRecord& before, const ReportedRecord& after,
                             const ChartOptions& options) {
  const Record &old_record = *before.record, &new_record = *after.record;
  const CameraMatch match(*old_record.message, *new_record.message, MatchBy::kAuto);
  std::vector<std::vector<std::string>> rows;
  for (const Difference& difference :
       Compare(*old_record.message, *new_record.message, Tolerance(), match)) {
    rows.push_back({difference.path, difference.before,
                    difference.summary.empty() ? difference.after : difference.summary});
  }
  std::string intro = Paragraph("Two " + new_record.type->name() + " records, of " +
                                std::to_string(old_record.encoded_size) + " and " +
                                std::to_string(new_record.encoded_size) +
                                " bytes. Drawings show the first dashed.");
  if (match.moved()) intro += Paragraph("The " + match.Told() + "; paths are those of the first.");
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
  // The record is the caller's own, and is not told of any more.
  OrderCamerasLike(*new_record.message, old_record.message.get());
  const std::string figures =
      FiguresOf(Overlay(ChartsOf(DrawnParts(new_record), options), new_record.name,
                        ChartsOf(DrawnParts(old_record), options), old_record.name));
  if (!figures.empty()) sections.push_back({"drawings", "Drawings", figures});
  return PageOf(new_record.name + " against " + old_record.name, intro, sections);
}

}  // namespace calib
