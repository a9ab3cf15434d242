// Least squares with derivatives by differences, for problems of a few parameters.
#ifndef CALIB_GEOMETRY_LEAST_SQUARES_H_
#define CALIB_GEOMETRY_LEAST_SQUARES_H_

#include <functional>
#include <vector>

namespace zarvo {
namespace calibration_geometry {

// Writes as many residuals as there are in the vector.
using Residuals =
    std::function<void(const std::vector<double>& parameters, std::vector<double>* residuals)>;

// Moves the parameters to where the sum of the squares of `count` residuals is least, near where
// they are. False if a residual there is not finite.
bool LeastSquares(size_t count, const Residuals& residuals, std::vector<double>* parameters);

}  // namespace calibration_geometry
}  // namespace zarvo

#endif  // CALIB_GEOMETRY_LEAST_SQUARES_H_
