// What the generator refuses, and why (see schema.h). Every rule here names a thing for which there
// is no renderer.
#include <google/protobuf/descriptor.pb.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <sstream>

#include "protogen/renderers.h"
#include "protogen/reserved_names.h"
#include "protogen/schema.h"
#include "protogen/text.h"

namespace protogen {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::EnumDescriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::FileDescriptor;
using google::protobuf::FileDescriptorProto;
using google::protobuf::SourceLocation;

// Whether the schema gives the field a JSON name of its own. Later run-times of the 3.0 series only
// tell the name, the earliest know no such thing.
template <typename T>
auto HasJsonName(const T& field, int) -> decltype(field.has_json_name()) {
  return field.has_json_name();
}
template <typename T>
auto HasJsonName(const T& field, long) -> decltype(!field.json_name().empty()) {
  return field.json_name() != field.camelcase_name();
}
template <typename T>
bool HasJsonName(const T&, ...) {
  return false;
}

bool IsLowerCase(const std::string& name) {
  return std::islower(static_cast<unsigned char>(name[0])) != 0 &&
         std::none_of(name.begin(), name.end(),
                      [](unsigned char c) { return std::isupper(c) != 0; });
}

// A single capital letter will do.
bool IsCamelCase(const std::string& name) {
  const auto is_lower = [](unsigned char c) { return std::islower(c) != 0; };
  return std::isupper(static_cast<unsigned char>(name[0])) != 0 &&
         name.find('_') == std::string::npos &&
         (name.size() == 1 || std::any_of(name.begin(), name.end(), is_lower));
}

class RefusalFinder {
 public:
  explicit RefusalFinder(const FileDescriptor& file) : file_(file) {}

  std::vector<std::string> Find() {
    CheckFile();
    for (int i = 0; i < file_.message_type_count(); ++i) CheckMessage(*file_.message_type(i));
    return refusals_;
  }

 private:
  void Refuse(int line, const std::string& reason) {
    refusals_.push_back(file_.name() + ":" + std::to_string(line) + ": " + reason);
  }

  // `path` leads to an element of the file, as in SourceCodeInfo.
  void RefusePath(const std::vector<int>& path, const std::string& reason) {
    SourceLocation location;
    Refuse(file_.GetSourceLocation(path, &location) ? location.start_line + 1 : 0, reason);
  }

  template <typename D>
  void RefuseAt(const D& descriptor, const std::string& reason) {
    SourceLocation location;
    Refuse(descriptor.GetSourceLocation(&location) ? location.start_line + 1 : 0, reason);
  }

  void CheckFile() {
    FileDescriptorProto proto;
    file_.CopyTo(&proto);
    if (proto.has_syntax()) {
      RefusePath({FileDescriptorProto::kSyntaxFieldNumber},
                 "the syntax must be proto2; it is " + proto.syntax());
    }
    CheckPackage();
    for (int i = 0; i < file_.dependency_count(); ++i) {
      RefusePath({FileDescriptorProto::kDependencyFieldNumber, i},
                 "imports are not served; all messages must stand in one file");
    }
    if (proto.has_options()) {
      RefusePath({FileDescriptorProto::kOptionsFieldNumber}, "file options are not served");
    }
    for (int i = 0; i < file_.enum_type_count(); ++i) RefuseEnum(*file_.enum_type(i));
    for (int i = 0; i < file_.service_count(); ++i) {
      RefuseAt(*file_.service(i), "services are not served (" + file_.service(i)->name() + ")");
    }
    for (int i = 0; i < file_.extension_count(); ++i) RefuseExtension(*file_.extension(i));
    // The name stands in a literal, in an #include and in a comment.
    if (file_.name().find_first_of("\"\\?\r\n") != std::string::npos) {
      Refuse(1,
             "the file's name must be free of quotes, backslashes, question marks and line ends");
    }
    if (file_.message_type_count() == 0) Refuse(1, "there is no message to generate a class for");
  }

  // In and below zarvo::calibration there is nothing that a message could meet.
  void CheckPackage() {
    const std::string& package = file_.package();
    const std::string home = "zarvo.calibration";
    if (package.empty()) {
      Refuse(1, "a package is needed: it becomes the C++ namespace");
    } else if (package != home && package.compare(0, home.size() + 1, home + ".") != 0) {
      RefusePath({FileDescriptorProto::kPackageFieldNumber},
                 "the package must be " + home + " or below it; it is " + package);
    }
    std::istringstream names(package);
    for (std::string name; std::getline(names, name, '.');) {
      if (!IsLowerCase(name)) {
        RefusePath({FileDescriptorProto::kPackageFieldNumber},
                   name + ": package names must be in lower case and begin with a letter");
      } else if (!TakenBy(name).empty()) {
        RefusePath({FileDescriptorProto::kPackageFieldNumber},
                   name + ": the package's name is taken by " + TakenBy(name));
      }
    }
  }

  void RefuseEnum(const EnumDescriptor& descriptor) {
    RefuseAt(descriptor, "enums are not served (" + descriptor.name() + ")");
  }
  void RefuseExtension(const FieldDescriptor& descriptor) {
    RefuseAt(descriptor, "extensions are not served (" + descriptor.name() + ")");
  }

  void CheckMessage(const Descriptor& message) {
    for (int i = 0; i < message.nested_type_count(); ++i) {
      const Descriptor& nested = *message.nested_type(i);
      if (nested.options().map_entry()) continue;  // its field is refused by name below
      RefuseAt(nested,
               "nested messages are not served (" + nested.name() + " in " + message.name() + ")");
    }
    for (int i = 0; i < message.enum_type_count(); ++i) RefuseEnum(*message.enum_type(i));
    for (int i = 0; i < message.extension_count(); ++i) RefuseExtension(*message.extension(i));
    if (message.extension_range_count() > 0) {
      RefuseAt(message, message.name() + ": extension ranges are not served");
    }
    for (int i = 0; i < message.oneof_decl_count(); ++i) {
      RefuseAt(*message.oneof_decl(i),
               "oneofs are not served (" + message.oneof_decl(i)->name() + ")");
    }
    google::protobuf::DescriptorProto proto;
    message.CopyTo(&proto);
    if (proto.has_options()) RefuseAt(message, message.name() + ": message options are not served");
    CheckMessageName(message);
    if (message.field_count() > kMaxFields) {
      RefuseAt(message, message.name() + " has " + std::to_string(message.field_count()) +
                            " fields; at most " + std::to_string(kMaxFields) +
                            " are served, one for each bit of the has-bits word");
    }
    if (message.field_count() == 0) {
      RefuseAt(message, message.name() + " has no fields; a class needs at least one");
    }
    std::map<std::string, std::string> taken;
    for (const std::string& function : class_functions_) taken[function] = "every class";
    for (int i = 0; i < message.field_count(); ++i) CheckField(*message.field(i), &taken);
  }

  // CamelCase is what keeps messages apart from macros and from the generator's own names.
  void CheckMessageName(const Descriptor& message) {
    const std::string& name = message.name();
    if (!IsCamelCase(name)) {
      RefuseAt(message, name +
                            ": message names must be in CamelCase: letters and digits, the first a "
                            "capital, small ones among them");
    } else if (!TakenBy(name).empty()) {
      RefuseAt(message, name + ": the message's name is taken by " + TakenBy(name));
    } else if (class_functions_.count(name) != 0) {
      RefuseAt(message, name + ": the message's name is that of a function of every class");
    }
  }

  void CheckField(const FieldDescriptor& field, std::map<std::string, std::string>* taken) {
    const std::string name = field.containing_type()->name() + "." + field.name();
    google::protobuf::FieldDescriptorProto proto;
    field.CopyTo(&proto);
    if (proto.has_options()) {
      RefuseAt(field, name + ": field options are not served (packed and deprecated among them)");
    }
    if (field.number() > kMaxFieldNumber) {
      RefuseAt(field, name + ": field number " + std::to_string(field.number()) + " is above " +
                          std::to_string(kMaxFieldNumber) + ", the last whose tag takes two bytes");
    }
    if (HasJsonName(field, 0)) RefuseAt(field, name + ": json_name is not served");
    CheckType(field, name);
    CheckNames(field, name, taken);
  }

  void CheckType(const FieldDescriptor& field, const std::string& name) {
    switch (field.type()) {
      case FieldDescriptor::TYPE_DOUBLE:
      case FieldDescriptor::TYPE_FLOAT:
        CheckFiniteDefault(field, name);
        break;
      case FieldDescriptor::TYPE_BOOL:
      case FieldDescriptor::TYPE_INT32:
      case FieldDescriptor::TYPE_INT64:
        if (field.is_repeated()) {
          RefuseAt(field, name + ": repeated " + field.type_name() +
                              " is not served; only double, float and messages repeat");
        }
        break;
      case FieldDescriptor::TYPE_STRING:
      case FieldDescriptor::TYPE_BYTES:
        if (field.is_repeated()) {
          RefuseAt(field, name + ": repeated " + field.type_name() +
                              " is not served; only double, float and messages repeat");
        }
        if (field.has_default_value()) RefuseAt(field, name + ": a default text is not served");
        break;
      case FieldDescriptor::TYPE_MESSAGE:
        CheckMessageType(field, name);
        break;
      default:
        RefuseAt(field, name + ": type " + field.type_name() +
                            " is not served; double, float, int32, int64, bool, string, bytes and "
                            "messages are");
    }
    if (field.is_required() && field.type() != FieldDescriptor::TYPE_DOUBLE &&
        field.type() != FieldDescriptor::TYPE_FLOAT && field.type() != FieldDescriptor::TYPE_BOOL) {
      RefuseAt(field,
               name + ": a required field must have a fixed size (double, float, bool), not type " +
                   field.type_name());
    }
  }

  void CheckFiniteDefault(const FieldDescriptor& field, const std::string& name) {
    const double value = field.type() == FieldDescriptor::TYPE_DOUBLE ? field.default_value_double()
                                                                      : field.default_value_float();
    if (value - value != 0)
      RefuseAt(field, name + ": a default that is no finite number is not served");
  }

  void CheckMessageType(const FieldDescriptor& field, const std::string& name) {
    const Descriptor& type = *field.message_type();
    if (type.options().map_entry()) {
      RefuseAt(field, name + ": maps are not served");
    } else if (type.file() == &file_ && type.containing_type() == nullptr &&
               type.index() >= field.containing_type()->index()) {
      RefuseAt(field, name + ": its message type " + type.name() + " must be declared before " +
                          field.containing_type()->name());
    }
  }

  // Every name that the field's accessors take must be free; `taken` maps a name to what took it.
  void CheckNames(const FieldDescriptor& field, const std::string& name,
                  std::map<std::string, std::string>* taken) {
    if (!IsLowerCase(field.name())) {
      RefuseAt(field, name + ": field names must be in lower case and begin with a letter");
    }
    const std::string& x = field.name();
    for (const std::string& accessor :
         {x, "has_" + x, "set_" + x, "clear_" + x, "mutable_" + x, "release_" + x,
          "set_allocated_" + x, "add_" + x, x + "_size", x + "_", "set_has_" + x, "clear_has_" + x,
          "k" + CamelCase(x) + "FieldNumber"}) {
      std::string owner = TakenBy(accessor);
      const auto entry = taken->emplace(accessor, "the field " + x);
      if (!entry.second) owner = entry.first->second;
      if (!owner.empty()) RefuseAccessor(field, name, accessor, owner);
    }
  }

  void RefuseAccessor(const FieldDescriptor& field, const std::string& name,
                      const std::string& accessor, const std::string& owner) {
    RefuseAt(field, name + ": its accessor name " + accessor + " is taken by " + owner);
  }

  const FileDescriptor& file_;
  const std::set<std::string> class_functions_ = ClassFunctions();
  std::vector<std::string> refusals_;
};

}  // namespace

std::vector<std::string> FindRefusals(const FileDescriptor& file) {
  return RefusalFinder(file).Find();
}

}  // namespace protogen
