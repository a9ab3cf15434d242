// How a command gives up. The message names the place (file, position, field path), what was found
// there and what was expected; the remedy is a sentence that tells the user what to do. main()
// prints both, in the one style that all commands share, and ends with kTrouble.
#ifndef CALIB_CONSOLE_FAILURE_H_
#define CALIB_CONSOLE_FAILURE_H_

#include <stdexcept>
#include <string>
#include <utility>

namespace calib {

// Exit statuses, as of cmp and grep.
constexpr int kFine = 0;
constexpr int kFinding = 1;  // check found something wrong, diff a difference, get nothing
constexpr int kTrouble = 2;  // the command could not do its work

class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& message, std::string remedy = "")
      : std::runtime_error(message), remedy_(std::move(remedy)) {}

  const std::string& remedy() const { return remedy_; }

 private:
  std::string remedy_;
};

}  // namespace calib

#endif  // CALIB_CONSOLE_FAILURE_H_
