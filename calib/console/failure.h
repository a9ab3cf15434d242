// How a command gives up. The message names the place (file, position, field path), what was found
// there and what was expected; the remedy is a sentence that tells the user what to do. main()
// prints both, in the one style that all commands share, and ends with kTrouble. A command that
// takes several files looks at all of them before it gives up: Failures.
#ifndef CALIB_CONSOLE_FAILURE_H_
#define CALIB_CONSOLE_FAILURE_H_

#include <cstddef>
#include <functional>
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

// Prints a failure on standard error.
void TellFailure(const std::string& message, const std::string& remedy);

// The failures of several files, each of which is told when it happens.
class Failures {
 public:
  // Of a single file, the failure is thrown as it is.
  explicit Failures(size_t files) : single_(files == 1) {}

  // Calls what reads the next file. Returns false if it threw Failure.
  bool Try(const std::function<void()>& read);
  // How many files failed.
  size_t count() const { return failed_; }
  void ThrowIfAny() const;

 private:
  bool single_;
  size_t files_ = 0, failed_ = 0;
};

}  // namespace calib

#endif  // CALIB_CONSOLE_FAILURE_H_
