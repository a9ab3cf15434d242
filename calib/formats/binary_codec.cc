#include "calib/formats/binary_codec.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include "calib/console/failure.h"
#include "calib/fields/record_classes.h"
#include "calib/formats/stream_limit.h"
#include "calib/formats/wire_defect.h"
#include "calibration_common/record_log.h"

namespace calib {

using google::protobuf::Message;

namespace {

// By the class, which for a small record takes two thirds of the time.
template <typename Class>
struct Reading {
  static bool Do(std::string_view bytes, Message* record) {
    return ReadWhole<google::protobuf::io::CodedInputStream>(bytes, static_cast<Class*>(record), 0);
  }
};

bool Read(std::string_view bytes, Message* record) {
  const auto read = CallFor<bool (*)(std::string_view, Message*), Reading>(record->GetDescriptor());
  return read == nullptr ? Reading<Message>::Do(bytes, record) : read(bytes, record);
}

}  // namespace

void DecodeBinary(const std::string& name, std::string_view bytes, Message* record) {
  if (Read(bytes, record)) return;
  const std::string type = record->GetDescriptor()->name();
  const std::optional<WireDefect> defect = FindWireDefect(record->GetDescriptor(), bytes);
  if (!defect) throw Failure(name + ": the run-time refuses to read it as a " + type);
  throw Failure(name + ": byte " + std::to_string(defect->offset) + ": " +
                    (defect->path.empty() ? "the record" : defect->path) + " " + defect->what,
                "It is cut off, damaged, or no " + type +
                    " in the binary format; another type or format is named with --type or "
                    "--format.");
}

std::string EncodeBinary(const Message& record) {
  std::string bytes;
  if (!record.SerializePartialToString(&bytes)) {
    throw Failure("the record takes more than 2 GiB, the most that the binary format can hold",
                  "Leave some of it out.");
  }
  return bytes;
}

std::string FrameRecord(const std::string& bytes) {
  std::string framed;
  google::protobuf::io::StringOutputStream stream(&framed);
  zarvo::calibration::RecordLogWriter(&stream).WriteBytes(bytes.data(), bytes.size());
  return framed;
}

}  // namespace calib
