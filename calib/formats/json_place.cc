// Follows the field path through the text, which the converter found no fault with: of what it
// passes over, only where it ends matters, so that it takes no memory.
#include "calib/formats/json_place.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>
#include <vector>

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;

namespace {

// --- JSON by offsets; each that is returned may be the end of the text ---------------------------

bool IsIn(const char* characters, char c) {
  return std::char_traits<char>::find(characters, std::char_traits<char>::length(characters), c);
}

size_t SkipBlanks(std::string_view json, size_t at) {
  return std::min(json.find_first_not_of(" \t\r\n", at), json.size());
}

bool Has(std::string_view json, size_t at, char c) { return at < json.size() && json[at] == c; }

// Behind the text in quotes that begins there, or the word.
size_t SkipText(std::string_view json, size_t at) {
  const char quote = json[at];
  if (quote != '"' && quote != '\'') {
    return std::min(json.find_first_of(" \t\r\n,:{}[]\"'", at), json.size());
  }
  for (++at; at < json.size() && json[at] != quote; ++at) {
    if (json[at] == '\\') ++at;
  }
  return std::min(at + 1, json.size());
}

// What that text says. Of escapes, those of letters are read, which are all that a field's name
// has.
std::string TextAt(std::string_view json, size_t at) {
  const size_t end = SkipText(json, at);
  if (!IsIn("\"'", json[at])) return std::string(json.substr(at, end - at));
  std::string text;
  for (++at; at + 1 < end; ++at) {
    if (json.compare(at, 4, "\\u00") == 0 && at + 6 < end) {
      text +=
          static_cast<char>(std::strtol(std::string(json.substr(at + 4, 2)).c_str(), nullptr, 16));
      at += 5;
    } else {
      text += json[at];
    }
  }
  return text;
}

// Behind the value that begins there.
size_t SkipValue(std::string_view json, size_t at) {
  int depth = 0;
  for (at = SkipBlanks(json, at); at < json.size(); at = SkipBlanks(json, at)) {
    if (IsIn("{[", json[at])) {
      ++depth;
      ++at;
    } else if (IsIn("}]", json[at])) {
      ++at;
      if (--depth <= 0) break;
    } else if (IsIn(",:", json[at])) {
      if (depth == 0) break;
      ++at;
    } else {
      at = SkipText(json, at);
      if (depth == 0) break;
    }
  }
  return at;
}

// Calls visit(key, at, value) for each entry of the map that begins there, with the offsets of
// both; for something else, not at all.
template <typename Visit>
void ForEachEntry(std::string_view json, size_t at, Visit visit) {
  while (Has(json, at, '{') || Has(json, at, ',')) {
    at = SkipBlanks(json, at + 1);
    if (at == json.size() || json[at] == '}') return;
    const size_t colon = SkipBlanks(json, SkipText(json, at));
    if (!Has(json, colon, ':')) return;
    const size_t value = SkipBlanks(json, colon + 1);
    visit(TextAt(json, at), at, value);
    at = SkipBlanks(json, SkipValue(json, value));
  }
}

// The element of the list that begins there; the list itself if it has none of that index.
size_t ElementOf(std::string_view json, size_t list, int index) {
  size_t at = list;
  for (; Has(json, at, at == list ? '[' : ','); --index) {
    at = SkipBlanks(json, at + 1);
    if (index == 0) return at;
    at = SkipBlanks(json, SkipValue(json, at));
  }
  return list;
}

// --- Fields --------------------------------------------------------------------------------------

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
  size_t at;               // where the value begins
  const Descriptor* type;  // of the message that it is; null for a value
};

// Follows a path such as "camera[0].intrinsics" from the top.
Finding Follow(std::string_view json, const Descriptor* type, const std::string& path) {
  Finding found = {SkipBlanks(json, 0), type};
  std::istringstream elements(path);
  for (std::string element; std::getline(elements, element, '.') && found.type != nullptr;) {
    const size_t bracket = element.find('[');
    const FieldDescriptor* field = found.type->FindFieldByName(element.substr(0, bracket));
    if (field == nullptr || !Has(json, found.at, '{')) break;
    ForEachEntry(json, found.at, [&](const std::string& key, size_t, size_t value) {
      if (IsKeyOf(field, key)) found.at = value;
    });
    if (bracket != std::string::npos) {
      found.at = ElementOf(json, found.at, std::atoi(element.c_str() + bracket + 1));
    }
    found.type = field->message_type();
  }
  return found;
}

// Splits the message into the path that the converter complains about, and the complaint.
void Split(const std::string& message, std::string* path, std::string* what) {
  const bool parenthesized = message.compare(0, 1, "(") == 0;
  const size_t end = message.find(parenthesized ? ')' : ':');
  *path = message.substr(parenthesized, end - parenthesized);
  const size_t colon = message.find(": ", end);
  *what = colon == std::string::npos ? message : message.substr(colon + 2);
}

// An object or a list around a place.
struct Around {
  bool is_object;
  bool at_key;  // else at a value
  int index;    // of the element, in a list
  std::string key;
  std::map<std::string, size_t> keys;  // each with its place
};

// "wheelBase" and "wheel_base" name one field.
std::string WithoutCase(const std::string& key) {
  std::string result;
  for (const char c : key) {
    if (c != '_') result += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  }
  return result;
}

std::string PathOf(const std::vector<Around>& around) {
  std::string path;
  for (const Around& part : around) {
    if (!part.is_object) {
      path += "[" + std::to_string(part.index) + "]";
    } else {
      path += (path.empty() ? "" : ".") + part.key;
    }
  }
  return path;
}

}  // namespace

std::string DescribeKeyThatIsTwice(std::string_view json) {
  std::vector<Around> around;
  for (size_t at = std::min(json.find('{'), json.size()); at < json.size();
       at = SkipBlanks(json, at)) {
    if (IsIn("{[", json[at])) {
      around.push_back({json[at] == '{', json[at] == '{', 0, "", {}});
      ++at;
    } else if (IsIn("}]", json[at])) {
      if (!around.empty()) around.pop_back();
      ++at;
    } else if (IsIn(",:", json[at])) {
      if (!around.empty()) {
        around.back().at_key = around.back().is_object && json[at] == ',';
        if (json[at] == ',') ++around.back().index;
      }
      ++at;
    } else {
      if (!around.empty() && around.back().at_key) {
        Around& object = around.back();
        object.key = TextAt(json, at);
        const auto added = object.keys.insert({WithoutCase(object.key), at});
        if (!added.second) {
          return ":" + LineAndColumn(json, at) + ": " + PathOf(around) +
                 ": is there twice, first at " + LineAndColumn(json, added.first->second);
        }
      }
      at = SkipText(json, at);
    }
  }
  return "";
}

std::string LineAndColumn(std::string_view text, size_t offset) {
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

std::string DescribeJsonError(std::string_view json, const Descriptor* type,
                              const std::string& message) {
  std::string path, what;
  Split(message, &path, &what);
  const size_t top = SkipBlanks(json, 0);
  const Finding found = Follow(json, type, path);
  size_t place = found.at;
  if (what == "Cannot find field." && found.type != nullptr) {
    bool first = true;
    ForEachEntry(json, found.at, [&](const std::string& key, size_t at, size_t) {
      if (!first || HasField(found.type, key)) return;
      first = false;
      place = at;
      if (path == key && found.at == top) path.clear();
      what = found.type->name() + " has no field '" + key + "'";
    });
  }
  return ":" + LineAndColumn(json, place) + ": " + (path.empty() ? what : path + ": " + what);
}

}  // namespace calib
