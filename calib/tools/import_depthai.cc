// DepthAI: the JSON file of a device, with the cameras by the sockets of its board. Each tells
// where it sits relative to another one, which may do so in its turn.
#include <map>

#include "calib/tools/conventions.h"
#include "calib/tools/import_common.h"
#include "calib/tools/import_lens.h"
#include "calib/tools/importers.h"

namespace calib {

using zarvo::calibration::CameraIntrinsics;
using zarvo::calibration::RobotCalibration;

namespace {

constexpr int kNoSocket = -1, kSockets = 10;
const char kNoSocketOfOlderFiles[] = "255";
constexpr size_t kFisheyeCoefficients = 4;
const char kPerspective[] = "0", kFisheye[] = "1";  // of cameraType

struct Camera {
  int socket;
  Foreign data;
};

int Socket(const Foreign& value, const std::string& text) {
  if (text == kNoSocketOfOlderFiles) return kNoSocket;
  for (int socket = kNoSocket; socket < kSockets; ++socket) {
    if (text == std::to_string(socket)) return socket;
  }
  value.Refuse("is at the socket '" + text + "', expected -1 to 9", "Correct it there.");
}

std::string SocketName(int socket) { return std::string("CAM_") + static_cast<char>('A' + socket); }

// A list of pairs of a socket and a camera, or a map by the socket.
std::vector<Camera> Cameras(const Foreign& data) {
  std::vector<Camera> cameras;
  if (data.IsMap()) {
    data.ForEachEntry([&](const std::string& key, const Foreign& value) {
      cameras.push_back({Socket(value, key), value});
    });
    return cameras;
  }
  for (const Foreign& element : data.Elements()) {
    const std::vector<Foreign> pair = element.Elements();
    if (pair.size() != 2) {
      element.Refuse("is a list of " + std::to_string(pair.size()) +
                         ", expected a pair of a socket and a camera",
                     "Correct it there.");
    }
    cameras.push_back({Socket(pair[0], pair[0].Text()), pair[1]});
  }
  return cameras;
}

// Lists of sixteen or fewer coefficients have zeros at their end if the lens takes fewer.
void StoreLens(const Foreign& data, const LensModel* chosen, CameraIntrinsics* intrinsics) {
  const auto type = data.Find({"cameraType"});
  const std::string name = type ? type->Text() : kPerspective;
  if (name != kPerspective && name != kFisheye) {
    return type->Lose("is " + type->Spell() + ", of a lens that k and p cannot hold");
  }
  const Foreign list = data.At({"distortionCoeff"});
  std::vector<double> numbers = list.Numbers();
  const bool fisheye = name == kFisheye;
  const LensModel* model = FindLensModel(fisheye               ? "equidistant"
                                         : numbers.size() <= 5 ? "plumb_bob"
                                                               : "rational_polynomial");
  if (chosen != nullptr && chosen->order != model->order) {
    list.Refuse(
        "is of " + model->name + ", by cameraType, but --distortion-model says " + chosen->name,
        "Leave the option out.");
  }
  const auto rest =
      numbers.begin() + static_cast<std::ptrdiff_t>(std::min(numbers.size(), kFisheyeCoefficients));
  if (fisheye && std::all_of(rest, numbers.end(), [](double n) { return n == 0; })) {
    numbers.erase(rest, numbers.end());
  }
  LensImport({}, model).Store(list, numbers, intrinsics);
}

// From the camera to that of the other socket.
RigidTransform ToOther(const Foreign& extrinsics) {
  const std::vector<double> r = extrinsics.At({"rotationMatrix"}).Rows(3, 3);
  const std::vector<double> t = NumbersOf(extrinsics.At({"translation"}), {"x", "y", "z"});
  return RigidTransform::FromRows(
      {r[0], r[1], r[2], t[0], r[3], r[4], r[5], t[1], r[6], r[7], r[8], t[2]});
}

// kNoSocket, too, where the rotation was never calibrated and is all zeros.
int OtherSocket(const Camera& camera) {
  const auto extrinsics = camera.data.Find({"extrinsics"});
  const auto other = extrinsics ? extrinsics->Find({"toCameraSocket"}) : std::nullopt;
  if (!other) return kNoSocket;
  const int socket = Socket(*other, other->Text());
  const auto rotation = extrinsics->Find({"rotationMatrix"});
  return rotation && rotation->IsZero() ? kNoSocket : socket;
}

// From the camera along to the last one that sits relative to no other, whose socket is stored.
RigidTransform ToLast(const std::map<int, Camera>& cameras, const Camera& camera, int* last) {
  RigidTransform along;
  *last = camera.socket;
  for (size_t steps = 0;; ++steps) {
    const auto found = cameras.find(*last);
    const int other = found == cameras.end() ? kNoSocket : OtherSocket(found->second);
    if (other == kNoSocket) return along;
    const Foreign extrinsics = found->second.data.At({"extrinsics"});
    if (steps == cameras.size()) {
      extrinsics.Refuse("leads back to the camera that it begins with",
                        "One camera must sit relative to no other: its toCameraSocket is -1.");
    }
    along = ToOther(extrinsics) * along;
    *last = other;
  }
}

}  // namespace

bool IsDepthAi(const Foreign& file) { return file.Has({"cameraData"}); }

void ImportDepthAi(const Foreign& file, const LensModel* lens, RobotCalibration* robot) {
  std::map<int, Camera> by_socket;
  const std::vector<Camera> cameras = Cameras(file.At({"cameraData"}));
  for (const Camera& camera : cameras) by_socket.emplace(camera.socket, camera);
  for (const Camera& camera : cameras) {
    const Foreign matrix = camera.data.At({"intrinsicMatrix"});
    if (camera.socket == kNoSocket || matrix.IsZero()) {
      matrix.NotKept("the socket has no camera that is calibrated");
      continue;
    }
    auto* calibration = robot->add_camera();
    calibration->set_name(SocketName(camera.socket));
    CameraIntrinsics* intrinsics = calibration->mutable_intrinsics();
    StoreCameraMatrix(matrix, matrix.Rows(3, 3), intrinsics);
    StoreLens(camera.data, lens, intrinsics);
    intrinsics->set_width(camera.data.At({"width"}).Count());
    intrinsics->set_height(camera.data.At({"height"}).Count());
    int last = kNoSocket;
    const RigidTransform pose = ToLast(by_socket, camera, &last);
    if (last == camera.socket) continue;
    const Foreign extrinsics = camera.data.At({"extrinsics"});
    StorePose("depthai", extrinsics, pose, SocketName(last), calibration->mutable_extrinsics());
    extrinsics.Convert("its lengths are kept in centimetres, as the file has them");
  }
  if (robot->camera_size() == 0) {
    file.At({"cameraData"})
        .Refuse("has no camera that is calibrated", "Calibrate the device first.");
  }
}

}  // namespace calib
