#include "calib/console/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>

namespace calib {

int OutputWidth() {
  constexpr long kLeast = 20, kMost = 10000;
  if (const char* columns = std::getenv("COLUMNS")) {
    char* end = nullptr;
    const long width = std::strtol(columns, &end, 10);
    if (*end == '\0' && width >= kLeast && width <= kMost) return static_cast<int>(width);
  }
  winsize size = {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return 80;
}

bool UseColor(const std::string& choice) {
  if (choice != "auto") return choice == "always";
  const char* no_color = std::getenv("NO_COLOR");
  return isatty(STDOUT_FILENO) != 0 && (no_color == nullptr || *no_color == '\0');
}

std::string Painted(const std::string& text, Color color, bool use_color) {
  if (!use_color) return text;
  return "\033[" + std::to_string(static_cast<int>(color)) + "m" + text + "\033[0m";
}

std::string Wrap(const std::string& text, int indent, int width) {
  const std::string margin(static_cast<size_t>(indent), ' ');
  const size_t room = static_cast<size_t>(width);
  std::istringstream words(text);
  std::string result, line;
  for (std::string word; words >> word;) {
    if (!line.empty() && line.size() + 1 + word.size() > room) {
      result += line + "\n";
      line.clear();
    }
    line += (line.empty() ? margin : " ") + word;
  }
  return result + (line.empty() ? "" : line + "\n");
}

}  // namespace calib
