#include "calib/console/failure.h"

#include <cstdio>

#include "calib/console/printable.h"

namespace calib {

void TellFailure(const std::string& message, const std::string& remedy) {
  std::fprintf(stderr, "calib: %s\n", PrintableLines(message).c_str());
  if (!remedy.empty()) std::fprintf(stderr, "  %s\n", PrintableLines(remedy).c_str());
}

bool Failures::Try(const std::function<void()>& read) {
  ++files_;
  try {
    read();
    return true;
  } catch (const Failure& failure) {
    ++failed_;
    if (single_) throw;
    TellFailure(failure.what(), failure.remedy());
    return false;
  }
}

void Failures::ThrowIfAny() const {
  if (failed_ == 0) return;
  throw Failure(std::to_string(failed_) + " of " + std::to_string(files_) +
                " files cannot be used");
}

}  // namespace calib
