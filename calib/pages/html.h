// Pieces of HTML as text. Whatever comes from a record goes through XmlText() of charts/svg.h.
#ifndef CALIB_PAGES_HTML_H_
#define CALIB_PAGES_HTML_H_

#include <string>
#include <vector>

namespace calib {

// <name attributes>content</name>; the content is HTML already, attributes begin with a blank.
std::string Tag(const std::string& name, const std::string& attributes, const std::string& content);

// A paragraph of text.
std::string Paragraph(const std::string& text);

// A table of texts that scrolls by itself where it is wider than the page. The first cell of a row
// is its heading. In at most so many bytes, the rows that are left out being told.
std::string TableOf(const std::string& caption, const std::vector<std::string>& columns,
                    const std::vector<std::vector<std::string>>& rows, size_t most_bytes);

// The whole page. `head` is what stands in its head beside the title; the title is text.
std::string Page(const std::string& title, const std::string& head, const std::string& body);

}  // namespace calib

#endif  // CALIB_PAGES_HTML_H_
