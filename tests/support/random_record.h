// Fills records through reflection: at random from a seed, or in full with fixed values.
//
// Random values lean to where encodings change their length and comparisons go wrong. The same seed
// gives the same record on every machine; a test that draws records prints its seed on failure.
#ifndef CALIBRATION_TESTS_SUPPORT_RANDOM_RECORD_H_
#define CALIBRATION_TESTS_SUPPORT_RANDOM_RECORD_H_

#include <google/protobuf/message.h>
#include <google/protobuf/unknown_field_set.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace zarvo {
namespace calibration {
namespace testing {

struct RandomOptions {
  int percent_set = 50;         // how likely each field is to be set, in every message of the tree
  bool always_required = true;  // else a required field is as likely as any other
  bool unknown_fields = true;   // in some messages of the tree, of every wire type
  bool only_text = false;       // string fields hold ASCII only; bytes fields stay arbitrary
};

constexpr int kSparse = 25;
constexpr int kDense = 90;

// Adds to what the message holds; singular fields may be overwritten.
void FillRandomly(std::mt19937* random, const RandomOptions& options,
                  ::google::protobuf::Message* message);

// Appends one to three fields under numbers that `message` does not declare.
void AddRandomUnknown(std::mt19937* random, ::google::protobuf::Message* message);

// Sets every field, in every sub-message too; repeated fields get two or three elements. Every
// value differs from the others and from the default.
void FillFully(::google::protobuf::Message* message);

// A new record of the class, filled in full.
std::unique_ptr<::google::protobuf::Message> FullRecord(const std::string& name);

// Values at which an encoding or a comparison turns.
const std::vector<int32_t>& BoundaryInt32();
const std::vector<int64_t>& BoundaryInt64();
const std::vector<uint32_t>& BoundaryFloatBits();
const std::vector<uint64_t>& BoundaryDoubleBits();
const std::vector<int>& BoundaryLengths();

// The same bits; of a signalling NaN on i386, which would not stay one, those of a quiet one.
uint32_t FloatBits(uint32_t bits);
uint64_t DoubleBits(uint64_t bits);

// The number that has FloatBits() or DoubleBits() of the bits.
float FloatOf(uint32_t bits);
double DoubleOf(uint64_t bits);

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_RANDOM_RECORD_H_
