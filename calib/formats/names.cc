#include "calib/formats/names.h"

#include "calib/console/closest.h"
#include "calib/console/failure.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::FileDescriptor;

namespace {

struct NamedFormat {
  Format format;
  const char* name;
  const char* extension;
};
constexpr NamedFormat kFormats[] = {{Format::kBinary, "binary", "binpb"},
                                    {Format::kText, "text", "txtpb"},
                                    {Format::kJson, "json", "json"}};

const FileDescriptor* SchemaFile() {
  return zarvo::calibration::RobotCalibration::descriptor()->file();
}

const Descriptor* FindType(const std::string& name) {
  const std::string package = SchemaFile()->package() + ".";
  const bool full = name.compare(0, package.size(), package) == 0;
  return SchemaFile()->FindMessageTypeByName(full ? name.substr(package.size()) : name);
}

}  // namespace

std::vector<const Descriptor*> RecordTypes() {
  std::vector<const Descriptor*> types;
  types.reserve(static_cast<size_t>(SchemaFile()->message_type_count()));
  for (int i = 0; i < SchemaFile()->message_type_count(); ++i) {
    types.push_back(SchemaFile()->message_type(i));
  }
  return types;
}

const Descriptor* RecordType(const std::string& name) {
  if (const Descriptor* type = FindType(name)) return type;
  std::vector<std::string> names;
  for (const Descriptor* type : RecordTypes()) names.push_back(type->name());
  throw Failure("no record type is called '" + name + "'",
                SuggestClosest(name, names) + "'calib types' lists them all.");
}

const char* NameOf(Format format) {
  for (const NamedFormat& known : kFormats) {
    if (known.format == format) return known.name;
  }
  return "";
}

Format FormatNamed(const std::string& name) {
  const NamedFormat* known = kFormats;
  while (known->name != name) ++known;
  return known->format;
}

std::vector<std::string> FormatNames() {
  std::vector<std::string> names;
  for (const NamedFormat& known : kFormats) names.emplace_back(known.name);
  return names;
}

NameFacts FactsFromName(const std::string& path) {
  NameFacts facts;
  std::string name = path.substr(path.find_last_of('/') + 1);
  const size_t dot = name.find_last_of('.');
  if (dot == std::string::npos) return facts;
  for (const NamedFormat& known : kFormats) {
    if (name.substr(dot + 1) == known.extension) facts.format = known.format;
  }
  if (!facts.format) return facts;
  name.resize(dot);
  facts.type = FindType(name.substr(name.find_last_of('.') + 1));
  return facts;
}

void FailForFormat(const std::string& name, const std::string& option) {
  throw Failure(name + ": its format is not known",
                "Give it with " + option +
                    " binary, text or json, or name the file *.binpb (binary), *.txtpb (text) or "
                    "*.json.");
}

}  // namespace calib
