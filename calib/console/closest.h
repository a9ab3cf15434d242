// What a user may have meant by a word that is misspelled.
#ifndef CALIB_CONSOLE_CLOSEST_H_
#define CALIB_CONSOLE_CLOSEST_H_

#include <string>
#include <vector>

namespace calib {

// How a remedy begins: "Did you mean NAME? ", with the candidate that is spelled most like `name`,
// or "" if none is close.
std::string SuggestClosest(const std::string& name, const std::vector<std::string>& candidates);

}  // namespace calib

#endif  // CALIB_CONSOLE_CLOSEST_H_
