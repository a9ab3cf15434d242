// Stored records: what was written once is read, and written back byte for byte, whatever run-time
// the library is built on.
//
// Each row below is a record in text format and its bytes in hexadecimal, one group of digits for
// each of its fields. Files with such bytes exist; the table is added to and never changed.
#include <google/protobuf/text_format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/support/entrances.h"
#include "tests/support/records.h"
#include "tests/support/reflect.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::TextFormat;

struct StoredRecord {
  const char* message;
  const char* text;
  const char* hex;
};

const StoredRecord kStoredRecords[] = {
    {"MarkerPositionInfo", "x: 1.5 y: -0 z: inf marker_id: -1",
     "0D0000C03F 1500000080 1D0000807F 20FFFFFFFFFFFFFFFFFF01"},
    {"MarkerPositionSet",
     "pos { x: 0.25 marker_id: 7 } pos { } head_center: 1 head_center: -2.5 nav_center: 3",
     "0A070D0000803E2007 0A00 11000000000000F03F 1100000000000004C0 190000000000000840"},
    {"CameraIntrinsicsSamplePoints", "img_x: 320.5 img_y: 240.25 tgt_x: -0.125 tgt_y: 0",
     "0D0040A043 1500407043 1D000000BE 2500000000"},
    {"CameraIntrinsics",
     "fx: 458.654 fy: 457.296 skew: 0 cx: 367.215 cy: 248.375 k: -0.28340811 k: 0.07395907 p: "
     "0.00019359 width: 752 height: 480 x_bin: 'b' sample_points { img_x: 1 } tgt_z: 0.5 "
     "tgt_height: 128",
     "095839B4C876AA7C40 11DBF97E6ABC947C40 190000000000000000 213D0AD7A370F37640 "
     "2900000000000C6F40 3142C1F7C45B23D2BF 31C77FE44AFBEEB23F 39F0D40A70CD5F293F 40F005 48E003 "
     "5A0162 8201050D0000803F 8D010000003F 98018001"},
    {"CalibrationImage", "width: 2 height: 127 stride: 128 format: '' imgdata: '\\000\\377\\200'",
     "0802 107F 188001 2200 2A0300FF80"},
    {"FocusInfoItem",
     "target_id: 16383 target_code: 16384 cutoff_threshold: 0.5 transfer_function: 1 "
     "transfer_function: 0.75 valid_max: -2147483648",
     "08FF7F 150000003F 350000803F 350000403F 4080808080F8FFFFFFFF01 48808001"},
    {"FocusInfo", "focus { target_id: 1 } focus { target_code: 2 }", "0A020801 0A024802"},
    {"CameraExtrinsics", "a: 1 a: 0 a: -1",
     "09000000000000F03F 090000000000000000 09000000000000F0BF"},
    {"CameraCalibration",
     "intrinsics_image { width: 1 } extrinsics { a: 0.5 } extrinsics_image { } name: 'cam0' model: "
     "'\\316\\261' serial: '7'",
     "12020801 1A0909000000000000E03F 2200 2A0463616D30 3202CEB1 3A0137"},
    {"RobotCalibration",
     "camera { intrinsics { fx: 1 fy: 2 skew: 0 cx: 3 cy: 4 } name: 'left' } camera { }",
     "0A350A2D09000000000000F03F1100000000000000401900000000000000002100000000000008402900000000000"
     "010402A046C656674 0A00"},
    {"CalibrationMetadataProto",
     "time: -9223372036854775808 base_serial: 'B' audio_serial: 'A' temperature: 21.5",
     "0880808080808080808001 120142 1A0141 250000AC41"},
    {"GyroscopeCalibrationProto", "gyroscope_gain: 1.25 metadata { time: 9223372036854775807 }",
     "0D0000A03F 120A08FFFFFFFFFFFFFFFF7F"},
    {"CameraCalibrationAdjustmentProto", "params { a: 2 } metadata { temperature: -40 }",
     "0A09090000000000000040 120525000020C2"},
    {"BaseCalibrationProto",
     "wheel_base: 0.4064 base_width: 0.5 base_length: 0 global_transform { params { } } "
     "gyroscope_cal { gyroscope_gain: 1 }",
     "0DA913D03E 150000003F 1A020A00 22050D0000803F 2D00000000"},
    {"FocusCheckProto", "value_at_cutoff: 0.5 cutoff: 0.25 bins: 1 bins: 2 name: 'n' ok: true",
     "0D0000003F 150000803E 1D0000803F 1D00000040 22016E 2801"},
    {"FocusCheckSetProto", "spots { ok: false } spots { }", "0A022800 0A00"},
    {"PTZIntrinsicsItem", "zoom: 1 fxy: 900.5 cx: 320 cy: 240 k1: -0.25 error_per_point: 0.125",
     "09000000000000F03F 110000000000248C40 190000000000007440 210000000000006E40 "
     "29000000000000D0BF 49000000000000C03F"},
    {"PTZIntrinsics",
     "zx: 1 width: 640 height: 480 samples { zoom: 2 } samples_zoom0: -5 samples_zoom_step: 100 "
     "zoom_max: 9999",
     "09000000000000F03F 188005 20E003 2A09090000000000000040 30FBFFFFFFFFFFFFFFFF01 3864 488F4E"},
    {"PanTiltSystemParameters",
     "pan_ext { a: 1 } device_ext { } rads_per_pan_unit: 0.5 pan_min: -170 pan_max: 170 "
     "max_tilt_speed: 60 max_model_error: 0.75",
     "0A0909000000000000F03F 1A00 250000003F 40D6FEFFFFFFFFFFFFFF01 48AA01 683C 7D0000403F"},
    {"PTZCameraParameters", "intrinsics { zoom_min: 1 } pan_tilt { tilt_max: 90 }",
     "0A024001 1202585A"},
    {"PTZSystemCalibration",
     "ptz_camera { pan_tilt { pan_min: 1 } } laser { tilt_ext { a: 4 } } other_cameras { camera { "
     "name: 'aux' } }",
     "0A0412024001 120B1209090000000000001040 1A070A052A03617578"},
};

// Fields that no record has, 1000 to 1004: one of each wire type.
const char kUnknownHex[] = "C03E8001 C93E0102030405060708 D23E03616263 DB3E0807DC3E E53E01020304";

// REQUIRES: an even number of hexadecimal digits; spaces do not count.
std::string Bytes(const std::string& hex) {
  std::string bytes;
  for (size_t i = 0; i < hex.size(); i += 2) {
    if (hex[i] == ' ') ++i;
    bytes += static_cast<char>(std::strtol(hex.substr(i, 2).c_str(), nullptr, 16));
  }
  return bytes;
}

template <class T>
class StoredRecordsTest : public ::testing::Test {};
TYPED_TEST_SUITE(StoredRecordsTest, AllRecords);

// Through every call of either table: `bytes` is read as `expected`, which is written as `bytes`.
template <class T>
void CheckCalls(const T& expected, const std::string& bytes) {
  for (const auto& entrances : {ConcreteEntrances<T>(), GenericEntrances()}) {
    for (const Entrance& entrance : entrances) {
      SCOPED_TRACE(entrance.name);
      T record;
      EXPECT_TRUE(entrance.parse(&record, bytes));
      EXPECT_TRUE(EqualByReflection(record, expected));
    }
  }
  for (const auto& exits : {ConcreteExits<T>(), GenericExits()}) {
    for (const Exit& exit : exits) {
      SCOPED_TRACE(exit.name);
      std::string written;
      EXPECT_TRUE(exit.write(expected, &written));
      EXPECT_EQ(written, bytes);
    }
  }
}

TYPED_TEST(StoredRecordsTest, AreReadAndWrittenByteForByte) {
  int rows = 0;
  for (const StoredRecord& row : kStoredRecords) {
    if (row.message != TypeParam::descriptor()->name()) continue;
    ++rows;
    SCOPED_TRACE(row.text);
    TypeParam expected;
    ASSERT_TRUE(TextFormat::ParseFromString(row.text, &expected));
    CheckCalls(expected, Bytes(row.hex));
  }
  EXPECT_GT(rows, 0) << "no record of this class is stored: docs/extending.md tells how to add one";
}

TYPED_TEST(StoredRecordsTest, UnknownFieldsComeLast) {
  for (const StoredRecord& row : kStoredRecords) {
    if (row.message != TypeParam::descriptor()->name()) continue;
    const std::string known = Bytes(row.hex), unknown = Bytes(kUnknownHex);
    for (const std::string& bytes : {known + unknown, unknown + known}) {
      TypeParam record;
      ASSERT_TRUE(record.ParseFromString(bytes));
      EXPECT_EQ(record.unknown_fields().field_count(), 5);
      EXPECT_EQ(record.SerializeAsString(), known + unknown);
    }
  }
}

}  // namespace
}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
