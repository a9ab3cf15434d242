// Record types and file formats by name, and what a file's name tells of both:
//
//   rig.RobotCalibration.binpb            NAME.TYPE.EXTENSION
//   checks.FocusCheckProto.binpb.log      a log: many records
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

// How a record is encoded.
enum class Format { kBinary, kText, kJson };

// What users call these formats: "binary", "text" and "json".
const char* NameOf(Format format);

// How a file holds records: one record, or `many`, one behind the other. Those are logs, of records
// in the binary format (calibration_common/record_log.h), and JSON lines.
struct FileFormat {
  Format format;
  bool many;
};

// What users call those: "binary", "text", "json", "log" and "jsonl".
std::vector<std::string> FormatNames();
// The format of a name that is one of FormatNames().
FileFormat FormatNamed(const std::string& name);

// What the name of a file tells: nothing, its type, its format or both.
struct NameFacts {
  const google::protobuf::Descriptor* type = nullptr;
  std::optional<FileFormat> format;
};
NameFacts FactsFromName(const std::string& path);

// The name of a file without its folder, type and extension: "checks".
std::string StemOf(const std::string& path);

// A file's name of that stem: "checks.FocusCheckProto.binpb.log".
std::string NameFor(const std::string& stem, const google::protobuf::Descriptor* type,
                    FileFormat format);

// Throws the Failure for a file, which messages call `name`, whose format neither its name nor the
// option (such as "--format") tells.
[[noreturn]] void FailForFormat(const std::string& name, const std::string& option);

}  // namespace calib

#endif  // CALIB_FORMATS_NAMES_H_
