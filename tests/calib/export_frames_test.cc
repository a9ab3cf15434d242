// Frames for ROS: what is written of random poses is read back as the same poses, and names are
// those that were asked for.
#include <gtest/gtest.h>
#include <tinyxml2.h>
#include <yaml-cpp/yaml.h>

#include <random>
#include <sstream>

#include "calib/console/failure.h"
#include "calib/geometry/calibration_geometry.h"
#include "calib/tools/exporters.h"

namespace calib {
namespace {

namespace geometry = zarvo::calibration_geometry;
using zarvo::calibration::CameraCalibration;

std::string Export(const std::string& format, const std::vector<CameraCalibration>& cameras,
                   const std::string& frame = "base_link") {
  std::vector<CameraInRecord> in_record;
  for (const CameraCalibration& camera : cameras) {
    const std::string place = "file: camera[" + std::to_string(in_record.size()) + "]";
    in_record.push_back({&camera, place, place + ".intrinsics"});
  }
  ExportOptions options;
  options.frame = frame;
  ExportReport report;
  const Exporter& exporter = *FindExporter(format);
  return exporter.write(PrepareRig(exporter, in_record, options, &report), &report)[0].text;
}

// A record of a frame alone has no need of a lens.
CameraCalibration Posed(const std::string& name, const geometry::Transform& camera_from_rig) {
  CameraCalibration camera;
  if (!name.empty()) camera.set_name(name);
  for (const double number : camera_from_rig.m) camera.mutable_extrinsics()->add_a(number);
  return camera;
}

struct Frame {
  std::string parent, child;
  geometry::Transform parent_from_child;
};

std::vector<Frame> FromYaml(const std::string& text) {
  std::vector<Frame> frames;
  for (const YAML::Node& node : YAML::Load(text)["transforms"]) {
    const auto number = [&](const char* group, const char* key) {
      return node["transform"][group][key].as<double>();
    };
    frames.push_back(
        {node["header"]["frame_id"].as<std::string>(), node["child_frame_id"].as<std::string>(),
         geometry::FromQuaternion({number("rotation", "w"), number("rotation", "x"),
                                   number("rotation", "y"), number("rotation", "z")},
                                  {number("translation", "x"), number("translation", "y"),
                                   number("translation", "z")})});
  }
  return frames;
}

std::vector<Frame> FromUrdf(const std::string& text) {
  tinyxml2::XMLDocument document;
  EXPECT_EQ(document.Parse(text.c_str()), tinyxml2::XML_SUCCESS);
  std::vector<Frame> frames;
  const tinyxml2::XMLElement* robot = document.FirstChildElement("robot");
  for (auto joint = robot->FirstChildElement("joint"); joint != nullptr;
       joint = joint->NextSiblingElement("joint")) {
    EXPECT_STREQ(joint->Attribute("type"), "fixed");
    const auto* origin = joint->FirstChildElement("origin");
    std::istringstream xyz(origin->Attribute("xyz")), rpy(origin->Attribute("rpy"));
    geometry::Point t = {};
    geometry::RollPitchYaw r = {};
    EXPECT_TRUE(xyz >> t.x >> t.y >> t.z && rpy >> r.roll >> r.pitch >> r.yaw);
    frames.push_back({joint->FirstChildElement("parent")->Attribute("link"),
                      joint->FirstChildElement("child")->Attribute("link"),
                      geometry::FromRollPitchYaw(r, t)});
  }
  return frames;
}

constexpr struct {
  const char* format;
  std::vector<Frame> (*read)(const std::string& text);
} kFormats[] = {{"tf", FromYaml}, {"urdf", FromUrdf}};

TEST(ExportFramesTest, AreWhereCamerasAre) {
  std::mt19937 random(31);
  std::uniform_real_distribution<double> number(-3, 3);
  for (const auto& given : kFormats) {
    for (int i = 0; i < 50; ++i) {
      const geometry::Transform camera_from_rig =
          geometry::FromRotationVector({number(random), number(random), number(random)},
                                       {number(random), number(random), number(random)});
      const std::vector<Frame> frames =
          given.read(Export(given.format, {Posed("front left", camera_from_rig), Posed("", {}),
                                           Posed("up_optical_frame", geometry::Transform())}));
      ASSERT_EQ(frames.size(), 3U);
      EXPECT_EQ(frames[0].parent, "base_link");
      EXPECT_EQ(frames[0].child, "front_left_optical");
      EXPECT_EQ(frames[1].child, "cam1_optical");
      EXPECT_EQ(frames[2].child, "up_optical_frame");
      const geometry::Transform none =
          geometry::Compose(camera_from_rig, frames[0].parent_from_child);
      for (int j = 0; j < 16; ++j) EXPECT_NEAR(none.m[j], j % 5 == 0 ? 1 : 0, 1e-13) << i;
    }
  }
}

TEST(ExportFramesTest, RefusesWhatIsNone) {
  const CameraCalibration posed = Posed("left", {}), bare;
  CameraCalibration bent = posed;
  bent.mutable_extrinsics()->set_a(0, 2);
  const struct {
    std::vector<CameraCalibration> cameras;
    const char* frame;
    const char* why;
  } cases[] = {
      {{posed, posed}, "rig", "camera[1] would be a second frame called left_optical"},
      {{posed}, "left_optical", "camera[0] would be a second frame called left_optical"},
      {{bare}, "rig", "camera[0].extrinsics is not set"},
      {{posed, bare}, "rig", "camera[1].extrinsics is not set"},
      {{bent}, "rig", "camera[0].extrinsics.a has no rotation"},
  };
  for (const auto& given : cases) {
    for (const auto& format : kFormats) {
      try {
        Export(format.format, given.cameras, given.frame);
        ADD_FAILURE() << given.why;
      } catch (const Failure& failure) {
        EXPECT_NE(std::string(failure.what()).find(given.why), std::string::npos) << failure.what();
      }
    }
  }
}

}  // namespace
}  // namespace calib
