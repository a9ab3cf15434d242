#include "calib/tools/import_common.h"

#include <cmath>
#include <limits>

#include "calib/console/number.h"
#include "calib/tools/conventions.h"
#include "calib/tools/opencv_base64.h"

namespace calib {

using zarvo::calibration::CameraIntrinsics;

std::vector<double> MatrixData(const Foreign& matrix, int32_t rows, int32_t columns,
                               int32_t channels) {
  const Foreign actual_rows = matrix.At({"rows"}), actual_columns = matrix.At({"cols"});
  const Foreign data = matrix.At({"data"});
  if (const auto type = matrix.Find({"dt"})) type->Text();
  std::vector<double> numbers = IsBase64(data) ? Base64Numbers(data) : data.Numbers();
  // Below 2^31 each, and few channels: 64 bits without a sign hold the product.
  const uint64_t size = uint64_t{1} * static_cast<uint32_t>(actual_rows.Count()) *
                        static_cast<uint32_t>(actual_columns.Count()) *
                        static_cast<uint32_t>(channels);
  if (size != numbers.size()) {
    const std::string each = channels == 1 ? "" : " of " + std::to_string(channels) + " channels";
    data.Refuse("has " + std::to_string(numbers.size()) +
                    " numbers, but rows: " + actual_rows.Text() +
                    " and cols: " + actual_columns.Text() + each + " make " + std::to_string(size),
                "Find out which of the two is wrong, and correct it.");
  }
  if ((rows != 0 && actual_rows.Count() != rows) ||
      (columns != 0 && actual_columns.Count() != columns)) {
    matrix.Refuse("has " + actual_rows.Text() + " rows and " + actual_columns.Text() +
                      " cols, expected " + std::to_string(rows) + " and " + std::to_string(columns),
                  "Correct it there.");
  }
  return numbers;
}

void StoreCameraMatrix(const Foreign& origin, const std::vector<double>& matrix,
                       CameraIntrinsics* intrinsics) {
  const char* expected = "expected [fx, skew, cx, 0, fy, cy, 0, 0, 1]";
  if (matrix.size() != 9) {
    origin.Refuse("has " + std::to_string(matrix.size()) + " numbers, " + expected,
                  "Correct it there.");
  }
  if (matrix[0] == 0 && matrix[4] == 0) {
    origin.Refuse("has focal lengths of 0, which says that the camera is not calibrated",
                  "Calibrate it first.");
  }
  if (matrix[3] != 0 || matrix[6] != 0 || matrix[7] != 0 || matrix[8] != 1) {
    origin.Refuse(std::string("is no camera matrix by rows, ") + expected, "Correct it there.");
  }
  intrinsics->set_fx(matrix[0]);
  intrinsics->set_skew(matrix[1]);
  intrinsics->set_cx(matrix[2]);
  intrinsics->set_fy(matrix[4]);
  intrinsics->set_cy(matrix[5]);
}

namespace {

// What belongs to a lens and stands before fx, as in "xi is 1.58".
void LoseParameters(const Foreign& list, const std::vector<double>& numbers,
                    const LensModel& model) {
  std::string lost;
  for (size_t i = 0; i < model.parameters.size(); ++i) {
    if (numbers[i] == 0) continue;
    lost += (lost.empty() ? "" : " and ") + model.parameters[i] + " is " + Shortest(numbers[i]);
  }
  if (!lost.empty()) list.Lose(lost + ", of " + model.name + ", which no field of a record holds");
}

void CheckLastRow(const Foreign& origin, const std::vector<double>& matrix) {
  if (matrix[12] != 0 || matrix[13] != 0 || matrix[14] != 0 || matrix[15] != 1) {
    origin.Refuse("is no transform: its last row is not [0, 0, 0, 1]", "Correct it there.");
  }
}

bool IsPixelCount(double number) {
  return number >= 1 && number <= std::numeric_limits<int32_t>::max() &&
         number == std::floor(number);
}

}  // namespace

void StorePinhole(const Foreign& origin, const std::vector<double>& numbers,
                  CameraIntrinsics* intrinsics) {
  if (numbers[0] == 0 && numbers[1] == 0) {
    origin.Refuse("has focal lengths of 0, which says that the camera is not calibrated",
                  "Calibrate it first.");
  }
  intrinsics->set_fx(numbers[0]);
  intrinsics->set_fy(numbers[1]);
  intrinsics->set_skew(0);
  intrinsics->set_cx(numbers[2]);
  intrinsics->set_cy(numbers[3]);
}

void StoreProjection(const Foreign& name, const Foreign& list, CameraIntrinsics* intrinsics) {
  const LensModel* model = FindLensModel(name.Text());
  if (model == nullptr) {
    name.Refuse(name.Spell() + " is no camera model", "Known are pinhole, omni, eucm and ds.");
  }
  const size_t before_fx = model->parameters.size();
  const std::vector<double> numbers = list.Numbers();
  if (numbers.size() != before_fx + 4) {
    list.Refuse("has " + std::to_string(numbers.size()) + " numbers, but camera_model " +
                    name.Peek() + " takes " + std::to_string(before_fx + 4),
                "Check which of the two is wrong, and correct it.");
  }
  LoseParameters(list, numbers, *model);
  StorePinhole(list, {numbers.end() - 4, numbers.end()}, intrinsics);
}

void StoreSize(const Foreign& list, CameraIntrinsics* intrinsics) {
  const std::vector<double> size = list.Numbers();
  if (size.size() != 2 || !IsPixelCount(size[0]) || !IsPixelCount(size[1])) {
    list.Refuse("expected [width, height], two whole numbers from 1", "Correct it there.");
  }
  intrinsics->set_width(static_cast<int32_t>(size[0]));
  intrinsics->set_height(static_cast<int32_t>(size[1]));
}

int32_t PixelCount(const Foreign& value) {
  const double number = value.Number();
  if (!IsPixelCount(number)) {
    value.Refuse("is " + value.Spell() + ", expected a whole number from 1", "Correct it there.");
  }
  return static_cast<int32_t>(number);
}

RigidTransform ReadTransform(const Foreign& value) {
  const std::vector<double> rows = value.IsMap() ? MatrixData(value, 4, 4, 1) : value.Rows(4, 4);
  CheckLastRow(value, rows);
  return RigidTransform::FromRows(rows);
}

std::vector<double> NumbersOf(const Foreign& value, const std::vector<std::string>& keys) {
  std::vector<double> numbers;
  numbers.reserve(keys.size());
  for (const std::string& key : keys) numbers.push_back(value.At({key}).Number());
  return numbers;
}

std::array<double, 3> Three(const Foreign& list) {
  const std::vector<double> numbers = list.Numbers();
  if (numbers.size() != 3) {
    list.Refuse("has " + std::to_string(numbers.size()) + " numbers, expected 3",
                "Correct it there.");
  }
  return {numbers[0], numbers[1], numbers[2]};
}

RigidTransform FromQuaternion(const Foreign& origin, const Quaternion& q,
                              const std::array<double, 3>& t) {
  const double length = std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
  if (!(std::abs(length - 1) <= 0.01)) {
    origin.Refuse("has a quaternion of length " + Shortest(length) + ", expected 1",
                  "Correct it there.");
  }
  return RigidTransform::FromQuaternion(q, t);
}

namespace {

void NoteIfBent(const Foreign& origin, const std::vector<double>& rows) {
  const std::string why = WhyNotRigid(rows);
  if (!why.empty()) origin.Convert(why + "; kept as it is: " + kTakeNearest);
}

}  // namespace

void CheckRigid(const Foreign& origin, const RigidTransform& transform) {
  const std::string why = WhyNotRigid(transform.Rows(), kNearlyRotation);
  if (!why.empty()) origin.Refuse(why, "Correct it there.");
  NoteIfBent(origin, transform.Rows());
}

void StorePose(const std::string& format, const Foreign& origin, const RigidTransform& file,
               const std::string& frame, zarvo::calibration::CameraExtrinsics* extrinsics) {
  const Conventions& conventions = ConventionsOf(format);
  const auto direction = conventions.transforms.at(0).direction;
  if (direction != Conventions::Direction::kFromCamera) {
    return StoreTransform(origin, file.Rows(), "from " + frame + " to this camera", extrinsics);
  }
  CheckRigid(origin, file);
  for (const double element : conventions.ToRecord(direction, file).Rows()) {
    extrinsics->add_a(element + 0.0);  // no -0
  }
  origin.Convert("maps from the camera to " + frame + "; kept inverted, as extrinsics from " +
                 frame + " to the camera" +
                 (conventions.axes == Conventions::Axes::kOpenGl
                      ? ", with the axes of OpenCV in place of OpenGL's"
                      : ""));
}

void StoreTransform(const Foreign& origin, const std::vector<double>& matrix,
                    const std::string& frames, zarvo::calibration::CameraExtrinsics* extrinsics) {
  CheckLastRow(origin, matrix);
  NoteIfBent(origin, matrix);
  for (const double element : matrix) extrinsics->add_a(element);
  origin.Remark("kept as extrinsics, 4x4 by rows; not that it maps " + frames);
}

}  // namespace calib
