// A temporary folder, files in it, and commands: what the generator's tests need of the system.
#ifndef CALIBRATION_TESTS_PROTOGEN_SCRATCH_H_
#define CALIBRATION_TESTS_PROTOGEN_SCRATCH_H_

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace protogen {
namespace testing {

// A new empty folder, which goes with everything in it when the object does.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "protogen_test.XXXXXX").string();
    if (mkdtemp(&name[0]) == nullptr) {
      std::perror(name.c_str());
      std::abort();
    }
    path_ = name;
  }
  ~ScratchFolder() { std::filesystem::remove_all(path_); }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& path() const { return path_; }

  // Writes a file under a path below the folder.
  void Write(const std::string& name, const std::string& content) const {
    const std::filesystem::path file = std::filesystem::path(path_) / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    out << content;
    out.close();
    ASSERT_TRUE(out) << file << " cannot be written";
  }

 private:
  std::string path_;
};

// The content of a file that must exist.
inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  EXPECT_TRUE(in) << path << " cannot be read";
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

struct CommandResult {
  int exit_code;       // -1 if the command did not end by itself
  std::string output;  // standard output and standard error
};

// Runs a shell command; paths in it must be Quoted().
inline CommandResult RunCommand(const std::string& command) {
  CommandResult result = {-1, ""};
  std::FILE* pipe = popen(("( " + command + " ) 2>&1").c_str(), "r");
  if (pipe == nullptr) return result;
  char block[4096];
  for (size_t n; (n = std::fread(block, 1, sizeof block, pipe)) > 0;)
    result.output.append(block, n);
  const int status = pclose(pipe);
  if (WIFEXITED(status)) result.exit_code = WEXITSTATUS(status);
  return result;
}

inline bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

inline std::string Quoted(const std::string& path) { return "'" + path + "'"; }

}  // namespace testing
}  // namespace protogen

#endif  // CALIBRATION_TESTS_PROTOGEN_SCRATCH_H_
