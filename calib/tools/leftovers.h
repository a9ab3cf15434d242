// What a conversion does not keep or keeps in other terms, and how the user is told: what is
// harmless in one line, what makes another lens by a refusal.
#ifndef CALIB_TOOLS_LEFTOVERS_H_
#define CALIB_TOOLS_LEFTOVERS_H_

#include <functional>
#include <string>

#include "calib/console/command_line.h"

namespace calib {

struct Leftover {
  enum class Kind {
    kHarmless,   // not kept
    kConverted,  // kept, in the terms of another convention
    kDamaged,    // not kept, since the file ends or goes wrong there
    kLens        // not kept, and without it points land elsewhere
  };

  std::string place;  // as it stands before a message, with ": " at its end
  std::string what;
  Kind kind = Kind::kHarmless;
};
using LeftoverVisitor = std::function<void(const Leftover&)>;

// --verbose, --strict and, if a loss can be taken, --lossy.
struct LeftoverFlags {
  bool verbose = false, strict = false, lossy = false;

  void AddTo(Command* command, bool with_lossy);
};

// Says on standard error what `visit_all` visits, which is called several times. Throws Failure
// where the flags do not let it be left behind. `name` is what all of it was in.
void TellLeftovers(const std::string& name, const LeftoverFlags& flags,
                   const std::function<void(const LeftoverVisitor&)>& visit_all);

}  // namespace calib

#endif  // CALIB_TOOLS_LEFTOVERS_H_
