#include "calib/views/table.h"

#include <google/protobuf/repeated_field.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <type_traits>
#include <utility>

#include "calib/console/failure.h"
#include "calib/console/number.h"
#include "calib/console/printable.h"

namespace calib {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

namespace {

constexpr size_t kAlignedBytes = size_t{1} << 20;

void AppendJsonString(const std::string& text, RowText* out) {
  static constexpr char kHex[] = "0123456789abcdef";
  *out += '"';
  for (const char c : text) {
    const unsigned char octet = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      (*out += '\\') += c;
    } else if (c == '\n') {
      *out += "\\n";
    } else if (octet < 0x20) {
      *out += "\\u00";
      (*out += kHex[octet >> 4]) += kHex[octet & 15];
    } else {
      *out += c;
    }
  }
  *out += '"';
}

bool IsAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

void AppendCsv(const std::string& text, RowText* out) {
  const auto is_plain = [](char c) { return c != ',' && c != '"' && c != '\r' && c != '\n'; };
  if (std::all_of(text.begin(), text.end(), is_plain)) {
    *out += text;
    return;
  }
  *out += '"';
  for (const char c : text) {
    if (c == '"') *out += '"';
    *out += c;
  }
  *out += '"';
}

void AppendTsv(const std::string& text, RowText* out) {
  for (const char c : text) {
    switch (c) {
      case '\t':
        *out += "\\t";
        break;
      case '\n':
        *out += "\\n";
        break;
      case '\r':
        *out += "\\r";
        break;
      case '\\':
        *out += "\\\\";
        break;
      default:
        *out += c;
    }
  }
}

char SeparatorOf(TableFormat format) {
  switch (format) {
    case TableFormat::kTsv:
      return '\t';
    case TableFormat::kText:
      return Table::kCellEnd;
    default:
      return ',';
  }
}

void AppendTextCell(TableFormat format, const std::string& text, RowText* row) {
  switch (format) {
    case TableFormat::kCsv:
      return AppendCsv(text, row);
    case TableFormat::kTsv:
      return AppendTsv(text, row);
    case TableFormat::kJsonLines:
      return AppendJsonString(IsAscii(text) ? text : Printable(text), row);
    case TableFormat::kText:
      *row += Printable(text);
  }
}

char BetweenElements(TableFormat format) { return format == TableFormat::kJsonLines ? ',' : ' '; }

// What the schema has no field of.
[[noreturn]] void FailForKind(const FieldDescriptor* field) {
  throw Failure(field->name() + ": is of a kind that no table holds");
}

// Calls visit(value, the default that is declared) with the value, or the element, that there is.
// All lists of single values that there are hold floating-point numbers.
template <typename Visit>
void WithValue(const ColumnPath::Step& step, const Message& message, const Visit& visit) {
  const auto [field, i, r] = step;
  const bool one = i < 0;
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_DOUBLE:
      return visit(one ? r->GetDouble(message, field) : r->GetRepeatedDouble(message, field, i),
                   field->default_value_double());
    case FieldDescriptor::CPPTYPE_FLOAT:
      return visit(one ? r->GetFloat(message, field) : r->GetRepeatedFloat(message, field, i),
                   field->default_value_float());
    case FieldDescriptor::CPPTYPE_INT32:
      return visit(r->GetInt32(message, field), field->default_value_int32());
    case FieldDescriptor::CPPTYPE_INT64:
      return visit(r->GetInt64(message, field), field->default_value_int64());
    case FieldDescriptor::CPPTYPE_BOOL:
      return visit(r->GetBool(message, field), field->default_value_bool());
    case FieldDescriptor::CPPTYPE_STRING: {
      std::string space;
      return visit(r->GetStringReference(message, field, &space), field->default_value_string());
    }
    default:
      FailForKind(field);
  }
}

struct NamedFormat {
  const char* name;
  TableFormat format;
};
constexpr NamedFormat kFormats[] = {{"text", TableFormat::kText},
                                    {"csv", TableFormat::kCsv},
                                    {"tsv", TableFormat::kTsv},
                                    {"jsonl", TableFormat::kJsonLines}};

}  // namespace

std::vector<std::string> TableFormatNames() {
  std::vector<std::string> names;
  for (const NamedFormat& known : kFormats) names.emplace_back(known.name);
  return names;
}

TableFormat TableFormatNamed(const std::string& name) {
  const NamedFormat* known = kFormats;
  while (known->name != name) ++known;
  return known->format;
}

Table::Table(const Descriptor* type, const TableOptions& options)
    : type_(type),
      format_(options.format),
      separator_(SeparatorOf(options.format)),
      defaults_(options.defaults),
      row_type_(type) {
  if (!options.each.empty()) {
    each_ = FindEach(type, options.each);
    row_type_ = each_.fields.back()->message_type();
  }
  std::vector<std::string> names = options.columns;
  if (names.empty()) {
    names = {"file", "record"};
    if (!options.each.empty()) names.push_back("index");
    for (const std::string& path : ScalarPaths(row_type_)) names.push_back(path);
  }
  for (const std::string& name : names) {
    Column column = FindColumnOf(name);
    column.name = name;
    RowText key;
    AppendJsonString(name, &key);
    column.key = std::string(key.view()) + ":";
    column.same_holder = !columns_.empty() && HaveSameHolder(columns_.back(), column);
    columns_.push_back(std::move(column));
  }
}

// A field of the row's message comes first, then one of the record.
Table::Column Table::FindColumnOf(const std::string& name) const {
  const std::string first = name.substr(0, name.find_first_of(".["));
  Column column = {Column::kField, "", "", false, false, {}};
  if (row_type_->FindFieldByName(first) != nullptr) {
    column.path = FindColumn(row_type_, name);
  } else if (name == "file") {
    column.kind = Column::kFile;
  } else if (name == "record") {
    column.kind = Column::kRecord;
  } else if (name == "appended") {
    column.kind = Column::kAppended;
  } else if (name == "index" && !each_.fields.empty()) {
    column.kind = Column::kIndex;
  } else {
    column.of_record = type_->FindFieldByName(first) != nullptr;
    column.path = FindColumn(column.of_record ? type_ : row_type_, name);
  }
  return column;
}

bool Table::NeedsTimes() const {
  return std::any_of(columns_.begin(), columns_.end(),
                     [](const Column& column) { return column.kind == Column::kAppended; });
}

bool Table::HaveSameHolder(const Column& a, const Column& b) {
  const auto same_step = [](const ColumnPath::Step& one, const ColumnPath::Step& other) {
    return one.field == other.field && one.index == other.index;
  };
  return a.kind == Column::kField && b.kind == Column::kField && a.of_record == b.of_record &&
         std::equal(a.path.steps.begin(), a.path.steps.end() - 1, b.path.steps.begin(),
                    b.path.steps.end() - 1, same_step);
}

std::string Table::Header() const {
  if (format_ == TableFormat::kJsonLines) return "";
  RowText header;
  for (const Column& column : columns_) {
    if (&column != &columns_.front()) header += separator_;
    AppendText(column.name, &header);
  }
  header += '\n';
  return std::string(header.view());
}

void Table::AppendRows(const Message& record, const RowSource& source, RowText* rows) const {
  if (each_.fields.empty()) return AppendRow(record, record, source, "", rows);
  ForEachElement(record, each_, [&](const Message& element, const std::string& index) {
    AppendRow(record, element, source, index, rows);
  });
}

void Table::AppendRow(const Message& record, const Message& element, const RowSource& source,
                      const std::string& index, RowText* rows) const {
  const bool json = format_ == TableFormat::kJsonLines;
  if (json) *rows += '{';
  const Message* holder = nullptr;
  for (const Column& column : columns_) {
    if (&column != &columns_.front()) *rows += separator_;
    if (json) *rows += column.key;
    switch (column.kind) {
      case Column::kFile:
        AppendText(source.file, rows);
        break;
      case Column::kRecord:
        *rows += std::to_string(source.record);
        break;
      case Column::kAppended:
        if (json && source.appended.empty()) {
          *rows += "null";
        } else {
          AppendText(source.appended, rows);
        }
        break;
      case Column::kIndex:
        // "0.17" is no number.
        if (index.find('.') == std::string::npos) {
          *rows += index;
        } else {
          AppendText(index, rows);
        }
        break;
      case Column::kField:
        if (!column.same_holder) {
          holder = HolderOf(column.of_record ? record : element, column.path);
        }
        AppendField(holder, column.path.steps.back(), rows);
        break;
    }
  }
  *rows += json ? "}\n" : "\n";
}

void Table::AppendField(const Message* holder, const ColumnPath::Step& step, RowText* row) const {
  const bool json = format_ == TableFormat::kJsonLines;
  const FieldDescriptor* field = step.field;
  if (field->is_repeated() && step.index < 0) {
    if (json) *row += '[';
    if (holder != nullptr) AppendList(*holder, step, row);
    if (json) *row += ']';
  } else if (holder != nullptr && AppendIfThere(*holder, step, row)) {
    return;
  } else if (defaults_ && field->has_default_value()) {
    WithValue({field, -1, step.reflection},
              *google::protobuf::MessageFactory::generated_factory()->GetPrototype(
                  field->containing_type()),
              [&](const auto& value, const auto&) { AppendValue(value, field, row); });
  } else if (json) {
    *row += "null";
  }
}

// A value that is not its default is there, which is seen sooner than asked.
bool Table::AppendIfThere(const Message& message, const ColumnPath::Step& step,
                          RowText* row) const {
  const auto [field, index, reflection] = step;
  if (index >= 0 && index >= reflection->FieldSize(message, field)) return false;
  bool there = true;
  WithValue(step, message, [&, field = field](const auto& value, const auto& otherwise) {
    there = step.index >= 0 || value != otherwise || step.reflection->HasField(message, field);
    if (there) AppendValue(value, field, row);
  });
  return there;
}

void Table::AppendList(const Message& message, const ColumnPath::Step& step, RowText* row) const {
  const auto [field, index, reflection] = step;
// Later run-times would rather have their users call a function for each element.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_DOUBLE:
      return AppendNumbers(reflection->GetRepeatedField<double>(message, field), row);
    case FieldDescriptor::CPPTYPE_FLOAT:
      return AppendNumbers(reflection->GetRepeatedField<float>(message, field), row);
    default:
      FailForKind(field);
  }
#pragma GCC diagnostic pop
}

template <typename List>
void Table::AppendNumbers(const List& list, RowText* row) const {
  char* end = row->Room(static_cast<size_t>(list.size()) * (kMostCharacters + 1));
  for (int i = 0, size = list.size(); i < size; ++i) {
    if (i > 0) *end++ = BetweenElements(format_);
    end = WriteNumber(list.Get(i), end);
  }
  row->End(end);
}

template <typename Number>
char* Table::WriteNumber(Number number, char* text) const {
  if (std::isfinite(number)) return WriteFewest(number, text);
  RowText word;
  AppendText(std::isnan(number) ? "NaN" : number > 0 ? "Infinity" : "-Infinity", &word);
  return std::copy(word.view().begin(), word.view().end(), text);
}

template <typename Value>
void Table::AppendValue(const Value& value, const FieldDescriptor* field, RowText* row) const {
  if constexpr (std::is_same_v<Value, bool>) {
    *row += value ? "true" : "false";
  } else if constexpr (std::is_floating_point_v<Value>) {
    row->End(WriteNumber(value, row->Room(kMostCharacters)));
  } else if constexpr (std::is_integral_v<Value>) {
    char* const text = row->Room(kMostCharacters);
    row->End(std::to_chars(text, text + kMostCharacters, value).ptr);
  } else if (field->type() == FieldDescriptor::TYPE_BYTES) {
    *row += std::to_string(value.size());
  } else {
    AppendText(value, row);
  }
}

void Table::AppendText(const std::string& text, RowText* row) const {
  AppendTextCell(format_, text, row);
}

std::string TextColumns::Add(std::string_view rows) {
  if (known_) return Lay(rows);
  pending_ += rows;
  return pending_.size() < kAlignedBytes ? "" : Rest();
}

std::string TextColumns::Rest() {
  known_ = true;
  size_t column = 0, begin = 0;
  for (size_t i = 0; i < pending_.size(); ++i) {
    if (pending_[i] != Table::kCellEnd && pending_[i] != '\n') continue;
    if (column == widths_.size()) widths_.push_back(0);
    widths_[column] = std::max(widths_[column], CountCharacters(pending_.substr(begin, i - begin)));
    begin = i + 1;
    column = pending_[i] == '\n' ? 0 : column + 1;
  }
  std::string laid = Lay(pending_);
  pending_.clear();
  return laid;
}

std::string TextColumns::Lay(std::string_view rows) const {
  std::string laid;
  size_t column = 0, begin = 0;
  for (size_t i = 0; i < rows.size(); ++i) {
    if (rows[i] != Table::kCellEnd && rows[i] != '\n') continue;
    const std::string cell(rows.substr(begin, i - begin));
    laid += cell;
    if (rows[i] == '\n') {
      laid.erase(laid.find_last_not_of(' ') + 1);
      laid += '\n';
    } else {
      const size_t width = column < widths_.size() ? widths_[column] : 0;
      laid.append(std::max(width, CountCharacters(cell)) - CountCharacters(cell) + 2, ' ');
    }
    begin = i + 1;
    column = rows[i] == '\n' ? 0 : column + 1;
  }
  return laid;
}

CellWriter::CellWriter(TableFormat format, const std::vector<std::string>& names)
    : format_(format), names_(names) {
  if (format == TableFormat::kJsonLines) return;
  std::vector<Cell> header;
  header.reserve(names.size());
  for (const std::string& name : names) header.push_back({name, false});
  AddRow(header);
}

void CellWriter::AddRow(const std::vector<Cell>& cells) {
  const bool json = format_ == TableFormat::kJsonLines;
  if (json) rows_ += '{';
  for (size_t i = 0; i < cells.size(); ++i) {
    const Cell& cell = cells[i];
    if (i > 0) rows_ += SeparatorOf(format_);
    if (json) {
      AppendJsonString(names_[i], &rows_);
      rows_ += ':';
    }
    const bool digits = cell.number && cell.text.find_first_of("NI") == std::string::npos;
    if (json && cell.number && cell.text.empty()) {
      rows_ += "null";
    } else if (digits) {
      rows_ += cell.text;
    } else {
      AppendTextCell(format_, cell.text, &rows_);
    }
  }
  rows_ += json ? "}\n" : "\n";
}

std::string CellWriter::Take() {
  if (format_ != TableFormat::kText) return std::string(rows_.view());
  TextColumns columns;
  const std::string laid = columns.Add(rows_.view());
  return laid + columns.Rest();
}

}  // namespace calib
