// Loads a schema file, and refuses what the generator does not serve.
//
// The generator serves the plain records that this library is made of. A schema that needs more
// must be refused with a reason: code that quietly does something else than the schema says would
// be the worst answer.
#ifndef PROTOGEN_SCHEMA_H_
#define PROTOGEN_SCHEMA_H_

#include <google/protobuf/compiler/importer.h>
#include <google/protobuf/descriptor.h>

#include <memory>
#include <string>
#include <vector>

namespace protogen {

// No message has more fields than one has-bits word holds.
constexpr int kMaxFields = 32;
// The highest field number whose tag takes two bytes, which is what the parsers' tag cut-offs
// cover.
constexpr int kMaxFieldNumber = 2047;

class Schema {
 public:
  // Reads `file_name`, a path below `root`. Afterwards either file() is the file or errors() says
  // what is wrong, each error in the form "file:line: reason".
  Schema(const std::string& root, const std::string& file_name);
  ~Schema();

  const google::protobuf::FileDescriptor* file() const { return file_; }
  const std::vector<std::string>& errors() const { return errors_; }

 private:
  class ErrorCollector;

  google::protobuf::compiler::DiskSourceTree tree_;
  std::unique_ptr<ErrorCollector> collector_;
  std::unique_ptr<google::protobuf::compiler::Importer> importer_;
  const google::protobuf::FileDescriptor* file_ = nullptr;
  std::vector<std::string> errors_;
};

// What the generator does not serve in `file`, each in the form "file:line: reason"; empty if it
// serves all of it.
std::vector<std::string> FindRefusals(const google::protobuf::FileDescriptor& file);

}  // namespace protogen

#endif  // PROTOGEN_SCHEMA_H_
