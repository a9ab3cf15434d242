// Files as wholes: read once, written whole or not at all. The path "-" is standard input or
// standard output. Reading and writing show their progress with large files if standard error is a
// terminal, and throw Failure with the path and the system's reason.
#ifndef CALIB_CONSOLE_FILE_H_
#define CALIB_CONSOLE_FILE_H_

#include <functional>
#include <string>

#include "calib/console/sink.h"

namespace calib {

class InputFile;

// What messages call the file at a path: "standard input" or "standard output" for "-", else the
// path.
std::string InputName(const std::string& path);
std::string OutputName(const std::string& path);

// All bytes of the file, of which there may be 2 GiB. Standard input can be read once.
std::string ReadFile(const std::string& path);
std::string ReadAll(InputFile* file);

// Writes the file whole or not at all; see output_file.h.
void WriteFile(const std::string& path, const std::string& bytes);
// The same for what `produce` hands to the sink, piece by piece. What it throws leaves the file of
// before in place, too, but for standard output, pipes and devices.
void WriteFile(const std::string& path, const std::function<void(const Sink& sink)>& produce);

// Writes to standard output.
void Print(const std::string& text);

// Writes to standard error what the user should know, though the command goes on.
void Note(const std::string& text);

}  // namespace calib

#endif  // CALIB_CONSOLE_FILE_H_
