#include "calib/tools/export_rig.h"

#include <algorithm>
#include <cmath>

#include "calib/console/failure.h"
#include "calib/console/number.h"
#include "calib/fields/presence.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

namespace {

// Sets a field that the record does not have, as an option says.
template <typename Value>
void Fill(const std::string& option, const Value& said, const Value& nothing, bool has,
          const Value& value, const std::string& place, const std::string& field,
          const std::function<void()>& set) {
  if (said == nothing) return;
  if (!has) return set();
  if (value == said) return;
  throw Failure(Below(place, field) + " is set, and is not what " + option + " says",
                "Leave " + option + " out: it is for records that do not have it.");
}

void FillIn(const ExportOptions& options, ExportCamera* to) {
  CameraIntrinsics* in = to->camera.mutable_intrinsics();
  Fill("--width", options.width, 0, in->has_width(), in->width(), to->intrinsics_place, "width",
       [&] { in->set_width(options.width); });
  Fill("--height", options.height, 0, in->has_height(), in->height(), to->intrinsics_place,
       "height", [&] { in->set_height(options.height); });
  CameraCalibration* camera = &to->camera;
  Fill("--name", options.name, std::string(), camera->has_name(), camera->name(), to->place, "name",
       [&] { camera->set_name(options.name); });
}

void CheckWhole(const Exporter& exporter, const std::string& files, const ExportCamera& camera) {
  const CameraIntrinsics& in = camera.intrinsics();
  std::vector<std::string> missing = MissingFields(in);
  std::string remedy = "Set it first.";
  if (missing.empty()) {
    if (exporter.needs.count("width") != 0 && !in.has_width()) missing.push_back("width");
    if (exporter.needs.count("height") != 0 && !in.has_height()) missing.push_back("height");
    if (!missing.empty()) remedy = "Say it with --" + missing.front() + ".";
  }
  if (missing.empty()) return;
  throw Failure(
      Below(camera.intrinsics_place, missing.front()) + " is not set, and " + files + " needs it",
      remedy);
}

// Numbers that no camera has; a reader would take them all the same.
void CheckSane(const CameraIntrinsics& in, const std::string& place) {
  const auto check = [&](const std::string& field, double value, bool right, const char* expected) {
    if (right) return;
    throw Failure(Below(place, field) + " is " + Shortest(value) + ", expected " + expected,
                  "Correct it in the record.");
  };
  const auto check_finite = [&](const std::string& field, double value) {
    check(field, value, std::isfinite(value), "a finite number");
  };
  check_finite("fx", in.fx());
  check_finite("fy", in.fy());
  check_finite("skew", in.skew());
  check_finite("cx", in.cx());
  check_finite("cy", in.cy());
  for (int i = 0; i < in.k_size(); ++i) check_finite("k[" + std::to_string(i) + "]", in.k(i));
  for (int i = 0; i < in.p_size(); ++i) check_finite("p[" + std::to_string(i) + "]", in.p(i));
  if (in.has_error_per_point()) check_finite("error_per_point", in.error_per_point());
  check("fx", in.fx(), in.fx() > 0, "a focal length above 0");
  check("fy", in.fy(), in.fy() > 0, "a focal length above 0");
  check("width", in.width(), !in.has_width() || in.width() > 0, "a size above 0");
  check("height", in.height(), !in.has_height() || in.height() > 0, "a size above 0");
}

bool HoldsPoses(const Exporter& exporter, const ExportOptions& options) {
  return exporter.poses != Exporter::Poses::kNone &&
         (exporter.poses != Exporter::Poses::kApart || options.folder);
}

void VisitOthers(const Message& message, const std::string& place,
                 const std::set<std::string>& kept, const std::string& files,
                 const LeftoverVisitor& visit) {
  std::vector<const FieldDescriptor*> fields;
  message.GetReflection()->ListFields(message, &fields);
  for (const FieldDescriptor* field : fields) {
    if (kept.count(field->name()) != 0) continue;
    visit({Below(place, field->name()) + " ", "not kept: " + files + " has no place for it"});
  }
}

void VisitLeftovers(const Exporter& exporter, const ExportOptions& options,
                    const std::string& files, const CameraCalibration& record,
                    const ExportCamera& camera, const std::string& fallback,
                    const LeftoverVisitor& visit) {
  std::set<std::string> kept = exporter.keeps;
  if (HoldsPoses(exporter, options)) kept.insert("extrinsics");
  if (exporter.numbered && camera.camera.name() == fallback) kept.insert("name");
  if (camera.form == nullptr) return VisitOthers(record, camera.place, kept, files, visit);
  kept.insert({"intrinsics", "fx", "fy", "cx", "cy", "k", "p", "skew"});
  VisitLostCoefficients(*camera.form, camera.intrinsics(), camera.intrinsics_place, files, visit);
  if (camera.intrinsics().skew() != 0 && exporter.keeps.count("skew") == 0) {
    visit({Below(camera.intrinsics_place, "skew") + " ",
           "is " + Shortest(camera.intrinsics().skew()) + ", and " + files + " has none",
           Leftover::Kind::kLens});
  }
  if (exporter.holds_record) return;
  VisitOthers(record, camera.place, kept, files, visit);
  VisitOthers(record.intrinsics(), camera.intrinsics_place, kept, files, visit);
}

void TakeLens(const Exporter& exporter, const Conventions& of, const LensModel* chosen,
              ExportCamera* camera) {
  CheckWhole(exporter, of.files, *camera);
  const CameraIntrinsics& in = camera->intrinsics();
  CheckSane(in, camera->intrinsics_place);
  camera->form = &FormOf(in, camera->intrinsics_place, chosen, exporter.lenses, of.files);
  camera->coefficients = CoefficientsIn(*camera->form, in);
  camera->cx = of.PixelFromRecord(in.cx());
  camera->cy = of.PixelFromRecord(in.cy());
}

// The pose of a camera, if it has one.
void TakePose(const std::string& files, bool from_camera, ExportCamera* camera) {
  camera->has_pose = camera->camera.has_extrinsics();
  if (!camera->has_pose) return;
  const auto& a = camera->camera.extrinsics().a();
  const std::vector<double> rows(a.begin(), a.end());
  const std::string why = WhyNotRigid(rows);
  if (!why.empty()) {
    const bool nearly = WhyNotRigid(rows, kNearlyRotation).empty();
    throw Failure(Below(camera->place, "extrinsics.a") + " " + why + ", and " + files +
                      " wants a rigid transform, 4x4 by rows",
                  nearly ? std::string(kTakeNearest) + "." : "Correct it in the record.");
  }
  camera->pose = RigidTransform::FromRows(rows);
  if (from_camera) camera->pose = camera->pose.Inverse();
}

// The first camera may be the frame of reference itself.
void CheckPoses(const Exporter& exporter, const std::string& files, const ExportRig& rig) {
  if (exporter.poses != Exporter::Poses::kNeeded) return;
  for (size_t i = 1; i < rig.cameras.size(); ++i) {
    if (rig.cameras[i].has_pose) continue;
    throw Failure(Below(rig.cameras[i].place, "extrinsics") + " is not set, and " + files +
                      " needs it of all cameras but the first",
                  "Set it first, or write one camera at a time with --camera.");
  }
}

void CheckAlike(const Exporter& exporter, const std::string& files, const ExportRig& rig) {
  const ExportCamera& first = rig.cameras[0];
  for (const ExportCamera& camera : rig.cameras) {
    if (exporter.one_lens && camera.form->word != first.form->word) {
      throw Failure(camera.place + " has another kind of lens than " + first.place + ", and " +
                        files + " has one for both",
                    "Write one camera at a time with --camera.");
    }
    const CameraIntrinsics &in = camera.intrinsics(), &of_first = first.intrinsics();
    if (exporter.one_size && (in.width() != of_first.width() || in.height() != of_first.height())) {
      throw Failure(camera.place + " has images of another size than " + first.place + ", and " +
                        files + " has one for both",
                    "Write one camera at a time with --camera.");
    }
  }
}

void TellConversion(const Exporter& exporter, const ExportRig& rig, ExportReport* report) {
  const Conventions& of = *rig.conventions;
  if (of.first_pixel != 0) {
    report->notes.push_back(
        "cx and cy are written plus 0.5, since the centre of the first pixel of " + of.files +
        " is at (0.5, 0.5)");
  }
  bool any = false, skewed = false;
  for (const ExportCamera& camera : rig.cameras) {
    any = any || camera.has_pose;
    skewed = skewed || camera.intrinsics().skew() != 0;
  }
  if (skewed && exporter.keeps.count("skew") != 0) {
    report->notes.push_back("skew is written, but OpenCV, which reads it, projects without");
  }
  if (!any) return;
  if ((exporter.poses == Exporter::Poses::kNeeded || exporter.holds_record) &&
      !rig.cameras[0].has_pose) {
    report->notes.push_back(rig.cameras[0].name +
                            " has no extrinsics, and is taken for the frame of reference");
  }
}

}  // namespace

void CheckCameraCount(const Exporter& exporter, const std::string& record, size_t cameras) {
  const std::string found =
      record + ": has " + std::to_string(cameras) + (cameras == 1 ? " camera" : " cameras");
  const std::string& files = ConventionsOf(exporter.format).files;
  if (cameras < exporter.least) {
    throw Failure(found + ", but " + files + " are of " + std::to_string(exporter.least),
                  "Take '--to opencv' for a single camera.");
  }
  if (exporter.most != 0 && cameras > exporter.most) {
    throw Failure(
        found + ", but " + files + " are of no more than " + std::to_string(exporter.most),
        "Say which one with --camera, or make a record of those that are meant.");
  }
}

ExportRig PrepareRig(const Exporter& exporter, const std::vector<CameraInRecord>& cameras,
                     const ExportOptions& options, ExportReport* report) {
  ExportRig rig{{}, &ConventionsOf(exporter.format), options, nullptr};
  const std::string& files = rig.conventions->files;
  for (const CameraInRecord& from : cameras) {
    ExportCamera camera{
        from.place, from.intrinsics_place, {}, from.camera, "", nullptr, {}, 0, 0, false, {}};
    camera.camera.mutable_intrinsics()->CopyFrom(from.camera->intrinsics());
    if (from.camera->has_extrinsics()) {
      camera.camera.mutable_extrinsics()->CopyFrom(from.camera->extrinsics());
    }
    if (from.camera->has_name()) camera.camera.set_name(from.camera->name());
    FillIn(options, &camera);
    const std::string fallback = "cam" + std::to_string(rig.cameras.size());
    camera.name = camera.camera.name().empty() ? fallback : camera.camera.name();
    if (!exporter.lenses.empty()) TakeLens(exporter, *rig.conventions, options.lens, &camera);
    if (HoldsPoses(exporter, options)) TakePose(files, options.from_camera, &camera);
    VisitLeftovers(exporter, options, files, *from.camera, camera, fallback,
                   [&](const Leftover& leftover) { report->leftovers.push_back(leftover); });
    rig.cameras.push_back(std::move(camera));
  }
  CheckPoses(exporter, files, rig);
  CheckAlike(exporter, files, rig);
  TellConversion(exporter, rig, report);
  return rig;
}

void TellTransforms(const ExportRig& rig, const std::vector<ExportedFile>& files,
                    ExportReport* report) {
  using Direction = Conventions::Direction;
  bool any = false;
  for (const ExportCamera& camera : rig.cameras) any = any || camera.has_pose;
  if (!any) return;
  std::string written;
  for (const Conventions::Transform& transform : rig.conventions->transforms) {
    const std::string key = transform.key.substr(0, transform.key.find(','));
    if (std::none_of(files.begin(), files.end(), [&](const ExportedFile& file) {
          return file.text.find(key) != std::string::npos;
        })) {
      continue;
    }
    written += (written.empty() ? "" : "; ") + transform.key +
               (transform.direction == Direction::kToCamera     ? ", to the camera"
                : transform.direction == Direction::kFromCamera ? ", from the camera"
                                                                : ", from the camera before");
  }
  report->notes.push_back(
      std::string("extrinsics, taken to map ") + (rig.options.from_camera ? "from" : "to") +
      " the camera (--extrinsics), are written as " + written +
      (rig.conventions->axes == Conventions::Axes::kOpenGl ? ", with the axes of OpenGL" : ""));
}

std::string CameraFileName(const ExportCamera& camera, const std::string& extension) {
  std::string name = camera.name;
  for (char& c : name) {
    const bool fine = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      c == '-' || c == '.' || c == '_';
    if (!fine) c = '_';
  }
  if (name[0] == '.' || name[0] == '-') name[0] = '_';
  return name + extension;
}

}  // namespace calib
