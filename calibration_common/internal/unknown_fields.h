// What the classes do with the fields that they do not know, but for reading them
// (message_reader.h).
//
// When an allocation fails in the run-time's own calls that add fields, they leave a set that holds
// a field without a value, or a list without a field, or a value that another set owns, too: it
// crashes as soon as it is used or destroyed. AddOrUndo() and the merge leave it as it was.
#ifndef ZARVO_CALIBRATION_INTERNAL_UNKNOWN_FIELDS_H_
#define ZARVO_CALIBRATION_INTERNAL_UNKNOWN_FIELDS_H_

#include <string>

#include "calibration_common/internal/wire_constants.h"
#include "calibration_common/runtime.h"

namespace zarvo {
namespace calibration_internal {

// Makes *fields, which held `count` fields, what it was before a call that has thrown.
void CutBackTo(int count, UnknownFieldSet* fields);

// Returns add(), a call that adds fields to *fields.
template <typename Add>
auto AddOrUndo(UnknownFieldSet* fields, Add add) -> decltype(add()) {
  const int old_count = fields->field_count();
  try {
    return add();
  } catch (...) {
    CutBackTo(old_count, fields);
    throw;
  }
}

// These REQUIRE that there are unknown fields (in `from`, for the merge).
void ClearUnknownFields(Metadata* metadata);
void MergeUnknownFields(const Metadata& from, Metadata* to);
// `known_size` and the size of the unknown fields, which *cached_size is set to, too.
int SizeWithUnknownFields(uint64 known_size, const Metadata& metadata, int* cached_size);
uint8* WriteUnknownFieldsToArray(const UnknownFieldSet& fields, uint8* target);

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_UNKNOWN_FIELDS_H_
