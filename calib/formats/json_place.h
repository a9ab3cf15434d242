// Lines and columns for what the run-time's JSON converter complains about.
#ifndef CALIB_FORMATS_JSON_PLACE_H_
#define CALIB_FORMATS_JSON_PLACE_H_

#include <google/protobuf/descriptor.h>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace calib {

// The place of a byte in the text as "LINE:COLUMN", both counted from 1.
std::string LineAndColumn(std::string_view text, size_t offset);

// How many bytes of a text of `size` bytes a reader takes before it gives up. `read` has it read
// the text, handed out at once up to `low`, from there to `high` in pieces of `piece` bytes, and
// then the rest at once, and returns how many bytes were handed out. Asks for at most kPieces
// pieces a reading, since a reader may begin a token anew with each, and for few readings.
constexpr size_t kPieces = 16;
size_t FindStop(size_t size,
                const std::function<size_t(size_t low, size_t high, size_t piece)>& read);

// The converter's message for an error of meaning, which is "(PATH) NAME: WHAT", "PATH: WHAT" or,
// of an unknown key of the record itself, "NAME: WHAT", spelled as ":LINE:COLUMN: PATH: WHAT"; the
// place is that of the innermost value that is found.
std::string DescribeJsonError(std::string_view json, const google::protobuf::Descriptor* type,
                              const std::string& message);

// Of JSON that the converter found no fault with: the first key that an object has twice, in either
// spelling of a field's name, as ":LINE:COLUMN: PATH: is there twice, first at LINE:COLUMN"; "" if
// there is none.
std::string DescribeKeyThatIsTwice(std::string_view json);

}  // namespace calib

#endif  // CALIB_FORMATS_JSON_PLACE_H_
