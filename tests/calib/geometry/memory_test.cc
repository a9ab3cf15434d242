// The arithmetic without memory: whichever allocation fails, once or for good, a status says so,
// and nothing is thrown.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

#include "calib/geometry/calibration_geometry.h"
#include "calib/geometry/calibration_geometry_c.h"
#include "tests/support/allocations.h"

namespace zarvo {
namespace calibration_geometry {
namespace {

using calibration::testing::FailingAllocation;

Camera Lensed(Lens lens) {
  Camera camera;
  camera.lens = lens;
  camera.fx = camera.fy = 30;
  camera.cx = 16;
  camera.cy = 12;
  camera.width = 33;
  camera.height = 25;
  camera.distortion[0] = lens == Lens::kPinhole ? 0 : -0.05;
  return camera;
}

struct Call {
  const char* name;
  std::function<Status()> run;
};

std::vector<Call> Calls() {
  const Camera brown = Lensed(Lens::kBrown), fisheye = Lensed(Lens::kFisheye);
  Transform aside;
  aside.m[3] = -0.1;
  std::vector<TargetPoint> target;
  for (int i = 0; i < 9; ++i) {
    const Point point = {0.2 * (i % 3), 0.2 * (i / 3), 2};
    target.push_back({point.x, point.y, Project(brown, point).pixel});
  }
  DifferenceOptions small;
  small.columns = 5;
  return {
      {"Project",
       [=] {
         return Project(fisheye, {0, 0, 1}).status;
       }},
      {"Unproject",
       [=] {
         return Unproject(brown, {1, 1}).status;
       }},
      {"LargestAngle",
       [=] { return std::isnan(LargestAngle(fisheye)) ? Status::kNoMemory : Status::kOk; }},
      {"Rectify", [=] { return Rectify(brown, brown, aside, {}).status; }},
      {"Rectify, fisheye", [=] { return Rectify(fisheye, fisheye, aside, {}).status; }},
      {"Compare", [=] { return Compare(brown, fisheye, small).status; }},
      {"FitLens", [=] { return FitLens(brown, Lens::kFisheye, 1, {}).status; }},
      {"FitPose", [=] { return FitPose(brown, 0, target).status; }},
      {"calibration_geometry_fit_pose",
       [=] {
         const calibration_geometry_camera camera = {0, 30, 30, 0, 16, 12, {}, {}, 33, 25};
         const double points[] = {0, 0, 1, 1, 1, 0, 20, 1, 0, 1, 1, 20, 1, 1, 20, 20};
         return static_cast<Status>(calibration_geometry_fit_pose(&camera, 0, points, 4).status);
       }},
  };
}

TEST(GeometryMemoryTest, SaysThatThereIsNone) {
  for (const Call& call : Calls()) {
    SCOPED_TRACE(call.name);
    ASSERT_EQ(call.run(), Status::kOk);
    const long before = calibration::testing::Allocations();
    call.run();
    const long allocations = calibration::testing::Allocations() - before;
    ASSERT_GT(allocations, 0);
    // Of thousands, the first and some of the rest.
    for (long n = 1; n <= allocations; n += n < 50 ? 1 : 1 + allocations / 10) {
      for (const auto duration : {FailingAllocation::kOnce, FailingAllocation::kForGood}) {
        Status status = Status::kOk;
        {
          const FailingAllocation failing(n, duration);
          status = call.run();
        }
        ASSERT_EQ(status, Status::kNoMemory) << "allocation " << n << " of " << allocations;
      }
    }
  }
}

}  // namespace
}  // namespace calibration_geometry
}  // namespace zarvo
