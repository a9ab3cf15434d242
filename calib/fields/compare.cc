#include "calib/fields/compare.h"

#include <google/protobuf/unknown_field_set.h>
#include <google/protobuf/util/field_comparator.h>
#include <google/protobuf/util/message_differencer.h>

#include <algorithm>

#include "calib/fields/field_path.h"
#include "calib/fields/unknown.h"
#include "calib/fields/value.h"

namespace calib {

using google::protobuf::Message;
using google::protobuf::util::DefaultFieldComparator;
using google::protobuf::util::MessageDifferencer;

namespace {

class Collector : public MessageDifferencer::Reporter {
 public:
  using Path = std::vector<MessageDifferencer::SpecificField>;

  explicit Collector(std::vector<Difference>* differences) : differences_(differences) {}

  void ReportAdded(const Message&, const Message& after, const Path& path) override {
    differences_->push_back({Spell(path, false), "", Value(after, path, false)});
  }
  void ReportDeleted(const Message& before, const Message&, const Path& path) override {
    differences_->push_back({Spell(path, true), Value(before, path, true), ""});
  }
  void ReportModified(const Message& before, const Message& after, const Path& path) override {
    if (IsMessage(path)) return;  // what differs in it was reported
    Difference difference = {Spell(path, true), Value(before, path, true),
                             Value(after, path, false)};
    if (difference.before == difference.after) {  // long texts of one size
      difference.after.insert(difference.after.size() - 1, FirstDifference(before, after, path));
    }
    differences_->push_back(difference);
  }

 private:
  static bool IsMessage(const Path& path) {
    const auto* field = path.back().field;
    return field != nullptr &&
           field->cpp_type() == google::protobuf::FieldDescriptor::CPPTYPE_MESSAGE;
  }

  static std::string Spell(const Path& path, bool before) {
    std::string result;
    for (const MessageDifferencer::SpecificField& step : path) {
      result =
          JoinPath(result, step.field == nullptr
                               ? "<" + std::to_string(step.unknown_field_number) + ">"
                               : PathElement(step.field, before ? step.index : step.new_index));
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

}  // namespace

std::vector<Difference> Compare(const Message& before, const Message& after,
                                const Tolerance& tolerance) {
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
  differencer.ReportDifferencesTo(&collector);
  differencer.Compare(before, after);
  return differences;
}

}  // namespace calib
