#include "calib/commands/point_flags.h"

#include <limits>

#include "calib/console/failure.h"
#include "calib/console/file.h"
#include "calib/console/number_rows.h"

namespace calib {

void PointFlags::AddTo(Command* command, const std::string& points_description) {
  command->AddOption("FILE", path, "The record of the camera")->Required();
  command->AddOption("POINTS", points, points_description + "; else standard input");
  command->AddOption("--output", output, "The file to write; else standard output")
      ->ValueName("OUT");
  input.AddTo(command);
  camera.AddTo(command);
  lens.AddTo(command,
             "What k and p mean; auto goes by their numbers: 4 k and no p are equidistant, else "
             "plumb_bob or rational_polynomial");
}

int PointFlags::Run(const std::vector<std::string>& columns, const RowMap& map) const {
  const std::string name = InputName(points);
  const std::vector<NumberRow> rows = NumberRows(name, ReadFile(points), columns);
  std::string table, first;
  size_t failed = 0;
  for (const NumberRow& row : rows) {
    std::vector<double> numbers;
    const geometry::Status status = map(row.numbers, &numbers);
    if (status != geometry::Status::kOk) {
      numbers.assign(numbers.size(), std::numeric_limits<double>::quiet_NaN());
      if (failed++ == 0) {
        first = name + ":" + std::to_string(row.line) + ": " + geometry::Explain(status);
      }
    }
    table += NumberLine(numbers);
  }
  WriteFile(output, table);
  if (failed == 0) return kFine;
  Note(first + (rows.size() == 1 ? ""
                                 : "; nan is written for it and " + std::to_string(failed - 1) +
                                       " more of " + std::to_string(rows.size())));
  return kFinding;
}

}  // namespace calib
