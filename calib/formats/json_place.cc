// Looks the field path up with the YAML reader, which keeps the mark of every value: JSON that the
// converter found no fault with is YAML, too.
#include "calib/formats/json_place.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;

namespace {

constexpr size_t kMostToSearch = size_t{16} << 20;

bool IsKeyOf(const FieldDescriptor* field, const std::string& key) {
  return key == field->name() || key == field->camelcase_name();
}

bool HasField(const Descriptor* type, const std::string& key) {
  for (int i = 0; i < type->field_count(); ++i) {
    if (IsKeyOf(type->field(i), key)) return true;
  }
  return false;
}

struct Finding {
  YAML::Node node;
  const Descriptor* type;  // of the message that the node holds; null for a value
};

// Follows a path such as "camera[0].intrinsics" from the top.
Finding Follow(const YAML::Node& top, const Descriptor* type, const std::string& path) {
  Finding at = {top, type};
  std::istringstream elements(path);
  for (std::string element; std::getline(elements, element, '.') && at.type != nullptr;) {
    const size_t bracket = element.find('[');
    const FieldDescriptor* field = at.type->FindFieldByName(element.substr(0, bracket));
    if (field == nullptr || !at.node.IsMap()) break;
    for (const auto& entry : YAML::Node(at.node)) {
      if (IsKeyOf(field, entry.first.as<std::string>())) at.node.reset(entry.second);
    }
    if (bracket != std::string::npos && at.node.IsSequence()) {
      at.node.reset(YAML::Node(at.node)[std::atoi(element.c_str() + bracket + 1)]);
    }
    at.type = field->message_type();
  }
  return at;
}

std::string PlaceOf(const YAML::Node& node) {
  const YAML::Mark mark = node.Mark();
  return ":" + std::to_string(mark.line + 1) + ":" + std::to_string(mark.column + 1);
}

// Splits the message into the path that the converter complains about, and the complaint.
void Split(const std::string& message, std::string* path, std::string* what) {
  const bool parenthesized = message.compare(0, 1, "(") == 0;
  const size_t end = message.find(parenthesized ? ')' : ':');
  *path = message.substr(parenthesized, end - parenthesized);
  const size_t colon = message.find(": ", end);
  *what = colon == std::string::npos ? message : message.substr(colon + 2);
}

}  // namespace

std::string LineAndColumn(const std::string& text, size_t offset) {
  const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(offset, text.size()));
  const auto line = std::count(text.begin(), end, '\n') + 1;
  const size_t line_start = offset == 0 ? 0 : text.find_last_of('\n', offset - 1) + 1;
  return std::to_string(line) + ":" + std::to_string(offset - line_start + 1);
}

size_t FindStop(size_t size,
                const std::function<size_t(size_t low, size_t high, size_t piece)>& read) {
  size_t low = 0, high = size;  // it gives up behind the first, and not behind the second
  while (high - low > 1) {
    const size_t piece = (high - low + kPieces - 1) / kPieces;
    const size_t taken = read(low, high, piece);
    if (taken <= low || taken > high) break;  // it made something else of other pieces
    low += (taken - low - 1) / piece * piece;
    high = taken;
  }
  return high;
}

std::string DescribeJsonError(const std::string& json, const Descriptor* type,
                              const std::string& message) {
  std::string path, what;
  Split(message, &path, &what);
  std::string description = ": " + (path.empty() ? what : path + ": " + what);
  if (json.size() > kMostToSearch) return description;
  try {
    const Finding at = Follow(YAML::Load(json), type, path);
    if (what != "Cannot find field." || at.type == nullptr) return PlaceOf(at.node) + description;
    for (const auto& entry : at.node) {
      const std::string key = entry.first.as<std::string>();
      if (HasField(at.type, key)) continue;
      description = ": ";
      description += path.empty() ? "" : path + ": ";
      description += at.type->name() + " has no field '" + key + "'";
      return PlaceOf(entry.first) + description;
    }
  } catch (const YAML::Exception&) {
    // Without line and column, the path has to do.
  }
  return description;
}

}  // namespace calib
