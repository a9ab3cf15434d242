#include "calib/console/processors.h"

#include <sched.h>

#include <algorithm>
#include <thread>

namespace calib {

int CountProcessors() {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) return CPU_COUNT(&allowed);
  // There are more than cpu_set_t has room for.
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

}  // namespace calib
