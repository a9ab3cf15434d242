// Values of fields, as they are put into records and as they are encoded.
//
// Records are filled through reflection and the bytes come from schema_table and wire_writer alone:
// neither leans on the code that writes, parses or merges records.
#ifndef CALIBRATION_TESTS_SUPPORT_SAMPLE_VALUES_H_
#define CALIBRATION_TESTS_SUPPORT_SAMPLE_VALUES_H_

#include <google/protobuf/message.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/schema_table.h"

namespace zarvo {
namespace calibration {
namespace testing {

struct SampleValue {
  uint64_t number = 0;  // a float's or double's bits; an integer, sign-extended; a bool
  std::string bytes;    // a string's contents; a sub-message's encoding
};

// Values at which the encoding of the kind changes; they all differ, and there are two or more. The
// sub-messages hold no field, or one that their class does not know.
const std::vector<SampleValue>& SamplesOf(Kind kind);

// Sets a singular field, appends to a repeated one. A sub-message that is there already stays, and
// what the sample's holds comes on top.
void Put(const FieldRow& field, const SampleValue& value, ::google::protobuf::Message* record);

// The tag and the value.
std::string Encode(const FieldRow& field, const SampleValue& value);

// The record as it must be written: its fields by ascending number, then its unknown fields, and so
// in every sub-message.
std::string EncodeByTable(const ::google::protobuf::Message& record);

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_SAMPLE_VALUES_H_
