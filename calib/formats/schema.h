// The schema with its comments. The registered descriptors have none, so the schema file itself is
// part of the command and read again here.
#ifndef CALIB_FORMATS_SCHEMA_H_
#define CALIB_FORMATS_SCHEMA_H_

#include <google/protobuf/compiler/importer.h>
#include <google/protobuf/descriptor.h>

#include <memory>
#include <string>

namespace calib {

class Schema {
 public:
  Schema();
  ~Schema();

  // The comment above the type or the field, on one line.
  std::string Comment(const google::protobuf::Descriptor* type) const;
  std::string Comment(const google::protobuf::FieldDescriptor* field) const;

 private:
  class Text;
  const google::protobuf::Descriptor* Commented(const google::protobuf::Descriptor* type) const;

  std::unique_ptr<Text> text_;
  std::unique_ptr<google::protobuf::compiler::Importer> importer_;
  const google::protobuf::FileDescriptor* file_;
};

}  // namespace calib

#endif  // CALIB_FORMATS_SCHEMA_H_
