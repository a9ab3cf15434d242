// Exported files in a folder.
#ifndef CALIB_TOOLS_EXPORT_FILES_H_
#define CALIB_TOOLS_EXPORT_FILES_H_

#include <string>
#include <vector>

#include "calib/tools/export_rig.h"

namespace calib {

// Throws Failure if two files have one name; `record` is what messages call that which they are of.
void CheckFileNames(const std::string& record, const std::vector<ExportedFile>& files);

// Makes the folder, should there be none, and writes the files, in place of what they held.
void WriteToFolder(const std::string& folder, const std::vector<ExportedFile>& files);

}  // namespace calib

#endif  // CALIB_TOOLS_EXPORT_FILES_H_
