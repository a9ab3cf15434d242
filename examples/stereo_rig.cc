// Writes the calibration of a real stereo rig to a file, reads it back, and prints it.
//
// The rig is the two-camera head of the EuRoC micro aerial vehicle dataset; its published numbers
// are below. A second, smaller record shows what a reader gets for fields that were never set.
//
//   stereo_rig [DIRECTORY]
//
// leaves stereo_rig.RobotCalibration.binpb and stereo_rig.BaseCalibrationProto.binpb in DIRECTORY
// (the current one, if none is given). The exit status is 0 if everything worked, 2 if the command
// line is wrong, and otherwise 1; the reason is on the error stream.

#include <google/protobuf/text_format.h>

#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "calibration_common/calibration.pb.h"

namespace {

using google::protobuf::Message;
using google::protobuf::TextFormat;
using zarvo::calibration::BaseCalibrationProto;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::RobotCalibration;

// One camera as the dataset publishes it. The records leave units, distortion model and matrix
// layout to their users; this is what the rig's users agreed on.
struct PublishedCamera {
  const char* name;
  int width, height;                       // pixels
  double fx, fy, cx, cy;                   // pixels
  std::vector<double> radial, tangential;  // k1, k2 and p1, p2 of the radial-tangential model
  std::vector<double> camera_to_body;      // 4x4, row by row, lengths in meters
};

std::vector<PublishedCamera> PublishedRig() {
  return {{"cam0",
           752,
           480,
           458.654,
           457.296,
           367.215,
           248.375,
           {-0.28340811, 0.07395907},
           {0.00019359, 1.76187114e-05},
           {0.0148655429818, -0.999880929698, 0.00414029679422, -0.0216401454975,  //
            0.999557249008, 0.0149672133247, 0.025715529948, -0.064676986768,      //
            -0.0257744366974, 0.00375618835797, 0.999660727178, 0.00981073058949,  //
            0.0, 0.0, 0.0, 1.0}},
          {"cam1",
           752,
           480,
           457.587,
           456.134,
           379.999,
           255.238,
           {-0.28368365, 0.07451284},
           {-0.00010473, -3.55590700e-05},
           {0.0125552670891, -0.999755099723, 0.0182237714554, -0.0198435579556,  //
            0.999598781151, 0.0130119051815, 0.0251588363115, 0.0453689425024,    //
            -0.0253898008918, 0.0179005838253, 0.999517347078, 0.00786212447038,  //
            0.0, 0.0, 0.0, 1.0}}};
}

void FillIntrinsics(const PublishedCamera& published, CameraIntrinsics* intrinsics) {
  intrinsics->set_fx(published.fx);
  intrinsics->set_fy(published.fy);
  intrinsics->set_skew(0);  // The published model has none, but the field is required.
  intrinsics->set_cx(published.cx);
  intrinsics->set_cy(published.cy);
  for (double k : published.radial) intrinsics->add_k(k);
  for (double p : published.tangential) intrinsics->add_p(p);
  intrinsics->set_width(published.width);
  intrinsics->set_height(published.height);
}

RobotCalibration MakeRig() {
  RobotCalibration rig;
  for (const PublishedCamera& published : PublishedRig()) {
    CameraCalibration* camera = rig.add_camera();
    camera->set_name(published.name);
    FillIntrinsics(published, camera->mutable_intrinsics());
    for (double element : published.camera_to_body) camera->mutable_extrinsics()->add_a(element);
  }
  return rig;
}

// A base of which only the wheel base was measured; width and length are left to their defaults.
BaseCalibrationProto MakeBase() {
  BaseCalibrationProto base;
  base.set_wheel_base(0.41f);
  return base;
}

std::string Encode(const Message& record) {
  std::string bytes;
  if (!record.SerializeToString(&bytes)) {
    throw std::runtime_error(record.GetTypeName() + ": cannot be serialized; missing: " +
                             record.InitializationErrorString());
  }
  return bytes;
}

void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) throw std::runtime_error(path + ": cannot be opened for writing");
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::runtime_error(path + ": could not be written completely");
}

void ReadFile(const std::string& path, Message* record) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path + ": cannot be opened for reading");
  if (!record->ParseFromIstream(&file)) {
    throw std::runtime_error(path + ": holds no complete " + record->GetTypeName());
  }
}

// Writes the record and returns what a reader makes of the file. The two are compared by their
// serialized bytes: records that hold the same fields with the same values, bit for bit, serialize
// alike.
template <class Record>
Record WriteAndReadBack(const Record& record, const std::string& path) {
  const std::string written = Encode(record);
  WriteFile(path, written);
  Record read;
  ReadFile(path, &read);
  if (Encode(read) != written) {
    throw std::runtime_error(path + ": reads back as another record than was written");
  }
  std::cout << path << ": " << written.size() << " bytes, read back equal to what was written\n";
  return read;
}

void PrintText(const Message& record) {
  std::string text;
  if (!TextFormat::PrintToString(record, &text)) {
    throw std::runtime_error(record.GetTypeName() + ": cannot be printed as text");
  }
  std::cout << text;
}

void PrintSizes(const RobotCalibration& rig) {
  for (const CameraCalibration& camera : rig.camera()) {
    std::cout << camera.name() << ": " << camera.ByteSize() << " bytes, of which intrinsics "
              << camera.intrinsics().ByteSize() << " and extrinsics "
              << camera.extrinsics().ByteSize() << "\n";
  }
}

void PrintLength(const char* name, bool has, float value) {
  std::cout << name << " = " << value << (has ? ", set" : ", the declared default") << "\n";
}

void Run(const std::string& directory) {
  const RobotCalibration rig =
      WriteAndReadBack(MakeRig(), directory + "/stereo_rig.RobotCalibration.binpb");
  PrintText(rig);
  PrintSizes(rig);

  std::cout << "\n";
  const BaseCalibrationProto base =
      WriteAndReadBack(MakeBase(), directory + "/stereo_rig.BaseCalibrationProto.binpb");
  PrintLength("wheel_base", base.has_wheel_base(), base.wheel_base());
  PrintLength("base_width", base.has_base_width(), base.base_width());
  PrintLength("base_length", base.has_base_length(), base.base_length());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2) {
    std::cerr << "usage: stereo_rig [DIRECTORY]\n";
    return 2;
  }
  int status = 0;
  try {
    Run(argc == 2 ? argv[1] : ".");
  } catch (const std::exception& failure) {
    std::cerr << "stereo_rig: " << failure.what() << "\n";
    status = 1;
  }
  // Frees the run-time's and the records' global objects, so that leak checkers see a clean exit.
  google::protobuf::ShutdownProtobufLibrary();
  return status;
}
