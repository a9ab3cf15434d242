// A record as people want to look at it: the text format, with what is long folded to its size.
// Folded parts are spelled so that no reader takes the view for the whole record.
#ifndef CALIB_VIEWS_RECORD_TEXT_H_
#define CALIB_VIEWS_RECORD_TEXT_H_

#include <google/protobuf/message.h>

#include <string>

namespace calib {

struct TextOptions {
  bool full = false;  // fold nothing
  bool color = false;
  int width = 80;  // columns that lists are broken at
};

// The record, or the message, as lines of text; unknown fields as well.
std::string TextOf(const google::protobuf::Message& record, const TextOptions& options);

}  // namespace calib

#endif  // CALIB_VIEWS_RECORD_TEXT_H_
