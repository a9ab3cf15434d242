// MCAP: what viewers draw of a rig, as Foxglove's messages, and the record itself, which has all
// the rest. A camera's topics begin with its name, so that a viewer that shows its image finds its
// calibration beside it.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <memory>
#include <set>

#include "calib/console/failure.h"
#include "calib/images/calibration_image.h"
#include "calib/images/png_file.h"
#include "calib/tools/exporters.h"
#include "calib/tools/foxglove_schema.h"
#include "calib/tools/mcap_writer.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using zarvo::calibration::CalibrationImage;
using zarvo::calibration::CameraIntrinsics;

namespace {

// A message of Foxglove, whose fields are set by name. Its time is 0, as that of the file's.
class Foxglove {
 public:
  explicit Foxglove(const std::string& type) : message_(NewFoxgloveMessage(type)) {
    Child("timestamp");
  }
  explicit Foxglove(Message* message) : borrowed_(message) {}

  const Message& message() const { return *Get(); }

  Foxglove& Set(const std::string& field, const std::string& text) {
    Get()->GetReflection()->SetString(Get(), Find(field), text);
    return *this;
  }
  Foxglove& Set(const std::string& field, int number) {
    Get()->GetReflection()->SetUInt32(Get(), Find(field), static_cast<uint32_t>(number));
    return *this;
  }
  Foxglove& Set(const std::string& field, double number) {
    Get()->GetReflection()->SetDouble(Get(), Find(field), number);
    return *this;
  }
  Foxglove& Set(const std::string& field, const std::vector<double>& numbers) {
    for (const double number : numbers) {
      Get()->GetReflection()->AddDouble(Get(), Find(field), number);
    }
    return *this;
  }
  Foxglove Child(const std::string& field) {
    return Foxglove(Get()->GetReflection()->MutableMessage(Get(), Find(field)));
  }

 private:
  Message* Get() const { return borrowed_ != nullptr ? borrowed_ : message_.get(); }
  const FieldDescriptor* Find(const std::string& field) const {
    return Get()->GetDescriptor()->FindFieldByName(field);
  }

  std::unique_ptr<Message> message_;
  Message* borrowed_ = nullptr;
};

// The file, with a schema for each type of message and a channel for each topic.
class Recording {
 public:
  void Add(const std::string& topic, const Message& message) {
    const auto* type = message.GetDescriptor();
    const auto [schema, new_schema] = schemas_.emplace(type, uint16_t{0});
    if (new_schema) schema->second = writer_.AddSchema(type->full_name(), DescriptorSetOf(type));
    const auto [channel, new_channel] = channels_.emplace(topic, uint16_t{0});
    if (new_channel) channel->second = writer_.AddChannel(topic, schema->second);
    messages_.emplace_back(channel->second, message.SerializePartialAsString());
  }

  // Channels stand ahead of messages, so those are added last.
  std::string Finish() {
    for (const auto& [channel, bytes] : messages_) writer_.AddMessage(channel, bytes);
    return writer_.Finish();
  }

 private:
  McapWriter writer_;
  std::map<const google::protobuf::Descriptor*, uint16_t> schemas_;
  std::map<std::string, uint16_t> channels_;
  std::vector<std::pair<uint16_t, std::string>> messages_;
};

Foxglove Calibration(const ExportCamera& camera, const ExportOptions& options) {
  const CameraIntrinsics& in = camera.intrinsics();
  const std::vector<double> matrix = {in.fx(),   in.skew(), camera.cx, 0, in.fy(),
                                      camera.cy, 0,         0,         1};
  std::vector<double> rectification = options.rectification, projection = options.projection;
  if (projection.empty()) {
    rectification = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    projection = {in.fx(), in.skew(), camera.cx, 0, 0, in.fy(), camera.cy, 0, 0, 0, 1, 0};
  }
  Foxglove message("foxglove.CameraCalibration");
  message.Set("frame_id", camera.name)
      .Set("width", in.width())
      .Set("height", in.height())
      .Set("distortion_model", camera.form->word)
      .Set("D", camera.coefficients)
      .Set("K", matrix)
      .Set("R", rectification)
      .Set("P", projection);
  return message;
}

Foxglove Transform(const std::string& parent, const std::string& child,
                   const RigidTransform& pose) {
  Foxglove message("foxglove.FrameTransform");
  message.Set("parent_frame_id", parent).Set("child_frame_id", child);
  message.Child("translation").Set("x", pose.t[0]).Set("y", pose.t[1]).Set("z", pose.t[2]);
  const Quaternion q = pose.ToQuaternion();
  message.Child("rotation").Set("x", q.x).Set("y", q.y).Set("z", q.z).Set("w", q.w);
  return message;
}

std::string EncodingOf(const CalibrationImage& image, const CalibrationImage& samples) {
  std::string format = image.format();
  std::transform(format.begin(), format.end(), format.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  // What is grey here may be a pattern that viewers know the colors of.
  if (samples.format() == "GRAY8") return format.compare(0, 6, "bayer_") == 0 ? format : "mono8";
  return samples.format() == "GRAY16" ? "mono16" : samples.format() == "RGB8" ? "rgb8" : "rgba8";
}

Foxglove Image(const CalibrationImage& image, const std::string& frame, const std::string& place) {
  if (CompressionOf(image.imgdata()) == "jpeg") {
    Foxglove message("foxglove.CompressedImage");
    message.Set("frame_id", frame).Set("format", "jpeg").Set("data", image.imgdata());
    return message;
  }
  const CalibrationImage samples = ImageOf(RasterOf(image, place));
  Foxglove message("foxglove.RawImage");
  message.Set("frame_id", frame)
      .Set("width", samples.width())
      .Set("height", samples.height())
      .Set("encoding", EncodingOf(image, samples))
      .Set("step", samples.stride())
      .Set("data", samples.imgdata());
  return message;
}

void AddImages(const ExportCamera& camera, Recording* recording, ExportReport* report) {
  for (const auto& [name, there, image] :
       {std::make_tuple("intrinsics_image", camera.record->has_intrinsics_image(),
                        &camera.record->intrinsics_image()),
        std::make_tuple("extrinsics_image", camera.record->has_extrinsics_image(),
                        &camera.record->extrinsics_image())}) {
    if (!there) continue;
    try {
      recording->Add("/" + camera.name + "/" + name,
                     Image(*image, camera.name, Below(camera.place, name)).message());
    } catch (const Failure& failure) {
      report->notes.push_back(std::string(failure.what()).substr(camera.place.rfind(": ") + 2) +
                              "; it is not drawn, but in the record's own channel");
    }
  }
}

// The first camera, if it has no extrinsics and others have, is what they count from.
void AddTransforms(const ExportRig& rig, Recording* recording, ExportReport* report) {
  std::set<std::string> names;
  bool any = false;
  for (const ExportCamera& camera : rig.cameras) {
    names.insert(camera.name);
    any = any || camera.has_pose;
  }
  if (!any) return;
  std::string parent = "rig";
  while (names.count(parent) != 0) parent += "_frame";
  report->notes.push_back("the frame of reference is called " + parent +
                          ", since no record has a name for it");
  for (const ExportCamera& camera : rig.cameras) {
    if (!camera.has_pose && &camera != &rig.cameras[0]) continue;
    recording->Add("/tf", Transform(parent, camera.name,
                                    rig.conventions->FromRecord(Conventions::Direction::kFromCamera,
                                                                camera.pose))
                              .message());
  }
}

// A recording has up to 65,535 channels, of which two are the transforms' and the record's, and up
// to three each camera's.
constexpr size_t kMostCameras = (65535 - 2) / 3;

void CheckCameras(const ExportRig& rig) {
  if (rig.cameras.size() > kMostCameras) {
    throw Failure(rig.cameras[kMostCameras].place + ": is one camera more than " +
                      rig.conventions->files + " has channels for",
                  "Export cameras by themselves, with --camera.");
  }
  std::set<std::string> names;
  for (const ExportCamera& camera : rig.cameras) {
    if (names.insert(camera.name).second) continue;
    throw Failure(Below(camera.place, "name") + " is that of another camera, and " +
                      rig.conventions->files + " tells cameras apart by their names",
                  "Give them names that differ.");
  }
}

std::vector<ExportedFile> Write(const ExportRig& rig, ExportReport* report) {
  CheckCameras(rig);
  Recording recording;
  for (const ExportCamera& camera : rig.cameras) {
    recording.Add("/" + camera.name + "/calibration", Calibration(camera, rig.options).message());
    AddImages(camera, &recording, report);
  }
  AddTransforms(rig, &recording, report);
  if (rig.record != nullptr) recording.Add("/record", *rig.record);
  return {{"calibration.mcap", recording.Finish()}};
}

}  // namespace

Exporter McapExporter() {
  Exporter exporter;
  exporter.format = "mcap";
  exporter.lenses = {BrownForm("plumb_bob", "plumb_bob", 5),
                     BrownForm("rational_polynomial", "rational_polynomial", 8),
                     FisheyeForm("kannala_brandt")};
  exporter.keeps = {"skew", "width", "height", "name"};
  exporter.needs = {"width", "height"};
  exporter.poses = Exporter::Poses::kOptional;
  exporter.holds_record = true;
  exporter.has_projection = true;
  exporter.write = Write;
  return exporter;
}

}  // namespace calib
