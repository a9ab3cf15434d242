// Every way into and out of a record, as tables of plain functions.
//
//   for (const Entrance& in : ConcreteEntrances<CameraIntrinsics>()) in.parse(&record, bytes);
//
// The calls are made either on the concrete class, as users make them, or on `Message&`, as the
// run-time's own code makes them: two sets of functions behind the same names, and what a call
// promises must not depend on which it is. Both tables have the same rows in the same order.
//
// Calls that are not partial fail on a record that lacks required fields, and log that; such a
// record must not be written by them at all.
#ifndef CALIBRATION_TESTS_SUPPORT_ENTRANCES_H_
#define CALIBRATION_TESTS_SUPPORT_ENTRANCES_H_

#include <google/protobuf/message.h>

#include <string>
#include <vector>

namespace zarvo {
namespace calibration {
namespace testing {

// What a call reads from: an array or a string, or a stream of whatever kind.
enum class Source { kMemory, kStream };

struct Entrance {
  std::string name;
  Source source;
  bool partial;  // does not ask for required fields
  bool merges;   // adds to what the record holds; the others clear it first
  // True if the bytes, all of them, were one record.
  bool (*parse)(::google::protobuf::Message* record, const std::string& bytes);
};

struct Exit {
  std::string name;
  bool partial;
  // Replaces *bytes. False if the call failed or did not keep what it promises about its target.
  bool (*write)(const ::google::protobuf::Message& record, std::string* bytes);
};

// Calls on the class T, one of the table's. REQUIRES: the record is a T.
template <class T>
std::vector<Entrance> ConcreteEntrances();
template <class T>
std::vector<Exit> ConcreteExits();

// Calls on `Message&`.
std::vector<Entrance> GenericEntrances();
std::vector<Exit> GenericExits();

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_ENTRANCES_H_
