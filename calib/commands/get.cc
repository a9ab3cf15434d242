// calib get FILE PATH
#include <memory>
#include <optional>

#include "calib/commands/commands.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/output_file.h"
#include "calib/fields/field_path.h"
#include "calib/fields/value.h"
#include "calib/formats/record_reader.h"
#include "calib/views/record_text.h"

namespace calib {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Reflection;

struct Flags {
  std::string path, field;
  InputFlags input;
  std::string output = "-";
};

// The value of the field, or of its element `index`, as it is printed: strings as they are,
// messages in the text format, with the name of the field around them if it is printed as a
// `whole`.
std::string ValueAt(const Place& place, int index, bool whole) {
  const Reflection* reflection = place.message->GetReflection();
  switch (place.field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_STRING:
      return RawString(*place.message, place.field, index) + "\n";
    case FieldDescriptor::CPPTYPE_MESSAGE: {
      TextOptions options;
      options.full = true;
      const std::string text =
          TextOf(index < 0 ? reflection->GetMessage(*place.message, place.field)
                           : reflection->GetRepeatedMessage(*place.message, place.field, index),
                 options);
      return whole ? place.field->name() + " {\n" + text + "}\n" : text;
    }
    default:
      return FullValue(*place.message, place.field, index) + "\n";
  }
}

// Of several places, each message has its name around it.
std::string Values(const Place& place, bool several) {
  if (!place.field->is_repeated() || place.index >= 0) {
    return ValueAt(place, place.index, several);
  }
  std::string values;
  const int size = place.message->GetReflection()->FieldSize(*place.message, place.field);
  for (int i = 0; i < size; ++i) values += ValueAt(place, i, true);
  return values;
}

std::string NotSet(const Place& place) {
  std::string note = place.path + " is not set";
  if (place.field->has_default_value()) {
    note += "; programs read its default, " + FullValue(*place.message, place.field, -1);
  }
  return note;
}

// The values of one record, if there are any; adds why others are missing.
std::optional<std::string> ValuesOf(const Record& record, const std::string& path,
                                    std::vector<std::string>* missing) {
  const bool several = path.find("[*]") != std::string::npos;
  std::optional<std::string> values;
  const auto take = [&](const Place& place) {
    if (!IsSet(place)) return missing->push_back(NotSet(place));
    if (!values) values.emplace();
    *values += Values(place, several);
    if (place.field->type() == FieldDescriptor::TYPE_BYTES) values->pop_back();
  };
  ForEachPlace(*record.message, path, Unset::kMissing, take,
               [&](const std::string& why) { missing->push_back(why); });
  return values;
}

int Get(const Flags& flags) {
  RecordReader reader(flags.path, flags.input);
  std::optional<OutputFile> output;  // opened once there is something to write
  int status = kFine;
  for (Record record = {}; reader.Next(&record);) {
    std::vector<std::string> missing;
    if (const auto values = ValuesOf(record, flags.field, &missing)) {
      if (!output) output.emplace(flags.output);
      output->Write(*values);
      if (!reader.file().many()) output->Commit();
    }
    for (const std::string& why : missing) Note(record.name + ": " + why);
    if (!missing.empty()) status = kFinding;
  }
  if (output && reader.file().many()) output->Commit();
  return status;
}

}  // namespace

void AddGet(Command* program, int* status) {
  Command* command = program->AddCommand("get", "Prints one field of a record");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->path, "The file to read")->Required();
  command
      ->AddOption("PATH", flags->field,
                  "The field, such as camera[0].intrinsics.cy, camera[name=cam0].serial or "
                  "camera[*].intrinsics.fx")
      ->Required();
  flags->input.AddTo(command);
  command->AddOption("--output", flags->output, "Write to this file; else to standard output")
      ->ValueName("OUT");
  command->Footer(
      "Numbers and texts are written as they are, with a line for each element of a repeated "
      "field; messages in the text format; the bytes of an image raw, with nothing added. Indices "
      "count from 0; camera[*] stands for all cameras, camera[name=cam0] for those of that "
      "name. Of a log, the values of all records are written, one after the other.\n\n"
      "Exit status: 0 it was written, 1 some or all of it is not set in this record, 2 trouble.\n\n"
      "Examples:\n"
      "  calib get rig.RobotCalibration.binpb camera[0].intrinsics.fx\n"
      "  calib get rig.RobotCalibration.binpb 'camera[name=cam1].extrinsics.a'\n"
      "  calib get rig.RobotCalibration.binpb 'camera[*].name'\n"
      "  calib get checks.FocusCheckProto.binpb.log[-100:] value_at_cutoff\n"
      "  calib get board.CameraCalibration.binpb intrinsics_image.imgdata \\\n"
      "    --output board.gray");
  command->Callback([flags, status] { *status = Get(*flags); });
}

}  // namespace calib
