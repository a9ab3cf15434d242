// YAML with yaml-cpp, as most programs have it: written through its Emitter, loaded as a tree of
// nodes (YAML::Load) and from there, by name, into a program's own structures. A point is a list of
// four numbers, octets are base64.
#include <yaml-cpp/yaml.h>

#include <optional>

#include "benchmarks/peers/base64.h"
#include "benchmarks/peers/peer_cells.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

// --- Writing: what is empty is left out ---

template <class T>
bool IsEmpty(const T& value) {
  if constexpr (kIsList<T> || std::is_same_v<T, std::string>) {
    return value.empty();
  } else {
    return false;
  }
}

template <class T>
void Write(const T& value, YAML::Emitter* emitter) {
  if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, std::string>) {
    *emitter << value;
  } else if constexpr (std::is_same_v<T, Octets>) {
    *emitter << ToBase64(value.data);
  } else if constexpr (kIsList<T>) {
    if (std::is_arithmetic_v<typename T::value_type>) *emitter << YAML::Flow;
    *emitter << YAML::BeginSeq;
    for (const auto& element : value) Write(element, emitter);
    *emitter << YAML::EndSeq;
  } else if constexpr (std::is_same_v<T, SamplePoint>) {
    *emitter << YAML::Flow << YAML::BeginSeq << value.img_x << value.img_y << value.tgt_x
             << value.tgt_y << YAML::EndSeq;
  } else {
    *emitter << YAML::BeginMap;
    T::Fields(value, [emitter](const char* name, const auto& member) {
      if (IsEmpty(member)) return;
      *emitter << YAML::Key << name << YAML::Value;
      Write(member, emitter);
    });
    *emitter << YAML::EndMap;
  }
}

// --- Reading: a node of another kind than expected throws ---

template <class T>
void Read(const YAML::Node& node, T* value) {
  if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, std::string>) {
    *value = node.as<T>();
  } else if constexpr (std::is_same_v<T, Octets>) {
    value->data = FromBase64(node.Scalar());
  } else if constexpr (kIsList<T>) {
    value->reserve(node.size());
    for (const YAML::Node& element : node) Read(element, &value->emplace_back());
  } else if constexpr (std::is_same_v<T, SamplePoint>) {
    Require(node.size() == 4);
    Read(node[0], &value->img_x);
    Read(node[1], &value->img_y);
    Read(node[2], &value->tgt_x);
    Read(node[3], &value->tgt_y);
  } else {
    T::Fields(*value, [&node](const char* name, auto& member) {
      const YAML::Node found = node[name];
      if (found) Read(found, &member);
    });
  }
}

double OneOf(const YAML::Node& root, const Robot*) {
  return root["camera"][3]["intrinsics"]["fx"].as<double>();
}
double OneOf(const YAML::Node& root, const Base*) {
  return root["gyroscope_cal"]["metadata"]["temperature"].as<float>();
}
double OneOf(const YAML::Node& root, const PtzSystem*) {
  return root["ptz_camera"]["intrinsics"]["samples"][32]["fxy"].as<double>();
}
double OneOf(const YAML::Node& root, const Image*) { return root["height"].as<int>(); }

template <class R>
class YamlCppStore {
 public:
  void Write(const R& values) {
    emitter_.emplace();
    emitter_->SetDoublePrecision(17);
    emitter_->SetFloatPrecision(9);
    benchmarks::Write(values, &*emitter_);
    Require(emitter_->good());
  }
  std::string_view Written() const { return {emitter_->c_str(), emitter_->size()}; }

  void Load(std::string_view bytes) {
    values_ = R();
    benchmarks::Read(YAML::Load(std::string(bytes)), &values_);
  }

  template <class Sink>
  void Read(std::string_view bytes, Sink* sink) {
    Load(bytes);
    Visit(values_, sink);
  }

  double ReadOne(std::string_view bytes) {
    return OneOf(YAML::Load(std::string(bytes)), static_cast<const R*>(nullptr));
  }

 private:
  std::optional<YAML::Emitter> emitter_;
  R values_;
};

struct YamlCpp {
  template <class R>
  using Store = YamlCppStore<R>;
};

}  // namespace

void AddYamlCpp(PeerCatalogue* catalogue) { AddPeer<YamlCpp>("yaml-cpp", catalogue); }

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
