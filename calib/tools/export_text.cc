#include "calib/tools/export_text.h"

#include "calib/console/printable.h"
#include "calib/tools/yaml_values.h"

namespace calib {

const char kFileStorageHeader[] = "%YAML:1.0\n---\n";

std::string NumberList(const std::vector<double>& numbers, const std::string& separator) {
  std::string list;
  for (const double number : numbers) {
    list += (list.empty() ? "" : separator) + YamlNumber(number);
  }
  return list;
}

std::vector<double> Projection(const ExportCamera& camera) {
  return {camera.intrinsics().fx(), camera.intrinsics().fy(), camera.cx, camera.cy};
}

std::vector<double> Parameters(const ExportCamera& camera) {
  std::vector<double> all = Projection(camera);
  all.insert(all.end(), camera.coefficients.begin(), camera.coefficients.end());
  return all;
}

std::string RowLines(const RigidTransform& transform, const std::string& begin,
                     const std::string& end) {
  const std::vector<double> rows = transform.Rows();
  std::string lines;
  for (auto row = rows.begin(); row != rows.end(); row += 4) {
    lines += begin + "[" + NumberList({row, row + 4}) + "]" + (row + 4 == rows.end() ? "" : end);
  }
  return lines + "\n";
}

// Broken into lines, as OpenCV does itself: by rows if they are short.
std::string FileStorageMatrix(const std::string& key, size_t rows, size_t columns,
                              const std::string& type, const std::vector<double>& data) {
  const size_t a_line = columns > 1 && columns <= 4 ? columns : 5;
  std::string text = key + ": !!opencv-matrix\n   rows: " + std::to_string(rows) +
                     "\n   cols: " + std::to_string(columns) + "\n   dt: " + type + "\n   data: [ ";
  for (size_t i = 0; i < data.size(); ++i) {
    text += i == 0 ? "" : i % a_line == 0 ? ",\n       " : ", ";
    text += YamlNumber(data[i]);
  }
  return text + " ]\n";
}

std::string QuotedName(const ExportCamera& camera, const std::string& end, ExportReport* report) {
  const std::string name = Printable(camera.name);
  if (name != camera.name) {
    report->leftovers.push_back(
        {Below(camera.place, "name") + " ", "is written without what is not printable"});
  }
  std::string quoted = "\"";
  for (const char c : name + end) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "\"";
}

RigidTransform RelativeTo(const ExportCamera& reference, const ExportCamera& camera) {
  if (!reference.has_pose || reference.pose.IsIdentity()) return camera.pose;
  return camera.pose * reference.pose.Inverse();
}

}  // namespace calib
