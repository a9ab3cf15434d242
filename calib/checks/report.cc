// All text that a file or its name could have a say in is made harmless: names and messages have no
// control characters (console/printable.h), and each format's own characters are escaped.
#include "calib/checks/report.h"

#include <utility>

#include "calib/console/file.h"
#include "calib/console/printable.h"

namespace calib {

namespace {

constexpr std::pair<const char*, ReportFormat> kFormats[] = {{"text", ReportFormat::kText},
                                                             {"json", ReportFormat::kJson},
                                                             {"github", ReportFormat::kGithub},
                                                             {"junit", ReportFormat::kJunit}};

// The text with each character replaced that `of` returns something for.
template <typename Replacement>
std::string Escaped(const std::string& text, Replacement of) {
  std::string result;
  for (const char c : text) {
    const char* replacement = of(c);
    replacement == nullptr ? result += c : result += replacement;
  }
  return result;
}

std::string JsonText(const std::string& text) {
  return "\"" +
         Escaped(text,
                 [](char c) {
                   return c == '"' ? "\\\"" : c == '\\' ? "\\\\" : c == '\n' ? "\\n" : nullptr;
                 }) +
         "\"";
}

std::string XmlText(const std::string& text) {
  return "\"" +
         Escaped(text,
                 [](char c) {
                   return c == '&'    ? "&amp;"
                          : c == '<'  ? "&lt;"
                          : c == '>'  ? "&gt;"
                          : c == '"'  ? "&quot;"
                          : c == '\n' ? "&#10;"
                                      : nullptr;
                 }) +
         "\"";
}

std::string CommandText(const std::string& text) {
  return Escaped(text, [](char c) {
    return c == '%' ? "%25" : c == '\r' ? "%0D" : c == '\n' ? "%0A" : nullptr;
  });
}

// Of a command's properties, commas and colons are escaped as well.
std::string PropertyText(const std::string& text) {
  return Escaped(CommandText(text), [](char c) {
    return c == ':' ? "%3A" : c == ',' ? "%2C" : nullptr;
  });
}

std::string Message(const Finding& finding) {
  return (finding.path.empty() ? "" : finding.path + ": ") + finding.what;
}

std::string Line(const std::string& name, const Finding& finding) {
  const std::string place =
      finding.line == 0 ? ""
                        : ":" + std::to_string(finding.line) + ":" + std::to_string(finding.column);
  return name + place + ": " + Message(finding) + "\n";
}

std::string Text(const CheckedFile& file) {
  if (!file.trouble.empty()) return "";  // it was told when it happened
  std::string text;
  for (const Finding& finding : file.findings) text += Line(file.name, finding);
  if (!file.summary.empty()) return text + file.summary + "\n";
  if (!text.empty()) return text;
  return file.name + ": a whole " + file.type + " of " + std::to_string(file.size) + " bytes" +
         (file.empty ? ", in which nothing is set\n" : "\n");
}

std::string Annotation(const CheckedFile& file, const Finding& finding) {
  std::string annotation = "::error file=" + PropertyText(file.name);
  if (finding.line > 0) {
    annotation +=
        ",line=" + std::to_string(finding.line) + ",col=" + std::to_string(finding.column);
  }
  return annotation + ",title=" + PropertyText("calib check: " + finding.rule) +
         "::" + CommandText(Message(finding)) + "\n";
}

std::string Annotations(const CheckedFile& file) {
  if (!file.trouble.empty()) {
    return Annotation(file, {"unreadable", "", "", file.trouble});
  }
  std::string annotations;
  for (const Finding& finding : file.findings) annotations += Annotation(file, finding);
  return annotations;
}

std::string JsonFinding(const Finding& finding) {
  std::string json =
      "{\"rule\": " + JsonText(finding.rule) + ", \"path\": " + JsonText(finding.path) +
      ", \"value\": " + JsonText(finding.value) + ", \"message\": " + JsonText(finding.what);
  if (finding.line > 0) {
    json += ", \"line\": " + std::to_string(finding.line) +
            ", \"column\": " + std::to_string(finding.column);
  }
  return json + "}";
}

const char* ResultOf(const CheckedFile& file) {
  return !file.trouble.empty() ? "unreadable" : file.findings.empty() ? "whole" : "findings";
}

std::string JsonFile(const CheckedFile& file) {
  std::string json = "  {\"file\": " + JsonText(file.name) + ", \"type\": " + JsonText(file.type) +
                     ", \"bytes\": " + std::to_string(file.size) + ", \"result\": \"" +
                     ResultOf(file) + "\"";
  if (!file.trouble.empty()) json += ", \"trouble\": " + JsonText(file.trouble);
  json += ", \"findings\": [";
  for (size_t i = 0; i < file.findings.size(); ++i) {
    json += (i == 0 ? "\n   " : ",\n   ") + JsonFinding(file.findings[i]);
  }
  return json + (file.findings.empty() ? "]}" : "\n  ]}");
}

std::string JunitCase(const CheckedFile& file) {
  const std::string begin =
      "  <testcase classname=" +
      XmlText(file.type.empty() ? "calib check" : "calib check " + file.type) +
      " name=" + XmlText(file.name);
  if (!file.trouble.empty()) {
    return begin + ">\n   <error message=" + XmlText(file.trouble) + "/>\n  </testcase>\n";
  }
  if (file.findings.empty()) return begin + "/>\n";
  std::string lines;
  for (const Finding& finding : file.findings) lines += Message(finding) + "\n";
  lines.pop_back();
  return begin + ">\n   <failure type=" + XmlText(file.findings[0].rule) +
         " message=" + XmlText(lines) + "/>\n  </testcase>\n";
}

}  // namespace

std::vector<std::string> ReportFormatNames() {
  std::vector<std::string> names;
  for (const auto& known : kFormats) names.emplace_back(known.first);
  return names;
}

ReportFormat ReportFormatNamed(const std::string& name) {
  const auto* known = kFormats;
  while (known->first != name) ++known;
  return known->second;
}

void Report::Add(CheckedFile file) {
  file.trouble = PrintableLines(file.trouble);
  ++(!file.trouble.empty() ? failed_ : file.findings.empty() ? whole_ : found_);
  if (format_ == ReportFormat::kText) return Print(Text(file));
  if (format_ == ReportFormat::kGithub) return Print(Annotations(file));
  files_.push_back(std::move(file));
}

void Report::End() {
  switch (format_) {
    case ReportFormat::kText:
      if (whole_ + found_ + failed_ > 1) Print(Count());
      break;
    case ReportFormat::kGithub:
      Print(Count());
      break;
    case ReportFormat::kJson:
      Print(Json());
      break;
    case ReportFormat::kJunit:
      Print(Junit());
      break;
  }
}

std::string Report::Count() const {
  const size_t files = whole_ + found_ + failed_;
  std::string count = std::to_string(files) + (files == 1 ? " file: " : " files: ") +
                      std::to_string(whole_) + " whole, " + std::to_string(found_) +
                      " with findings";
  if (failed_ > 0) count += ", " + std::to_string(failed_) + " that could not be checked";
  return count + "\n";
}

std::string Report::Json() const {
  std::string json = "{\n \"files\": [";
  for (size_t i = 0; i < files_.size(); ++i) json += (i == 0 ? "\n" : ",\n") + JsonFile(files_[i]);
  return json + "\n ],\n \"whole\": " + std::to_string(whole_) +
         ",\n \"findings\": " + std::to_string(found_) +
         ",\n \"unreadable\": " + std::to_string(failed_) + "\n}\n";
}

std::string Report::Junit() const {
  const std::string counts = " tests=\"" + std::to_string(files_.size()) + "\" failures=\"" +
                             std::to_string(found_) + "\" errors=\"" + std::to_string(failed_) +
                             "\">\n";
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + counts +
                    " <testsuite name=\"calib check\"" + counts;
  for (const CheckedFile& file : files_) xml += JunitCase(file);
  return xml + " </testsuite>\n</testsuites>\n";
}

}  // namespace calib
