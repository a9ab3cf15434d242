#include "calib/geometry/least_squares.h"

#include <Eigen/Dense>
#include <cmath>
#include <unsupported/Eigen/NonLinearOptimization>
#include <unsupported/Eigen/NumericalDiff>

namespace zarvo {
namespace calibration_geometry {

namespace {

struct Problem {
  using Scalar = double;
  using InputType = Eigen::VectorXd;
  using ValueType = Eigen::VectorXd;
  using JacobianType = Eigen::MatrixXd;
  enum { InputsAtCompileTime = Eigen::Dynamic, ValuesAtCompileTime = Eigen::Dynamic };

  size_t parameter_count, residual_count;
  const Residuals* residuals;

  int inputs() const { return static_cast<int>(parameter_count); }
  int values() const { return static_cast<int>(residual_count); }
  int operator()(const InputType& at, ValueType& value) const {
    std::vector<double> list(residual_count);
    (*residuals)({at.data(), at.data() + at.size()}, &list);
    for (size_t i = 0; i < list.size(); ++i) value[static_cast<Eigen::Index>(i)] = list[i];
    return 0;
  }
};

}  // namespace

bool LeastSquares(size_t count, const Residuals& residuals, std::vector<double>* parameters) {
  if (count < parameters->size() || parameters->empty()) return false;
  Eigen::NumericalDiff<Problem, Eigen::Central> problem(
      Problem{parameters->size(), count, &residuals});
  Eigen::LevenbergMarquardt<Eigen::NumericalDiff<Problem, Eigen::Central>> solver(problem);
  solver.parameters.ftol = solver.parameters.xtol = 1e-15;
  solver.parameters.maxfev = 400;
  Eigen::VectorXd at = Eigen::Map<Eigen::VectorXd>(parameters->data(),
                                                   static_cast<Eigen::Index>(parameters->size()));
  solver.minimize(at);
  parameters->assign(at.data(), at.data() + at.size());
  return std::isfinite(solver.fnorm);
}

}  // namespace calibration_geometry
}  // namespace zarvo
