#include "protogen/schema.h"

namespace protogen {

namespace compiler = google::protobuf::compiler;

class Schema::ErrorCollector : public compiler::MultiFileErrorCollector {
 public:
  explicit ErrorCollector(std::vector<std::string>* errors) : errors_(errors) {}

  // The importer counts lines from 0 and says -1 where it knows none.
  void AddError(const std::string& file_name, int line, int /* column */,
                const std::string& message) override {
    errors_->push_back(file_name + ":" + std::to_string(line + 1) + ": " + message);
  }

 private:
  std::vector<std::string>* errors_;
};

Schema::Schema(const std::string& root, const std::string& file_name)
    : collector_(new ErrorCollector(&errors_)),
      importer_(new compiler::Importer(&tree_, collector_.get())) {
  tree_.MapPath("", root);
  const google::protobuf::FileDescriptor* file = importer_->Import(file_name);
  if (file == nullptr) {
    if (errors_.empty()) errors_.push_back(file_name + ":0: cannot be read");
    return;
  }
  errors_ = FindRefusals(*file);
  if (errors_.empty()) file_ = file;
}

Schema::~Schema() = default;

}  // namespace protogen
