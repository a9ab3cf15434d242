// The flags by which a user says what is in the file of a record where the file's name does not:
// those for the record that a command reads, and those for the one that it writes.
#ifndef CALIB_FORMATS_RECORD_FLAGS_H_
#define CALIB_FORMATS_RECORD_FLAGS_H_

#include <string>
#include <vector>

#include "calib/console/command_line.h"

namespace calib {

// --type, --format and --records; each is empty if it is not given.
struct InputFlags {
  std::string type;
  std::string format;
  std::string records;

  // A command whose --format takes further words has to look at it before a file is read.
  void AddTo(Command* command, const std::vector<std::string>& further_words = {});
};

// --to, which is empty if it is not given, and --partial.
struct OutputFlags {
  std::string format;
  bool partial = false;

  void AddTo(Command* command);
};

}  // namespace calib

#endif  // CALIB_FORMATS_RECORD_FLAGS_H_
