// What a check found, and a list of such that rules add to.
#ifndef CALIB_CHECKS_FINDING_H_
#define CALIB_CHECKS_FINDING_H_

#include <string>
#include <vector>

namespace calib {

struct Finding {
  std::string rule;   // the name of what does not hold, such as "focal-length"
  std::string path;   // of the field; "" for the record or the file as a whole
  std::string value;  // what was found there, as text; "" if it is nothing that can be shown
  std::string what;   // for people, value included: "is -400, expected a focal length above 0"
  long line = 0, column = 0;  // in the file, from 1; 0 if it has none
};

using Findings = std::vector<Finding>;

}  // namespace calib

#endif  // CALIB_CHECKS_FINDING_H_
