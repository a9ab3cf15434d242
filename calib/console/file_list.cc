#include "calib/console/file_list.h"

#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>
#include <system_error>

#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/printable.h"

namespace calib {
namespace {

namespace fs = std::filesystem;

std::regex RegexOf(const std::string& pattern) {
  std::string regex;
  for (size_t i = 0; i < pattern.size(); ++i) {
    const char c = pattern[i];
    if (pattern.compare(i, 3, "**/") == 0) {
      regex += "(?:.*/)?";
      i += 2;
    } else if (c == '*') {
      regex += "[^/]*";
    } else if (c == '?') {
      regex += "[^/]";
    } else {
      if (std::string("\\^$.|+()[]{}").find(c) != std::string::npos) regex += '\\';
      regex += c;
    }
  }
  return std::regex(regex);
}

// All files below the folder that are wanted; folders that are links are not entered.
void AddBelow(const std::string& folder, const std::function<bool(const std::string&)>& wanted,
              std::vector<std::string>* files) {
  const size_t before = files->size();
  std::error_code error;
  for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string path = entry->path().string();
    std::error_code ignored;
    if (!entry->is_directory(ignored) && wanted(path)) files->push_back(path);
  }
  if (error) throw Failure(Printable(folder) + ": cannot be read: " + error.message());
  std::sort(files->begin() + static_cast<std::ptrdiff_t>(before), files->end());
}

void AddMatches(const std::string& pattern, std::vector<std::string>* files) {
  const size_t slash = pattern.rfind('/', pattern.find_first_of("*?"));
  const bool here = slash == std::string::npos;
  const std::regex regex = RegexOf(here ? "./" + pattern : pattern);
  const size_t before = files->size();
  AddBelow(
      here ? "." : pattern.substr(0, slash + 1),
      [&](const std::string& path) { return std::regex_match(path, regex); }, files);
  if (files->size() == before) {
    throw Failure(Printable(pattern) + ": matches no file",
                  "** stands for any folders, * and ? for what is in one name.");
  }
  for (size_t i = before; here && i < files->size(); ++i) (*files)[i].erase(0, 2);
}

}  // namespace

std::vector<std::string> ListFiles(const std::vector<std::string>& paths,
                                   const std::function<bool(const std::string& path)>& wanted) {
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    std::error_code ignored;
    if (fs::is_directory(path, ignored)) {
      AddBelow(path, wanted, &files);
    } else if (path.find_first_of("*?") != std::string::npos && !fs::exists(path, ignored)) {
      AddMatches(path, &files);
    } else {
      files.push_back(path);
    }
  }
  return files;
}

std::vector<std::string> ReadLines(const std::string& path) {
  std::istringstream text(ReadFile(path));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

}  // namespace calib
