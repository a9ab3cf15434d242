// Marks what the library exports, and what of an exported class it does not.
#ifndef ZARVO_CALIBRATION_VISIBILITY_H_
#define ZARVO_CALIBRATION_VISIBILITY_H_

#define ZARVO_CALIBRATION_EXPORT __attribute__((visibility("default")))
#define ZARVO_CALIBRATION_HIDDEN __attribute__((visibility("hidden")))

#endif  // ZARVO_CALIBRATION_VISIBILITY_H_
