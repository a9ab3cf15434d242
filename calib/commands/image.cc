// calib image FILE [PATH]
#include <memory>
#include <utility>

#include "calib/commands/commands.h"
#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/printable.h"
#include "calib/fields/field_path.h"
#include "calib/fields/parts.h"
#include "calib/formats/record_reader.h"
#include "calib/formats/record_writer.h"
#include "calib/images/calibration_image.h"
#include "calib/images/png_file.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

using google::protobuf::Message;
using zarvo::calibration::CalibrationImage;

namespace {

struct Flags {
  std::string path;
  std::string field;
  std::string output_path;
  std::string set_path;
  InputFlags input;
  OutputFlags output;
};

const CalibrationImage& AsImage(const Part& part) {
  return static_cast<const CalibrationImage&>(*part.message);
}

std::vector<Part> ImagesOf(const Record& record) {
  return CameraFlag().Choose(*record.message, record.name, {CalibrationImage::descriptor()});
}

std::string NameOf(const Record& record, const std::string& path) {
  return path.empty() ? record.name : record.name + ": " + path;
}

// "640 x 480, GRAY8, stride 640, 307200 bytes", with a reason if it cannot be written.
std::string Describe(const CalibrationImage& image) {
  std::string text = std::to_string(image.width()) + " x " + std::to_string(image.height()) + ", " +
                     (image.format().empty() ? "no format" : Printable(image.format()));
  if (image.has_stride()) text += ", stride " + std::to_string(image.stride());
  text += ", " + std::to_string(image.imgdata().size()) + " bytes";
  const std::string compression = CompressionOf(image.imgdata());
  if (!compression.empty())
    return text + ", a " + (compression == "png" ? "PNG" : "JPEG") + " file";
  try {
    RasterOf(image, "");
  } catch (const Failure& failure) {
    text += "; cannot be written" + std::string(failure.what());
  }
  return text;
}

int List(const Record& record) {
  const std::vector<Part> images = ImagesOf(record);
  std::string text;
  for (const Part& part : images) {
    text += (part.path.empty() ? "" : part.path + ": ") + Describe(AsImage(part)) + "\n";
  }
  Print(text);
  if (!images.empty()) return kFine;
  Note(record.name + ": holds no image");
  return kFinding;
}

// The image that PATH names, or the only one.
Part Choose(const Record& record, const std::string& path) {
  const std::vector<Part> images = ImagesOf(record);
  std::string paths;
  for (const Part& part : images) {
    if (images.size() == 1 && path.empty()) return part;
    if (!path.empty() && part.path == path) return part;
    paths += (paths.empty() ? "" : ", ") + part.path;
  }
  if (images.empty()) throw Failure(record.name + ": holds no image");
  throw Failure(record.name + (path.empty() ? ": holds " + std::to_string(images.size()) + " images"
                                            : ": " + path + " is no image that it holds"),
                "Name one of " + paths + ".");
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

void Write(const Record& record, const Flags& flags) {
  const Part part = Choose(record, flags.field);
  const CalibrationImage& image = AsImage(part);
  const bool jpeg = CompressionOf(image.imgdata()) == "jpeg";
  const bool named_jpeg =
      EndsWith(flags.output_path, ".jpg") || EndsWith(flags.output_path, ".jpeg");
  const bool named_png = EndsWith(flags.output_path, ".png");
  if ((jpeg && named_png) || (!jpeg && named_jpeg)) {
    throw Failure(NameOf(record, part.path) + ": would be a " + (jpeg ? "JPEG" : "PNG") +
                      " file, but " + flags.output_path + " is named otherwise",
                  std::string("Name the output *.") + (jpeg ? "jpg." : "png."));
  }
  WriteFile(flags.output_path, ImageFileOf(image, NameOf(record, part.path)));
}

// The place of an image in the record, which need not be set yet.
CalibrationImage* MutableImage(Message* record, const std::string& path) {
  if (path.empty() && record->GetDescriptor() == CalibrationImage::descriptor()) {
    return static_cast<CalibrationImage*>(record);
  }
  std::vector<Place> places;
  ForEachPlace(
      *record, path, Unset::kEmpty, [&](const Place& place) { places.push_back(place); },
      [](const std::string& why) { throw Failure(why, "'calib image FILE' lists them."); });
  if (places.size() != 1 || places[0].field->message_type() != CalibrationImage::descriptor()) {
    throw Failure("field path '" + path + "' is not that of one image",
                  "Name one such as camera[0].intrinsics_image.");
  }
  Message* holder = MutableHolder(places[0], record);
  return static_cast<CalibrationImage*>(
      holder->GetReflection()->MutableMessage(holder, places[0].field));
}

void Set(const Record& record, const Flags& flags) {
  if (flags.output_path.empty()) {
    throw Failure("--set needs --output", "Name the file to write the record with the image to.");
  }
  const Raster raster = DecodePng(ReadFile(flags.set_path), InputName(flags.set_path));
  MutableImage(record.message.get(), flags.field)->CopyFrom(ImageOf(raster));
  WriteRecord(flags.output_path, *record.message, flags.output);
}

int Run(const Flags& flags) {
  const Record record = ReadRecord(flags.path, flags.input);
  if (!flags.set_path.empty()) {
    Set(record, flags);
  } else if (!flags.output_path.empty()) {
    Write(record, flags);
  } else {
    return List(record);
  }
  return kFine;
}

}  // namespace

void AddImage(Command* program, int* status) {
  Command* command =
      program->AddCommand("image", "Lists calibration images, writes one, puts one in");
  const auto flags = std::make_shared<Flags>();
  command->AddOption("FILE", flags->path, "The file that holds the images")->Required();
  command->AddOption("PATH", flags->field,
                     "The image, such as camera[0].intrinsics_image; may be left out if there is "
                     "only one");
  command->AddOption("--output", flags->output_path, "The image to write; with --set, the record")
      ->ValueName("OUT");
  command->AddOption("--set", flags->set_path, "Put this PNG file in as the image at PATH")
      ->ValueName("PNG");
  flags->input.AddTo(command);
  flags->output.AddTo(command);
  command->Footer(
      "Without --output, the images are listed. Images are written as PNG, those that are a PNG or "
      "JPEG file already as they are. Known formats: " +
      ImageFormatNames() +
      ", in any case; Bayer patterns are written as grey, and of 16 bits the low byte comes first "
      "in a record. An image that is put in becomes GRAY8, GRAY16, RGB8 or RGBA8.\n\n"
      "Exit status: 0 fine, 1 there is no image to list, 2 trouble.\n\n"
      "Examples:\n"
      "  calib image rig.RobotCalibration.binpb\n"
      "  calib image rig.RobotCalibration.binpb camera[0].intrinsics_image \\\n"
      "    --output board.png\n"
      "  calib image cam.CameraCalibration.binpb intrinsics_image --set board.png \\\n"
      "    --output with_image.CameraCalibration.binpb");
  command->Callback([flags, status] { *status = Run(*flags); });
}

}  // namespace calib
