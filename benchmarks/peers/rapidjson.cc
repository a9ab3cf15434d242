// JSON with RapidJSON: written through its Writer, read into a document and from there, by name,
// into a program's own structures. As its manual advises, buffer and document are used again;
// numbers are read to the last bit, which its parser does only if told. A point is a list of four
// numbers, octets are base64.
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "benchmarks/peers/base64.h"
#include "benchmarks/peers/peer_cells.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

using ::rapidjson::SizeType;

using Json = ::rapidjson::Value;
using Writer = ::rapidjson::Writer<::rapidjson::StringBuffer>;

SizeType Size(size_t size) { return static_cast<SizeType>(size); }

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
void Write(const T& value, Writer* writer) {
  if constexpr (std::is_floating_point_v<T>) {
    writer->Double(value);
  } else if constexpr (std::is_integral_v<T>) {
    writer->Int64(value);
  } else if constexpr (std::is_same_v<T, std::string>) {
    writer->String(value.data(), Size(value.size()));
  } else if constexpr (std::is_same_v<T, Octets>) {
    Write(ToBase64(value.data), writer);
  } else if constexpr (kIsList<T>) {
    writer->StartArray();
    for (const auto& element : value) Write(element, writer);
    writer->EndArray();
  } else if constexpr (std::is_same_v<T, SamplePoint>) {
    writer->StartArray();
    for (const float number : {value.img_x, value.img_y, value.tgt_x, value.tgt_y}) {
      writer->Double(number);
    }
    writer->EndArray();
  } else {
    writer->StartObject();
    T::Fields(value, [writer](const char* name, const auto& member) {
      if (IsEmpty(member)) return;
      writer->Key(name);
      Write(member, writer);
    });
    writer->EndObject();
  }
}

// --- Reading: what has another type than expected ends the program ---

template <class T>
void Read(const Json& json, T* value) {
  if constexpr (std::is_floating_point_v<T>) {
    Require(json.IsNumber());
    *value = static_cast<T>(json.GetDouble());
  } else if constexpr (std::is_integral_v<T>) {
    Require(json.IsInt64());
    *value = static_cast<T>(json.GetInt64());
  } else if constexpr (std::is_same_v<T, std::string>) {
    Require(json.IsString());
    value->assign(json.GetString(), json.GetStringLength());
  } else if constexpr (std::is_same_v<T, Octets>) {
    Require(json.IsString());
    value->data = FromBase64({json.GetString(), json.GetStringLength()});
  } else if constexpr (kIsList<T>) {
    Require(json.IsArray());
    value->resize(json.Size());
    for (SizeType i = 0; i < json.Size(); ++i) Read(json[i], &(*value)[i]);
  } else if constexpr (std::is_same_v<T, SamplePoint>) {
    Require(json.IsArray() && json.Size() == 4);
    Read(json[0], &value->img_x);
    Read(json[1], &value->img_y);
    Read(json[2], &value->tgt_x);
    Read(json[3], &value->tgt_y);
  } else {
    Require(json.IsObject());
    T::Fields(*value, [&json](const char* name, auto& member) {
      const auto found = json.FindMember(name);
      if (found != json.MemberEnd()) Read(found->value, &member);
    });
  }
}

const Json& Member(const Json& object, const char* name) {
  const auto found = object.FindMember(name);
  Require(found != object.MemberEnd());
  return found->value;
}

double OneOf(const Json& root, const Robot*) {
  return Member(Member(Member(root, "camera")[3], "intrinsics"), "fx").GetDouble();
}
double OneOf(const Json& root, const Base*) {
  return Member(Member(Member(root, "gyroscope_cal"), "metadata"), "temperature").GetDouble();
}
double OneOf(const Json& root, const PtzSystem*) {
  const Json& intrinsics = Member(Member(root, "ptz_camera"), "intrinsics");
  return Member(Member(intrinsics, "samples")[32], "fxy").GetDouble();
}
double OneOf(const Json& root, const Image*) { return Member(root, "height").GetDouble(); }

template <class R>
class RapidJsonStore {
 public:
  void Write(const R& values) {
    written_.Clear();
    Writer writer(written_);
    benchmarks::Write(values, &writer);
  }
  std::string_view Written() const { return {written_.GetString(), written_.GetSize()}; }

  void Load(std::string_view bytes) {
    Parse(bytes);
    values_ = R();
    benchmarks::Read(document_, &values_);
    document_.SetNull();
    document_.GetAllocator().Clear();
  }

  template <class Sink>
  void Read(std::string_view bytes, Sink* sink) {
    Load(bytes);
    Visit(values_, sink);
  }

  double ReadOne(std::string_view bytes) {
    Parse(bytes);
    return OneOf(document_, static_cast<const R*>(nullptr));
  }

 private:
  void Parse(std::string_view bytes) {
    document_.SetNull();
    document_.GetAllocator().Clear();
    document_.Parse<::rapidjson::kParseFullPrecisionFlag>(bytes.data(), bytes.size());
    Require(!document_.HasParseError());
  }

  ::rapidjson::StringBuffer written_;
  ::rapidjson::Document document_;
  R values_;
};

struct RapidJson {
  template <class R>
  using Store = RapidJsonStore<R>;
};

}  // namespace

void AddRapidJson(PeerCatalogue* catalogue) { AddPeer<RapidJson>("rapidjson", catalogue); }

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo
