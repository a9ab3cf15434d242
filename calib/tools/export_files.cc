#include "calib/tools/export_files.h"

#include <filesystem>
#include <set>

#include "calib/console/failure.h"
#include "calib/console/file.h"

namespace calib {

void CheckFileNames(const std::string& record, const std::vector<ExportedFile>& files) {
  std::set<std::string> names;
  for (const ExportedFile& file : files) {
    if (names.insert(file.name).second) continue;
    throw Failure(record + ": two cameras would be written to " + file.name,
                  "Give them names that differ in letters and digits, or write them one by one.");
  }
}

void WriteToFolder(const std::string& folder, const std::vector<ExportedFile>& files) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) throw Failure(folder + ": cannot be made a folder: " + error.message());
  for (const ExportedFile& file : files) WriteFile(folder + "/" + file.name, file.text);
}

}  // namespace calib
