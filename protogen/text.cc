#include "protogen/text.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <sstream>

namespace protogen {
namespace {

// The shortest decimal text that reads back as `value`.
template <typename T, typename Parse>
std::string ShortestDecimal(T value, int max_digits, Parse parse) {
  char text[64];
  for (int digits = 1; digits <= max_digits; ++digits) {
    std::snprintf(text, sizeof(text), "%.*g", digits, static_cast<double>(value));
    if (parse(text) == value) break;
  }
  std::string result = text;
  if (result.find_first_of(".e") == std::string::npos) result += ".0";
  return result;
}

}  // namespace

std::string Fill(const std::string& text, const Variables& variables) {
  std::string result;
  size_t position = text.compare(0, 1, "\n") == 0 ? 1 : 0;
  for (;;) {
    const size_t open = text.find('$', position);
    result.append(text, position, open == std::string::npos ? open : open - position);
    if (open == std::string::npos) return result;
    const size_t close = text.find('$', open + 1);
    const std::string name = text.substr(open + 1, close - open - 1);
    const auto variable = variables.find(name);
    if (close == std::string::npos || variable == variables.end()) {
      std::fprintf(stderr, "protogen: a template uses $%s$, which has no value\n", name.c_str());
      std::abort();
    }
    result += variable->second;
    position = close + 1;
  }
}

std::string Indent(const std::string& text, int columns) {
  const std::string spaces(columns, ' ');
  std::string result;
  bool at_line_start = true;
  for (const char c : text) {
    if (at_line_start && c != '\n') result += spaces;
    result += c;
    at_line_start = c == '\n';
  }
  return result;
}

namespace {

// Where the parenthesis that opens at `open` is closed.
size_t ClosingParenthesis(const std::string& line, size_t open) {
  int depth = 0;
  for (size_t i = open; i < line.size(); ++i) {
    if (line[i] == '(') ++depth;
    if (line[i] == ')' && --depth == 0) return i;
  }
  return line.size() - 1;
}

// One line as one or more, each with its newline.
std::string FitLine(const std::string& line) {
  const size_t indent = line.find_first_not_of(' ');
  if (line.size() <= kMaxColumns || indent == std::string::npos) return line + "\n";
  if (line[indent] == '"' || line[indent] == '#' || line.compare(indent, 2, "//") == 0) {
    return line + "\n";
  }
  const std::string margin(indent, ' ');

  const size_t body = line.find(" { ");
  if (body != std::string::npos && line.compare(line.size() - 2, 2, " }") == 0) {
    const std::string statement = line.substr(body + 3, line.size() - 2 - (body + 3));
    return FitLine(line.substr(0, body + 2)) + FitLine(margin + "  " + statement) + margin + "}\n";
  }
  if (line.compare(indent, 4, "if (") == 0 || line.compare(indent, 5, "for (") == 0) {
    const size_t close = ClosingParenthesis(line, line.find('(', indent));
    if (line.compare(close, 3, ") {") != 0) {
      return FitLine(line.substr(0, close + 1) + " {") +
             FitLine(margin + "  " + line.substr(close + 2)) + margin + "}\n";
    }
  }
  // Behind the last assignment, or else the last parenthesis or comma, or else the last space, that
  // leaves room.
  size_t end = line.rfind(" = ", kMaxColumns - 2);
  end = end != std::string::npos && end > indent ? end + 2
                                                 : line.find_last_of("(,", kMaxColumns - 1) + 1;
  if (end < kMaxColumns && end < line.size() && line[end] == ')') ++end;  // () stays whole
  if (end <= indent) end = line.rfind(' ', kMaxColumns);
  if (end == std::string::npos || end <= indent) return line + "\n";
  return line.substr(0, end) + "\n" +
         FitLine(margin + "    " + line.substr(line.find_first_not_of(' ', end)));
}

}  // namespace

std::string FitLines(const std::string& code) {
  std::string result;
  for (size_t start = 0; start < code.size();) {
    const size_t end = std::min(code.find('\n', start), code.size());
    result += FitLine(code.substr(start, end - start));
    start = end + 1;
  }
  return result;
}

std::string Comment(const std::vector<std::string>& lines) {
  std::string result;
  for (const std::string& line : lines) {
    const std::string text = line.substr(0, line.find_last_not_of(" \t\r\v\f") + 1);
    result += text.empty() ? "//" : "// " + text;
    // Neither a backslash nor the trigraph for one may end the line.
    if (!text.empty() && (text.back() == '\\' || text.back() == '/')) result += " .";
    result += "\n";
  }
  return result;
}

std::string SectionTitle(const std::string& title) {
  return "// " + title + " " + std::string(title.size() < 95 ? 95 - title.size() : 0, '-') + "\n";
}

std::string OpenNamespaces(const std::vector<std::string>& names) {
  std::string lines;
  for (const std::string& name : names) lines.append("namespace ").append(name).append(" {\n");
  return lines;
}

std::string CloseNamespaces(const std::vector<std::string>& names) {
  std::string lines;
  for (const std::string& name : names) lines.insert(0, "}  // namespace " + name + "\n");
  return lines;
}

std::vector<std::string> FunctionsDeclaredIn(const std::string& code) {
  static const std::regex comment("//[^\n]*"), function("(^|[^:\\w$])(\\w+)\\(");
  const std::string text = std::regex_replace(code, comment, "");
  std::vector<std::string> names;
  for (std::sregex_iterator match(text.begin(), text.end(), function), end; match != end; ++match)
    names.push_back((*match)[2]);
  return names;
}

std::string Replace(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

std::string CamelCase(const std::string& name) {
  std::string result;
  bool starts_piece = true;
  for (const char c : name) {
    if (c == '_') {
      starts_piece = true;
      continue;
    }
    result += starts_piece ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
    starts_piece = false;
  }
  return result;
}

std::string FileIdentifier(const std::string& file_name) {
  std::string result;
  for (const char c : file_name) {
    if (std::isalnum(static_cast<unsigned char>(c))) {
      result += c;
    } else {
      char code[8];
      std::snprintf(code, sizeof(code), "_%x", static_cast<unsigned char>(c));
      result += code;
    }
  }
  return result;
}

std::string Hex(uint32_t mask) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%Xu", static_cast<unsigned>(mask));
  return text;
}

std::string FloatLiteral(float value) {
  return ShortestDecimal(value, 9, [](const char* text) { return std::strtof(text, nullptr); }) +
         "f";
}

std::string DoubleLiteral(double value) {
  return ShortestDecimal(value, 17, [](const char* text) { return std::strtod(text, nullptr); });
}

std::string Int32Literal(int32_t value) {
  if (value == INT32_MIN) return "(-2147483647 - 1)";
  return std::to_string(value);
}

std::string Int64Literal(int64_t value) {
  if (value == INT64_MIN) return "(-9223372036854775807LL - 1)";
  return std::to_string(value) + (value > INT32_MAX || value < INT32_MIN ? "LL" : "");
}

std::string ByteLiterals(const std::string& bytes, size_t columns) {
  std::string result, line;
  for (const char c : bytes) {
    const unsigned char byte = static_cast<unsigned char>(c);
    std::string text(1, c);
    if (byte == '"' || byte == '\\') {
      text.insert(0, "\\");
    } else if (byte < 0x20 || byte >= 0x7F ||
               byte == '?') {  // no ? so that no trigraph comes about
      char code[8];
      std::snprintf(code, sizeof(code), "\\%03o", static_cast<unsigned>(byte));
      text = code;
    }
    if (line.size() + text.size() + 2 > columns) {
      result += '"' + line + "\"\n";
      line.clear();
    }
    line += text;
  }
  return result + '"' + line + '"';
}

}  // namespace protogen
