// A record as people want to look at it: the text format or JSON, with what is long folded to its
// size. Folded parts are spelled so that no reader takes the view for the whole record.
#ifndef CALIB_VIEWS_VIEW_H_
#define CALIB_VIEWS_VIEW_H_

#include <google/protobuf/message.h>

#include <string>
#include <vector>

namespace calib {

struct ViewOptions {
  bool full = false;  // fold nothing
  bool color = false;
  int width = 80;  // columns that lists are broken at
};

std::string ViewAsText(const google::protobuf::Message& record, const ViewOptions& options);
std::string ViewAsJson(const google::protobuf::Message& record, const ViewOptions& options);

// What both views share.

// How many of `size` elements are shown.
int ShownElements(int size, const ViewOptions& options);

// "<12 more, 16 in all>"
std::string FoldedElements(int shown, int size);

std::string Colored(const std::string& name, const ViewOptions& options);

// Items with commas between them, broken so that they fit; `column` is where the first one starts.
std::string Flow(const std::vector<std::string>& items, int column, const ViewOptions& options);

}  // namespace calib

#endif  // CALIB_VIEWS_VIEW_H_
