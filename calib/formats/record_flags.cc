#include "calib/formats/record_flags.h"

#include "calib/console/arguments.h"
#include "calib/formats/names.h"

namespace calib {

void InputFlags::AddTo(Command* command, const std::vector<std::string>& further_words) {
  std::vector<std::string> words = FormatNames();
  words.insert(words.end(), further_words.begin(), further_words.end());
  command->AddOption("--type", type, "Record type of the input; else the file's name tells it")
      ->ValueName("TYPE");
  AddChoice(command, "--format", &format, words,
            "Format of the input; else the file's name tells it");
  command
      ->AddOption("--records", records,
                  "Of files of many records, only number N, or those from A to below B; FILE[N] "
                  "and FILE[A:B] say so for one file")
      ->ValueName("N|A:B");
}

void OutputFlags::AddTo(Command* command) {
  AddChoice(command, "--to", &format, FormatNames(),
            "Format of the output; else its name tells it");
  command->AddFlag("--partial", partial, "Write the record even if required fields are missing");
}

}  // namespace calib
