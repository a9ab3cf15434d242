// Polynomials of one variable, their coefficients from the constant one up.
#ifndef CALIB_GEOMETRY_POLYNOMIAL_H_
#define CALIB_GEOMETRY_POLYNOMIAL_H_

#include <vector>

namespace zarvo {
namespace calibration_geometry {

using Polynomial = std::vector<double>;

double ValueAt(const Polynomial& polynomial, double x);
Polynomial Derivative(const Polynomial& polynomial);
Polynomial Product(const Polynomial& a, const Polynomial& b);
Polynomial Sum(const Polynomial& a, const Polynomial& b);

// Where the polynomial first changes its sign in (from, to]; infinity if it does not.
double FirstSignChange(const Polynomial& polynomial, double from, double to);

}  // namespace calibration_geometry
}  // namespace zarvo

#endif  // CALIB_GEOMETRY_POLYNOMIAL_H_
