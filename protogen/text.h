// Text helpers of the generator: filling templates, indenting, escaping, names and literals.
#ifndef PROTOGEN_TEXT_H_
#define PROTOGEN_TEXT_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace protogen {

using Variables = std::map<std::string, std::string>;

// Replaces every $name$ in `text` by its variable; a name that has none ends the program with a
// message, since the template is wrong. A newline that opens `text` is left out, so that a raw
// string can begin on a line of its own.
std::string Fill(const std::string& text, const Variables& variables);

// Puts `columns` spaces before every line of `text` that is not empty.
std::string Indent(const std::string& text, int columns);

// The width of generated code.
constexpr size_t kMaxColumns = 100;

// Breaks the lines of `code` that are wider than kMaxColumns: first a body or a statement that
// stands behind its head on one line, then argument lists. Comments and literals are left as they
// are.
std::string FitLines(const std::string& code);

// Renders comment lines as // lines.
std::string Comment(const std::vector<std::string>& lines);

// A comment line that begins a section of a file.
std::string SectionTitle(const std::string& title);

// Lines that open, and close, namespaces inside each other, the outermost first.
std::string OpenNamespaces(const std::vector<std::string>& names);
std::string CloseNamespaces(const std::vector<std::string>& names);

// The names behind which a parenthesis opens in `code`, but for those that are qualified and those
// in comments.
std::vector<std::string> FunctionsDeclaredIn(const std::string& code);

// Replaces every `from` in `text`.
std::string Replace(std::string text, const std::string& from, const std::string& to);

// error_per_point -> ErrorPerPoint
std::string CamelCase(const std::string& name);

// The file name as part of a C++ identifier: every character but letters and digits becomes _ and
// its hexadecimal code.
std::string FileIdentifier(const std::string& file_name);

// A bit mask as a C++ literal: 0x9Fu
std::string Hex(uint32_t mask);

// C++ literals that stand for exactly this value.
std::string FloatLiteral(float value);
std::string DoubleLiteral(double value);
std::string Int32Literal(int32_t value);
std::string Int64Literal(int64_t value);

// Bytes as a sequence of C++ string literals, one a line, none wider than `columns`.
std::string ByteLiterals(const std::string& bytes, size_t columns);

}  // namespace protogen

#endif  // PROTOGEN_TEXT_H_
