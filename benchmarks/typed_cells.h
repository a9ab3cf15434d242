// All cells of one set of message classes: its payloads, and what is done with each.
//
// A class set is a struct that names the six classes whose records are payloads.
#ifndef CALIBRATION_BENCHMARKS_TYPED_CELLS_H_
#define CALIBRATION_BENCHMARKS_TYPED_CELLS_H_

#include <functional>
#include <set>
#include <string>

#include "benchmarks/cells.h"
#include "benchmarks/operations.h"
#include "benchmarks/payloads.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {

// The payloads differ from others only in how they are parsed.
inline bool IsParsing(const std::string& operation) { return operation.rfind("parse", 0) == 0; }

inline bool IsPlainParsing(const std::string& operation) {
  return operation == "parse fresh" || operation == "parse reused";
}

inline bool IsAny(const std::string&) { return true; }

// What generic code does most: calls through Message&.
inline bool IsGeneric(const std::string& operation) {
  static const std::set<std::string> names = {
      "parse fresh", "parse reused",         "size", "to array", "to string", "copy fresh", "merge",
      "clear",       "construct and destroy"};
  return names.count(operation) != 0;
}

template <class Record>
void AddEncodedPayload(const std::string& side, const std::string& payload, int batch,
                       std::string (*bytes)(), bool (*has)(const std::string&),
                       Catalogue* catalogue) {
  CellAdder<Concrete<Record>> add(side, payload, {}, bytes, {"", has}, batch, catalogue);
  AddOperations(&add);
}

template <class Record>
const ::google::protobuf::Message* Prototype() {
  return &Record::default_instance();
}

template <class Record>
void AddFilledPayload(const std::string& side, const std::string& payload, int batch,
                      void (*fill)(Record*), Catalogue* catalogue) {
  const auto bytes = [fill] {
    Record record;
    fill(&record);
    return record.SerializeAsString();
  };
  CellAdder<Concrete<Record>> add(side, payload, {}, bytes, {"", IsAny}, batch, catalogue);
  AddOperations(&add);
  AddFillOperations(fill, &add);
  CellAdder<Generic> add_generic(side, payload, Generic(Prototype<Record>), bytes,
                                 {"generic ", IsGeneric}, batch, catalogue);
  AddOperations(&add_generic);
}

template <class Set>
void AddTypedCells(const std::string& side, Catalogue* catalogue) {
  using Robot = typename Set::Robot;
  AddFilledPayload<Robot>(
      side, "A", 8, [](Robot* robot) { FillRobot(false, robot); }, catalogue);
  AddFilledPayload<Robot>(
      side, "B", 2, [](Robot* robot) { FillRobot(true, robot); }, catalogue);
  AddFilledPayload<typename Set::Base>(side, "C", 64, FillBase, catalogue);
  AddFilledPayload<typename Set::Intrinsics>(side, "D", 256, FillRequiredDoubles, catalogue);
  AddFilledPayload<typename Set::PtzSystem>(side, "E", 32, FillPtzSystem, catalogue);
  AddFilledPayload<typename Set::FocusSet>(side, "F", 4, FillFocusSet, catalogue);
  AddEncodedPayload<typename Set::FocusSet>(side, "Fp", 4, PackedFocusSet, IsParsing, catalogue);
  AddEncodedPayload<Robot>(side, "G", 8, ReorderedRobot, IsParsing, catalogue);
  AddEncodedPayload<Robot>(side, "H", 8, RobotRichInUnknownFields, IsAny, catalogue);
  AddEncodedPayload<typename Set::Image>(side, "I", 8, ImageRecord, IsPlainParsing, catalogue);
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_BENCHMARKS_TYPED_CELLS_H_
