// Works on records through reflection only: compares, copies, makes dynamic twins.
//
// None of it goes over the wire, so a test of parsing or writing may trust it.
#ifndef CALIBRATION_TESTS_SUPPORT_REFLECT_H_
#define CALIBRATION_TESTS_SUPPORT_REFLECT_H_

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/unknown_field_set.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/support/schema_table.h"

namespace zarvo {
namespace calibration {
namespace testing {

// The record's own descriptor of a field.
inline const ::google::protobuf::FieldDescriptor* DescriptorOf(
    const ::google::protobuf::Message& record, const FieldRow& field) {
  return record.GetDescriptor()->FindFieldByNumber(field.number);
}

// Compares two messages of one descriptor field by field: presence, values (numbers bit for bit, so
// a NaN equals itself and -0.0 is not 0.0), repeated elements in order, sub-messages in depth,
// unknown fields in order. Says where the first difference lies.
::testing::AssertionResult EqualByReflection(const ::google::protobuf::Message& a,
                                             const ::google::protobuf::Message& b);

// Adds everything that `from` holds to `to`, an empty message of the same descriptor.
void CopyByReflection(const ::google::protobuf::Message& from, ::google::protobuf::Message* to);

// An empty message of the run-time's own dynamic class. Unlike the records it logs a remark for
// each string that is not UTF-8 when it is parsed or written: ::google::protobuf::LogSilencer
// helps.
std::unique_ptr<::google::protobuf::Message> NewDynamic(
    const ::google::protobuf::Descriptor* descriptor);

// Frees the dynamic classes. REQUIRES: none of their messages is left, and none is made any more.
// Must come before the run-time is shut down, since they refer to its descriptors.
void ForgetDynamicClasses();

// The same values in the run-time's own dynamic class.
std::unique_ptr<::google::protobuf::Message> DynamicTwin(
    const ::google::protobuf::Message& message);

// The unknown fields as they are written: in order, numbers as short as can be.
std::string EncodeUnknown(const ::google::protobuf::UnknownFieldSet& fields);

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_REFLECT_H_
