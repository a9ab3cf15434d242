#include "calib/views/view.h"

#include "calib/console/terminal.h"

namespace calib {
namespace {

constexpr int kMostUnfolded = 16;
constexpr int kShownOfFolded = 4;

}  // namespace

int ShownElements(int size, const ViewOptions& options) {
  return options.full || size <= kMostUnfolded ? size : kShownOfFolded;
}

std::string FoldedElements(int shown, int size) {
  return "<" + std::to_string(size - shown) + " more, " + std::to_string(size) + " in all>";
}

std::string Colored(const std::string& name, const ViewOptions& options) {
  return Painted(name, Color::kCyan, options.color);
}

std::string Flow(const std::vector<std::string>& items, int column, const ViewOptions& options) {
  const size_t margin = static_cast<size_t>(column);
  const size_t room = static_cast<size_t>(options.width) - 1;  // a comma or a bracket follows
  std::string flow;
  size_t used = margin;
  for (size_t i = 0; i < items.size(); ++i) {
    if (i > 0) {
      const bool fits = used + 2 + items[i].size() <= room;
      flow += fits ? ", " : ",\n" + std::string(margin, ' ');
      used = fits ? used + 2 : margin;
    }
    flow += items[i];
    used += items[i].size();
  }
  return flow;
}

}  // namespace calib
