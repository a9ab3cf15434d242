// Where and why the bytes of a record are malformed.
//
// The record classes say only that parsing failed. This walks the same bytes with the run-time's
// reader of the wire format and the type's descriptor, and reports the first thing that no record
// may contain.
#ifndef CALIB_FORMATS_WIRE_DEFECT_H_
#define CALIB_FORMATS_WIRE_DEFECT_H_

#include <google/protobuf/descriptor.h>

#include <optional>
#include <string>
#include <string_view>

namespace calib {

struct WireDefect {
  int offset;        // of the field's tag, from the start of the bytes
  std::string path;  // the field, such as "camera[0].intrinsics.cy"; or the message around it
  std::string what;
};

std::optional<WireDefect> FindWireDefect(const google::protobuf::Descriptor* type,
                                         std::string_view bytes);

}  // namespace calib

#endif  // CALIB_FORMATS_WIRE_DEFECT_H_
