// The side `limit`: the least that an operation could cost, on the same payloads in the same run.
//
//   parse reused     the bytes are looked at once, eight at a time; an image's octets are copied
//   parse fresh      the same, and each object is allocated and freed
//   size             one word of each message is read
//   to array, cached sizes, to ostream
//                    as many bytes are copied
//   to string        the same, into memory that is allocated and freed
//   copy reused      each object's memory is copied
//   copy fresh       the same, into memory that is allocated and freed
//   clear            one word of each message is written
//   fill and clear   each object's memory is written
//   fill             the same, in memory that is allocated and freed
//
// The rest has no limit but the calls themselves. Objects are what a record holds: messages, texts,
// arrays of numbers and of pointers, each of the size that it has there and allocated by itself.
// Whoever allocates several at once may stay below.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <malloc.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/cells.h"
#include "benchmarks/operations.h"
#include "benchmarks/payloads.h"
#include "calibration_common/calibration.pb.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

using ::google::protobuf::FieldDescriptor;
using ::google::protobuf::Message;
using ::google::protobuf::Reflection;

struct Object {
  size_t size;
  bool is_message;
  bool is_image;
};

// What the objects of a record are.
class Objects {
 public:
  explicit Objects(const Message& record) { AddMessage(record); }
  const std::vector<Object>& all() const { return all_; }

 private:
  void AddMessage(const Message& message) {
    const std::unique_ptr<Message> another(message.New());
    all_.push_back({malloc_usable_size(another.get()), true, false});
    std::vector<const FieldDescriptor*> fields;
    message.GetReflection()->ListFields(message, &fields);
    for (const FieldDescriptor* field : fields) AddField(message, *field);
  }

  void AddField(const Message& message, const FieldDescriptor& field) {
    const Reflection& reflection = *message.GetReflection();
    const bool repeated = field.is_repeated();
    const int count = repeated ? reflection.FieldSize(message, &field) : 1;
    switch (field.cpp_type()) {
      case FieldDescriptor::CPPTYPE_MESSAGE:
        if (repeated) Add(sizeof(void*) * (static_cast<size_t>(count) + 1));
        for (int i = 0; i < count; ++i) {
          AddMessage(repeated ? reflection.GetRepeatedMessage(message, &field, i)
                              : reflection.GetMessage(message, &field));
        }
        break;
      case FieldDescriptor::CPPTYPE_STRING: {
        const std::string text = reflection.GetString(message, &field);
        Add(sizeof(std::string));
        if (text.capacity() == std::string().capacity()) break;
        Add(text.size() + 1, field.type() == FieldDescriptor::TYPE_BYTES);
        break;
      }
      case FieldDescriptor::CPPTYPE_DOUBLE:
        if (repeated) Add(sizeof(double) * static_cast<size_t>(count));
        break;
      default:  // the other repeated numbers are all float
        if (repeated) Add(sizeof(float) * static_cast<size_t>(count));
    }
  }

  void Add(size_t size, bool is_image = false) { all_.push_back({size, false, is_image}); }

  std::vector<Object> all_;
};

class Limits {
 public:
  explicit Limits(const Message& record)
      : bytes_(record.SerializeAsString()), room_(bytes_.size(), '\0'), objects_(record) {
    unread_ = bytes_.size();
    for (const Object& object : objects_.all()) {
      from_.push_back(std::make_unique<char[]>(object.size));
      to_.push_back(std::make_unique<char[]>(object.size));
      if (object.is_image) unread_ -= object.size - 1;
    }
    fresh_.resize(from_.size());
  }

  void Allocate() {
    for (size_t i = 0; i < fresh_.size(); ++i) fresh_[i] = ::operator new(size(i));
    Keep(fresh_);
  }
  void Free() {
    for (void* object : fresh_) ::operator delete(object);
  }

  // The bytes but for the images'.
  void LookAt() {
    uint64_t sum = 0;
    for (size_t i = 0; i + 8 <= unread_; i += 8) {
      uint64_t eight;
      std::memcpy(&eight, &bytes_[i], sizeof eight);
      sum += eight;
    }
    Keep(sum);
  }
  void CopyImages() {
    for (size_t i = 0; i < to_.size(); ++i) {
      if (objects_.all()[i].is_image) std::memcpy(to_[i].get(), from_[i].get(), size(i));
    }
    Keep(to_);
  }
  void CopyImagesFresh() {
    for (size_t i = 0; i < fresh_.size(); ++i) {
      if (objects_.all()[i].is_image) std::memcpy(fresh_[i], from_[i].get(), size(i));
    }
    Keep(fresh_);
  }

  void ReadMessages() {
    uint64_t sum = 0;
    for (size_t i = 0; i < from_.size(); ++i) {
      if (objects_.all()[i].is_message) sum += static_cast<unsigned char>(from_[i][8]);
    }
    Keep(sum);
  }
  void WriteMessages() {
    for (size_t i = 0; i < to_.size(); ++i) {
      if (objects_.all()[i].is_message) to_[i][8] = 0;
    }
    Keep(to_);
  }
  void CopyObjects() {
    for (size_t i = 0; i < to_.size(); ++i) std::memcpy(to_[i].get(), from_[i].get(), size(i));
    Keep(to_);
  }
  void CopyObjectsFresh() {
    for (size_t i = 0; i < fresh_.size(); ++i) std::memcpy(fresh_[i], from_[i].get(), size(i));
    Keep(fresh_);
  }
  void WriteObjectsFresh() {
    for (size_t i = 0; i < fresh_.size(); ++i) std::memset(fresh_[i], 1, size(i));
    Keep(fresh_);
  }
  void WriteObjects() {
    for (size_t i = 0; i < to_.size(); ++i) std::memset(to_[i].get(), 1, size(i));
    Keep(to_);
  }
  void CopyBytes() {
    std::memcpy(&room_[0], bytes_.data(), bytes_.size());
    Keep(room_);
  }
  void CopyBytesAllocated() {
    const std::string copy(bytes_);
    Keep(copy);
  }

 private:
  size_t size(size_t index) const { return objects_.all()[index].size; }

  std::string bytes_;
  std::string room_;
  size_t unread_;  // bytes that are no image's octets
  Objects objects_;
  std::vector<std::unique_ptr<char[]>> from_, to_;
  std::vector<void*> fresh_;
};

class LimitCell : public Cell {
 public:
  explicit LimitCell(std::function<void()> operation) : operation_(std::move(operation)) {}
  void Prepare(int) override {}
  void Run(int count) override {
    for (int i = 0; i < count; ++i) operation_();
  }

 private:
  std::function<void()> operation_;
};

using Operation = void (*)(Limits&);

const std::vector<std::pair<const char*, Operation>>& Operations() {
  static const std::vector<std::pair<const char*, Operation>> operations = {
      {"parse fresh",
       [](Limits& l) {
         l.Allocate();
         l.LookAt();
         l.CopyImagesFresh();
         l.Free();
       }},
      {"parse reused",
       [](Limits& l) {
         l.LookAt();
         l.CopyImages();
       }},
      {"size", [](Limits& l) { l.ReadMessages(); }},
      {"to array", [](Limits& l) { l.CopyBytes(); }},
      {"cached sizes", [](Limits& l) { l.CopyBytes(); }},
      {"to string", [](Limits& l) { l.CopyBytesAllocated(); }},
      {"to ostream", [](Limits& l) { l.CopyBytes(); }},
      {"copy fresh",
       [](Limits& l) {
         l.Allocate();
         l.CopyObjectsFresh();
         l.Free();
       }},
      {"copy reused", [](Limits& l) { l.CopyObjects(); }},
      {"clear", [](Limits& l) { l.WriteMessages(); }},
      {"fill",
       [](Limits& l) {
         l.Allocate();
         l.WriteObjectsFresh();
         l.Free();
       }},
      {"fill and clear", [](Limits& l) { l.WriteObjects(); }},
  };
  return operations;
}

template <class Record>
void AddPayload(const std::string& payload, int batch, void (*fill)(Record*),
                Catalogue* catalogue) {
  for (const auto& [name, operation] : Operations()) {
    catalogue->cells.push_back({"limit", name, payload, batch, true, [fill, operation = operation] {
                                  Record record;
                                  fill(&record);
                                  const auto limits = std::make_shared<Limits>(record);
                                  return std::make_unique<LimitCell>(
                                      [limits, operation] { operation(*limits); });
                                }});
  }
}

}  // namespace

void AddLimits(Catalogue* catalogue) {
  AddPayload<RobotCalibration>(
      "A", 8, [](RobotCalibration* robot) { FillRobot(false, robot); }, catalogue);
  AddPayload<RobotCalibration>(
      "B", 2, [](RobotCalibration* robot) { FillRobot(true, robot); }, catalogue);
  AddPayload<BaseCalibrationProto>("C", 64, FillBase, catalogue);
  AddPayload<CameraIntrinsics>("D", 256, FillRequiredDoubles, catalogue);
  AddPayload<PTZSystemCalibration>("E", 32, FillPtzSystem, catalogue);
  AddPayload<FocusInfo>("F", 4, FillFocusSet, catalogue);
  AddPayload<CalibrationImage>("I", 8, FillImage, catalogue);
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
