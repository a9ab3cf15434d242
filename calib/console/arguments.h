// Arguments of the commands: adding those of a limited choice or range, with errors that name what
// was expected.
#ifndef CALIB_CONSOLE_ARGUMENTS_H_
#define CALIB_CONSOLE_ARGUMENTS_H_

#include <memory>
#include <string>
#include <vector>

#include "calib/console/command_line.h"

namespace calib {

// Adds an option that takes one of some words, which --help shows in braces.
Option* AddChoice(Command* command, const std::string& name, std::string* value,
                  const std::vector<std::string>& words, const std::string& description);

// Adds --color, whose value UseColor() of terminal.h takes.
void AddColor(Command* command, std::string* value);

// Checks for finite numbers; `below` is the first that is too large.
Validator NumberFromZero();
Validator NumberFromZeroToBelow(double below);
Validator NumberFromZeroToOne();
Validator NumberAboveZero();
Validator CountFromZero();
Validator CountFromOne();

}  // namespace calib

#endif  // CALIB_CONSOLE_ARGUMENTS_H_
