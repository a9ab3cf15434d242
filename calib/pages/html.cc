#include "calib/pages/html.h"

#include "calib/charts/svg.h"

namespace calib {

std::string Tag(const std::string& name, const std::string& attributes,
                const std::string& content) {
  return "<" + name + attributes + ">" + content + "</" + name + ">\n";
}

std::string Paragraph(const std::string& text) { return Tag("p", "", XmlText(text)); }

std::string TableOf(const std::string& caption, const std::vector<std::string>& columns,
                    const std::vector<std::vector<std::string>>& rows, size_t most_bytes) {
  std::string head, body;
  for (const std::string& column : columns) head += Tag("th", " scope=\"col\"", XmlText(column));
  size_t shown = 0;
  for (; shown < rows.size() && body.size() <= most_bytes; ++shown) {
    std::string row;
    for (const std::string& cell : rows[shown]) {
      row +=
          row.empty() ? Tag("th", " scope=\"row\"", XmlText(cell)) : Tag("td", "", XmlText(cell));
    }
    body += Tag("tr", "", row);
  }
  std::string table = Tag("table", "",
                          Tag("caption", "", XmlText(caption)) +
                              Tag("thead", "", Tag("tr", "", head)) + Tag("tbody", "", body));
  if (shown < rows.size()) {
    table += Paragraph(std::to_string(rows.size() - shown) + " more rows, " +
                       std::to_string(rows.size()) + " in all: calib show --full prints them.");
  }
  return Tag(
      "div",
      " class=\"wide\" role=\"region\" tabindex=\"0\" aria-label=\"" + XmlText(caption) + "\"",
      table);
}

std::string Page(const std::string& title, const std::string& head, const std::string& body) {
  return "<!DOCTYPE html>\n" +
         Tag("html", " lang=\"en\"",
             Tag("head", "",
                 "<meta charset=\"utf-8\">\n"
                 "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n" +
                     head + Tag("title", "", XmlText(title))) +
                 Tag("body", "", body));
}

}  // namespace calib
