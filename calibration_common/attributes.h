// How the compiler is to treat what the headers declare.
#ifndef ZARVO_CALIBRATION_ATTRIBUTES_H_
#define ZARVO_CALIBRATION_ATTRIBUTES_H_

// What the library exports, and what of an exported class it does not. Hidden are inline functions
// with a variable of their own, too: one that libraries shared would keep them from being unloaded.
#define ZARVO_CALIBRATION_EXPORT __attribute__((visibility("default")))
#define ZARVO_CALIBRATION_HIDDEN __attribute__((visibility("hidden")))

// What is inline without optimization, too. g++ would warn of a class's own operator delete behind
// the global operator new, if it saw one.
#define ZARVO_CALIBRATION_ALWAYS_INLINE __attribute__((always_inline)) inline

#endif  // ZARVO_CALIBRATION_ATTRIBUTES_H_
