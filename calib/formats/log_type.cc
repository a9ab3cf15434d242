#include "calib/formats/log_type.h"

#include "calib/console/failure.h"
#include "calib/console/file.h"

namespace calib {

const google::protobuf::Descriptor* LogType(const std::string& log, const InputFlags& flags) {
  const NameFacts facts = FactsFromName(log);
  const bool is_log =
      !facts.format || (facts.format->many && facts.format->format == Format::kBinary);
  if (!is_log) {
    throw Failure(OutputName(log) + ": is named for a file of another format than a log's",
                  "Choose a name that ends in .TYPE.binpb.log.");
  }
  return flags.type.empty() ? facts.type : RecordType(flags.type);
}

void CheckLogType(const std::string& log, const google::protobuf::Descriptor* type,
                  const Record& record) {
  if (record.type == type) return;
  throw Failure(record.name + ": is a " + record.type->name() + ", but " + OutputName(log) +
                    " is a log of " + type->name() + " records",
                "A log holds records of one type.");
}

}  // namespace calib
