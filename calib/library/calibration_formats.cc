// The importers and exporters behind a header that knows nothing of them. Failures become errors,
// leftovers notes.
#include "calib/library/calibration_formats.h"

#include <new>
#include <utility>

#include "calib/console/failure.h"
#include "calib/tools/export_files.h"
#include "calib/tools/exporters.h"
#include "calib/tools/foreign_mcap.h"
#include "calib/tools/import_formats.h"
#include "calib/tools/mcap_reader.h"

namespace zarvo {
namespace calibration_formats {

namespace {

using calib::Failure;
using calib::Leftover;
using calibration::RobotCalibration;

// Calls `work` with the outcome, which is kOk if that returns.
template <typename Work>
Outcome Run(const Work& work) noexcept {
  Outcome outcome;
  try {
    try {
      work(&outcome);
      outcome.status = Status::kOk;
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& exception) {
      outcome.error = exception.what();
      outcome.status = Status::kRefused;
    }
  } catch (const std::bad_alloc&) {
    outcome.error.clear();
    outcome.status = Status::kNoMemory;
  }
  return outcome;
}

// Adds what is not kept. Throws Failure if that makes another lens, unless `lossy` lets it.
void AddNote(const Leftover& leftover, bool lossy, Outcome* outcome) {
  using Kind = Leftover::Kind;
  if (leftover.kind == Kind::kLens && !lossy) {
    throw Failure(leftover.place + leftover.what + ": points would land elsewhere");
  }
  const Note::Kind kind = leftover.kind == Kind::kLens        ? Note::Kind::kLost
                          : leftover.kind == Kind::kConverted ? Note::Kind::kConverted
                                                              : Note::Kind::kNotKept;
  outcome->notes.push_back({kind, leftover.place + leftover.what});
}

const calib::LensModel* LensCalled(const std::string& name) {
  if (name.empty()) return nullptr;
  const calib::LensModel* model = calib::FindLensModel(name);
  if (model == nullptr || !model->in_camera_info) {
    throw Failure("lens: is '" + name +
                  "', expected plumb_bob, rational_polynomial or equidistant");
  }
  return model;
}

const calib::ImportFormat& FormatCalled(const std::string& name) {
  for (const calib::ImportFormat& format : calib::ImportFormats()) {
    if (format.name == name) return format;
  }
  throw Failure("format: '" + name + "' is none that is read; ReadableFormats() lists those");
}

const calib::Exporter& ExporterCalled(const std::string& name) {
  const calib::Exporter* exporter = calib::FindExporter(name);
  if (exporter != nullptr) return *exporter;
  throw Failure("format: '" + name + "' is none that is written; WritableFormats() lists those");
}

void CheckOptions(const WriteOptions& options, const calib::Exporter& exporter, int cameras) {
  const bool projects = !options.rectification.empty() || !options.projection.empty();
  if (projects && (options.rectification.size() != 9 || options.projection.size() != 12)) {
    throw Failure("rectification and projection: have " +
                  std::to_string(options.rectification.size()) + " and " +
                  std::to_string(options.projection.size()) + " numbers, expected 9 and 12");
  }
  if (projects && !exporter.has_projection) {
    throw Failure("rectification and projection: " + exporter.format + " has no place for them");
  }
  if (cameras > 1 && (projects || !options.name.empty())) {
    throw Failure("name, rectification and projection: are for one camera, and there are " +
                  std::to_string(cameras));
  }
}

std::vector<File> FilesOf(const RobotCalibration& robot, const std::string& format,
                          const WriteOptions& options, bool folder, Outcome* outcome) {
  const calib::Exporter& exporter = ExporterCalled(format);
  CheckOptions(options, exporter, robot.camera_size());
  std::vector<calib::CameraInRecord> cameras;
  for (const calibration::CameraCalibration& camera : robot.camera()) {
    const std::string place = "camera[" + std::to_string(cameras.size()) + "]";
    cameras.push_back({&camera, place, place + ".intrinsics"});
  }
  calib::CheckCameraCount(exporter, "the record", cameras.size());
  calib::ExportOptions to;
  to.lens = LensCalled(options.lens);
  to.width = options.width;
  to.height = options.height;
  to.name = options.name;
  to.frame = options.frame;
  to.from_camera = options.from_camera;
  to.folder = folder;
  to.rectification = options.rectification;
  to.projection = options.projection;
  calib::ExportReport report;
  calib::ExportRig rig = calib::PrepareRig(exporter, cameras, to, &report);
  rig.record = &robot;
  std::vector<calib::ExportedFile> exported = exporter.write(rig, &report);
  calib::CheckFileNames("the record", exported);
  calib::TellTransforms(rig, exported, &report);
  for (const Leftover& leftover : report.leftovers) AddNote(leftover, options.lossy, outcome);
  outcome->notes.reserve(outcome->notes.size() + report.notes.size());
  for (const std::string& note : report.notes) {
    outcome->notes.push_back({Note::Kind::kRemark, note});
  }
  outcome->format = format;
  std::vector<File> files;
  files.reserve(exported.size());
  for (calib::ExportedFile& file : exported) {
    files.push_back({std::move(file.name), std::move(file.text)});
  }
  return files;
}

}  // namespace

std::vector<std::string> ReadableFormats() noexcept {
  std::vector<std::string> names;
  Run([&](Outcome*) {
    for (const calib::ImportFormat& format : calib::ImportFormats())
      names.emplace_back(format.name);
  });
  return names;
}

Outcome Read(const std::vector<File>& files, const ReadOptions& options,
             RobotCalibration* robot) noexcept {
  return Run([&](Outcome* outcome) {
    if (files.empty()) throw Failure("no file to read");
    std::string names;
    std::vector<calib::Foreign> parsed;
    for (const File& file : files) {
      names += (names.empty() ? "" : ", ") + file.name;
      parsed.push_back(calib::BeginsAsMcap(file.text)
                           ? calib::ReadMcapCameras(file.name, file.text, {})
                           : calib::Foreign::Parse(file.name, file.text));
    }
    const calib::ImportFormat& format =
        options.format.empty() ? calib::FormatOf(names, parsed) : FormatCalled(options.format);
    RobotCalibration cameras;
    format.import(parsed, LensCalled(options.lens), &cameras);
    for (const calib::Foreign& file : parsed) {
      file.ForEachLeftover(
          [&](const Leftover& leftover) { AddNote(leftover, options.lossy, outcome); });
    }
    outcome->format = format.name;
    robot->Swap(&cameras);
  });
}

Outcome ReadText(const char* format, const std::string& text, RobotCalibration* robot) noexcept {
  Outcome outcome;
  Outcome made = Run([&](Outcome*) {
    ReadOptions options;
    options.format = format;
    outcome = Read({{"the text", text}}, options, robot);
  });
  return made.status == Status::kOk ? std::move(outcome) : std::move(made);
}

std::vector<std::string> WritableFormats() noexcept {
  std::vector<std::string> names;
  Run([&](Outcome*) {
    for (const calib::Exporter& exporter : calib::Exporters()) names.push_back(exporter.format);
  });
  return names;
}

Outcome Write(const RobotCalibration& robot, const std::string& format, const WriteOptions& options,
              std::vector<File>* files) noexcept {
  return Run([&](Outcome* outcome) { *files = FilesOf(robot, format, options, true, outcome); });
}

Outcome WriteText(const char* format, const RobotCalibration& robot, const WriteOptions& options,
                  std::string* text) noexcept {
  return Run([&](Outcome* outcome) {
    std::vector<File> files = FilesOf(robot, format, options, false, outcome);
    if (files.size() != 1) {
      throw Failure("the record: becomes " + std::to_string(files.size()) +
                    " files; Write() gives them all");
    }
    *text = std::move(files[0].text);
  });
}

Outcome WriteCameraInfo(const calibration::CameraCalibration& camera, const WriteOptions& options,
                        std::string* text) noexcept {
  Outcome outcome;
  Outcome made = Run([&](Outcome*) {
    RobotCalibration robot;
    robot.add_camera()->CopyFrom(camera);
    outcome = WriteText("ros", robot, options, text);
  });
  return made.status == Status::kOk ? std::move(outcome) : std::move(made);
}

}  // namespace calibration_formats
}  // namespace zarvo
