// Any file that the command calib reads: it is refused, with the file's name and what is wrong, or
// it makes a record that is read back as it was from each format that can hold it. No file takes
// more memory than its size lets it. What calib computes with the cameras of a record is a number,
// or told to be none (calib_computations.h).
//
// Which reader a target is about, calib_fuzzer_reader.cc says; see kReaders.
#include <google/protobuf/message.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "calib/console/build_info.h"
#include "calib/console/failure.h"
#include "calib/fields/compare.h"
#include "calib/formats/codec.h"
#include "calib/images/calibration_image.h"
#include "calib/images/png_file.h"
#include "calib/tools/foreign.h"
#include "calib/tools/foreign_tree.h"
#include "calib/tools/import_fit.h"
#include "calib/tools/import_formats.h"
#include "fuzz/calib_computations.h"
#include "fuzz/fuzzer.h"
#include "tests/support/peak_memory.h"
#include "tests/support/reflect.h"

namespace calib {

extern const char* const kReaderOfThisTarget;

namespace {

using google::protobuf::Descriptor;
using google::protobuf::Message;
using zarvo::calibration::CalibrationImage;
using zarvo::calibration::RobotCalibration;
using zarvo::calibration::testing::EqualByReflection;
using zarvo::calibration::testing::Require;

constexpr char kFile[] = "fuzz.file";

void CheckLeftover(const Leftover& leftover) {
  Require(leftover.place.compare(0, sizeof kFile - 1, kFile) == 0, "a leftover has a place");
  Require(!leftover.what.empty(), "a leftover is told");
}

// Whether the call is not refused.
template <typename Call>
bool Try(Call call) {
  try {
    call();
    return true;
  } catch (const Failure& failure) {
    const std::string what = failure.what();
    Require(what.compare(0, sizeof kFile - 1, kFile) == 0 && what.size() > sizeof kFile,
            "a refusal names the file and what is wrong, unlike: " + what);
    return false;
  }
}

// --- Records -------------------------------------------------------------------------------------

void CheckReadsBack(Format format, const Message& record) {
  std::string bytes;
  try {
    bytes = Encode(format, record);
  } catch (const Failure& failure) {
    Require(format != Format::kBinary, "the binary format holds every record");
    Require(!std::string(failure.what()).empty(), "a refusal to write says why");
    return;
  }
  if (format == Format::kJson && !kReadsJson) return;
  std::unique_ptr<Message> read;
  Require(Try([&] { read = Decode(format, record.GetDescriptor(), kFile, bytes); }),
          "what was written can be read");
  // In text, a NaN loses its sign and its other bits. What was read once stays as it is.
  if (format == Format::kBinary) {
    Require(EqualByReflection(record, *read), "a record is read as it was written");
  } else {
    Require(Compare(record, *read, Tolerance()).empty(), "a record's text reads as the record");
  }
  const std::unique_ptr<Message> again =
      Decode(format, record.GetDescriptor(), kFile, Encode(format, *read));
  Require(EqualByReflection(*read, *again), "a record that was read is read as it was written");
}

void CheckReadsBack(const Message& record) {
  for (const Format format : {Format::kBinary, Format::kText, Format::kJson}) {
    CheckReadsBack(format, record);
  }
}

// The first byte of the input chooses the type.
template <Format format>
void ReadRecord(const std::string& input) {
  const auto chosen = zarvo::calibration::testing::TakeRecordInput(
      reinterpret_cast<const uint8_t*>(input.data()), input.size());
  const Descriptor* type = RecordType(chosen.type.name);
  std::unique_ptr<Message> record;
  Try([&] { record = Decode(format, type, kFile, chosen.bytes); });
  const bool fits = DecodeIfFits(format, type, chosen.bytes) != nullptr;
  Require(fits == (record != nullptr), "what fits is what can be read");
  if (record == nullptr) return;
  CheckReadsBack(*record);
  ComputeWithCameras(*record, kFile);
}

// --- Files of other tools ------------------------------------------------------------------------

// Visits all values; returns how many there are.
size_t Visit(const ForeignTree& tree, ForeignTree::Index index) {
  using Kind = ForeignTree::Kind;
  Require(tree.PlaceOf(index).size() < 30, "a place is a line and a column");
  if (tree.kind(index) != Kind::kList && tree.kind(index) != Kind::kMap) {
    Require(tree.kind(index) == Kind::kNothing || tree.text(index).data() != nullptr, "text");
    return 1;
  }
  size_t values = 1;
  ForeignTree::Index item = tree.First(index);
  for (uint32_t left = tree.items(index); left > 0; --left, item = tree.Next(item)) {
    Require(item < tree.size(), "an item is in the tree");
    Require(tree.kind(index) == Kind::kMap || tree.key(item).empty(), "only entries have keys");
    values += Visit(tree, item);
  }
  return values;
}

template <ForeignTree (*load)(const std::string& file, const std::string& text)>
void ReadTree(const std::string& input) {
  ForeignTree tree;
  if (!Try([&] { tree = load(kFile, input); })) return;
  // Aliases may stand for as much as the file, and 256 KiB.
  Require(Visit(tree, 0) <= 2 * input.size() + (size_t{256} << 10) + 1,
          "the values are no more than the file and its aliases have room for");
}

// Fits take long: only the lenses of files that end with an empty line are fitted.
bool IsToBeFitted(const std::string& input) {
  return input.size() > 2 && input.compare(input.size() - 2, 2, "\n\n") == 0;
}
constexpr size_t kMemoryOfFits =
    40000000;  // the grid of an image that is ten times as high as wide

// What --fit makes of lenses that a record cannot hold.
void Fit(const std::string& name, const std::vector<Foreign>& files, RobotCalibration* robot) {
  if (!MayBeFitted(name, files)) return;
  FitFlags flags;
  flags.model = "equidistant";
  flags.max_error = HUGE_VAL;
  try {
    FitCameras(name, files, flags, robot);
  } catch (const Failure& failure) {
    Require(!std::string(failure.what()).empty(), "a refusal says why");
  }
}

// A form feed stands between the two files of a stereo calibration, which are text.
void Import(const std::string& name, const std::string& input) {
  RobotCalibration robot;
  const bool imported = Try([&] {
    const size_t end = name == "mcap" ? std::string::npos : input.find('\f');
    std::vector<Foreign> files = {Foreign::Parse(kFile, input.substr(0, end))};
    if (end != std::string::npos) files.push_back(Foreign::Parse(kFile, input.substr(end + 1)));
    Try([&] { FormatOf(kFile, files); });
    const std::vector<ImportFormat>& formats = ImportFormats();
    const auto format =
        std::find_if(formats.begin(), formats.end(),
                     [&](const ImportFormat& candidate) { return candidate.name == name; });
    Require(format != formats.end(), "there is a format " + name);
    format->import(files, nullptr, &robot);
    for (const Foreign& file : files) file.ForEachLeftover(CheckLeftover);
    if (IsToBeFitted(input)) Fit(name, files, &robot);
  });
  if (!imported) return;
  ComputeWithCameras(robot, kFile);
  ExportToAll(robot, kFile);
  for (const char* type : {"RobotCalibration", "CameraCalibration", "CameraIntrinsics"}) {
    Try([&] { CheckReadsBack(ImportedRecord(kFile, RecordType(type), robot, CheckLeftover)); });
  }
}

// --- Images --------------------------------------------------------------------------------------

bool AreEqual(const Raster& a, const Raster& b) {
  return a.width == b.width && a.height == b.height && a.channels == b.channels &&
         a.bits == b.bits && a.bytes == b.bytes;
}

// A file that 'calib image --set' puts in.
void ReadPng(const std::string& input) {
  Raster raster;
  if (!Try([&] { raster = DecodePng(input, kFile); })) return;
  Require(AreEqual(DecodePng(EncodePng(raster, kFile), kFile), raster), "PNG keeps all samples");
  const CalibrationImage image = ImageOf(raster);
  Require(AreEqual(RasterOf(image, kFile), raster), "a record keeps all samples");
  CheckReadsBack(Format::kBinary, image);
}

// An image of a record.
void WriteImage(const std::string& input) {
  std::unique_ptr<Message> record;
  if (!Try([&] {
        record = Decode(Format::kBinary, CalibrationImage::descriptor(), kFile, input);
      })) {
    return;
  }
  const auto& image = static_cast<const CalibrationImage&>(*record);
  Raster raster;
  std::string file;
  const bool has_samples = Try([&] { raster = RasterOf(image, kFile); });
  if (!Try([&] { file = ImageFileOf(image, kFile); })) return;
  Require(!CompressionOf(file).empty(), "what is written is an image");
  Require(!has_samples || AreEqual(DecodePng(file, kFile), raster), "it has all samples");
  std::string url;
  Require(Try([&] { url = ImageUrl(image, kFile); }) == !IsCutOff(file),
          "all that is whole is shown");
  Require(url.empty() || url.compare(0, 11, "data:image/") == 0, "the URL is one");
}

// --- The targets ---------------------------------------------------------------------------------

struct Reader {
  const char* name;
  void (*read)(const std::string& input);
  size_t memory_a_byte = 40;  // that it may take for each of the input
};
// One compressed byte of a PNG stands for 1032, of which each may be 8 pixels of 4 samples.
constexpr size_t kMostOfPng = size_t{3} * 1032 * 32;
constexpr Reader kReaders[] = {
    {"yaml", ReadTree<LoadYaml>},
    {"xml", ReadTree<LoadXml>},
    {"basalt", [](const auto& input) { Import("basalt", input); }},
    {"camchain", [](const auto& input) { Import("kalibr", input); }},
    {"camera_info", [](const auto& input) { Import("ros", input); }},
    {"camodocal", [](const auto& input) { Import("camodocal", input); }},
    {"colmap", [](const auto& input) { Import("colmap", input); }},
    {"depthai", [](const auto& input) { Import("depthai", input); }},
    {"euroc", [](const auto& input) { Import("euroc", input); }},
    {"file_storage", [](const auto& input) { Import("opencv", input); }},
    {"mcap", [](const auto& input) { Import("mcap", input); }},
    {"mrcal", [](const auto& input) { Import("mrcal", input); }},
    {"nerfstudio", [](const auto& input) { Import("nerfstudio", input); }},
    {"orbslam", [](const auto& input) { Import("orbslam3", input); }},
    {"png", ReadPng, kMostOfPng},
    {"image", WriteImage, kMostOfPng},
    {"binary", ReadRecord<Format::kBinary>},
    {"text", ReadRecord<Format::kText>},
    {"json", ReadRecord<Format::kJson>}};

const Reader& ReaderOfThisTarget() {
  for (const Reader& reader : kReaders) {
    if (reader.name == std::string(kReaderOfThisTarget)) return reader;
  }
  Require(false, std::string("there is a reader ") + kReaderOfThisTarget);
  std::abort();
}

}  // namespace
}  // namespace calib

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using zarvo::calibration::testing::Require;
  zarvo::calibration::testing::SilenceTheRunTime();
  static const calib::Reader& reader = calib::ReaderOfThisTarget();
  if (size == 0) return 0;
  const std::string input(reinterpret_cast<const char*>(data), size);
  const zarvo::calibration::testing::PeakMemory memory;
  reader.read(input);
  const size_t fits = calib::IsToBeFitted(input) ? calib::kMemoryOfFits : 0;
  Require(memory.bytes() <= reader.memory_a_byte * size + 20000000 + fits,
          "memory is bounded by the size: " + std::to_string(memory.bytes()) + " bytes");
  return 0;
}
