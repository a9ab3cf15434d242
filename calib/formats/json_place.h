// Lines and columns for what the run-time's JSON converter complains about.
#ifndef CALIB_FORMATS_JSON_PLACE_H_
#define CALIB_FORMATS_JSON_PLACE_H_

#include <google/protobuf/descriptor.h>

#include <string>

namespace calib {

// The place of a byte in the text as "LINE:COLUMN", both counted from 1.
std::string LineAndColumn(const std::string& text, size_t offset);

// The converter's message for an error of meaning, which is "(PATH) NAME: WHAT" or "PATH: WHAT",
// spelled as ":LINE:COLUMN: PATH: WHAT"; without line and column if they cannot be found.
std::string DescribeJsonError(const std::string& json, const google::protobuf::Descriptor* type,
                              const std::string& message);

}  // namespace calib

#endif  // CALIB_FORMATS_JSON_PLACE_H_
