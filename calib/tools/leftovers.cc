#include "calib/tools/leftovers.h"

#include <optional>

#include "calib/console/failure.h"
#include "calib/console/file.h"

namespace calib {

using Kind = Leftover::Kind;

void LeftoverFlags::AddTo(Command* command, bool with_lossy) {
  command->AddFlag("--verbose", verbose, "List all that is not kept, each with its place");
  Option* option = command->AddFlag("--strict", strict, "Refuse whatever is not kept");
  if (!with_lossy) return;
  command->AddFlag("--lossy", lossy, "Go on though the lens is not kept; say what is lost")
      ->Excludes(option);
}

void TellLeftovers(const std::string& name, const LeftoverFlags& flags,
                   const std::function<void(const LeftoverVisitor&)>& visit_all) {
  size_t harmless = 0, damaged = 0, lost = 0;
  std::optional<Leftover> first;
  visit_all([&](const Leftover& leftover) {
    if (leftover.kind == Kind::kHarmless) ++harmless;
    if (leftover.kind == Kind::kDamaged) ++damaged;
    if (leftover.kind != Kind::kLens) return;
    if (++lost == 1) first = leftover;
  });
  if (first && !flags.lossy) {
    const std::string more =
        lost == 1 ? "" : "It is the first of " + std::to_string(lost) + " such losses. ";
    throw Failure(first->place + first->what + ": points would land elsewhere",
                  more + "--lossy takes the rest, and says what is lost.");
  }
  const bool list = flags.verbose || flags.strict;
  visit_all([&](const Leftover& leftover) {
    if (leftover.kind != Kind::kHarmless || list) {
      Note(leftover.place + leftover.what + (leftover.kind == Kind::kLens ? "; lost" : ""));
    }
  });
  if (flags.strict && harmless + damaged > 0) {
    throw Failure(name + ": not all of it is kept, and --strict refuses that",
                  "Leave --strict out, or take out of the file what is listed above.");
  }
  if (harmless > 0 && !list) {
    Note(name + ": " + std::to_string(harmless) + (harmless == 1 ? " note" : " notes") +
         " on what is not kept, none of it the lens's; --verbose lists " +
         (harmless == 1 ? "it" : "them"));
  }
}

}  // namespace calib
