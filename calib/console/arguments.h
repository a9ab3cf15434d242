// Arguments of the commands: adding those of a limited choice or range, with errors that name what
// was expected, and --help laid out for 80 columns.
#ifndef CALIB_CONSOLE_ARGUMENTS_H_
#define CALIB_CONSOLE_ARGUMENTS_H_

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

namespace calib {

// Adds an option that takes one of some words, which --help shows in braces.
CLI::Option* AddChoice(CLI::App* command, const std::string& name, std::string* value,
                       const std::vector<std::string>& words, const std::string& description);

// Adds --color, whose value UseColor() of terminal.h takes.
void AddColor(CLI::App* command, std::string* value);

// Checks for finite numbers from 0; `below` is the first that is too large.
CLI::Validator NumberFromZero();
CLI::Validator NumberFromZeroToBelow(double below);
CLI::Validator CountFromZero();

// The layout of --help. A command's footer is a paragraph for each of its lines, which is broken
// where the width ends; lines that begin with a blank stay as they are.
std::shared_ptr<CLI::Formatter> HelpLayout();

}  // namespace calib

#endif  // CALIB_CONSOLE_ARGUMENTS_H_
