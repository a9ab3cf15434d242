#include "calib/console/system_error.h"

#include <cerrno>
#include <cstring>

#include "calib/console/failure.h"

namespace calib {
namespace {

std::string Remedy(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
      return "Check the spelling; relative paths start at the current folder.";
    case EACCES:
    case EPERM:
    case EROFS:
      return "Choose another folder, or have the permissions changed.";
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return "Make room, or write to another place. The file of before is untouched.";
    case EBADF:
      return "It is closed; run the command with one that is open, or name a file.";
    case EISDIR:
      return "Name a file in it.";
    default:
      return "";
  }
}

}  // namespace

void FailForSystem(const std::string& name, const std::string& action, int error) {
  throw Failure(name + ": " + action + ": " + std::strerror(error), Remedy(error));
}

}  // namespace calib
