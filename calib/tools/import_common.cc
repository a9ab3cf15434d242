#include "calib/tools/import_common.h"

namespace calib {

using zarvo::calibration::CameraIntrinsics;

std::vector<double> MatrixData(const Foreign& matrix, int32_t rows, int32_t columns,
                               int32_t channels) {
  const Foreign actual_rows = matrix.At({"rows"}), actual_columns = matrix.At({"cols"});
  const Foreign data = matrix.At({"data"});
  std::vector<double> numbers = data.Numbers();
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

void StoreTransform(const Foreign& origin, const std::vector<double>& matrix,
                    const std::string& frames, zarvo::calibration::CameraExtrinsics* extrinsics) {
  if (matrix[12] != 0 || matrix[13] != 0 || matrix[14] != 0 || matrix[15] != 1) {
    origin.Refuse("is no transform: its last row is not [0, 0, 0, 1]", "Correct it there.");
  }
  for (const double element : matrix) extrinsics->add_a(element);
  origin.Remark("kept as extrinsics, 4x4 by rows; not that it maps " + frames);
}

}  // namespace calib
