#include "calib/formats/record_reader.h"

#include "calib/console/failure.h"
#include "calib/formats/codec.h"
#include "calib/formats/text_codec.h"

namespace calib {

Record DecodeRecord(const RecordFile& file) {
  return {file.name,         file.type,   Decode(file.format, file.type, file.name, file.bytes),
          file.bytes.size(), file.format, file.format == Format::kText && HasComments(file.bytes)};
}

Record ReadRecord(const std::string& path, const InputFlags& flags) {
  return DecodeRecord(ReadRecordFile(path, flags));
}

std::vector<Record> ReadRecords(const std::vector<std::string>& paths, const InputFlags& flags) {
  std::vector<Record> records;
  Failures failures(paths.size());
  for (const std::string& path : paths) {
    failures.Try([&] {
      Record record = ReadRecord(path, flags);
      if (!records.empty() && record.type != records.front().type) {
        throw Failure(record.name + ": is a " + record.type->name() + ", but " +
                          records.front().name + " is a " + records.front().type->name(),
                      "Name records of one type.");
      }
      records.push_back(std::move(record));
    });
  }
  failures.ThrowIfAny();
  return records;
}

}  // namespace calib
