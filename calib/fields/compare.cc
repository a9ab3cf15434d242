#include "calib/fields/compare.h"

#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/util/field_comparator.h>
#include <google/protobuf/util/message_differencer.h>

#include <algorithm>
#include <optional>

#include "calib/console/number.h"
#include "calib/fields/field_path.h"
#include "calib/fields/rigid_numbers.h"
#include "calib/fields/unknown.h"
#include "calib/fields/value.h"
#include "calib/geometry/pose_difference.h"
#include "calibration_common/calibration.pb.h"

namespace calib {

using google::protobuf::Message;
using google::protobuf::util::DefaultFieldComparator;
using google::protobuf::util::MessageDifferencer;

namespace {

using zarvo::calibration::CameraExtrinsics;
using zarvo::calibration::RobotCalibration;
using zarvo::calibration_geometry::AngleBetween;
using zarvo::calibration_geometry::DistanceBetween;
using zarvo::calibration_geometry::kDegree;

// What turned one transform into the other; "" if they are none.
std::string Summary(const CameraExtrinsics& before, const CameraExtrinsics& after) {
  constexpr double kRigid = 0.01;
  const auto from = AsRigidNumbers(before.a()), to = AsRigidNumbers(after.a());
  if (!from || !to || from->off > kRigid || to->off > kRigid) return "";
  std::string summary =
      "turned by " + Rounded(AngleBetween(from->transform, to->transform) / kDegree) + " degrees";
  if (from->has_translation && to->has_translation) {
    summary += ", moved by " + Rounded(DistanceBetween(from->transform, to->transform)) +
               " in the file's own unit";
  }
  return summary;
}

class Collector : public MessageDifferencer::Reporter {
 public:
  using Path = std::vector<MessageDifferencer::SpecificField>;

  explicit Collector(std::vector<Difference>* differences) : differences_(differences) {}

  void ReportAdded(const Message&, const Message& after, const Path& path) override {
    differences_->push_back({Spell(path, false), "", Value(after, path, false), ""});
  }
  void ReportDeleted(const Message& before, const Message&, const Path& path) override {
    differences_->push_back({Spell(path, true), Value(before, path, true), "", ""});
  }
  void ReportModified(const Message& before, const Message& after, const Path& path) override {
    if (IsMessage(path)) {  // what differs in it was reported
      if (path.back().field->is_repeated()) return;
      const auto* field = path.back().field;
      return Summarize(before.GetReflection()->GetMessage(before, field),
                       after.GetReflection()->GetMessage(after, field), Spell(path, true));
    }
    Difference difference = {Spell(path, true), Value(before, path, true),
                             Value(after, path, false), ""};
    if (difference.before == difference.after) {  // long texts of one size
      difference.after.insert(difference.after.size() - 1, FirstDifference(before, after, path));
    }
    differences_->push_back(difference);
  }

  // Adds what the differences within a message amount to, if it is a transform.
  void Summarize(const Message& before, const Message& after, const std::string& path) {
    if (before.GetDescriptor() != CameraExtrinsics::descriptor()) return;
    const std::string summary = Summary(static_cast<const CameraExtrinsics&>(before),
                                        static_cast<const CameraExtrinsics&>(after));
    if (!summary.empty()) differences_->push_back({path, "", "", summary});
  }

 private:
  static bool IsMessage(const Path& path) {
    const auto* field = path.back().field;
    return field != nullptr &&
           field->cpp_type() == google::protobuf::FieldDescriptor::CPPTYPE_MESSAGE;
  }

  // By the indices of before; that of what is new is the one of after.
  static std::string Spell(const Path& path, bool before) {
    std::string result;
    for (const MessageDifferencer::SpecificField& step : path) {
      const bool is_new = !before && &step == &path.back();
      result =
          JoinPath(result, step.field == nullptr
                               ? "<" + std::to_string(step.unknown_field_number) + ">"
                               : PathElement(step.field, is_new ? step.new_index : step.index));
    }
    return result;
  }

  // `message` is the one that directly holds the last field of the path.
  static std::string Value(const Message& message, const Path& path, bool before) {
    const MessageDifferencer::SpecificField& last = path.back();
    if (last.field == nullptr) {
      return "<" +
             DescribeValue(before ? last.unknown_field_set1->field(last.unknown_field_index1)
                                  : last.unknown_field_set2->field(last.unknown_field_index2)) +
             ">";
    }
    return ShortValue(message, last.field, before ? last.index : last.new_index);
  }

  static std::string FirstDifference(const Message& before, const Message& after,
                                     const Path& path) {
    const MessageDifferencer::SpecificField& last = path.back();
    std::string a, b;
    if (last.field == nullptr) {
      const auto& field = last.unknown_field_set1->field(last.unknown_field_index1);
      if (field.type() != google::protobuf::UnknownField::TYPE_LENGTH_DELIMITED) return ", others";
      a = field.length_delimited();
      b = last.unknown_field_set2->field(last.unknown_field_index2).length_delimited();
    } else if (last.field->cpp_type() == google::protobuf::FieldDescriptor::CPPTYPE_STRING) {
      a = RawString(before, last.field, last.index);
      b = RawString(after, last.field, last.new_index);
    }
    const auto at = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin();
    return ", the first other one at " + std::to_string(at);
  }

  std::vector<Difference>* differences_;
};

class SameCamera : public MessageDifferencer::MapKeyComparator {
 public:
  explicit SameCamera(const CameraMatch& match) : match_(match) {}

  bool IsMatch(const Message& before, const Message& after,
               const std::vector<MessageDifferencer::SpecificField>&) const override {
    return match_.AreSame(before, after);
  }

 private:
  const CameraMatch& match_;
};

std::vector<Difference> CompareMatched(const Message& before, const Message& after,
                                       const Tolerance& tolerance, const CameraMatch* match) {
  std::vector<Difference> differences;
  Collector collector(&differences);
  DefaultFieldComparator comparator;
  comparator.set_treat_nan_as_equal(true);
  if (tolerance.absolute > 0 || tolerance.relative > 0) {
    comparator.set_float_comparison(DefaultFieldComparator::APPROXIMATE);
    comparator.SetDefaultFractionAndMargin(tolerance.relative, tolerance.absolute);
  }
  MessageDifferencer differencer;
  differencer.set_field_comparator(&comparator);
  std::optional<SameCamera> same_camera;
  if (match != nullptr && !match->is_by_index()) {  // which is slower
    same_camera.emplace(*match);
    differencer.TreatAsMapUsingKeyComparator(
        RobotCalibration::descriptor()->FindFieldByName("camera"), &*same_camera);
  }
  differencer.ReportDifferencesTo(&collector);
  if (!differencer.Compare(before, after)) collector.Summarize(before, after, "");
  return differences;
}

}  // namespace

std::vector<Difference> Compare(const Message& before, const Message& after,
                                const Tolerance& tolerance) {
  return CompareMatched(before, after, tolerance, nullptr);
}

std::vector<Difference> Compare(const Message& before, const Message& after,
                                const Tolerance& tolerance, const CameraMatch& match) {
  return CompareMatched(before, after, tolerance, &match);
}

}  // namespace calib
