// How many processors this process may run on.
#ifndef CALIB_CONSOLE_PROCESSORS_H_
#define CALIB_CONSOLE_PROCESSORS_H_

namespace calib {

// At least 1. Those that taskset or a container leaves it; std::thread::hardware_concurrency()
// counts all that the machine has.
int CountProcessors();

}  // namespace calib

#endif  // CALIB_CONSOLE_PROCESSORS_H_
