#include "calib/pages/report_page.h"

#include <map>

#include "calib/charts/svg.h"
#include "calib/fields/walk.h"
#include "calib/pages/html.h"
#include "calib/pages/page_style.h"
#include "calib/pages/turnable_rig.h"
#include "calib/views/record_charts.h"

namespace calib {

using google::protobuf::Message;
using namespace zarvo::calibration;  // NOLINT: the types that are told of

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

}  // namespace calib
