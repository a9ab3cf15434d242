#include "calib/formats/names.h"

#include "calib/console/closest.h"
#include "calib/console/failure.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::FileDescriptor;

namespace {

struct NamedFormat {
  FileFormat format;
  const char* name;
  const char* extension;
};
constexpr NamedFormat kFormats[] = {{{Format::kBinary, false}, "binary", "binpb"},
                                    {{Format::kText, false}, "text", "txtpb"},
                                    {{Format::kJson, false}, "json", "json"},
                                    {{Format::kBinary, true}, "log", "binpb.log"},
                                    {{Format::kJson, true}, "jsonl", "jsonl"}};

const FileDescriptor* SchemaFile() {
  return zarvo::calibration::RobotCalibration::descriptor()->file();
}

const Descriptor* FindType(const std::string& name) {
  const std::string package = SchemaFile()->package() + ".";
  const bool full = name.compare(0, package.size(), package) == 0;
  return SchemaFile()->FindMessageTypeByName(full ? name.substr(package.size()) : name);
}

// Takes the extension away, with its dot. False if it is none of the formats'.
bool CutExtension(std::string* name, std::optional<FileFormat>* format) {
  for (const NamedFormat& known : kFormats) {
    const std::string end = std::string(".") + known.extension;
    if (name->size() < end.size()) continue;
    if (name->compare(name->size() - end.size(), end.size(), end) != 0) continue;
    name->resize(name->size() - end.size());
    *format = known.format;
    return true;
  }
  return false;
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
    if (known.format.format == format && !known.format.many) return known.name;
  }
  return "";
}

FileFormat FormatNamed(const std::string& name) {
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
  if (!CutExtension(&name, &facts.format)) return facts;
  facts.type = FindType(name.substr(name.find_last_of('.') + 1));
  return facts;
}

std::string StemOf(const std::string& path) {
  std::string name = path.substr(path.find_last_of('/') + 1);
  std::optional<FileFormat> format;
  CutExtension(&name, &format);
  const size_t dot = name.find_last_of('.');
  if (dot != std::string::npos && FindType(name.substr(dot + 1)) != nullptr) name.resize(dot);
  return name;
}

std::string NameFor(const std::string& stem, const Descriptor* type, FileFormat format) {
  const NamedFormat* known = kFormats;
  while (known->format.format != format.format || known->format.many != format.many) ++known;
  return stem + "." + type->name() + "." + known->extension;
}

void FailForFormat(const std::string& name, const std::string& option) {
  throw Failure(name + ": its format is not known",
                "Give it with " + option +
                    " binary, text, json, log or jsonl, or name the file *.binpb (binary), *.txtpb "
                    "(text), *.json, *.binpb.log or *.jsonl.");
}

}  // namespace calib
