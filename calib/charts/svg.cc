#include "calib/charts/svg.h"

#include <cmath>

#include "calib/console/number.h"
#include "calib/console/printable.h"

namespace calib {

std::string XmlText(const std::string& text) {
  std::string result;
  for (const char c : Printable(text)) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

std::string Coordinate(double value) {
  const double rounded = std::round(value * 100) / 100;
  return Shortest(rounded == 0 ? 0 : rounded);
}

std::string XmlElement(const std::string& name, const std::string& attributes,
                       const std::string& content) {
  const std::string start = "<" + name + attributes;
  return content.empty() ? start + "/>\n" : start + ">" + content + "</" + name + ">\n";
}

std::string At(const std::string& name, double value) {
  return " " + name + "=\"" + Coordinate(value) + "\"";
}

}  // namespace calib
