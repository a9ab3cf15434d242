// calib drift FILE...
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>

#include "calib/charts/chart_svg.h"
#include "calib/charts/chart_text.h"
#include "calib/commands/commands.h"
#include "calib/commands/drawing_flags.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/file_list.h"
#include "calib/console/number.h"
#include "calib/console/terminal.h"
#include "calib/fields/metadata_time.h"
#include "calib/formats/record_reader.h"
#include "calib/views/camera_drift.h"
#include "calib/views/drift_charts.h"
#include "calib/views/table.h"

namespace calib {
namespace {

struct Flags {
  std::vector<std::string> paths;
  std::string camera, order = "auto", to = "text", threshold;
  bool pixels = false;
  LensFlag lens;
  InputFlags input;
};

// Beside the formats of a table.
constexpr char kSvg[] = "svg", kTerminal[] = "terminal";

// A record's cameras, and what the record may be ordered by.
struct Stage {
  std::vector<CameraSample> cameras;
  std::string name;
  std::optional<int64_t> time;
  int64_t file_time;
};

int64_t FileTime(const std::string& path) {
  struct stat status;
  return stat(SplitPath(path).path.c_str(), &status) == 0 ? status.st_mtime : 0;
}

std::vector<Stage> Read(const Flags& flags) {
  const std::vector<std::string> files = ListFiles(flags.paths, [](const std::string& path) {
    const NameFacts facts = FactsFromName(path);
    return facts.format && facts.type != nullptr;
  });
  const LensReader lenses = flags.pixels ? LensReaderOf(flags.lens) : nullptr;
  std::vector<Stage> stages;
  Failures failures(files.size());
  for (const std::string& path : files) {
    failures.Try([&] {
      RecordReader reader(path, flags.input);
      for (Record record = {}; reader.Next(&record);) {
        stages.push_back({CameraSamplesOf(*record.message, record.name, lenses), record.name,
                          MetadataTime(*record.message), FileTime(path)});
      }
    });
  }
  failures.ThrowIfAny();
  return stages;
}

// Records of the same time, name or file stay in the order of the input.
void Order(const std::string& order, std::vector<Stage>* stages) {
  const bool all_times = std::all_of(stages->begin(), stages->end(),
                                     [](const Stage& stage) { return stage.time.has_value(); });
  if (order == "time" && !all_times) {
    const auto without = std::find_if(stages->begin(), stages->end(),
                                      [](const Stage& stage) { return !stage.time; });
    throw Failure(without->name + ": has no metadata.time to be ordered by",
                  "Choose another order with --order.");
  }
  const bool by_time = order == "time" || (order == "auto" && all_times);
  std::stable_sort(stages->begin(), stages->end(), [&](const Stage& a, const Stage& b) {
    if (by_time) return *a.time < *b.time;
    if (order == "name") return a.name < b.name;
    return order == "file-time" && a.file_time < b.file_time;
  });
}

std::map<std::string, double> Thresholds(const std::string& text) {
  std::map<std::string, double> thresholds;
  std::istringstream items(text);
  for (std::string item; std::getline(items, item, ',');) {
    const size_t equals = item.find('=');
    char* end = nullptr;
    const double most =
        equals == std::string::npos ? 0 : std::strtod(item.c_str() + equals + 1, &end);
    if (end == nullptr || *end != '\0' || end == item.c_str() + equals + 1 || !(most >= 0)) {
      throw Failure("--threshold: is '" + item + "', expected a quantity and a number from 0",
                    "Write it like fx=0.5,rotation=0.1.");
    }
    thresholds[item.substr(0, equals)] = most;
  }
  return thresholds;
}

std::string NumberOf(const std::optional<double>& value) {
  if (!value) return "";
  if (!std::isfinite(*value))
    return std::isnan(*value) ? "NaN" : *value > 0 ? "Infinity" : "-Infinity";
  char text[kMostCharacters];
  return {text, WriteFewest(*value, text)};
}

// Six digits: what a difference has beyond them is rounding.
std::string ChangeOf(const std::optional<double>& change) {
  return change && std::isfinite(*change) ? Rounded(*change) : NumberOf(change);
}

std::string TextOf(const std::vector<DriftRow>& rows, TableFormat format) {
  CellWriter writer(format,
                    {"camera", "record", "quantity", "value", "since_first", "since_before"});
  for (const DriftRow& row : rows) {
    writer.AddRow({{row.camera, false},
                   {row.record, false},
                   {row.quantity, false},
                   {NumberOf(row.value), true},
                   {ChangeOf(row.since_first), true},
                   {ChangeOf(row.since_before), true}});
  }
  return writer.Take();
}

// Tells what changed by more than it may since the first record, or cannot be compared with that;
// returns whether there is any.
bool TellExceeding(const std::vector<DriftRow>& rows,
                   const std::map<std::string, double>& thresholds) {
  bool any = false;
  for (const auto& [quantity, most] : thresholds) {
    const bool known =
        std::any_of(rows.begin(), rows.end(),
                    [&name = quantity](const DriftRow& row) { return row.quantity == name; });
    if (!known) {
      throw Failure(
          "--threshold: no camera has the quantity '" + quantity + "'",
          "Those of the table are fx, fy, skew, cx, cy, k[0], p[0], rotation, position, and "
          "with --pixels pixels.");
    }
  }
  std::set<std::pair<std::string, std::string>> begun;  // cameras and their quantities
  for (const DriftRow& row : rows) {
    const auto most = thresholds.find(row.quantity);
    if (most == thresholds.end()) continue;
    const bool is_first = begun.emplace(row.camera, row.quantity).second;
    if (!row.since_first) {
      if (is_first) continue;
      Note(row.record + ": " + row.camera + ": " + row.quantity +
           " cannot be compared with the first record's");
      any = true;
      continue;
    }
    if (std::abs(*row.since_first) <= most->second) continue;
    Note(row.record + ": " + row.camera + ": " + row.quantity + " changed by " +
         ChangeOf(row.since_first) + ", more than " + NumberOf(most->second));
    any = true;
  }
  return any;
}

// The cameras that are asked for, in the order of the records; tells what they lack.
std::vector<CameraSample> Samples(const Flags& flags) {
  std::vector<Stage> stages = Read(flags);
  Order(flags.order, &stages);
  std::vector<CameraSample> samples;
  for (size_t i = 0; i < stages.size(); ++i) {
    for (CameraSample& camera : stages[i].cameras) {
      if (!flags.camera.empty() && camera.camera != flags.camera) continue;
      const std::string place = camera.record + ": " + camera.camera + ": ";
      if (camera.odd_transform) {
        Note(place + "extrinsics are no rigid transform of 16 numbers by rows, and left out");
      }
      if (!camera.no_lens.empty()) Note(place + "no pixels to compare: " + camera.no_lens);
      camera.order = i;
      samples.push_back(std::move(camera));
    }
  }
  return samples;
}

std::string Shown(const std::vector<DriftRow>& rows, const std::string& format) {
  if (format != kSvg && format != kTerminal) return TextOf(rows, TableFormatNamed(format));
  const std::vector<Chart> charts = DriftCharts(rows);
  if (charts.empty()) Note("nothing changed, so there is nothing to draw");
  return format == kSvg ? ChartsAsSvg("Cameras over time", charts)
                        : ChartsAsText("Cameras over time", charts, OutputWidth());
}

// Says which displacements there are none of.
void TellIncomparable(const std::vector<DriftRow>& rows) {
  std::set<std::string> begun;
  for (const DriftRow& row : rows) {
    if (row.quantity != "pixels" || begun.insert(row.camera).second) continue;
    if (row.since_first && row.since_before) continue;
    Note(row.record + ": " + row.camera +
         ": no pixels to compare with another record's: images of another size, or lenses that see "
         "nothing alike");
  }
}

int Drift(const Flags& flags) {
  const std::map<std::string, double> thresholds = Thresholds(flags.threshold);
  const std::vector<CameraSample> samples = Samples(flags);
  if (samples.empty()) {
    throw Failure(flags.camera.empty() ? "there is no camera in these records"
                                       : "no camera '" + flags.camera + "' is in these records",
                  "Cameras go by their serial number, else by their name.");
  }
  const std::vector<DriftRow> rows = DriftOf(samples);
  TellIncomparable(rows);
  Print(Shown(rows, flags.to));
  return TellExceeding(rows, thresholds) ? kFinding : kFine;
}

}  // namespace

void AddDrift(Command* program, int* status) {
  Command* command = program->AddCommand("drift", "Says how cameras change from record to record");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->paths, "The records, also logs and folders")->Required();
  command->AddOption("--camera", flags->camera, "Only the camera of that serial number or name")
      ->ValueName("NAME");
  AddChoice(command, "--order", &flags->order, {"auto", "time", "file-time", "name", "input"},
            "What comes first; auto goes by metadata.time where all records have it, else by the "
            "order of the input");
  std::vector<std::string> formats = TableFormatNames();
  formats.insert(formats.end(), {kSvg, kTerminal});
  AddChoice(command, "--to", &flags->to, formats,
            "Format of the table, or charts as svg or with characters on the terminal");
  command->AddFlag("--pixels", flags->pixels,
                   "Tell by how many pixels each camera's image changed at most, too");
  flags->lens.AddTo(command, "With --pixels: what k and p mean; auto goes by their numbers");
  command
      ->AddOption("--threshold", flags->threshold,
                  "How much a quantity may have changed since the first record")
      ->ValueName("QUANTITY=MOST,...");
  flags->input.AddTo(command);
  command->Footer(
      "A camera is the same if it has the same serial number or, without one, the same name. Each "
      "row is one quantity of a camera in one record: its value, and its change since the first "
      "record and since the one before. 'rotation' is the angle in degrees by which the camera "
      "turned, 'position' the distance that it moved, in the records' unit of length; both take "
      "extrinsics.a for 16 numbers of a rigid transform by rows. Changes are given to six "
      "digits. 'pixels' is what 'calib diff --pixels' tells: how far points at infinity moved in "
      "the image, at most, but for the rotation that explains most of it. It needs the image's "
      "size, and takes some milliseconds for each camera.\n\n"
      "Charts show the changes since the first record, one chart for each quantity.\n\n"
      "Exit status: 0 fine, 1 more than a threshold or not to be compared, 2 trouble.\n\n"
      "Examples:\n"
      "  calib drift october.RobotCalibration.binpb november.RobotCalibration.binpb\n"
      "  calib drift robot.RobotCalibration.binpb.log --camera cam0 --to csv\n"
      "  calib drift robot.RobotCalibration.binpb.log --threshold fx=0.5,rotation=0.1\n"
      "  calib drift robot.RobotCalibration.binpb.log --pixels --threshold pixels=1\n"
      "  calib drift robot.RobotCalibration.binpb.log --to svg > drift.svg");
  command->Callback([flags, status] { *status = Drift(*flags); });
}

}  // namespace calib
