#include "calib/formats/log_times.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <ctime>
#include <sstream>

#include "calib/console/date.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/open_file.h"
#include "calib/console/system_error.h"

namespace calib {
namespace {

std::string PathFor(const std::string& log) { return log + ".times"; }

}  // namespace

LogTimes::LogTimes(const std::string& log) {
  struct stat status;
  if (stat(PathFor(log).c_str(), &status) != 0) return;
  std::istringstream lines(ReadFile(PathFor(log)));
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    int64_t record = 0;
    std::string date;
    if (!(words >> record >> date)) continue;
    if (date == "-") times_.erase(record);
    if (const std::optional<int64_t> time = ParseDate(date)) times_[record] = *time;
  }
}

std::optional<int64_t> LogTimes::TimeOf(int64_t record) const {
  const auto found = times_.find(record);
  return found == times_.end() ? std::nullopt : std::optional<int64_t>(found->second);
}

void LogTimes::Add(const std::string& log, int64_t record, std::optional<int64_t> time) {
  const std::string path = PathFor(log);
  OpenFile file(open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
  if (file.fd() < 0) FailForSystem(OutputName(path), "cannot be opened", errno);
  std::string line = std::to_string(record) + " " + (time ? FormatDate(*time) : "-") + "\n";
  // One that was not written to its end must not take this one with it.
  const off_t size = lseek(file.fd(), 0, SEEK_END);
  char last = '\n';
  if (size > 0 && pread(file.fd(), &last, 1, size - 1) == 1 && last != '\n') line.insert(0, "\n");
  const ssize_t written = write(file.fd(), line.data(), line.size());
  if (written < 0) FailForSystem(OutputName(path), "cannot be written", errno);
  if (written != static_cast<ssize_t>(line.size())) {
    FailForSystem(OutputName(path), "cannot be written", ENOSPC);
  }
  if (fsync(file.fd()) != 0) FailForSystem(OutputName(path), "cannot be written", errno);
}

int64_t TimeNamed(const std::string& text) {
  if (text == "now") return static_cast<int64_t>(std::time(nullptr));
  if (const std::optional<int64_t> time = ParseDate(text)) return *time;
  throw Failure("--time: is '" + text + "', expected now or a date in UTC",
                "Write it like 2026-03-01T12:00:00Z or 2026-03-01.");
}

}  // namespace calib
