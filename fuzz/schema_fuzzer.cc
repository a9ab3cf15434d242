// Any schema file: the generator refuses it, each time with file, line and reason, or makes the two
// files of it, the same each time.
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "fuzz/fuzzer.h"
#include "protogen/generator.h"
#include "protogen/model.h"
#include "protogen/schema.h"

namespace {

using ::zarvo::calibration::testing::Require;

constexpr char kFile[] = "fuzz.proto";

// A folder of this process, gone when it ends in order.
class Folder {
 public:
  Folder() {
    const char* parent = std::getenv("TMPDIR");
    path_ = std::string(parent != nullptr ? parent : "/tmp") + "/schema_fuzzer.XXXXXX";
    Require(mkdtemp(&path_[0]) != nullptr, "a folder for the schema can be made");
  }
  ~Folder() {
    unlink((path_ + "/" + kFile).c_str());
    rmdir(path_.c_str());
  }

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

protogen::GeneratedFiles Generate(const google::protobuf::FileDescriptor& file) {
  return protogen::Generate(protogen::BuildModel(file));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ::zarvo::calibration::testing::SilenceTheRunTime();
  static const Folder folder;
  std::ofstream(folder.path() + "/" + kFile, std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));

  const protogen::Schema schema(folder.path(), kFile);
  Require((schema.file() == nullptr) == !schema.errors().empty(),
          "refused with a reason, or taken");
  for (const std::string& error : schema.errors()) {
    const size_t colon = error.find(':');
    Require(colon != std::string::npos && colon > 0 && error.find(": ", colon + 1) != error.npos,
            "a refusal names file, line and reason, unlike: " + error);
  }
  if (schema.file() == nullptr) return 0;
  const protogen::GeneratedFiles files = Generate(*schema.file());
  const protogen::GeneratedFiles again = Generate(*schema.file());
  Require(files.header == again.header && files.source == again.source &&
              files.descriptor_set == again.descriptor_set,
          "the same each time");
  for (int i = 0; i < schema.file()->message_type_count(); ++i) {
    const std::string name = schema.file()->message_type(i)->name();
    Require(files.header.find("class " + name) != std::string::npos, "a class for " + name);
    Require(files.source.find(name + "::MergePartialFromCodedStream") != std::string::npos,
            "a parser for " + name);
  }
  return 0;
}
