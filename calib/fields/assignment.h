// What a user writes to set a field, or to say what it is expected to hold:
//
//   PATH=VALUE     the field or the element holds VALUE
//   PATH+=VALUE    VALUE is appended to the repeated field
//   PATH=          the field is not set; an element is taken out
//
// The value of a text is the rest of the argument as it is, that of a number as the text format has
// it, that of a list [0.1, 0.2], that of a message name: "cam0" model: "x", with or without braces.
#ifndef CALIB_FIELDS_ASSIGNMENT_H_
#define CALIB_FIELDS_ASSIGNMENT_H_

#include <google/protobuf/message.h>

#include <string>
#include <vector>

namespace calib {

struct Assignment {
  enum class Kind { kSet, kAppend, kClear };

  std::string text;  // as it was written
  std::string path;
  Kind kind;
  std::string value;
};

// Throws Failure if the text is none.
Assignment ParseAssignment(const std::string& text);

// Does what the assignment says at each place that its path leads to; sub-messages on the way that
// are not set become so. Throws Failure, with the record half done, if the path leads to no place
// or the value is none of the field's type.
void Apply(const Assignment& assignment, google::protobuf::Message* record);

// A place that does not hold what an assignment says.
struct Unmet {
  std::string path;
  std::string value;     // as text; "" if it is not set
  std::string expected;  // "" if it should not be set
};

// Compares what is there with what an assignment of the kinds kSet and kClear says; numbers as the
// field's type holds them. Throws Failure if the path is none of fields of this type, or the value
// none of the field's.
std::vector<Unmet> FindUnmet(const Assignment& assignment, const google::protobuf::Message& record);

}  // namespace calib

#endif  // CALIB_FIELDS_ASSIGNMENT_H_
