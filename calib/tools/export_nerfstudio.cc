// nerfstudio transforms.json: the cameras' intrinsics, and a frame for each, which stands for one
// image of it.
#include "calib/tools/export_text.h"
#include "calib/tools/exporters.h"

namespace calib {

using Direction = Conventions::Direction;

namespace {

std::string Intrinsics(const ExportCamera& camera, const std::string& indent) {
  const auto& in = camera.intrinsics();
  const auto field = [&](const std::string& key, const std::string& value) {
    return indent + "\"" + key + "\": " + value + ",\n";
  };
  std::string text = field("fl_x", NumberList({in.fx()})) + field("fl_y", NumberList({in.fy()})) +
                     field("cx", NumberList({camera.cx})) + field("cy", NumberList({camera.cy})) +
                     field("w", std::to_string(in.width())) +
                     field("h", std::to_string(in.height()));
  for (size_t i = 0; i < camera.coefficients.size(); ++i) {
    text += field(camera.form->coefficients[i], NumberList({camera.coefficients[i]}));
  }
  return text;
}

std::vector<ExportedFile> Write(const ExportRig& rig, ExportReport* report) {
  const bool single = rig.cameras.size() == 1;
  std::string text = "{\n  \"camera_model\": \"" + rig.cameras[0].form->word + "\",\n";
  if (single) text += Intrinsics(rig.cameras[0], "  ");
  text += "  \"frames\": [";
  for (const ExportCamera& camera : rig.cameras) {
    const RigidTransform pose = rig.conventions->FromRecord(Direction::kFromCamera, camera.pose);
    text += std::string(&camera == &rig.cameras[0] ? "" : ",") + "\n    {\n" +
            "      \"file_path\": \"images/" + CameraFileName(camera, ".png") + "\",\n" +
            (single ? "" : Intrinsics(camera, "      ")) + "      \"transform_matrix\": [\n" +
            RowLines(pose, "        ", ",\n") + "      ]\n    }";
  }
  report->notes.emplace_back("frames are one for each camera, with a file_path that is a guess");
  return {{"transforms.json", text + "\n  ]\n}\n"}};
}

}  // namespace

Exporter NerfstudioExporter() {
  Exporter exporter;
  exporter.format = "nerfstudio";
  exporter.lenses = {BrownForm("plumb_bob", "OPENCV", 5), FisheyeForm("OPENCV_FISHEYE")};
  exporter.keeps = {"width", "height", "name"};
  exporter.needs = {"width", "height"};
  exporter.poses = Exporter::Poses::kNeeded;
  exporter.one_lens = true;
  exporter.write = Write;
  return exporter;
}

}  // namespace calib
