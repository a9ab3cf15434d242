// A reader of the wire format that accepts well-formed records and nothing else.
//
// It shares no code with the record classes or the run-time, whose own readers let some broken
// input pass (a sub-message cut at a field boundary, for one), and takes the schema from
// schema_table. Robustness tests ask it whether input may be accepted, and what must be written
// back once it was.
#ifndef CALIBRATION_TESTS_SUPPORT_STRICT_READER_H_
#define CALIBRATION_TESTS_SUPPORT_STRICT_READER_H_

#include <cstddef>
#include <ostream>
#include <string>

#include "tests/support/schema_table.h"

namespace zarvo {
namespace calibration {
namespace testing {

// The run-time's default.
constexpr int kDefaultDepthLimit = 100;

struct Verdict {
  bool accepted;
  size_t offset = 0;   // refused: where in the bytes, and why
  std::string reason;  // accepted: empty

  explicit operator bool() const { return accepted; }
};

std::ostream& operator<<(std::ostream& out, const Verdict& verdict);

// Whether the bytes are one well-formed record of the message:
// - tags: field numbers 1 to 2^29-1, wire types 0, 1, 2, 3 and 5, no zero tag, no end-group tag but
//   the one that closes a group;
// - every value is complete and lies within its enclosing message or group;
// - a known sub-message field under its own wire type holds a well-formed record in turn; a known
//   number under a wire type its field does not take is an unknown field;
// - a packed run of doubles or floats is a whole number of them;
// - no more than `depth_limit` levels of sub-messages and groups lie below the top.
// A varint has at most ten bytes and may be longer than need be; a tag counts modulo 2^32, a length
// in full. Whether required fields are present is not looked at.
Verdict Judge(const std::string& message, const std::string& bytes,
              int depth_limit = kDefaultDepthLimit);

// Judge() without reasons and without a heap allocation, for inputs by the million.
bool IsRecord(const MessageRow& message, const std::string& bytes,
              int depth_limit = kDefaultDepthLimit);

// What parsing the bytes and writing the record out again must give: the known fields by ascending
// number (the last value of a singular field, all occurrences of a sub-message merged, one tag for
// each repeated element), then the unknown fields in input order, every number spelled as short as
// it can be.
// REQUIRES: Judge(message, bytes, depth_limit) accepts.
std::string Rewrite(const std::string& message, const std::string& bytes,
                    int depth_limit = kDefaultDepthLimit);

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_STRICT_READER_H_
