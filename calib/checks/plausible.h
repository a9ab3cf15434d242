// Whether a record's numbers can be those of real devices. A record may be whole and still hold
// what no camera has; programs would compute with it all the same. What is not set is not checked,
// nor what nothing in the record tells the meaning of.
#ifndef CALIB_CHECKS_PLAUSIBLE_H_
#define CALIB_CHECKS_PLAUSIBLE_H_

#include <google/protobuf/message.h>

#include "calib/checks/finding.h"

namespace calib {

// All findings of all rules, in the order of the record's messages. `rotation_tolerance` is how far
// an element of the product of a rotation with its transpose may be off that of the identity.
Findings FindImplausible(const google::protobuf::Message& record, double rotation_tolerance);

}  // namespace calib

#endif  // CALIB_CHECKS_PLAUSIBLE_H_
