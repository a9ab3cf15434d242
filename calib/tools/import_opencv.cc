// OpenCV FileStorage: what the camera calibration program writes, and programs of one's own that
// store a camera matrix and distortion coefficients under such keys (opencv_keys.h), be it as lists
// in YAML or JSON, or Autoware's.
#include "calib/tools/import_opencv.h"

#include <algorithm>
#include <cmath>

#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/importers.h"
#include "calib/tools/opencv_base64.h"
#include "calib/tools/opencv_keys.h"

namespace calib {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::CameraIntrinsicsSamplePoints;

namespace {

// The channels that dt announces, such as 2 of "2f".
int32_t Channels(const Foreign& matrix) {
  const std::string type = matrix.At({"dt"}).Text();
  return type.size() > 1 && type[0] >= '1' && type[0] <= '9' ? type[0] - '0' : 1;
}

}  // namespace

std::vector<double> OpenCvMatrix(const Foreign& matrix, int32_t rows, int32_t columns,
                                 int32_t channels) {
  if (!matrix.IsMap()) {
    std::vector<double> numbers = IsBase64(matrix) ? Base64Numbers(matrix) : matrix.FlatNumbers();
    const auto size =
        static_cast<size_t>(rows) * static_cast<size_t>(columns) * static_cast<size_t>(channels);
    if (size != 0 && numbers.size() != size) {
      matrix.Refuse(
          "has " + std::to_string(numbers.size()) + " numbers, expected " + std::to_string(size),
          "Correct it there.");
    }
    return numbers;
  }
  if (const auto tag = matrix.Find({"type_id"})) tag->Text();  // in the JSON variant
  const int32_t actual = Channels(matrix);
  if (actual != channels && !matrix.At({"data"}).IsZero()) {
    matrix.At({"dt"}).Refuse(
        "announces " + std::to_string(actual) + " channels, expected " + std::to_string(channels),
        "Correct it there.");
  }
  return MatrixData(matrix, rows, columns, channels);
}

namespace {

// Points of so many coordinates, whether they are the elements of a matrix or listed one after
// another; views of them may be lists in the list, and points in these. Refuses views that have not
// `in_each` points, unless that is 0.
std::vector<double> Points(const Foreign& value, int32_t coordinates, size_t in_each) {
  std::vector<double> numbers = OpenCvMatrix(value, 0, 0, coordinates);
  const auto size = static_cast<size_t>(coordinates);
  if (numbers.size() % size != 0) {
    value.Refuse("has " + std::to_string(numbers.size()) + " numbers, no multiple of the " +
                     std::to_string(size) + " of a point",
                 "Correct it there.");
  }
  if (in_each == 0 || !value.IsList()) return numbers;
  const auto check = [&](const Foreign& view, size_t in_view) {
    if (in_view == size || in_view == in_each * size) return;
    view.Refuse("has " + std::to_string(in_view) + " coordinates, but grid_points has " +
                    std::to_string(in_each) + " points",
                "Correct it there.");
  };
  if (IsBase64(value)) {
    const std::vector<std::vector<double>> views = Base64Lists(value);
    for (const auto& view : views) {
      if (views.size() > 1) check(value, view.size());
    }
  } else {
    for (const Foreign& view : value.Lists()) check(view, view.FlatNumbers().size());
  }
  return numbers;
}

// What Foreign::CheckFloats() needs: the list that the numbers are in.
Foreign ListOf(const Foreign& points) { return points.IsMap() ? points.At({"data"}) : points; }

// The target's points; none if no record can hold them.
std::vector<double> TargetPoints(const Foreign& file) {
  const auto target = file.Find({"grid_points"});
  if (!target) return {};
  std::vector<double> points = Points(*target, 3, 0);
  for (size_t i = 2; i < points.size(); i += 3) {
    if (points[i] == points[2]) continue;
    target->NotKept("its third coordinates differ");
    return {};
  }
  ListOf(*target).CheckFloats(points);
  return points;
}

// Points that the calibration was computed from: those of each view in the image, and the target's,
// which are those of every view. Before OpenCV 4 the target's are not in the file.
void StoreSamples(const Foreign& file, CameraIntrinsics* intrinsics) {
  const auto image = file.Find({"image_points", "Image_points"});
  if (!image) return;
  const std::vector<double> on_target = TargetPoints(file);
  const size_t points = on_target.size() / 3;
  const std::vector<double> in_image = Points(*image, 2, points);
  if (in_image.empty()) return;
  ListOf(*image).CheckFloats(in_image);
  if (points != 0 && in_image.size() % (2 * points) != 0) {
    image->Refuse("has " + std::to_string(in_image.size() / 2) +
                      " points, which is no multiple of the " + std::to_string(points) +
                      " in grid_points",
                  "Correct it there.");
  }
  for (size_t i = 0; i < in_image.size() / 2; ++i) {
    CameraIntrinsicsSamplePoints* sample = intrinsics->add_sample_points();
    sample->set_img_x(static_cast<float>(in_image[2 * i]));
    sample->set_img_y(static_cast<float>(in_image[2 * i + 1]));
    if (points == 0) continue;
    sample->set_tgt_x(static_cast<float>(on_target[3 * (i % points)]));
    sample->set_tgt_y(static_cast<float>(on_target[3 * (i % points) + 1]));
  }
  if (points > 0) intrinsics->set_tgt_z(static_cast<float>(on_target[2]));
  image->Remark(std::string("kept as sample_points ") +
                (points > 0 ? "with grid_points" : "without points of the target") +
                "; not which view a point belongs to");
}

void StoreDistortion(const Foreign& file, const LensModel* chosen, CameraIntrinsics* intrinsics) {
  const LensImport lens({file}, chosen);
  if (const auto list = FindOpenCvPart(file, OpenCvPart::kCoefficients, 0)) {
    lens.Store(*list, OpenCvMatrix(*list, 0, 0, 1), intrinsics);
  } else {
    lens.StoreNone();
  }
  lens.LoseParameters();
  lens.LoseUnread();
  LoseOtherCameras(file);
}

void ImportCamera(const Foreign& file, const LensModel* lens, CameraCalibration* camera) {
  CameraIntrinsics* intrinsics = camera->mutable_intrinsics();
  const auto found = FindOpenCvPart(file, OpenCvPart::kMatrix, 0);
  const Foreign matrix = found ? *found : file.At({"camera_matrix"});
  StoreCameraMatrix(matrix, OpenCvMatrix(matrix, 3, 3, 1), intrinsics);
  StoreDistortion(file, lens, intrinsics);
  StoreImageSize(file, intrinsics);
  if (const auto name = file.Find({"camera_name"})) camera->set_name(name->Text());
  if (const auto error = FindSpelled(file, {"avgreprojectionerror", "reprojectionerror"})) {
    intrinsics->set_error_per_point(error->Number());
  }
  StoreSamples(file, intrinsics);
  if (const auto pose = file.Find({"CameraExtrinsicMat"})) {
    StorePose("autoware", *pose, ReadTransform(*pose), "the lidar", camera->mutable_extrinsics());
  }
}

}  // namespace

void StoreImageSize(const Foreign& file, CameraIntrinsics* intrinsics) {
  if (const auto width = FindSpelled(file, {"imagewidth", "imgwidth"})) {
    intrinsics->set_width(PixelCount(*width));
  }
  if (const auto height = FindSpelled(file, {"imageheight", "imgheight"})) {
    intrinsics->set_height(PixelCount(*height));
  }
  if (const auto size = file.Find({"ImageSize"})) StoreSize(*size, intrinsics);
  auto size = FindSpelled(file, {"imagesize", "imgsize"});
  if (!size) size = file.Find({"Size"});  // of ZED
  if (!size || !size->IsList() || size->Items() != 2 || intrinsics->has_width()) return;
  StoreSize(*size, intrinsics);
  // It may be rows and columns, or of a pattern.
  const double width = intrinsics->width(), height = intrinsics->height();
  const auto off_middle = [&](double w, double h) {
    return std::abs(intrinsics->cx() - w / 2) + std::abs(intrinsics->cy() - h / 2);
  };
  const bool inside = intrinsics->cx() < width && intrinsics->cy() < height;
  if (inside && off_middle(width, height) <= off_middle(height, width)) return;
  intrinsics->clear_width();
  intrinsics->clear_height();
  size->NotKept("the principal point tells that it is no [width, height] of the images");
}

void LoseOtherCameras(const Foreign& file) {
  file.ForEachEntry([](const std::string& key, const Foreign& value) {
    const auto meaning = FindOpenCvKey(key);
    if (!meaning || meaning->camera == 0 || value.IsUsed() || value.IsZero()) return;
    if (meaning->part != OpenCvPart::kMatrix && meaning->part != OpenCvPart::kCoefficients) return;
    value.Lose("is " + value.Spell() + ", which is one of a pair's, and is not kept");
  });
}

bool IsOpenCv(const Foreign& file) {
  if (!file.IsMap()) return false;
  const bool of_ros = IsCameraInfo(file);
  bool is_matrix = false;
  file.ForEachEntry([&](const std::string& key, const Foreign& value) {
    const auto meaning = FindOpenCvKey(key);
    if (!meaning || (meaning->part != OpenCvPart::kMatrix && key != "R")) return;
    const bool may_be_list = meaning->part == OpenCvPart::kMatrix && !of_ros;
    is_matrix |= (value.IsMap() || may_be_list) && HasFormOfMatrix(value);
  });
  return is_matrix;
}

void ImportOpenCv(const std::vector<Foreign>& files, const LensModel* lens,
                  zarvo::calibration::RobotCalibration* robot) {
  const bool single = files.size() == 1 && FindOpenCvPart(files[0], OpenCvPart::kMatrix, 0);
  if (!single && ImportOpenCvStereo(files, lens, robot)) return;
  if (files.size() > 1) {
    files[1].Refuse("is a second file, but neither holds a stereo calibration (M1 and M2, R and T)",
                    "Bring in one camera at a time, and put them together with 'calib merge'.");
  }
  ImportCamera(files[0], lens, robot->add_camera());
}

}  // namespace calib
