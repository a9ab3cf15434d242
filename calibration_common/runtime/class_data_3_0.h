// How the run-time copies and merges through a Message&, from 3.0 on: by the virtual functions that
// the classes override (see runtime.h).
#ifndef ZARVO_CALIBRATION_RUNTIME_CLASS_DATA_3_0_H_
#define ZARVO_CALIBRATION_RUNTIME_CLASS_DATA_3_0_H_

#define ZARVO_CALIBRATION_RECORD_CLASS_DATA

#endif  // ZARVO_CALIBRATION_RUNTIME_CLASS_DATA_3_0_H_
