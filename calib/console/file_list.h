// The files that a command is to read, of which there may be very many.
#ifndef CALIB_CONSOLE_FILE_LIST_H_
#define CALIB_CONSOLE_FILE_LIST_H_

#include <functional>
#include <string>
#include <vector>

namespace calib {

// The files that the paths stand for, in order: of a folder all below it that are `wanted`, sorted;
// of a pattern with *, ? or **, which stands for any folders, those that match it, sorted; any
// other path is itself. Throws Failure if a pattern matches nothing, or a folder cannot be read.
std::vector<std::string> ListFiles(const std::vector<std::string>& paths,
                                   const std::function<bool(const std::string& path)>& wanted);

// The lines of a file, "-" for standard input; empty ones are no paths.
std::vector<std::string> ReadLines(const std::string& path);

}  // namespace calib

#endif  // CALIB_CONSOLE_FILE_LIST_H_
