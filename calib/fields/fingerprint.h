// A hash of what a record holds, the same for every file that holds the same: whatever the format,
// the order of the fields and the way in which numbers are encoded. docs/calib.md defines it, so
// that it can be computed elsewhere.
#ifndef CALIB_FIELDS_FINGERPRINT_H_
#define CALIB_FIELDS_FINGERPRINT_H_

#include <google/protobuf/message.h>

#include <string>

namespace calib {

// 64 hexadecimal digits in small letters. Unknown fields have no part in it. Throws Failure if the
// record takes more than 2 GiB.
std::string Fingerprint(const google::protobuf::Message& record);

// Whether the text could be one, in small or capital letters.
bool IsFingerprint(const std::string& text);

}  // namespace calib

#endif  // CALIB_FIELDS_FINGERPRINT_H_
