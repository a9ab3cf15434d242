// Reading and writing records: what all commands share. The type and the format come from flags or
// from the file's name.
#ifndef CALIB_FORMATS_RECORD_H_
#define CALIB_FORMATS_RECORD_H_

#include <google/protobuf/message.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "calib/formats/names.h"

namespace calib {

// --type and --format, for the input of a command.
struct InputFlags {
  std::string type;
  std::string format;

  void AddTo(CLI::App* command);
};

struct Record {
  std::string name;  // of the file, as messages call it
  const google::protobuf::Descriptor* type;
  std::unique_ptr<google::protobuf::Message> message;
  size_t file_size;
};

Record ReadRecord(const std::string& path, const InputFlags& flags);

// The same in two steps, for a command to which a malformed record is a finding and no trouble.
struct Input {
  std::string name;
  const google::protobuf::Descriptor* type;
  Format format;
  std::string bytes;
};
Input OpenInput(const std::string& path, const InputFlags& flags);
Record DecodeInput(const Input& input);

// Reads all files, which must hold records of one type.
std::vector<Record> ReadRecords(const std::vector<std::string>& paths, const InputFlags& flags);

// Whether nothing at all is set.
bool IsEmpty(const google::protobuf::Message& record);

// The paths of required fields that are not set.
std::vector<std::string> MissingFields(const google::protobuf::Message& record);

// --to and --partial, for the output of a command.
struct OutputFlags {
  std::string format;
  bool partial = false;

  void AddTo(CLI::App* command);
};

// Encodes the record for a file that messages call `name`.
std::string EncodeFor(const std::string& name, Format format,
                      const google::protobuf::Message& record);

// The format comes from --to or from the path. Throws Failure, and leaves the file of before in
// place, if required fields are missing.
void WriteRecord(const std::string& path, const google::protobuf::Message& record,
                 const OutputFlags& flags);

}  // namespace calib

#endif  // CALIB_FORMATS_RECORD_H_
