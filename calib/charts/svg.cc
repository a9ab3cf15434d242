#include "calib/charts/svg.h"

#include <algorithm>
#include <cstdio>

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
  // Drawings are made of these by the million.
  char text[32];
  const int length = std::snprintf(text, sizeof text, "%.1f", value);
  std::string result(text, static_cast<size_t>(std::max(length, 0)));
  if (result.size() > 2 && result.compare(result.size() - 2, 2, ".0") == 0) {
    result.resize(result.size() - 2);
  }
  return result == "-0" ? "0" : result;
}

std::string XmlElement(const std::string& name, const std::string& attributes,
                       const std::string& content) {
  const std::string start = "<" + name + attributes;
  return content.empty() ? start + "/>\n" : start + ">" + content + "</" + name + ">\n";
}

std::string Attribute(const std::string& name, double value) {
  return " " + name + "=\"" + Coordinate(value) + "\"";
}

std::string Class(const std::string& classes) { return " class=\"" + classes + "\""; }

}  // namespace calib
