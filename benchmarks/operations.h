// The operations, each written once for every side and payload.
//
// AddOperations() is the table: a name and what is done once. What an operation needs stands ready
// in a State: the payload's bytes, the record they hold, and room to write. Fresh records live
// where a user would have them: on the stack if the class is known, on the heap behind Message&.
#ifndef CALIBRATION_BENCHMARKS_OPERATIONS_H_
#define CALIBRATION_BENCHMARKS_OPERATIONS_H_

#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <istream>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/cells.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {

// Makes records of a class that the compiler knows.
template <class R>
struct Concrete {
  using Record = R;
  struct Fresh {
    explicit Fresh(const Concrete&) {}
    Fresh(const Concrete&, const R& from) : record(from) {}
    R* operator->() { return &record; }
    R& operator*() { return record; }
    R record;
  };
  R* New() const { return new R; }
};

// Makes records of a class that is known by its prototype only, which is looked up when first
// needed.
class Generic {
 public:
  using Record = ::google::protobuf::Message;

  explicit Generic(const Record* (*look_up)()) : look_up_(look_up) {}

  struct Fresh {
    explicit Fresh(const Generic& factory) : record(factory.New()) {}
    Fresh(const Generic& factory, const Record& from) : record(factory.New()) {
      record->CopyFrom(from);
    }
    Record* operator->() { return record.get(); }
    Record& operator*() { return *record; }
    std::unique_ptr<Record> record;
  };
  Record* New() const {
    if (prototype_ == nullptr) prototype_ = look_up_();
    return prototype_->New();
  }

 private:
  const Record* (*look_up_)();
  mutable const Record* prototype_ = nullptr;
};

// Which operations make sense for a payload and side.
struct Selection {
  std::string prefix;                           // of the operations' names
  std::function<bool(const std::string&)> has;  // by name, without the prefix
};

// What is under way, by the cell's name; for Require() to tell.
inline std::string& AtWork() {
  static std::string cell;
  return cell;
}

// Ends the program: an operation that fails is not worth measuring.
inline void Require(bool done) {
  if (done) return;
  std::fprintf(stderr, "benchmarks: %s failed: the operation did not succeed on its payload\n",
               AtWork().c_str());
  std::abort();
}

// Makes the compiler believe that the value is looked at.
template <class T>
void Keep(const T& value) {
  asm volatile("" : : "r"(&value) : "memory");
}

// The encoded size, under the name that the run-time in use has for it.
template <class Record>
auto EncodedSize(const Record& record, int) -> decltype(static_cast<int>(record.ByteSizeLong())) {
  return static_cast<int>(record.ByteSizeLong());
}
template <class Record>
int EncodedSize(const Record& record, long) {
  return record.ByteSize();
}

// A stream buffer over memory that is given; nothing is allocated or copied to start over.
class MemoryBuffer : public std::streambuf {
 public:
  void Reset(char* data, size_t size) {
    setg(data, data, data + size);
    setp(data, data + size);
  }
};

template <class Factory>
struct State {
  using Record = typename Factory::Record;

  State(const Factory& factory, std::string payload)
      : factory(factory),
        bytes(std::move(payload)),
        room(bytes.size() + 64 + kPage, '\0'),
        full(factory.New()),
        scratch(factory.New()),
        istream(&source),
        ostream(&sink) {
    Require(full->ParseFromString(bytes) && scratch->ParseFromString(bytes));
    EncodedSize(*full, 0);
  }

  int size() const { return static_cast<int>(bytes.size()); }
  uint8_t* target() { return reinterpret_cast<uint8_t*>(&room[shift]); }
  int target_size() const { return static_cast<int>(room.size() - shift); }

  // Moves target() within a page. How the places of what is read and of what is written differ
  // modulo a page can double the time; over many moves that evens out, or shows in the spread.
  void MoveTarget() { shift = (shift + size_t{13} * 64) % kPage; }

  static constexpr size_t kPage = 4096;

  Factory factory;
  std::string bytes;                // the payload
  std::string room;                 // a page and as many bytes, to write into
  size_t shift = 0;                 // where in it target() is
  std::unique_ptr<Record> full;     // what the payload holds; its cached sizes are right
  std::unique_ptr<Record> scratch;  // a second one
  MemoryBuffer source, sink;
  std::istream istream;
  std::ostream ostream;
};

// An operation that leaves everything as it was.
template <class Factory, class Operation>
class PlainCell : public Cell {
 public:
  PlainCell(std::string name, std::shared_ptr<State<Factory>> state, Operation operation)
      : name_(std::move(name)), state_(std::move(state)), operation_(operation) {}

  void Prepare(int) override { AtWork() = name_; }
  void Run(int count) override {
    State<Factory>& state = *state_;
    for (int i = 0; i < count; ++i) operation_(state);
  }

 private:
  std::string name_;
  std::shared_ptr<State<Factory>> state_;
  Operation operation_;
};

// An operation that uses up its target: each run has a copy of the full record to itself.
template <class Factory, class Operation>
class TargetCell : public Cell {
 public:
  TargetCell(std::string name, std::shared_ptr<State<Factory>> state, Operation operation)
      : name_(std::move(name)), state_(std::move(state)), operation_(operation) {}

  void Prepare(int count) override {
    AtWork() = name_;
    targets_.clear();
    for (int i = 0; i < count; ++i) {
      targets_.emplace_back(state_->factory.New());
      targets_.back()->CopyFrom(*state_->full);
    }
  }
  void Run(int count) override {
    State<Factory>& state = *state_;
    for (int i = 0; i < count; ++i) operation_(state, targets_[static_cast<size_t>(i)].get());
  }

 private:
  std::string name_;
  std::shared_ptr<State<Factory>> state_;
  Operation operation_;
  std::vector<std::unique_ptr<typename Factory::Record>> targets_;
};

// Adds one payload of one side, and its cells.
template <class Factory>
class CellAdder {
 public:
  CellAdder(std::string side, std::string payload, const Factory& factory,
            std::function<std::string()> bytes, Selection selection, int batch,
            Catalogue* catalogue)
      : side_(std::move(side)),
        payload_(std::move(payload)),
        selection_(std::move(selection)),
        batch_(batch),
        catalogue_(catalogue) {
    make_state_ = [state = std::make_shared<std::shared_ptr<State<Factory>>>(), factory, bytes] {
      if (*state == nullptr) *state = std::make_shared<State<Factory>>(factory, bytes());
      (*state)->MoveTarget();
      return *state;
    };
    const auto rewritten = [factory, bytes, name = side_ + "/rewriting/" + payload_] {
      AtWork() = name;
      typename Factory::Fresh record(factory);
      Require(record->ParseFromString(bytes()));
      return record->SerializeAsString();
    };
    if (selection_.prefix.empty()) {
      catalogue_->payloads.push_back({side_, payload_, bytes, rewritten});
    }
  }

  template <class Operation>
  void Plain(const std::string& name, Operation operation) {
    Add<PlainCell<Factory, Operation>>(name, true, operation);
  }
  template <class Operation>
  void OnTarget(const std::string& name, Operation operation) {
    Add<TargetCell<Factory, Operation>>(name, false, operation);
  }

 private:
  template <class CellType, class Operation>
  void Add(const std::string& name, bool repeatable, Operation operation) {
    if (!selection_.has(name)) return;
    CellEntry entry = {side_, selection_.prefix + name, payload_, batch_, repeatable, nullptr};
    entry.make = [cell = entry.Name(), make_state = make_state_, operation] {
      AtWork() = cell;
      return std::unique_ptr<Cell>(new CellType(cell, make_state(), operation));
    };
    catalogue_->cells.push_back(std::move(entry));
  }

  std::string side_;
  std::string payload_;
  Selection selection_;
  int batch_;
  Catalogue* catalogue_;
  std::function<std::shared_ptr<State<Factory>>()> make_state_;  // when the first cell is made
};

// The operations that need nothing but the payload's bytes.
template <class Factory>
void AddOperations(CellAdder<Factory>* add) {
  using S = State<Factory>;
  using Record = typename Factory::Record;
  using Fresh = typename Factory::Fresh;
  using ::google::protobuf::io::ArrayInputStream;

  add->Plain("parse fresh", [](S& s) {
    Fresh record(s.factory);
    Require(record->ParseFromArray(s.bytes.data(), s.size()));
  });
  add->Plain("parse reused",
             [](S& s) { Require(s.scratch->ParseFromArray(s.bytes.data(), s.size())); });
  add->Plain("parse istream", [](S& s) {
    s.source.Reset(&s.bytes[0], s.bytes.size());
    s.istream.clear();
    Fresh record(s.factory);
    Require(record->ParseFromIstream(&s.istream));
  });
  add->Plain("parse 4 KB blocks", [](S& s) {
    ArrayInputStream blocks(s.bytes.data(), s.size(), 4096);
    Fresh record(s.factory);
    Require(record->ParseFromZeroCopyStream(&blocks));
  });
  add->Plain("size", [](S& s) { Keep(EncodedSize(*s.full, 0)); });
  add->Plain("to array",
             [](S& s) { Require(s.full->SerializeToArray(s.target(), s.target_size())); });
  add->Plain("cached sizes",
             [](S& s) { Keep(s.full->SerializeWithCachedSizesToArray(s.target())); });
  add->Plain("to string", [](S& s) {
    std::string text;
    Require(s.full->SerializeToString(&text));
  });
  add->Plain("to ostream", [](S& s) {
    s.sink.Reset(reinterpret_cast<char*>(s.target()), static_cast<size_t>(s.target_size()));
    Require(s.full->SerializeToOstream(&s.ostream));
  });
  add->Plain("copy fresh", [](S& s) {
    Fresh record(s.factory, *s.full);
    Keep(*record);
  });
  add->Plain("copy reused", [](S& s) { s.scratch->CopyFrom(*s.full); });
  add->OnTarget("merge", [](S& s, Record* target) { target->MergeFrom(*s.full); });
  add->OnTarget("clear", [](S&, Record* target) { target->Clear(); });
  add->Plain("construct and destroy", [](S& s) {
    Fresh record(s.factory);
    Keep(*record);
  });
  add->Plain("initialization check", [](S& s) { Require(s.full->IsInitialized()); });
}

// Those that set every field.
template <class Record>
void AddFillOperations(void (*fill)(Record*), CellAdder<Concrete<Record>>* add) {
  using S = State<Concrete<Record>>;
  add->Plain("fill", [fill](S&) {
    Record record;
    fill(&record);
    Keep(record);
  });
  add->Plain("fill and clear", [fill](S& s) {
    s.scratch->Clear();
    fill(s.scratch.get());
    Keep(*s.scratch);
  });
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_BENCHMARKS_OPERATIONS_H_
