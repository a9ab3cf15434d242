#include "calib/formats/names.h"

#include <algorithm>
#include <numeric>

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

// The number of letters to insert, remove or replace to make one word of the other.
size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (size_t i = 0; i < a.size(); ++i) {
    size_t diagonal = row[0]++;
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t replaced = diagonal + (a[i] != b[j]);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
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
  const std::string closest = Closest(name, names);
  throw Failure(
      "no record type is called '" + name + "'",
      (closest.empty() ? "" : "Did you mean " + closest + "? ") + "'calib types' lists them all.");
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

const std::vector<std::string>& FormatNames() {
  static const std::vector<std::string> names = {"binary", "text", "json"};
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

std::string Closest(const std::string& name, const std::vector<std::string>& candidates) {
  std::string closest;
  size_t least = std::max<size_t>(1, name.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const size_t distance = EditDistance(name, candidate);
    if (distance < least) {
      least = distance;
      closest = candidate;
    }
  }
  return closest;
}

}  // namespace calib
