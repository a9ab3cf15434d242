// The same points, projected through the record and through each file that was made of it, by the
// arithmetic of the tool that reads the file: where its first pixel lies, how its axes point, which
// way its transforms map. The readers here know nothing of calib/tools/conventions.h.
#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <array>
#include <cmath>
#include <functional>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "calib/console/failure.h"
#include "calib/tools/exporters.h"
#include "tests/calib/mcap_by_hand.h"

namespace calib {
namespace {

using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;

using Point = std::array<double, 3>;
using Pixel = std::array<double, 2>;
using Rows = std::vector<double>;  // sixteen

// --- Arithmetic ----------------------------------------------------------------------------------

Point Forward(const Rows& m, const Point& p) {
  Point moved{};
  for (size_t i = 0; i < 3; ++i) {
    moved[i] = m[4 * i] * p[0] + m[4 * i + 1] * p[1] + m[4 * i + 2] * p[2] + m[4 * i + 3];
  }
  return moved;
}

// Of a rotation, as tools do it.
Point Backward(const Rows& m, const Point& p) {
  const Point d = {p[0] - m[3], p[1] - m[7], p[2] - m[11]};
  return {m[0] * d[0] + m[4] * d[1] + m[8] * d[2],  //
          m[1] * d[0] + m[5] * d[1] + m[9] * d[2],  //
          m[2] * d[0] + m[6] * d[1] + m[10] * d[2]};
}

// v + 2 w (q x v) + 2 q x (q x v)
Point Rotate(double w, const Point& q, const Point& v) {
  const auto cross = [](const Point& a, const Point& b) {
    return Point{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
  };
  const Point once = cross(q, v), twice = cross(q, once);
  return {v[0] + 2 * (w * once[0] + twice[0]), v[1] + 2 * (w * once[1] + twice[1]),
          v[2] + 2 * (w * once[2] + twice[2])};
}

struct Lens {
  double fx, fy, cx, cy;
  bool fisheye;
  std::vector<double> d;  // k1 k2 p1 p2 k3 k4 k5 k6, or k1 k2 k3 k4 of a fisheye
};

Pixel Project(const Lens& lens, const Point& p) {
  std::vector<double> d = lens.d;
  d.resize(8);
  const double x = p[0] / p[2], y = p[1] / p[2], r2 = x * x + y * y;
  if (lens.fisheye) {
    const double r = std::sqrt(r2), a = std::atan(r), a2 = a * a;
    const double bent = a * (1 + a2 * (d[0] + a2 * (d[1] + a2 * (d[2] + a2 * d[3]))));
    return {lens.fx * x * bent / r + lens.cx, lens.fy * y * bent / r + lens.cy};
  }
  const double radial =
      (1 + r2 * (d[0] + r2 * (d[1] + r2 * d[4]))) / (1 + r2 * (d[5] + r2 * (d[6] + r2 * d[7])));
  return {lens.fx * (x * radial + 2 * d[2] * x * y + d[3] * (r2 + 2 * x * x)) + lens.cx,
          lens.fy * (y * radial + d[2] * (r2 + 2 * y * y) + 2 * d[3] * x * y) + lens.cy};
}

// --- The tools -----------------------------------------------------------------------------------

// Projects a point of the frame that the file counts from.
using Camera = std::function<Pixel(const Point&)>;
enum class From { kCamera, kFirstCamera, kReference };

// OpenCV's first line is no YAML that others read.
YAML::Node Load(const std::string& text) {
  return YAML::Load(text[0] == '%' ? text.substr(text.find('\n') + 1) : text);
}

std::vector<double> List(const YAML::Node& node) { return node.as<std::vector<double>>(); }

Rows RowsOf(const YAML::Node& lists) {
  Rows rows;
  for (const YAML::Node& list : lists) {
    for (const double number : List(list)) rows.push_back(number);
  }
  return rows;
}

std::vector<double> Data(const YAML::Node& matrix) { return List(matrix["data"]); }

// The numbers under those keys; behind the last that is there, zeros.
std::vector<double> Under(const YAML::Node& map, const std::vector<std::string>& keys,
                          const std::string& before = "") {
  std::vector<double> numbers;
  for (const std::string& key : keys) {
    const YAML::Node value = map[before + key];
    numbers.push_back(value ? value.as<double>() : 0);
  }
  return numbers;
}

const std::vector<std::string> kBrown = {"k1", "k2", "p1", "p2", "k3"};
const std::vector<std::string> kFisheye = {"k1", "k2", "k3", "k4"};

Lens LensOfList(const std::vector<double>& fx_fy_cx_cy, bool fisheye,
                const std::vector<double>& d) {
  return {fx_fy_cx_cy[0], fx_fy_cx_cy[1], fx_fy_cx_cy[2], fx_fy_cx_cy[3], fisheye, d};
}

Lens LensOfMatrix(const std::vector<double>& k, bool fisheye, const std::vector<double>& d) {
  return {k[0], k[4], k[2], k[5], fisheye, d};
}

// Tools whose first pixel has its corner, not its centre, at (0, 0).
Pixel CornerBased(const Pixel& pixel) { return {pixel[0] - 0.5, pixel[1] - 0.5}; }

using Files = std::vector<ExportedFile>;

std::vector<Camera> Ros(const Files& files) {
  std::vector<Camera> cameras;
  for (const ExportedFile& file : files) {
    const YAML::Node info = Load(file.text);
    const Lens lens = LensOfMatrix(Data(info["camera_matrix"]),
                                   info["distortion_model"].as<std::string>() == "equidistant",
                                   Data(info["distortion_coefficients"]));
    cameras.emplace_back([=](const Point& p) { return Project(lens, p); });
  }
  return cameras;
}

std::vector<Camera> OpenCv(const Files& files) {
  std::vector<Camera> cameras;
  for (const ExportedFile& file : files) {
    const YAML::Node info = Load(file.text);
    const Lens lens = LensOfMatrix(Data(info["camera_matrix"]), info["fisheye_model"].IsDefined(),
                                   Data(info["distortion_coefficients"]));
    cameras.emplace_back([=](const Point& p) { return Project(lens, p); });
  }
  return cameras;
}

std::vector<Camera> OpenCvStereo(const Files& files) {
  const YAML::Node in = Load(files[0].text), ex = Load(files[1].text);
  const bool fisheye = in["fisheye_model"].IsDefined();
  const auto r = Data(ex["R"]), t = Data(ex["T"]);
  const Lens first = LensOfMatrix(Data(in["M1"]), fisheye, Data(in["D1"]));
  const Lens second = LensOfMatrix(Data(in["M2"]), fisheye, Data(in["D2"]));
  const Rows pose = {r[0], r[1], r[2], t[0], r[3], r[4], r[5], t[1], r[6], r[7], r[8], t[2]};
  return {[=](const Point& p) { return Project(first, p); },
          [=](const Point& p) { return Project(second, Forward(pose, p)); }};
}

Lens KalibrLens(const YAML::Node& camera) {
  return LensOfList(List(camera["intrinsics"]),
                    camera["distortion_model"].as<std::string>() == "equidistant",
                    List(camera["distortion_coeffs"]));
}

std::vector<Camera> Kalibr(const Files& files) {
  const YAML::Node chain = Load(files[0].text);
  const Rows imu = RowsOf(chain["cam0"]["T_cam_imu"]), step = RowsOf(chain["cam1"]["T_cn_cnm1"]);
  const Lens first = KalibrLens(chain["cam0"]), second = KalibrLens(chain["cam1"]);
  return {[=](const Point& p) { return Project(first, Forward(imu, p)); },
          [=](const Point& p) { return Project(second, Forward(step, Forward(imu, p))); }};
}

std::vector<Camera> KalibrByImu(const Files& files) {
  const YAML::Node chain = Load(files[0].text);
  std::vector<Camera> cameras;
  for (const char* name : {"cam0", "cam1"}) {
    const Rows imu = RowsOf(chain[name]["T_cam_imu"]);
    const Lens lens = KalibrLens(chain[name]);
    cameras.emplace_back([=](const Point& p) { return Project(lens, Forward(imu, p)); });
  }
  return cameras;
}

std::vector<Camera> OpenVins(const Files& files) {
  const YAML::Node chain = Load(files[0].text);
  std::vector<Camera> cameras;
  for (const char* name : {"cam0", "cam1"}) {
    const Rows pose = RowsOf(chain[name]["T_imu_cam"]);
    const Lens lens = KalibrLens(chain[name]);
    cameras.emplace_back([=](const Point& p) { return Project(lens, Backward(pose, p)); });
  }
  return cameras;
}

std::vector<Camera> OrbSlam(const Files& files) {
  const YAML::Node settings = Load(files[0].text);
  const bool fisheye = settings["Camera.type"].as<std::string>() == "KannalaBrandt8";
  const auto lens = [&](const std::string& camera) {
    return LensOfList(Under(settings, {"fx", "fy", "cx", "cy"}, camera), fisheye,
                      Under(settings, fisheye ? kFisheye : kBrown, camera));
  };
  const Lens first = lens("Camera1."), second = lens("Camera2.");
  const Rows body = Data(settings["IMU.T_b_c1"]), pair = Data(settings["Stereo.T_c1_c2"]);
  return {[=](const Point& p) { return Project(first, Backward(body, p)); },
          [=](const Point& p) { return Project(second, Backward(pair, Backward(body, p))); }};
}

std::vector<Camera> Camodocal(const Files& files) {
  const YAML::Node poses = Load(files[2].text);
  std::vector<Camera> cameras;
  for (size_t i = 0; i < 2; ++i) {
    const YAML::Node camera = Load(files[i].text), to = camera["projection_parameters"];
    const bool fisheye = camera["model_type"].as<std::string>() == "KANNALA_BRANDT";
    const Lens lens =
        fisheye ? LensOfList(Under(to, {"mu", "mv", "u0", "v0"}), true,
                             Under(to, {"k2", "k3", "k4", "k5"}))
                : LensOfList(Under(to, {"fx", "fy", "cx", "cy"}), false,
                             Under(camera["distortion_parameters"], {"k1", "k2", "p1", "p2"}));
    const Rows pose = Data(poses["body_T_cam" + std::to_string(i)]);
    cameras.emplace_back([=](const Point& p) { return Project(lens, Backward(pose, p)); });
  }
  return cameras;
}

std::vector<Camera> Basalt(const Files& files) {
  const YAML::Node value = Load(files[0].text)["value0"];
  std::vector<Camera> cameras;
  for (size_t i = 0; i < 2; ++i) {
    const auto t = Under(value["T_imu_cam"][i], {"px", "py", "pz"});
    const auto q = Under(value["T_imu_cam"][i], {"qx", "qy", "qz", "qw"});
    const YAML::Node camera = value["intrinsics"][i];
    const Lens lens = LensOfList(Under(camera["intrinsics"], {"fx", "fy", "cx", "cy"}),
                                 camera["camera_type"].as<std::string>() == "kb4",
                                 Under(camera["intrinsics"], kFisheye));
    cameras.emplace_back([=](const Point& p) {
      const Point d = {p[0] - t[0], p[1] - t[1], p[2] - t[2]};
      return Project(lens, Rotate(-q[3], {q[0], q[1], q[2]}, d));  // -w: the inverse
    });
  }
  return cameras;
}

std::vector<Camera> Mrcal(const Files& files) {
  std::vector<Camera> cameras;
  for (const ExportedFile& file : files) {
    const YAML::Node model = Load(file.text);
    const auto in = List(model["intrinsics"]), rt = List(model["extrinsics"]);
    const Lens lens = LensOfList(in, false, {in.begin() + 4, in.end()});
    const double angle = std::hypot(rt[0], rt[1], rt[2]), s = std::sin(angle / 2) / angle;
    cameras.emplace_back([=](const Point& p) {
      const Point r = Rotate(std::cos(angle / 2), {s * rt[0], s * rt[1], s * rt[2]}, p);
      return Project(lens, {r[0] + rt[3], r[1] + rt[4], r[2] + rt[5]});
    });
  }
  return cameras;
}

Lens ColmapLens(const std::string& model, const std::vector<double>& parameters) {
  return LensOfList(parameters, model == "OPENCV_FISHEYE",
                    {parameters.begin() + 4, parameters.end()});
}

std::vector<Camera> Colmap(const Files& files) {
  std::vector<Camera> cameras;
  std::istringstream lines(files[0].text);
  for (std::string line; std::getline(lines, line);) {
    if (line[0] == '#') continue;
    std::istringstream words(line);
    std::string id, model, width, height;
    words >> id >> model >> width >> height;
    std::vector<double> parameters;
    for (double parameter; words >> parameter;) parameters.push_back(parameter);
    const Lens lens = ColmapLens(model, parameters);
    cameras.emplace_back([=](const Point& p) { return CornerBased(Project(lens, p)); });
  }
  return cameras;
}

std::vector<Camera> ColmapRig(const Files& files) {
  std::vector<Camera> cameras;
  for (const YAML::Node& camera : Load(files[0].text)[0]["cameras"]) {
    const Lens lens =
        ColmapLens(camera["camera_model_name"].as<std::string>(), List(camera["camera_params"]));
    std::vector<double> q = {1, 0, 0, 0}, t = {0, 0, 0};
    if (!camera["ref_sensor"]) {
      q = List(camera["cam_from_rig_rotation"]);
      t = List(camera["cam_from_rig_translation"]);
    }
    cameras.emplace_back([=](const Point& p) {
      const Point r = Rotate(q[0], {q[1], q[2], q[3]}, p);
      return CornerBased(Project(lens, {r[0] + t[0], r[1] + t[1], r[2] + t[2]}));
    });
  }
  return cameras;
}

std::vector<Camera> Nerfstudio(const Files& files) {
  const YAML::Node value = Load(files[0].text);
  const bool fisheye = value["camera_model"].as<std::string>() == "OPENCV_FISHEYE";
  std::vector<Camera> cameras;
  for (const YAML::Node& frame : value["frames"]) {
    const Rows pose = RowsOf(frame["transform_matrix"]);
    const Lens lens = LensOfList(Under(frame, {"fl_x", "fl_y", "cx", "cy"}), fisheye,
                                 Under(frame, fisheye ? kFisheye : kBrown));
    cameras.emplace_back([=](const Point& p) {
      const Point gl = Backward(pose, p);  // looks along -z, y is up
      return CornerBased(Project(lens, {gl[0], -gl[1], -gl[2]}));
    });
  }
  return cameras;
}

// By the numbers that foxglove.CameraCalibration, FrameTransform, Vector3 and Quaternion give their
// fields. A transform maps from the child to the parent.
std::vector<Camera> Mcap(const Files& files) {
  const by_hand::Mcap recording(files[0].text);
  std::map<std::string, by_hand::Fields> poses;
  for (const auto& [topic, message] : recording.messages) {
    if (topic != "/tf") continue;
    by_hand::Fields transform(message);
    poses.emplace(transform.bytes[3], transform);
  }
  std::vector<Camera> cameras;
  for (const auto& [topic, message] : recording.messages) {
    if (topic.find("/calibration") == std::string::npos) continue;
    by_hand::Fields camera(message);
    const Lens lens =
        LensOfMatrix(camera.List(6), camera.bytes[4] == "kannala_brandt", camera.List(5));
    by_hand::Fields& pose = poses.at(camera.bytes[9]);
    auto t = by_hand::Fields(pose.bytes[4]).doubles, q = by_hand::Fields(pose.bytes[5]).doubles;
    const Point origin = {t[1], t[2], t[3]}, back = {-q[1], -q[2], -q[3]};
    const double w = q[4];
    cameras.emplace_back([=](const Point& p) {
      return Project(lens, Rotate(w, back, {p[0] - origin[0], p[1] - origin[1], p[2] - origin[2]}));
    });
  }
  return cameras;
}

// --- The test ------------------------------------------------------------------------------------

struct Tool {
  const char* format;
  From from;
  std::vector<Camera> (*read)(const Files& files);
};

const Tool kTools[] = {
    {"ros", From::kCamera, Ros},
    {"opencv", From::kCamera, OpenCv},
    {"opencv-stereo", From::kFirstCamera, OpenCvStereo},
    {"kalibr", From::kReference, Kalibr},
    {"kalibr", From::kReference, KalibrByImu},
    {"openvins", From::kReference, OpenVins},
    {"orbslam3", From::kReference, OrbSlam},
    {"camodocal", From::kReference, Camodocal},
    {"basalt", From::kReference, Basalt},
    {"mrcal", From::kReference, Mrcal},
    {"colmap", From::kCamera, Colmap},
    {"colmap-rig", From::kFirstCamera, ColmapRig},
    {"nerfstudio", From::kReference, Nerfstudio},
    {"mcap", From::kReference, Mcap},
};

CameraCalibration RecordOf(const std::vector<double>& k, const std::vector<double>& p,
                           const RigidTransform& pose) {
  CameraCalibration camera;
  CameraIntrinsics* in = camera.mutable_intrinsics();
  in->set_fx(458.654);
  in->set_fy(457.296);
  in->set_skew(0);
  in->set_cx(367.215);
  in->set_cy(248.375);
  in->set_width(752);
  in->set_height(480);
  for (const double value : k) in->add_k(value);
  for (const double value : p) in->add_p(value);
  for (const double value : pose.Rows()) camera.mutable_extrinsics()->add_a(value);
  return camera;
}

// By the record's own convention.
Pixel InRecord(const CameraCalibration& camera, const Point& in_camera) {
  const CameraIntrinsics& in = camera.intrinsics();
  const auto k = [&](int i) { return i < in.k_size() ? in.k(i) : 0; };
  const auto p = [&](int i) { return i < in.p_size() ? in.p(i) : 0; };
  const bool fisheye = in.k_size() == 4 && in.p_size() == 0;
  const std::vector<double> d =
      fisheye ? std::vector<double>{k(0), k(1), k(2), k(3)}
              : std::vector<double>{k(0), k(1), p(0), p(1), k(2), k(3), k(4), k(5)};
  return Project({in.fx(), in.fy(), in.cx(), in.cy(), fisheye, d}, in_camera);
}

Rows A(const CameraCalibration& camera) {
  return {camera.extrinsics().a().begin(), camera.extrinsics().a().end()};
}

// Returns whether the format takes the lens.
bool Compare(const Tool& tool, const std::vector<CameraCalibration>& record, unsigned seed) {
  const Exporter& exporter = *FindExporter(tool.format);
  std::vector<CameraInRecord> cameras;
  for (const CameraCalibration& camera : record) cameras.push_back({&camera, "file:", "file:"});
  ExportOptions options;
  options.folder = true;
  ExportReport report;
  const ExportRig rig = PrepareRig(exporter, cameras, options, &report);
  for (const Leftover& leftover : report.leftovers) {
    if (leftover.kind == Leftover::Kind::kLens) return false;
  }
  const std::vector<Camera> read = tool.read(exporter.write(rig, &report));
  EXPECT_EQ(read.size(), record.size());
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> side(-1, 1), depth(1, 4);
  for (int n = 0; n < 50; ++n) {
    const Point given = {side(random), side(random), depth(random)};
    for (size_t i = 0; i < read.size(); ++i) {
      const Point reference = Backward(A(record[i]), given);
      const Point seen = tool.from == From::kCamera      ? given
                         : tool.from == From::kReference ? reference
                                                         : Forward(A(record[0]), reference);
      const Pixel expected = InRecord(record[i], given), pixel = read[i](seen);
      EXPECT_NEAR(pixel[0], expected[0], 1e-6) << "camera " << i;
      EXPECT_NEAR(pixel[1], expected[1], 1e-6) << "camera " << i;
    }
  }
  return true;
}

TEST(ExportProjectionTest, PutsPointsWhereTheRecordDoes) {
  const struct {
    const char* name;
    std::vector<double> k, p;
    size_t taken;  // by so many of the tools
  } lenses[] = {
      {"none", {}, {}, 14},
      {"four", {-0.28, 0.07}, {2e-4, 1.7e-5}, 13},
      {"five", {-0.28, 0.07, -0.01}, {2e-4, 1.7e-5}, 9},
      {"eight", {0.5, -0.2, 0.03, 0.8, -0.1, 0.02}, {2e-4, 1.7e-5}, 7},
      {"fisheye", {0.01, -0.02, 0.003, -0.0004}, {}, 13},
  };
  const RigidTransform first =
      RigidTransform::FromRotationVector({0.1, -0.2, 1.5}, {0.02, -0.06, 0.01});
  const RigidTransform second =
      RigidTransform::FromRotationVector({2.2, -0.17, 1.52}, {-0.1, 0.05, 0});
  for (const auto& lens : lenses) {
    std::vector<double> k = lens.k;
    const CameraCalibration left = RecordOf(k, lens.p, first);
    for (double& value : k) value *= 1.01;
    const CameraCalibration right = RecordOf(k, lens.p, second);
    size_t taken = 0;
    for (const Tool& tool : kTools) {
      SCOPED_TRACE(lens.name + (" to " + std::string(tool.format)));
      try {
        taken += Compare(tool, {left, right}, 20) ? 1 : 0;
      } catch (const Failure&) {  // it has no such lens
      }
    }
    EXPECT_EQ(taken, lens.taken) << lens.name;
  }
}

}  // namespace
}  // namespace calib
