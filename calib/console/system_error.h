// Errors of the system's calls, told with what the user can do about them.
#ifndef CALIB_CONSOLE_SYSTEM_ERROR_H_
#define CALIB_CONSOLE_SYSTEM_ERROR_H_

#include <string>

namespace calib {

// Throws the Failure for a file, which messages call `name`: "NAME: cannot be opened: REASON".
[[noreturn]] void FailForSystem(const std::string& name, const std::string& action, int error);

}  // namespace calib

#endif  // CALIB_CONSOLE_SYSTEM_ERROR_H_
