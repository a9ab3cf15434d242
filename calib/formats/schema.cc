#include "calib/formats/schema.h"

#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <cstring>
#include <sstream>

#include "calib/console/failure.h"

namespace calib {

extern const char kSchemaText[];

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::SourceLocation;

namespace {

class NoErrors : public google::protobuf::compiler::MultiFileErrorCollector {
 public:
  void AddError(const std::string&, int, int, const std::string&) override {}
};

std::string OnOneLine(const std::string& comment) {
  std::istringstream words(comment);
  std::string line;
  for (std::string word; words >> word;) line += (line.empty() ? "" : " ") + word;
  return line;
}

template <typename T>
std::string CommentAbove(const T* commented) {
  SourceLocation location;
  return commented->GetSourceLocation(&location) ? OnOneLine(location.leading_comments) : "";
}

}  // namespace

// A folder whose only file is the schema, whatever it is asked for.
class Schema::Text : public google::protobuf::compiler::SourceTree {
 public:
  google::protobuf::io::ZeroCopyInputStream* Open(const std::string&) override {
    return new google::protobuf::io::ArrayInputStream(kSchemaText,
                                                      static_cast<int>(std::strlen(kSchemaText)));
  }
};

Schema::Schema() : text_(new Text) {
  NoErrors errors;
  importer_ = std::make_unique<google::protobuf::compiler::Importer>(text_.get(), &errors);
  file_ = importer_->Import("calibration.proto");
  if (file_ == nullptr) throw Failure("the schema that the command was built with cannot be read");
}

Schema::~Schema() = default;

const Descriptor* Schema::Commented(const Descriptor* type) const {
  return file_->FindMessageTypeByName(type->name());
}

std::string Schema::Comment(const Descriptor* type) const { return CommentAbove(Commented(type)); }

std::string Schema::Comment(const FieldDescriptor* field) const {
  return CommentAbove(Commented(field->containing_type())->FindFieldByNumber(field->number()));
}

}  // namespace calib
