// A rig in space as SVG that is turned with the mouse or the arrow keys; without scripts it stands
// still.
#ifndef CALIB_PAGES_TURNABLE_RIG_H_
#define CALIB_PAGES_TURNABLE_RIG_H_

#include <string>

#include "calib/views/rig.h"

namespace calib {

std::string TurnableRig(const Rig& rig);

// The script that turns all of them, for the page's end, and what a content security policy that
// lets nothing else run calls it.
std::string TurnScript();
std::string TurnScriptSource();

}  // namespace calib

#endif  // CALIB_PAGES_TURNABLE_RIG_H_
