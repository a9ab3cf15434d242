#include "calib/console/file.h"

#include <algorithm>
#include <climits>
#include <cstdio>

#include "calib/console/failure.h"
#include "calib/console/input_file.h"
#include "calib/console/output_file.h"
#include "calib/console/printable.h"

namespace calib {
namespace {

constexpr size_t kBlock = size_t{1} << 20;

}  // namespace

std::string InputName(const std::string& path) {
  return path == "-" ? "standard input" : Printable(path);
}
std::string OutputName(const std::string& path) {
  return path == "-" ? "standard output" : Printable(path);
}

std::string ReadFile(const std::string& path) {
  InputFile file(path);
  return ReadAll(&file);
}

std::string ReadAll(InputFile* file) {
  std::string bytes(file->regular() ? file->size() + 1 : kBlock, '\0');
  size_t size = 0;
  for (;;) {
    if (size == bytes.size()) bytes.resize(size + kBlock);
    const size_t count = file->Read(&bytes[size], std::min(kBlock, bytes.size() - size));
    if (count == 0) break;
    size += count;
    if (size > INT_MAX) {
      throw Failure(file->name() + ": is larger than 2 GiB, the most that a record may take",
                    "Check that it is the file you meant.");
    }
  }
  bytes.resize(size);
  return bytes;
}

void WriteFile(const std::string& path, const std::string& bytes) {
  OutputFile file(path);
  file.Write(bytes);
  file.Commit();
}

void WriteFile(const std::string& path, const std::function<void(const Sink& sink)>& produce) {
  OutputFile file(path);
  produce([&](const char* bytes, size_t size) { file.Write(bytes, size); });
  file.Commit();
}

void Print(const std::string& text) { WriteFile("-", text); }

void Note(const std::string& text) {
  std::fprintf(stderr, "calib: %s\n", PrintableLines(text).c_str());
}

}  // namespace calib
