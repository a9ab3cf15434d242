// Records as rows of a table, as CSV, TSV, JSON lines or aligned text.
//
// Numbers print as the shortest text that reads back as the same bits. What is not set is an empty
// cell, and null in JSON lines. CSV quotes as RFC 4180 does; TSV writes tab, line end and backslash
// as \t, \n and \\.
#ifndef CALIB_VIEWS_TABLE_H_
#define CALIB_VIEWS_TABLE_H_

#include <google/protobuf/message.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "calib/fields/column.h"
#include "calib/views/row_text.h"

namespace calib {

enum class TableFormat { kCsv, kTsv, kJsonLines, kText };

// What users call them.
std::vector<std::string> TableFormatNames();
// The format of a name that is one of TableFormatNames().
TableFormat TableFormatNamed(const std::string& name);

struct TableOptions {
  TableFormat format = TableFormat::kText;
  std::vector<std::string> columns;  // all single values if empty
  std::string each;                  // a row for each of these messages, "" for each record
  bool defaults = false;             // declared defaults in place of nothing
};

// What names a record among all.
struct RowSource {
  const std::string& file;
  int64_t record;               // its index in the file
  const std::string& appended;  // when it was, as a date; empty if that is not kept
};

class Table {
 public:
  // Throws Failure if a column is none of the type's.
  Table(const google::protobuf::Descriptor* type, const TableOptions& options);

  const google::protobuf::Descriptor* type() const { return type_; }
  // Whether a column asks for RowSource::appended.
  bool NeedsTimes() const;
  // The line of the columns' names; none in JSON lines.
  std::string Header() const;
  // Appends a record's rows. May be called by several threads at once. In kText, cells are apart by
  // kCellEnd, for Align().
  void AppendRows(const google::protobuf::Message& record, const RowSource& source,
                  RowText* rows) const;

  static constexpr char kCellEnd = '\x1f';

 private:
  struct Column {
    enum Kind { kFile, kRecord, kAppended, kIndex, kField } kind;
    std::string name, key;     // key: as JSON lines have it, up to the value
    bool of_record = false;    // and not of the element
    bool same_holder = false;  // as the column in front: the message need not be sought again
    ColumnPath path;
  };
  static bool HaveSameHolder(const Column& a, const Column& b);
  Column FindColumnOf(const std::string& name) const;
  void AppendRow(const google::protobuf::Message& record, const google::protobuf::Message& element,
                 const RowSource& source, const std::string& index, RowText* rows) const;
  void AppendField(const google::protobuf::Message* holder, const ColumnPath::Step& step,
                   RowText* row) const;
  // False if it is not there.
  bool AppendIfThere(const google::protobuf::Message& message, const ColumnPath::Step& step,
                     RowText* row) const;
  void AppendList(const google::protobuf::Message& message, const ColumnPath::Step& step,
                  RowText* row) const;
  template <typename List>
  void AppendNumbers(const List& list, RowText* row) const;
  template <typename Number>
  char* WriteNumber(Number number, char* text) const;
  template <typename Value>
  void AppendValue(const Value& value, const google::protobuf::FieldDescriptor* field,
                   RowText* row) const;
  void AppendText(const std::string& text, RowText* row) const;

  const google::protobuf::Descriptor* const type_;
  const TableFormat format_;
  const char separator_;  // of cells
  const bool defaults_;
  EachPath each_;
  const google::protobuf::Descriptor* row_type_;
  std::vector<Column> columns_;
};

// Aligns what Header() and AppendRows() make of TableFormat::kText. The widths are those of the
// first rows; a later cell that is wider shifts its line.
class TextColumns {
 public:
  // The lines of what was added that can be told by now.
  std::string Add(std::string_view rows);
  std::string Rest();

 private:
  std::string Lay(std::string_view rows) const;

  std::string pending_;
  std::vector<size_t> widths_;
  bool known_ = false;
};

// A table of other rows than records' fields.
class CellWriter {
 public:
  struct Cell {
    std::string text;  // empty: there is no value
    bool number;       // finite, or NaN and Infinity, which JSON lines hold as text
  };

  CellWriter(TableFormat format, const std::vector<std::string>& names);
  // REQUIRES: a cell for each name.
  void AddRow(const std::vector<Cell>& cells);
  // The table so far.
  std::string Take();

 private:
  const TableFormat format_;
  const std::vector<std::string> names_;
  RowText rows_;
};

}  // namespace calib

#endif  // CALIB_VIEWS_TABLE_H_
