// calib plot FILE
#include <memory>
#include <utility>

#include "calib/charts/chart_svg.h"
#include "calib/charts/chart_text.h"
#include "calib/charts/overlay.h"
#include "calib/commands/commands.h"
#include "calib/commands/drawing_flags.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/terminal.h"
#include "calib/fields/camera_match.h"
#include "calib/fields/field_path.h"
#include "calib/fields/parts.h"
#include "calib/formats/record_reader.h"
#include "calib/views/record_charts.h"

namespace calib {
namespace {

struct Flags {
  std::string path;
  std::string output_path = "-";
  std::string against_path;
  InputFlags input;
  CameraFlag camera;
  bool terminal = false;
  ChartOptions charts;
  DrawingFlags drawing;
};

// The records of the file `path`, one or many, as charts.
struct Drawn {
  std::string name;  // of what is drawn, as messages call it
  const google::protobuf::Descriptor* type;
  std::vector<Chart> charts;
  std::unique_ptr<google::protobuf::Message> record;  // nullptr of many
};

// Cameras are drawn in the order of those of `like`, if that is given.
Drawn Draw(const std::string& path, const Flags& flags, const google::protobuf::Message* like) {
  RecordReader reader(path, flags.input);
  const RecordFile& file = reader.file();
  Drawn drawn = {file.name(), file.type(), {}, nullptr};
  for (Record record = {}; reader.Next(&record);) {
    if (like != nullptr && !file.many() && file.type() == like->GetDescriptor()) {
      const std::string told = OrderCamerasLike(*like, record.message.get());
      if (!told.empty()) Note(told);
    }
    std::vector<Part> parts = flags.camera.Choose(*record.message, record.name, DrawableTypes());
    const std::string index = record.name.substr(file.name().size());
    for (Part& part : parts) {
      if (file.many()) part.path = part.path.empty() ? index : JoinPath(index, part.path);
    }
    if (!file.many()) drawn.name = record.name;
    for (Chart& chart : ChartsOf(parts, flags.charts)) drawn.charts.push_back(std::move(chart));
    if (!file.many()) drawn.record = std::move(record.message);
  }
  return drawn;
}

std::string Plot(Flags flags) {
  flags.drawing.Apply(&flags.charts);
  const Drawn drawn = Draw(flags.path, flags, nullptr);
  const std::string& name = drawn.name;
  std::vector<Chart> charts = drawn.charts;
  std::string title = name + " (" + drawn.type->name() + ")";
  if (!flags.against_path.empty()) {
    const Drawn before = Draw(flags.against_path, flags, drawn.record.get());
    if (before.type != drawn.type) {
      throw Failure(before.name + ": is a " + before.type->name() + ", but " + name + " is a " +
                        drawn.type->name(),
                    "Name records of one type.");
    }
    charts = Overlay(charts, name, before.charts, before.name);
    title += " against " + before.name;
  }
  if (charts.empty()) {
    throw Failure(name + ": has nothing that can be drawn",
                  "Drawn are extrinsics of CameraCalibration, sample_points and lens of "
                  "CameraIntrinsics, FocusInfoItem, FocusCheckProto and samples of "
                  "PTZIntrinsics.");
  }
  return flags.terminal ? ChartsAsText(title, charts, OutputWidth()) : ChartsAsSvg(title, charts);
}

}  // namespace

void AddPlot(Command* program, int* status) {
  Command* command = program->AddCommand("plot", "Draws samples and curves as SVG");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->path, "The file to draw")->Required();
  command->AddOption("--output", flags->output_path, "The file to write; else standard output")
      ->ValueName("OUT");
  command
      ->AddOption("--against", flags->against_path,
                  "A record of the same type to draw with it, dashed, and the differences below")
      ->ValueName("OTHER");
  command->AddFlag("--terminal", flags->terminal,
                   "Draw with characters (in UTF-8) instead, as wide as the terminal");
  command->AddFlag("--full-range", flags->charts.full_range,
                   "Draw to scale, too, what lies far off all other values");
  flags->drawing.AddTo(command);
  flags->input.AddTo(command);
  flags->camera.AddTo(command);
  command->Footer(
      "Draws the cameras of a rig from above and from the side, a camera's sample points over its "
      "image and how they cover it, what its lens does, focus transfer functions, the bins of "
      "focus checks, and a pan-tilt-zoom camera's intrinsics over its zoom. Each axis is named by "
      "its field and has the field's own numbers. The image's y goes down.\n\n"
      "Examples:\n"
      "  calib plot rig.RobotCalibration.binpb --camera 0 --output cam0.svg\n"
      "  calib plot dome.PTZIntrinsics.binpb --terminal\n"
      "  calib plot november.FocusInfo.binpb --against october.FocusInfo.binpb\n"
      "  calib plot focus.FocusInfo.binpb | rsvg-convert > focus.png");
  command->Callback([flags, status] {
    WriteFile(flags->output_path, Plot(*flags));
    *status = kFine;
  });
}

}  // namespace calib
