// The one thing in which the targets of calib_fuzzer.cc differ, so that the rest of them is
// compiled once.
namespace calib {

extern const char* const kReaderOfThisTarget;
const char* const kReaderOfThisTarget = CALIB_READER;

}  // namespace calib
