// How a command ends that gets no memory: at once, with what main() would say, since streams take
// the exception for bad input, and whoever cannot pass it on aborts.
#ifndef CALIB_CONSOLE_OUT_OF_MEMORY_H_
#define CALIB_CONSOLE_OUT_OF_MEMORY_H_

namespace calib {

// From now on an operator new that fails removes the temporary file, if there is one, says so on
// standard error and ends the process with kTrouble.
void EndWhenOutOfMemory();

}  // namespace calib

#endif  // CALIB_CONSOLE_OUT_OF_MEMORY_H_
