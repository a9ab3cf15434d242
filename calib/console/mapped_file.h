// A file's bytes in memory as the system maps them, whatever its size.
#ifndef CALIB_CONSOLE_MAPPED_FILE_H_
#define CALIB_CONSOLE_MAPPED_FILE_H_

#include <cstddef>
#include <string>

namespace calib {

struct ByteView {
  const char* data = nullptr;
  size_t size = 0;
};

class MappedFile {
 public:
  // Throws Failure if the file cannot be opened, or is no regular file.
  explicit MappedFile(const std::string& path);
  ~MappedFile();
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  ByteView bytes() const { return bytes_; }

 private:
  ByteView bytes_;
};

}  // namespace calib

#endif  // CALIB_CONSOLE_MAPPED_FILE_H_
