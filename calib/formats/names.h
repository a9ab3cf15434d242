// Record types and file formats by name, and what a file's name tells of both:
//
//   rig.RobotCalibration.binpb     NAME.TYPE.EXTENSION
#ifndef CALIB_FORMATS_NAMES_H_
#define CALIB_FORMATS_NAMES_H_

#include <google/protobuf/descriptor.h>

#include <optional>
#include <string>
#include <vector>

namespace calib {

// The record types, in the schema's order.
std::vector<const google::protobuf::Descriptor*> RecordTypes();

// The type of that name, with or without its package. Throws Failure if there is none; the remedy
// names the closest one.
const google::protobuf::Descriptor* RecordType(const std::string& name);

enum class Format { kBinary, kText, kJson };

// "binary", "text" or "json".
const char* NameOf(Format format);
const std::vector<std::string>& FormatNames();
// Of one of these.
Format FormatNamed(const std::string& name);

// What the name of a file tells: nothing, one of the two or both.
struct NameFacts {
  const google::protobuf::Descriptor* type = nullptr;
  std::optional<Format> format;
};
NameFacts FactsFromName(const std::string& path);

// The candidate that is spelled most like `name`, or "" if none is close.
std::string Closest(const std::string& name, const std::vector<std::string>& candidates);

}  // namespace calib

#endif  // CALIB_FORMATS_NAMES_H_
