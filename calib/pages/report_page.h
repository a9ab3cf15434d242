// What the pages on records have in common: their sections, and what each says of a record.
#ifndef CALIB_PAGES_REPORT_PAGE_H_
#define CALIB_PAGES_REPORT_PAGE_H_

#include <string>
#include <vector>

#include "calib/fields/parts.h"
#include "calib/formats/record_reader.h"

namespace calib {

// A part of the page, with what it is called in the list of contents.
struct Section {
  std::string id, title, html;
};

std::string PageOf(const std::string& title, const std::string& intro,
                   const std::vector<Section>& sections);

// The parts of a record that can be drawn.
std::vector<Part> DrawnParts(const Record& record);

// "2 cameras, 54 sample points".
std::string Contents(const Record& record);

}  // namespace calib

#endif  // CALIB_PAGES_REPORT_PAGE_H_
