// OpenCV FileStorage: what the camera calibration program writes, and programs of one's own that
// store a camera matrix and distortion coefficients under the same or the older keys.
#include "calib/tools/import_opencv.h"

#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/importers.h"

namespace calib {

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
  if (const auto tag = matrix.Find({"type_id"})) tag->Text();  // in the JSON variant
  const int32_t actual = Channels(matrix);
  if (actual != channels) {
    matrix.At({"dt"}).Refuse(
        "announces " + std::to_string(actual) + " channels, expected " + std::to_string(channels),
        "Correct it there.");
  }
  return MatrixData(matrix, rows, columns, channels);
}

namespace {

// Points that the calibration was computed from: one row of the image's for each view, and the
// target's, which are those of every view.
void StoreSamples(const Foreign& file, CameraIntrinsics* intrinsics) {
  const auto image = file.Find({"image_points"}), target = file.Find({"grid_points"});
  if (!image || !target) return;
  const std::vector<double> on_target = OpenCvMatrix(*target, 0, 0, 3);
  for (size_t i = 2; i < on_target.size(); i += 3) {
    // Stays unused, and is reported so with image_points.
    if (on_target[i] != on_target[2]) return target->NotKept("its third coordinates differ");
  }
  const std::vector<double> in_image = OpenCvMatrix(*image, 0, 0, 2);
  target->At({"data"}).CheckFloats(on_target);
  image->At({"data"}).CheckFloats(in_image);
  const size_t points = on_target.size() / 3;
  if (points == 0 || in_image.size() % (2 * points) != 0) {
    image->Refuse("has " + std::to_string(in_image.size() / 2) +
                      " points, which is no multiple of the " + std::to_string(points) +
                      " in grid_points",
                  "Correct it there.");
  }
  for (size_t i = 0; i < in_image.size() / 2; ++i) {
    CameraIntrinsicsSamplePoints* sample = intrinsics->add_sample_points();
    sample->set_img_x(static_cast<float>(in_image[2 * i]));
    sample->set_img_y(static_cast<float>(in_image[2 * i + 1]));
    sample->set_tgt_x(static_cast<float>(on_target[3 * (i % points)]));
    sample->set_tgt_y(static_cast<float>(on_target[3 * (i % points) + 1]));
  }
  intrinsics->set_tgt_z(static_cast<float>(on_target[2]));
  image->Remark("kept as sample_points with grid_points; not which view a point belongs to");
}

const std::vector<std::string> kMatrixKeys = {"camera_matrix", "Camera_Matrix", "cameraMatrix",
                                              "K"};

void StoreDistortion(const Foreign& file, const LensModel* chosen, CameraIntrinsics* intrinsics) {
  const LensImport lens({file}, chosen);
  if (const auto list =
          file.Find({"distortion_coefficients", "Distortion_Coefficients", "distCoeffs", "D"})) {
    lens.Store(*list, OpenCvMatrix(*list, 0, 0, 1), intrinsics);
  } else {
    lens.StoreNone();
  }
  lens.LoseParameters();
  lens.LoseUnread();
}

void ImportCamera(const Foreign& file, const LensModel* lens, CameraIntrinsics* intrinsics) {
  const Foreign matrix = file.At(kMatrixKeys);
  StoreCameraMatrix(matrix, OpenCvMatrix(matrix, 3, 3, 1), intrinsics);
  StoreDistortion(file, lens, intrinsics);
  if (const auto width = file.Find({"image_width", "image_Width"})) {
    intrinsics->set_width(width->Count());
  }
  if (const auto height = file.Find({"image_height", "image_Height"})) {
    intrinsics->set_height(height->Count());
  }
  if (const auto error = file.Find({"avg_reprojection_error", "Avg_Reprojection_Error"})) {
    intrinsics->set_error_per_point(error->Number());
  }
  StoreSamples(file, intrinsics);
}

}  // namespace

void ImportOpenCv(const std::vector<Foreign>& files, const LensModel* lens,
                  zarvo::calibration::RobotCalibration* robot) {
  const bool single = files.size() == 1 && files[0].Find(kMatrixKeys);
  if (!single && ImportOpenCvStereo(files, lens, robot)) return;
  if (files.size() > 1) {
    files[1].Refuse("is a second file, but neither holds a stereo calibration (M1 and M2, R and T)",
                    "Bring in one camera at a time, and put them together with 'calib merge'.");
  }
  ImportCamera(files[0], lens, robot->add_camera()->mutable_intrinsics());
}

}  // namespace calib
