// Occurrences of fields: how each stands on the wire, and what reading it does to a record.
//
// A record's encoding is a sequence of occurrences. Reading the bytes of a sequence must have the
// same effect as applying its occurrences one after the other through reflection; so a test of
// parsing makes up a sequence, in any order and with any repetition, and compares the two.
#ifndef CALIBRATION_TESTS_SUPPORT_OCCURRENCES_H_
#define CALIBRATION_TESTS_SUPPORT_OCCURRENCES_H_

#include <google/protobuf/message.h>

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "tests/support/schema_table.h"

namespace zarvo {
namespace calibration {
namespace testing {

struct Occurrence {
  int number;
  std::string tag;
  std::string value;  // what follows the tag
  uint32_t has_bits;  // the presence bits that reading it sets
  std::function<void(::google::protobuf::Message*)> apply;

  std::string bytes() const { return tag + value; }
};
using Occurrences = std::vector<Occurrence>;

std::string BytesOf(const Occurrences& sequence);
uint32_t HasBitsOf(const Occurrences& sequence);
void Apply(const Occurrences& sequence, ::google::protobuf::Message* record);

// A number field; `value` holds the bits of a double or float, or the varint as it is sent.
Occurrence NumberOccurrence(const FieldRow& field, uint64_t value);
// A packed run, of a repeated number field.
Occurrence PackedOccurrence(const FieldRow& field, const std::vector<uint64_t>& values);
// A string or bytes field.
Occurrence TextOccurrence(const FieldRow& field, const std::string& text);
// A sub-message field, singular or repeated.
Occurrence MessageOccurrence(const FieldRow& field, const Occurrences& contents);
// A field that is kept as unknown, with random contents; groups nest.
Occurrence UnknownOccurrence(std::mt19937* random, int number, WireType type);

// The wire types under which an occurrence of the field is kept as unknown instead of read.
std::vector<WireType> WrongWireTypes(const FieldRow& field);

// One occurrence for each value at which the field's encoding turns.
Occurrences BoundaryOccurrences(const FieldRow& field);

// One occurrence of each field, in declaration order; of each repeated field two, and a packed run
// where that can be. Sub-messages are filled likewise, in depth. Counts `*counter` up to make the
// values differ from each other and from the defaults.
Occurrences FullOccurrences(const MessageRow& message, int* counter);

// `count` occurrences drawn at random: of declared fields, with their own wire type, as a packed
// run or mistyped, and of unknown numbers.
Occurrences RandomOccurrences(std::mt19937* random, const MessageRow& message, int count);

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_OCCURRENCES_H_
