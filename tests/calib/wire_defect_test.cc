// The place that is reported for a malformed record: there is one exactly if the record is refused,
// whichever byte is cut off or changed.
#include "calib/formats/wire_defect.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "calib/fields/field_path.h"
#include "calib/formats/names.h"
#include "tests/support/random_record.h"
#include "tests/support/strict_reader.h"

namespace calib {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::Message;
using zarvo::calibration::testing::FullRecord;
using zarvo::calibration::testing::Judge;

class WireDefectTest : public ::testing::TestWithParam<const Descriptor*> {
 protected:
  void SetUp() override {
    record_ = FullRecord(GetParam()->name());
    record_->SerializeToString(&bytes_);
  }

  bool Accepted(const std::string& bytes) const {
    const std::unique_ptr<Message> read(record_->New());
    return read->ParsePartialFromString(bytes);
  }

  void ExpectAgreement(const std::string& bytes, const std::string& change) const {
    const std::optional<WireDefect> defect = FindWireDefect(GetParam(), bytes);
    EXPECT_EQ(!defect, Accepted(bytes)) << change << (defect ? ": " + defect->what : "");
    EXPECT_EQ(!defect, static_cast<bool>(Judge(GetParam()->name(), bytes))) << change;
  }

  std::unique_ptr<Message> record_;
  std::string bytes_;
};

TEST_P(WireDefectTest, NoneInAWholeRecord) { ExpectAgreement(bytes_, "nothing changed"); }

TEST_P(WireDefectTest, OneWhereverARecordIsCut) {
  for (size_t size = 0; size < bytes_.size(); ++size) {
    ExpectAgreement(bytes_.substr(0, size), "cut to " + std::to_string(size) + " bytes");
  }
}

TEST_P(WireDefectTest, OneExactlyIfAFlippedBitIsRefused) {
  for (size_t bit = 0; bit < 8 * bytes_.size(); ++bit) {
    std::string flipped = bytes_;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
    ExpectAgreement(flipped, "bit " + std::to_string(bit) + " flipped");
  }
}

INSTANTIATE_TEST_SUITE_P(AllTypes, WireDefectTest, ::testing::ValuesIn(RecordTypes()),
                         [](const auto& info) { return info.param->name(); });

struct Defective {
  const char* what;
  std::string bytes;  // of a RobotCalibration
  int offset;
  const char* path;
};

TEST(WireDefect, NamesThePlace) {
  using namespace std::string_literals;
  const Defective cases[] = {
      {"is cut off: its value takes 8 bytes, but 3 are left", "\x0a\x06\x0a\x04\x09\1\2\3"s, 4,
       "camera[0].intrinsics.fx"},
      {"announces 5 bytes, but 1 are left in camera[1]", "\x0a\x00\x0a\x03\x2a\x05x"s, 4,
       "camera[1].name"},
      {"its length is cut off", "\x0a\x80"s, 0, "camera[0]"},
      {"its length is longer than 10 bytes", "\x0a" + std::string(11, '\x80'), 0, "camera[0]"},
      {"its value is cut off", "\x0a\x04\x0a\x02\x40\x80"s, 4, "camera[0].intrinsics.width"},
      {"ends inside a tag", "\x0a\x01\x80"s, 2, "camera[0]"},
      {"has a tag that is 0 or longer than 10 bytes", "\x0a\x00\x00"s, 2, ""},
      {"has field number 0, which no field may have", "\x02\x00"s, 0, ""},
      {"has wire type 6, which does not exist", "\x0e"s, 0, "camera[0]"},
      {"has an end-group tag of field number 1 where no such group is open", "\x0c"s, 0, ""},
      {"ends inside a group of field number 9", "\x4b\x50\x01"s, 1, "<9>"},
      {"is a packed run of 9 bytes, which is no multiple of 8",
       "\x0a\x0d\x0a\x0b\x32\x09"s + std::string(9, 'k'), 4, "camera[0].intrinsics.k[0]"},
  };
  for (const Defective& broken : cases) {
    const auto defect = FindWireDefect(RecordType("RobotCalibration"), broken.bytes);
    ASSERT_TRUE(defect) << broken.what;
    EXPECT_EQ(defect->what, broken.what);
    EXPECT_EQ(defect->offset, broken.offset) << broken.what;
    EXPECT_EQ(defect->path, broken.path) << broken.what;
  }
}

}  // namespace
}  // namespace calib
