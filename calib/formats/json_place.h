// Lines and columns for what the run-time's JSON converter complains about.
#ifndef CALIB_FORMATS_JSON_PLACE_H_
#define CALIB_FORMATS_JSON_PLACE_H_

#include <google/protobuf/descriptor.h>

#include <string>

namespace calib {

// "LINE:COLUMN" of a byte, both counted from 1.
std::string LineAndColumn(const std::string& text, size_t offset);

// ":LINE:COLUMN: PATH: WHAT" for an error of meaning, where the converter only says
// "(PATH) NAME: WHAT" or "PATH: WHAT". Without line and column if they cannot be found.
std::string DescribeJsonError(const std::string& json, const google::protobuf::Descriptor* type,
                              const std::string& message);

}  // namespace calib

#endif  // CALIB_FORMATS_JSON_PLACE_H_
