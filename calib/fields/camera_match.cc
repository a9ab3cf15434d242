#include "calib/fields/camera_match.h"

#include <algorithm>
#include <utility>

#include "calib/console/failure.h"
#include "calib/fields/field_path.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

using google::protobuf::Message;
using zarvo::calibration::CameraCalibration;
using zarvo::calibration::PTZSystemCalibration;
using zarvo::calibration::RobotCalibration;

namespace {

struct Key {
  const char* name;
  bool (*has)(const CameraCalibration& camera);
  const std::string& (*get)(const CameraCalibration& camera);
};
constexpr Key kName = {
    "name", [](const CameraCalibration& camera) { return camera.has_name(); },
    [](const CameraCalibration& camera) -> const std::string& { return camera.name(); }};
constexpr Key kSerial = {
    "serial", [](const CameraCalibration& camera) { return camera.has_serial(); },
    [](const CameraCalibration& camera) -> const std::string& { return camera.serial(); }};

struct Robot {
  const RobotCalibration* cameras;  // nullptr if the record has none
  std::string path;
};

Robot RobotOf(const Message& record) {
  if (record.GetDescriptor() == RobotCalibration::descriptor()) {
    return {static_cast<const RobotCalibration*>(&record), ""};
  }
  if (record.GetDescriptor() == PTZSystemCalibration::descriptor()) {
    return {&static_cast<const PTZSystemCalibration&>(record).other_cameras(), "other_cameras"};
  }
  return {nullptr, ""};
}

std::string CameraPath(const std::string& robot, int index) {
  return JoinPath(robot, "camera[" + std::to_string(index) + "]");
}

constexpr int kSeveral = -1;

// The index of the camera that has each value of the key, or kSeveral.
std::map<std::string, int> ByKey(const RobotCalibration& robot, const Key& key) {
  std::map<std::string, int> indices;
  for (int i = 0; i < robot.camera_size(); ++i) {
    if (!key.has(robot.camera(i))) continue;
    const auto added = indices.insert({key.get(robot.camera(i)), i});
    if (!added.second) added.first->second = kSeveral;
  }
  return indices;
}

void RefuseSeveral(const std::map<std::string, int>& indices, const Key& key) {
  for (const auto& [value, index] : indices) {
    if (index != kSeveral) continue;
    throw Failure(std::string("--by ") + key.name + ": several cameras have the " + key.name +
                      " '" + value + "'",
                  "Name something that tells them apart; --by index does.");
  }
}

// Pairs of indices, for each camera of before that of after, or kNone.
constexpr int kNone = -1;
struct Pairing {
  std::vector<int> partner;     // of before
  std::vector<const char*> by;  // of before
  std::vector<bool> taken;      // of after

  void Pair(int before, int after, const char* key) {
    partner[static_cast<size_t>(before)] = after;
    by[static_cast<size_t>(before)] = key;
    taken[static_cast<size_t>(after)] = true;
  }
  bool IsFree(int before, int after) const {
    return partner[static_cast<size_t>(before)] == kNone && !taken[static_cast<size_t>(after)];
  }
};

void PairByKey(const RobotCalibration& before, const RobotCalibration& after, const Key& key,
               bool strict, Pairing* pairing) {
  const auto of_before = ByKey(before, key), of_after = ByKey(after, key);
  if (strict) RefuseSeveral(of_before, key);
  if (strict) RefuseSeveral(of_after, key);
  for (const auto& [value, index] : of_before) {
    const auto found = of_after.find(value);
    if (index == kSeveral || found == of_after.end() || found->second == kSeveral) continue;
    if (pairing->IsFree(index, found->second)) pairing->Pair(index, found->second, key.name);
  }
}

void PairByIndex(int size, Pairing* pairing) {
  for (int i = 0; i < size; ++i) {
    if (pairing->IsFree(i, i)) pairing->Pair(i, i, "index");
  }
}

Pairing PairCameras(const RobotCalibration& before, const RobotCalibration& after, MatchBy by) {
  Pairing pairing;
  pairing.partner.assign(static_cast<size_t>(before.camera_size()), kNone);
  pairing.by.assign(static_cast<size_t>(before.camera_size()), "");
  pairing.taken.assign(static_cast<size_t>(after.camera_size()), false);
  const bool any = by == MatchBy::kAuto;
  if (any || by == MatchBy::kName) PairByKey(before, after, kName, !any, &pairing);
  if (any || by == MatchBy::kSerial) PairByKey(before, after, kSerial, !any, &pairing);
  if (any || by == MatchBy::kIndex) {
    PairByIndex(std::min(before.camera_size(), after.camera_size()), &pairing);
  }
  return pairing;
}

}  // namespace

CameraMatch::CameraMatch(const Message& before, const Message& after, MatchBy by) {
  const Robot from = RobotOf(before), to = RobotOf(after);
  if (from.cameras == nullptr || to.cameras == nullptr) return;
  matches_ = true;
  const Pairing pairing = PairCameras(*from.cameras, *to.cameras, by);
  const int common = std::min(from.cameras->camera_size(), to.cameras->camera_size());
  for (int i = 0; i < from.cameras->camera_size(); ++i) {
    const int partner = pairing.partner[static_cast<size_t>(i)];
    if (partner != (i < common ? i : kNone)) is_by_index_ = false;
    if (partner == kNone) continue;
    pairs_.push_back({CameraPath(from.path, i), CameraPath(to.path, partner),
                      pairing.by[static_cast<size_t>(i)]});
    after_of_[&from.cameras->camera(i)] = &to.cameras->camera(partner);
  }
}

bool CameraMatch::AreSame(const Message& before, const Message& after) const {
  return AfterOf(before) == &after;
}

const Message* CameraMatch::AfterOf(const Message& before) const {
  const auto found = after_of_.find(&before);
  return found == after_of_.end() ? nullptr : found->second;
}

bool CameraMatch::moved() const {
  return std::any_of(pairs_.begin(), pairs_.end(),
                     [](const Pair& pair) { return pair.before_path != pair.after_path; });
}

std::string CameraMatch::Told() const {
  if (pairs_.empty()) return "";
  const bool one_way = std::all_of(pairs_.begin(), pairs_.end(), [&](const Pair& pair) {
    return std::string(pair.by) == pairs_.front().by;
  });
  std::string told = "cameras are matched";
  if (one_way) told += std::string(" by ") + pairs_.front().by;
  if (one_way && !moved()) return told;
  told += ": ";
  for (const Pair& pair : pairs_) {
    if (&pair != &pairs_.front()) told += ", ";
    told += pair.before_path;
    if (pair.before_path != pair.after_path) told += " with " + pair.after_path;
    if (!one_way) told += std::string(" by ") + pair.by;
  }
  return told;
}

std::string OrderCamerasLike(const Message& after, Message* before) {
  const Robot from = RobotOf(*before), to = RobotOf(after);
  if (from.cameras == nullptr || to.cameras == nullptr) return "";
  if (from.cameras->camera_size() != to.cameras->camera_size()) return "";
  const CameraMatch match(*before, after, MatchBy::kAuto);
  std::vector<int> partner = PairCameras(*from.cameras, *to.cameras, MatchBy::kAuto).partner;
  const bool all = std::count(partner.begin(), partner.end(), kNone) == 0;
  if (!match.moved() || !all) return "";
  auto* cameras = const_cast<RobotCalibration*>(from.cameras)->mutable_camera();
  for (size_t i = 0; i < partner.size(); ++i) {
    while (partner[i] != static_cast<int>(i)) {
      const int place = partner[i];
      cameras->SwapElements(static_cast<int>(i), place);
      std::swap(partner[i], partner[static_cast<size_t>(place)]);
    }
  }
  return match.Told();
}

}  // namespace calib
