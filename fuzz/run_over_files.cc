// Runs a fuzz target over files, for builds without libFuzzer: a file or a folder of files for each
// argument. Fails if there is none.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "fuzz/fuzzer.h"

namespace {

namespace fs = std::filesystem;

int files = 0;

void Run(const fs::path& path) {
  if (fs::is_directory(path)) {
    for (const fs::directory_entry& entry : fs::directory_iterator(path)) Run(entry.path());
    return;
  }
  std::ifstream in(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (!in) {
    std::cerr << "run_over_files: cannot read " << path << "\n";
    std::exit(1);
  }
  std::cout << path.filename().string() << std::endl;  // whose name is the last if it fails
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  ++files;
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) Run(argv[i]);
  if (files == 0) {
    std::cerr << "run_over_files: no file to run over; expected files or folders as arguments\n";
    return 1;
  }
}
