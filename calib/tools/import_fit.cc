#include "calib/tools/import_fit.h"

#include <algorithm>
#include <optional>
#include <set>

#include "calib/console/failure.h"
#include "calib/tools/conventions.h"
#include "calib/tools/import_common.h"

namespace calib {

using geometry::Camera;
using geometry::Lens;
using zarvo::calibration::RobotCalibration;

namespace {

struct Projection {
  const char* name;  // in the table of lens models
  Lens lens;
  size_t shape;  // parameters ahead of fx
};
constexpr Projection kProjections[] = {
    {"omni", Lens::kOmni, 1}, {"ds", Lens::kDoubleSphere, 2}, {"eucm", Lens::kExtendedUnified, 2}};

const LensModel* ModelOf(const Foreign& chain, const char* key) {
  const auto word = chain.Find({key});
  return word ? FindLensModel(word->Text()) : nullptr;
}

// --- One camera of each format, if its lens is none that a record holds --------------------------

// The importers have checked what is read here.

std::optional<Camera> OfKalibr(const Foreign& chain) {
  const LensModel* model = ModelOf(chain, "camera_model");
  const LensModel* distortion = ModelOf(chain, "distortion_model");
  const auto list = chain.Find({"distortion_coeffs"});
  const std::vector<double> coefficients = list ? list->Numbers() : std::vector<double>();
  const std::vector<double> numbers = chain.At({"intrinsics"}).Numbers();
  Camera camera;
  size_t shape = 0;
  for (const Projection& projection : kProjections) {
    if (model == nullptr || model->name != projection.name) continue;
    camera.lens = projection.lens;
    shape = projection.shape;
  }
  const bool fov = distortion != nullptr && distortion->name == "fov";
  if (shape == 0 && !fov) return std::nullopt;
  const bool brown = camera.lens == Lens::kOmni && distortion != nullptr &&
                     distortion->order == LensModel::Order::kBrown;
  const bool none = distortion == nullptr || distortion->order == LensModel::Order::kNone;
  if ((fov && shape > 0) || (!fov && !brown && !none)) {
    chain.At({"distortion_model"})
        .Refuse(
            "is a distortion that cannot be fitted together with this camera_model",
            "Fitted are omni with radtan or none, ds and eucm with none, and pinhole with fov.");
  }
  if (list && (coefficients.size() > 14 || (fov && coefficients.size() != 1))) {
    list->Refuse("has " + std::to_string(coefficients.size()) + " coefficients, expected " +
                     (fov ? "1 of fov" : "up to 14"),
                 "Correct it there.");
  }
  if (fov) camera.lens = Lens::kFieldOfView;
  std::copy(numbers.begin(), numbers.begin() + static_cast<std::ptrdiff_t>(shape), camera.shape);
  camera.fx = numbers[shape];
  camera.fy = numbers[shape + 1];
  camera.cx = numbers[shape + 2];
  camera.cy = numbers[shape + 3];
  if (!none) std::copy(coefficients.begin(), coefficients.end(), camera.distortion);
  return camera;
}

// That a lens has nothing beside what is fitted.
void CheckKeys(const Foreign& map, const std::set<std::string>& keys) {
  map.ForEachEntry([&](const std::string& key, const Foreign& value) {
    if (keys.count(key) != 0 || value.IsZero()) return;
    value.Refuse("is " + value.Spell() + ", which is not fitted",
                 "Leave --fit out to see what a record holds of the camera.");
  });
}

double NumberOf(const Foreign& map, const char* key) { return map.At({key}).Number(); }

Camera WithPinhole(Lens lens, const std::vector<double>& numbers) {
  Camera camera;
  camera.lens = lens;
  camera.fx = numbers[0];
  camera.fy = numbers[1];
  camera.cx = numbers[2];
  camera.cy = numbers[3];
  return camera;
}

// MEI is omni with the distortion of radtan.
std::optional<Camera> OfCamodocal(const Foreign& file) {
  const Foreign projection = file.At({"projection_parameters"});
  const auto mirror = file.Find({"mirror_parameters"});
  if (!mirror || !mirror->Find({"xi"}) || !projection.Find({"gamma1"})) return std::nullopt;
  Camera camera = WithPinhole(Lens::kOmni, NumbersOf(projection, {"gamma1", "gamma2", "u0", "v0"}));
  camera.shape[0] = NumberOf(*mirror, "xi");
  if (camera.shape[0] == 0) return std::nullopt;
  const auto distortion = file.Find({"distortion_parameters"});
  if (distortion) CheckKeys(*distortion, {"k1", "k2", "p1", "p2"});
  double* to = camera.distortion;
  for (const char* name : {"k1", "k2", "p1", "p2"}) {
    const auto value = distortion ? distortion->Find({name}) : std::nullopt;
    *to++ = value ? value->Number() : 0;
  }
  return camera;
}

std::optional<Camera> OfBasalt(const Foreign& model) {
  const LensModel* lens = ModelOf(model, "camera_type");
  const Foreign numbers = model.At({"intrinsics"});
  const std::vector<double> pinhole = NumbersOf(numbers, {"fx", "fy", "cx", "cy"});
  const std::string name = lens == nullptr ? "" : lens->name;
  const auto check = [&](std::set<std::string> keys) {
    keys.insert({"fx", "fy", "cx", "cy"});
    CheckKeys(numbers, keys);
  };
  if (name == "ds") {
    check({"xi", "alpha"});
    Camera camera = WithPinhole(Lens::kDoubleSphere, pinhole);
    camera.shape[0] = NumberOf(numbers, "xi");
    camera.shape[1] = NumberOf(numbers, "alpha");
    return camera;
  }
  if (name == "eucm" || name == "ucm") {
    check(name == "eucm" ? std::set<std::string>{"alpha", "beta"} : std::set<std::string>{"alpha"});
    Camera camera = WithPinhole(Lens::kExtendedUnified, pinhole);
    camera.shape[0] = NumberOf(numbers, "alpha");
    camera.shape[1] = name == "eucm" ? NumberOf(numbers, "beta") : 1;
    return camera;
  }
  if (name == "fov") {
    check({"w"});
    Camera camera = WithPinhole(Lens::kFieldOfView, pinhole);
    camera.distortion[0] = NumberOf(numbers, "w");
    return camera;
  }
  return std::nullopt;
}

struct ColmapLens {
  const char* name;
  Lens lens;
};
constexpr ColmapLens kColmapLenses[] = {{"FOV", Lens::kFieldOfView},
                                        {"EUCM", Lens::kExtendedUnified},
                                        {"THIN_PRISM_FISHEYE", Lens::kThinPrismFisheye},
                                        {"SIMPLE_DIVISION", Lens::kDivision},
                                        {"DIVISION", Lens::kDivision}};

std::optional<Camera> OfColmap(const Foreign& entry) {
  const std::string name = entry.At({"camera_model_name"}).Text();
  const auto* found = std::find_if(std::begin(kColmapLenses), std::end(kColmapLenses),
                                   [&](const ColmapLens& lens) { return lens.name == name; });
  if (found == std::end(kColmapLenses)) return std::nullopt;
  std::vector<double> numbers = entry.At({"camera_params"}).Numbers();
  if (name == "SIMPLE_DIVISION") numbers.insert(numbers.begin(), numbers[0]);
  Camera camera = WithPinhole(found->lens, numbers);
  camera.cx = ConventionsOf("colmap").PixelToRecord(camera.cx);
  camera.cy = ConventionsOf("colmap").PixelToRecord(camera.cy);
  if (found->lens == Lens::kThinPrismFisheye) {
    // Without tangential distortion and prism a record holds it as it is.
    const double lost[] = {numbers[6], numbers[7], numbers[10], numbers[11]};
    if (std::all_of(std::begin(lost), std::end(lost), [](double x) { return x == 0; })) {
      return std::nullopt;
    }
    std::copy(numbers.begin() + 4, numbers.begin() + 10, camera.distortion);
    camera.distortion[8] = numbers[10];
    camera.distortion[10] = numbers[11];
    return camera;
  }
  if (found->lens == Lens::kDivision && numbers[4] == 0) return std::nullopt;
  std::copy(numbers.begin() + 4, numbers.end(),
            found->lens == Lens::kExtendedUnified ? camera.shape : camera.distortion);
  return camera;
}

// --- All cameras of a file, in the order of the record's -----------------------------------------

struct Reader {
  const char* format;
  std::vector<Foreign> (*cameras)(const std::vector<Foreign>& files, const RobotCalibration& robot);
  std::optional<Camera> (*read)(const Foreign& camera);
};
constexpr Reader kReaders[] = {
    {"kalibr",
     [](const std::vector<Foreign>& files, const RobotCalibration& robot) {
       std::vector<Foreign> chains;
       for (const auto& camera : robot.camera()) chains.push_back(files[0].At({camera.name()}));
       return chains;
     },
     OfKalibr},
    {"camodocal",
     [](const std::vector<Foreign>& files, const RobotCalibration&) {
       std::vector<Foreign> cameras;  // the rest tells where they sit
       for (const Foreign& file : files) {
         if (file.Has({"model_type"})) cameras.push_back(file);
       }
       return cameras;
     },
     OfCamodocal},
    {"basalt",
     [](const std::vector<Foreign>& files, const RobotCalibration&) {
       return files[0].At({"value0"}).At({"intrinsics"}).Elements();
     },
     OfBasalt},
    {"colmap",
     [](const std::vector<Foreign>& files, const RobotCalibration& robot) {
       std::vector<Foreign> entries;
       if (!files[0].IsMap()) return entries;  // of a rig, whose cameras have no size
       for (const auto& camera : robot.camera()) entries.push_back(files[0].At({camera.name()}));
       return entries;
     },
     OfColmap}};

const Reader* ReaderOf(const std::string& format) {
  for (const Reader& reader : kReaders) {
    if (reader.format == format) return &reader;
  }
  return nullptr;
}

// What messages call it.
std::string NameOf(const zarvo::calibration::CameraCalibration& camera) {
  return camera.name().empty() ? "the camera" : camera.name();
}

// Brown's, of any format: what a record cannot hold of them are the last coefficients.
void FitBrown(const Foreign& file, const FitFlags& fit, RobotCalibration* robot) {
  for (const LostLens& lost : file.LostLenses()) {
    for (auto& calibration : *robot->mutable_camera()) {
      if (&calibration.intrinsics() != lost.record) continue;
      const std::string name = NameOf(calibration);
      Camera camera = GeometryOf({&calibration, lost.record, nullptr, name, name},
                                 FindLensModel("rational_polynomial"));
      std::copy(lost.coefficients.begin(), lost.coefficients.end(), camera.distortion);
      fit.Store(camera, name, calibration.mutable_intrinsics());
      file.TakeBackLosses(lost.path);
    }
  }
}

}  // namespace

bool MayBeFitted(const std::string& format, const std::vector<Foreign>& files) {
  return ReaderOf(format) != nullptr ||
         std::any_of(files.begin(), files.end(),
                     [](const Foreign& file) { return !file.LostLenses().empty(); });
}

void FitCameras(const std::string& format, const std::vector<Foreign>& files, const FitFlags& fit,
                RobotCalibration* robot) {
  for (const Foreign& file : files) FitBrown(file, fit, robot);
  const Reader* reader = ReaderOf(format);
  if (reader == nullptr) return;
  const std::vector<Foreign> cameras = reader->cameras(files, *robot);
  for (size_t i = 0; i < cameras.size(); ++i) {
    std::optional<Camera> camera = reader->read(cameras[i]);
    if (!camera) continue;
    auto* calibration = robot->mutable_camera(static_cast<int>(i));
    camera->width = calibration->intrinsics().width();
    camera->height = calibration->intrinsics().height();
    fit.Store(*camera, NameOf(*calibration), calibration->mutable_intrinsics());
    cameras[i].TakeBackLosses();
  }
}

}  // namespace calib
