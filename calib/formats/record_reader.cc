#include "calib/formats/record_reader.h"

#include "calib/console/failure.h"
#include "calib/formats/codec.h"

namespace calib {

Record DecodeRecord(const RecordFile& file) {
  return {file.name, file.type, Decode(file.format, file.type, file.name, file.bytes),
          file.bytes.size()};
}

Record ReadRecord(const std::string& path, const InputFlags& flags) {
  return DecodeRecord(ReadRecordFile(path, flags));
}

std::vector<Record> ReadRecords(const std::vector<std::string>& paths, const InputFlags& flags) {
  std::vector<Record> records;
  for (const std::string& path : paths) {
    records.push_back(ReadRecord(path, flags));
    const Record& first = records.front();
    const Record& last = records.back();
    if (last.type != first.type) {
      throw Failure(last.name + ": is a " + last.type->name() + ", but " + first.name + " is a " +
                        first.type->name(),
                    "Name records of one type.");
    }
  }
  return records;
}

}  // namespace calib
