// The SHA-256 of the type's name, a line break, and the canonical bytes: the binary format with
// each field that is set in ascending order, numbers as short as can be, repeated fields not
// packed, without unknown fields. That is what the record classes write. Numbers that compare as
// equal are made the same before: 0 for -0, and one NaN for all.
#include "calib/fields/fingerprint.h"

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "calib/console/failure.h"
#include "calib/console/sha256.h"

namespace calib {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

namespace {

template <typename T>
T Canonical(T value) {
  if (std::isnan(value)) return std::numeric_limits<T>::quiet_NaN();
  return value == 0 ? T{0} : value;
}

void MakeCanonical(Message* message);

void MakeCanonical(Message* message, const FieldDescriptor* field) {
  const Reflection* reflection = message->GetReflection();
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_DOUBLE:
      reflection->SetDouble(message, field, Canonical(reflection->GetDouble(*message, field)));
      break;
    case FieldDescriptor::CPPTYPE_FLOAT:
      reflection->SetFloat(message, field, Canonical(reflection->GetFloat(*message, field)));
      break;
    case FieldDescriptor::CPPTYPE_MESSAGE:
      MakeCanonical(reflection->MutableMessage(message, field));
      break;
    default:
      break;
  }
}

void MakeElementCanonical(Message* message, const FieldDescriptor* field, int i) {
  const Reflection* reflection = message->GetReflection();
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_DOUBLE:
      reflection->SetRepeatedDouble(message, field, i,
                                    Canonical(reflection->GetRepeatedDouble(*message, field, i)));
      break;
    case FieldDescriptor::CPPTYPE_FLOAT:
      reflection->SetRepeatedFloat(message, field, i,
                                   Canonical(reflection->GetRepeatedFloat(*message, field, i)));
      break;
    case FieldDescriptor::CPPTYPE_MESSAGE:
      MakeCanonical(reflection->MutableRepeatedMessage(message, field, i));
      break;
    default:
      break;
  }
}

void MakeCanonical(Message* message) {
  const Reflection* reflection = message->GetReflection();
  std::vector<const FieldDescriptor*> fields;
  reflection->ListFields(*message, &fields);
  for (const FieldDescriptor* field : fields) {
    if (!field->is_repeated()) MakeCanonical(message, field);
    for (int i = 0; field->is_repeated() && i < reflection->FieldSize(*message, field); ++i) {
      MakeElementCanonical(message, field, i);
    }
  }
}

}  // namespace

std::string Fingerprint(const Message& record) {
  const std::unique_ptr<Message> canonical(record.New());
  canonical->CopyFrom(record);
  canonical->DiscardUnknownFields();
  MakeCanonical(canonical.get());
  std::string bytes;
  if (!canonical->SerializePartialToString(&bytes)) {
    throw Failure("the record takes more than 2 GiB, the most that has a fingerprint");
  }
  Sha256 hash;
  hash.Add(record.GetDescriptor()->name() + "\n");
  hash.Add(bytes);
  return hash.Digest();
}

bool IsFingerprint(const std::string& text) {
  return text.size() == 64 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

}  // namespace calib
