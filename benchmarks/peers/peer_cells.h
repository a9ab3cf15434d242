// The cells of one peer: what a program does with each payload, through that peer.
//
// A peer is a class template, Store<R>, for each structure R of values.h that is a payload. A store
// is what a program would keep from one record to the next: objects and buffers that are used
// again.
//
//   void Write(const R& values)              builds and writes the record
//   std::string_view Written()               its bytes; no part of what is measured
//   void Load(std::string_view bytes)        reads it for good: the bytes may go
//   void Read(std::string_view, Sink* sink)  hands all that is in it to the sink
//   double ReadOne(std::string_view bytes)   the one number that One() names
//
// "Fresh" operations make a store, use it once and drop it. Bytes begin at a multiple of 16. A peer
// with records of its own that can be written again and again has
//
//   void WriteSized()   sizes the record that Load() left, and writes it
//   void WriteCached()  writes it with the sizes from before
//
// Each time that a record is read, the sum must be that of the values.
#ifndef CALIBRATION_BENCHMARKS_PEERS_PEER_CELLS_H_
#define CALIBRATION_BENCHMARKS_PEERS_PEER_CELLS_H_

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "benchmarks/cells.h"
#include "benchmarks/operations.h"
#include "benchmarks/peers/sinks.h"
#include "benchmarks/peers/values.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {

// What is not measured by time: how many bytes a payload has, and what reading it leaves in memory.
struct PeerFigures {
  std::string side;
  std::string payload;
  std::function<std::string()> bytes;
  std::function<std::shared_ptr<void>(std::string_view bytes)> load;
};

struct PeerCatalogue {
  Catalogue cells;
  std::vector<PeerFigures> figures;
};

// Each adds one side. AddOpponentRecords() is only there if the opponent was built.
void AddOurRecords(PeerCatalogue* catalogue);
void AddOpponentRecords(PeerCatalogue* catalogue);
void AddFlatBuffers(PeerCatalogue* catalogue);
void AddCapnProto(PeerCatalogue* catalogue);
void AddProtozero(PeerCatalogue* catalogue);
void AddRapidJson(PeerCatalogue* catalogue);
void AddYamlCpp(PeerCatalogue* catalogue);

// All of them, in that order.
PeerCatalogue EveryPeer();

inline double One(const Robot& robot) { return robot.camera[3].intrinsics.fx; }
inline double One(const Base& base) { return base.gyroscope_cal.metadata.temperature; }
inline double One(const PtzSystem& system) { return system.ptz_camera.intrinsics.samples[32].fxy; }
inline double One(const Image& image) { return image.height; }

class PeerCell : public Cell {
 public:
  PeerCell(std::string name, std::function<void()> operation)
      : name_(std::move(name)), operation_(std::move(operation)) {}

  // Runs it once: whichever peer had the caches before, has them no more.
  void Prepare(int) override {
    AtWork() = name_;
    operation_();
  }
  void Run(int count) override {
    for (int i = 0; i < count; ++i) operation_();
  }

 private:
  std::string name_;
  std::function<void()> operation_;
};

template <class Store, class = void>
struct HasRecords : std::false_type {};
template <class Store>
struct HasRecords<Store, std::void_t<decltype(&Store::WriteSized)>> : std::true_type {};

// Adds one peer with one payload.
template <class Store, class R>
class PeerAdder {
 public:
  PeerAdder(std::string side, std::string payload, const R& (*values)(), PeerCatalogue* catalogue)
      : side_(std::move(side)),
        payload_(std::move(payload)),
        values_(values),
        catalogue_(catalogue) {}

  void AddFigures() {
    const auto written = [values = values_] {
      Store store;
      store.Write(values());
      return std::string(store.Written());
    };
    const auto contents = [values = values_] { return Contents(values()); };
    const auto read_back = [written, name = side_ + "/reading back/" + payload_] {
      AtWork() = name;
      Store store;
      Trace trace;
      store.Read(written(), &trace);
      return trace.lines();
    };
    catalogue_->cells.payloads.push_back({side_, payload_, contents, read_back});
    catalogue_->figures.push_back({side_, payload_, written, [](std::string_view bytes) {
                                     auto store = std::make_shared<Store>();
                                     store->Load(bytes);
                                     return store;
                                   }});
  }

  void AddOperations() {
    Add("read, fresh", [](State& s) {
      Store store;
      Sum sum;
      store.Read(s.bytes, &sum);
      Require(sum.total() == s.total);
    });
    Add("read, reused", [](State& s) {
      Sum sum;
      s.store.Read(s.bytes, &sum);
      Require(sum.total() == s.total);
    });
    Add("read one number", [](State& s) { Require(s.store.ReadOne(s.bytes) == s.one); });
    Add("build and write, fresh", [](State& s) {
      Store store;
      store.Write(s.values);
      Keep(store);
    });
    Add("build and write, reused", [](State& s) {
      s.store.Write(s.values);
      Keep(s.store);
    });
    if constexpr (HasRecords<Store>::value) {
      Add("size and write", [](State& s) { s.store.WriteSized(); });
      Add("write, sizes cached", [](State& s) { s.store.WriteCached(); });
    }
  }

 private:
  struct State {
    explicit State(const R& own) : values(own), one(One(own)) {
      Sum sum;
      Visit(values, &sum);
      total = sum.total();
      store.Write(values);
      bytes = store.Written();
      store.Load(bytes);
      if constexpr (HasRecords<Store>::value) store.WriteSized();
    }

    const R& values;
    double one;
    uint64_t total;
    Store store;
    std::string bytes;
  };

  template <class Operation>
  void Add(const std::string& name, Operation operation) {
    CellEntry entry = {side_, name, payload_, 1, true, nullptr};
    entry.make = [cell = entry.Name(), values = values_, operation] {
      AtWork() = cell;
      auto run = [state = std::make_shared<State>(values()), operation] { operation(*state); };
      return std::make_unique<PeerCell>(cell, std::move(run));
    };
    catalogue_->cells.cells.push_back(std::move(entry));
  }

  std::string side_;
  std::string payload_;
  const R& (*values_)();
  PeerCatalogue* catalogue_;
};

template <class Peer>
void AddPeer(const std::string& side, PeerCatalogue* catalogue) {
  const auto add = [side, catalogue](const std::string& payload, auto* values) {
    using R = std::decay_t<decltype(values())>;
    PeerAdder<typename Peer::template Store<R>, R> adder(side, payload, values, catalogue);
    adder.AddFigures();
    adder.AddOperations();
  };
  add("A", PayloadA);
  add("C", PayloadC);
  add("E", PayloadE);
  add("I", PayloadI);
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_BENCHMARKS_PEERS_PEER_CELLS_H_
