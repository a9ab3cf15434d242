// calib convert-lens FILE --to-model MODEL
#include <cmath>
#include <cstdio>
#include <memory>

#include "calib/commands/commands.h"
#include "calib/console/arguments.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/number.h"
#include "calib/formats/record_reader.h"
#include "calib/formats/record_writer.h"
#include "calib/tools/lens_fitting.h"
#include "calib/tools/lens_flag.h"

namespace calib {
namespace {

using zarvo::calibration::CameraIntrinsics;

struct Flags {
  std::string path, output_path = "-";
  InputFlags input;
  OutputFlags output;
  CameraFlag camera;
  LensFlag lens;
  FitFlags fit;
};

void ConvertLens(const Flags& flags) {
  Record record = ReadRecord(flags.path, flags.input);
  for (const GivenCamera& given : ChosenCameras(*record.message, record.name, flags.camera)) {
    const geometry::Camera camera = GeometryOf(given, flags.lens.model());
    RequireSize(given);
    // The record is this function's own.
    flags.fit.Store(camera, given.place, const_cast<CameraIntrinsics*>(given.intrinsics));
  }
  OutputFlags output = flags.output;
  if (flags.output_path == "-" && output.format.empty()) output.format = "text";
  WriteRecord(flags.output_path, *record.message, output);
}

}  // namespace

void AddConvertLens(Command* program, int* status) {
  Command* command = program->AddCommand("convert-lens", "Turns a lens of one model into another");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->path, "The record of the cameras")->Required();
  flags->fit.AddTo(command, "--to-model", "The lens model to turn to")->Required();
  command->AddOption("--output", flags->output_path, "The file to write; else standard output")
      ->ValueName("OUT");
  flags->input.AddTo(command);
  flags->output.AddTo(command);
  flags->camera.AddTo(command);
  flags->lens.AddTo(command,
                    "What k and p mean now; auto goes by their numbers: 4 k and no p are "
                    "equidistant, else plumb_bob or rational_polynomial");
  command->Footer(
      "Finds the lens that sees the image most like the one of now: with the least sum of squared "
      "distances over it. How far they are apart, where most, and up to which angle it holds, is "
      "told; a lens that is worse than --max-error anywhere is refused. fx, fy, cx, cy, k and p "
      "are "
      "written anew, all else stays.\n\n"
      "Examples:\n"
      "  calib convert-lens rig.RobotCalibration.binpb --to-model equidistant \\\n"
      "      --output fisheyes.RobotCalibration.binpb\n"
      "  calib convert-lens wide.CameraCalibration.binpb --to-model plumb_bob --up-to 40");
  command->Callback([flags, status] {
    ConvertLens(*flags);
    *status = kFine;
  });
}

}  // namespace calib
