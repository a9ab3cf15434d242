// A program that is older than the file it edits loses nothing: fields that it does not know stay
// in the record and are written back.
//
//   keep_unknown

#include <google/protobuf/unknown_field_set.h>

#include <iostream>
#include <string>

#include "calibration_common/calibration.pb.h"

namespace {

using zarvo::calibration::BaseCalibrationProto;

// Field numbers that this schema does not have stand for those that a later one will.
const int kLaterNumber = 6;
const int kLaterText = 7;

std::string RecordOfALaterVersion() {
  BaseCalibrationProto base;
  base.set_wheel_base(0.41f);
  base.mutable_unknown_fields()->AddVarint(kLaterNumber, 2026);
  base.mutable_unknown_fields()->AddLengthDelimited(kLaterText, "floor: carpet");
  std::string bytes;
  base.SerializeToString(&bytes);
  return bytes;
}

}  // namespace

int main() {
  // This program knows wheel_base and corrects it.
  BaseCalibrationProto base;
  if (!base.ParseFromString(RecordOfALaterVersion())) return 1;
  base.set_wheel_base(0.42f);
  std::string bytes;
  if (!base.SerializeToString(&bytes)) return 1;

  // What the later version finds in it afterwards.
  BaseCalibrationProto after;
  if (!after.ParseFromString(bytes)) return 1;
  std::cout << "wheel_base: " << after.wheel_base() << "\n";
  const google::protobuf::UnknownFieldSet& unknown = after.unknown_fields();
  for (int i = 0; i < unknown.field_count(); ++i) {
    const google::protobuf::UnknownField& field = unknown.field(i);
    std::cout << "field " << field.number() << ": ";
    if (field.type() == google::protobuf::UnknownField::TYPE_VARINT) {
      std::cout << field.varint() << "\n";
    } else {
      std::cout << field.length_delimited() << "\n";
    }
  }

  // Who must not pass on what they do not know, discards it.
  after.DiscardUnknownFields();
  std::cout << "without: " << after.ByteSize() << " bytes, with: " << bytes.size() << "\n";
  return 0;
}
