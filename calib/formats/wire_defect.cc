#include "calib/formats/wire_defect.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include <cstdint>
#include <map>

#include "calib/fields/field_path.h"
#include "calib/formats/stream_limit.h"

namespace calib {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::internal::WireFormatLite;
using google::protobuf::io::CodedInputStream;

constexpr int kLongestVarint = 10;
constexpr int kMostLevels = 100;  // of messages and groups in one another

class Walker {
 public:
  explicit Walker(std::string_view bytes)
      : bytes_(bytes),
        input_(reinterpret_cast<const uint8_t*>(bytes.data()), static_cast<int>(bytes.size())) {
    LiftTotalLimit(&input_, 0);
  }

  // Reads fields up to `end`, or up to the end-group tag of `group` if that is not 0. `type` is
  // null where the fields are unknown. False if there is a defect.
  bool ReadFields(const Descriptor* type, const std::string& path, int end, int group, int level) {
    std::map<int, int> seen;  // elements so far, by field number
    while (input_.CurrentPosition() < end) {
      start_ = input_.CurrentPosition();
      const uint32_t tag = static_cast<uint32_t>(input_.ReadTag());
      if (tag == 0) return Defect(path, TagProblem(start_, end));
      const int number = WireFormatLite::GetTagFieldNumber(tag);
      const int wire_type = static_cast<int>(WireFormatLite::GetTagWireType(tag));
      if (number == 0) return Defect(path, "has field number 0, which no field may have");
      if (wire_type == WireFormatLite::WIRETYPE_END_GROUP) {
        if (number == group) return true;
        return Defect(path, "has an end-group tag of field number " + std::to_string(number) +
                                " where no such group is open");
      }
      const FieldDescriptor* field = type == nullptr ? nullptr : type->FindFieldByNumber(number);
      const std::string place = field == nullptr
                                    ? JoinPath(path, "<" + std::to_string(number) + ">")
                                    : JoinPath(path, PathElement(field, seen[number]++));
      if (!ReadValue(field, number, wire_type, place, path, end, level)) return false;
    }
    return group == 0 ||
           Defect(path, "ends inside a group of field number " + std::to_string(group));
  }

  const WireDefect& defect() const { return defect_; }

 private:
  bool Defect(const std::string& path, const std::string& what) {
    defect_ = {start_, path, what};
    return false;
  }

  std::string TagProblem(int begin, int end) {
    const bool cut = end - begin < kLongestVarint && (bytes_[static_cast<size_t>(end) - 1] & 0x80);
    return cut ? "ends inside a tag" : "has a tag that is 0 or longer than 10 bytes";
  }

  static std::string VarintProblem(const std::string& what, int begin, int end) {
    return what + (end - begin < kLongestVarint ? " is cut off" : " is longer than 10 bytes");
  }

  bool ReadValue(const FieldDescriptor* field, int number, int wire_type, const std::string& place,
                 const std::string& path, int end, int level) {
    const int begin = input_.CurrentPosition();
    google::protobuf::uint64 ignored;
    switch (wire_type) {
      case WireFormatLite::WIRETYPE_VARINT:
        return input_.ReadVarint64(&ignored) ||
               Defect(place, VarintProblem("its value", begin, end));
      case WireFormatLite::WIRETYPE_FIXED64:
        return SkipFixed(8, place, end);
      case WireFormatLite::WIRETYPE_FIXED32:
        return SkipFixed(4, place, end);
      case WireFormatLite::WIRETYPE_LENGTH_DELIMITED:
        return ReadLengthDelimited(field, place, path, end, level);
      case WireFormatLite::WIRETYPE_START_GROUP:
        if (level == kMostLevels) return Defect(place, TooDeep());
        return ReadFields(nullptr, place, end, number, level + 1);
      default:
        return Defect(place,
                      "has wire type " + std::to_string(wire_type) + ", which does not exist");
    }
  }

  bool SkipFixed(int width, const std::string& place, int end) {
    const int left = end - input_.CurrentPosition();
    if (left >= width) return input_.Skip(width);
    return Defect(place, "is cut off: its value takes " + std::to_string(width) + " bytes, but " +
                             std::to_string(left) + " are left");
  }

  bool ReadLengthDelimited(const FieldDescriptor* field, const std::string& place,
                           const std::string& path, int end, int level) {
    const int length_begin = input_.CurrentPosition();
    google::protobuf::uint64 length;
    if (!input_.ReadVarint64(&length)) {
      return Defect(place, VarintProblem("its length", length_begin, end));
    }
    const int begin = input_.CurrentPosition();
    if (length > static_cast<uint64_t>(end - begin)) {
      return Defect(place, "announces " + std::to_string(length) + " bytes, but " +
                               std::to_string(end - begin) + " are left in " +
                               (path.empty() ? "the record" : path));
    }
    const int inner_end = begin + static_cast<int>(length);
    if (field != nullptr && field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
      if (level == kMostLevels) return Defect(place, TooDeep());
      const CodedInputStream::Limit limit = input_.PushLimit(static_cast<int>(length));
      if (!ReadFields(field->message_type(), place, inner_end, 0, level + 1)) return false;
      input_.PopLimit(limit);
      return true;
    }
    if (field != nullptr && field->is_repeated()) {  // a packed run
      const int width = Width(field);
      if (length % static_cast<unsigned>(width) != 0) {
        return Defect(place, "is a packed run of " + std::to_string(length) +
                                 " bytes, which is no multiple of " + std::to_string(width));
      }
    }
    return input_.Skip(static_cast<int>(length));
  }

  // The bytes that one value takes in a packed run of the field; of numbers, the schema repeats
  // doubles and floats only.
  static int Width(const FieldDescriptor* field) {
    switch (field->cpp_type()) {
      case FieldDescriptor::CPPTYPE_DOUBLE:
        return 8;
      case FieldDescriptor::CPPTYPE_FLOAT:
        return 4;
      default:
        return 1;
    }
  }

  static std::string TooDeep() {
    return "lies deeper than " + std::to_string(kMostLevels) + " messages in one another";
  }

  const std::string_view bytes_;
  CodedInputStream input_;
  int start_ = 0;
  WireDefect defect_;
};

}  // namespace

std::optional<WireDefect> FindWireDefect(const Descriptor* type, std::string_view bytes) {
  Walker walker(bytes);
  if (walker.ReadFields(type, "", static_cast<int>(bytes.size()), 0, 0)) return std::nullopt;
  return walker.defect();
}

}  // namespace calib
