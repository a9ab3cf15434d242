#include "calib/tools/import_fit.h"

#include <algorithm>
#include <optional>

#include "calib/console/failure.h"

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

// The camera, if its lens is none that a record holds.
std::optional<Camera> ForeignCamera(const Foreign& chain) {
  const LensModel* model = ModelOf(chain, "camera_model");
  const LensModel* distortion = ModelOf(chain, "distortion_model");
  const auto list = chain.Find({"distortion_coeffs"});
  const std::vector<double> coefficients = list ? list->Numbers() : std::vector<double>();
  const std::vector<double> numbers = chain.At({"intrinsics"}).Numbers();
  const std::vector<double> size = chain.At({"resolution"}).Numbers();
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
  camera.width = static_cast<int>(size[0]);
  camera.height = static_cast<int>(size[1]);
  if (!none) std::copy(coefficients.begin(), coefficients.end(), camera.distortion);
  return camera;
}

}  // namespace

// ImportCamchain() has checked what is read here.
void FitCamchain(const Foreign& file, const FitFlags& fit, RobotCalibration* robot) {
  for (auto& camera : *robot->mutable_camera()) {
    const Foreign chain = file.At({camera.name()});
    const auto foreign = ForeignCamera(chain);
    if (!foreign) continue;
    fit.Store(*foreign, chain.path(), camera.mutable_intrinsics());
    chain.TakeBackLosses();
  }
}

}  // namespace calib
