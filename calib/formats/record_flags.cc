#include "calib/formats/record_flags.h"

#include "calib/console/arguments.h"
#include "calib/formats/names.h"

namespace calib {

void InputFlags::AddTo(CLI::App* command) {
  command->add_option("--type", type, "Record type of the input; else the file's name tells it")
      ->type_name("TYPE");
  AddChoice(command, "--format", &format, FormatNames(),
            "Format of the input; else the file's name tells it");
}

void OutputFlags::AddTo(CLI::App* command) {
  AddChoice(command, "--to", &format, FormatNames(),
            "Format of the output; else its name tells it");
  command->add_flag("--partial", partial, "Write the record even if required fields are missing");
}

}  // namespace calib
