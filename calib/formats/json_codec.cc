// The run-time's converter is not what users want: it refuses records whose required fields are
// missing, takes the last of two values for one key without a word, and names no line. The type
// resolver below tells it that nothing is required, keys that are there twice are looked for, and
// where it gave up is found out from how far it had read.
#include "calib/formats/json_codec.h"

#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/type.pb.h>
#include <google/protobuf/util/json_util.h>
#include <google/protobuf/util/type_resolver.h>
#include <google/protobuf/util/type_resolver_util.h>

#include <algorithm>
#include <memory>

#include "calib/console/failure.h"
#include "calib/formats/binary_codec.h"
#include "calib/formats/json_place.h"

namespace calib {

using google::protobuf::DescriptorPool;
using google::protobuf::Message;
using google::protobuf::io::ArrayInputStream;
using google::protobuf::util::Status;
using google::protobuf::util::TypeResolver;

namespace {

constexpr char kUrlPrefix[] = "type.googleapis.com";

std::string UrlOf(const Message& record) {
  return std::string(kUrlPrefix) + "/" + record.GetDescriptor()->full_name();
}

class NothingRequired : public TypeResolver {
 public:
  NothingRequired()
      : resolver_(google::protobuf::util::NewTypeResolverForDescriptorPool(
            kUrlPrefix, DescriptorPool::generated_pool())) {}

  Status ResolveMessageType(const std::string& url, google::protobuf::Type* type) override {
    const Status status = resolver_->ResolveMessageType(url, type);
    for (google::protobuf::Field& field : *type->mutable_fields()) {
      if (field.cardinality() == google::protobuf::Field::CARDINALITY_REQUIRED) {
        field.set_cardinality(google::protobuf::Field::CARDINALITY_OPTIONAL);
      }
    }
    return status;
  }
  Status ResolveEnumType(const std::string& url, google::protobuf::Enum* type) override {
    return resolver_->ResolveEnumType(url, type);
  }

 private:
  std::unique_ptr<TypeResolver> resolver_;
};

// Hands out the bytes before `low` at once, those from there to `high` in pieces, and the rest at
// once: the converter stops asking at the first piece that it cannot make sense of.
class PiecewiseStream : public google::protobuf::io::ZeroCopyInputStream {
 public:
  PiecewiseStream(std::string_view bytes, size_t low, size_t high, size_t piece)
      : bytes_(bytes), low_(low), high_(high), piece_(piece) {}

  bool Next(const void** data, int* size) override {
    if (position_ == bytes_.size()) return false;
    const size_t end = position_ < low_    ? low_
                       : position_ < high_ ? std::min(position_ + piece_, high_)
                                           : bytes_.size();
    *data = &bytes_[position_];
    *size = static_cast<int>(end - position_);
    position_ = end;
    return true;
  }
  void BackUp(int count) override { position_ -= static_cast<size_t>(count); }
  bool Skip(int) override { return false; }
  google::protobuf::int64 ByteCount() const override {
    return static_cast<google::protobuf::int64>(position_);
  }

 private:
  const std::string_view bytes_;
  const size_t low_, high_, piece_;
  size_t position_ = 0;
};

Status ToBinary(const Message& record, google::protobuf::io::ZeroCopyInputStream* json,
                std::string* binary) {
  NothingRequired resolver;
  google::protobuf::io::StringOutputStream output(binary);
  return google::protobuf::util::JsonToBinaryStream(&resolver, UrlOf(record), json, &output);
}

Status ToBinary(const Message& record, std::string_view json, std::string* binary) {
  ArrayInputStream input(json.data(), static_cast<int>(json.size()));
  return ToBinary(record, &input, binary);
}

// How many bytes the converter takes before it gives up.
size_t SyntaxErrorOffset(const Message& record, std::string_view json) {
  return FindStop(json.size(), [&](size_t low, size_t high, size_t piece) {
    PiecewiseStream pieces(json, low, high, piece);
    std::string ignored;
    (void)ToBinary(record, &pieces, &ignored);
    return static_cast<size_t>(pieces.ByteCount());
  });
}

[[noreturn]] void Refuse(const std::string& name, const Message& record, std::string_view json,
                         std::string message) {
  message.erase(0, message.find(':') + 1);  // the status code's name
  const char* remedy = "Correct the JSON there, or say what else it is with --type or --format.";
  // A syntax error quotes the text around it on lines of its own, an error of meaning begins with
  // the field path.
  const size_t line_end = message.find('\n');
  if (line_end != std::string::npos) {
    const size_t read = SyntaxErrorOffset(record, json);
    const bool cut = message.compare(0, 14, "Unexpected end") == 0;
    throw Failure(name + ":" + LineAndColumn(json, cut || read == 0 ? read : read - 1) + ": " +
                      message.substr(0, line_end),
                  remedy);
  }
  throw Failure(name + DescribeJsonError(json, record.GetDescriptor(), message), remedy);
}

void DecodeUnmarked(const std::string& name, std::string_view bytes, Message* record) {
  std::string binary;
  const Status status = ToBinary(*record, bytes, &binary);
  if (!status.ok()) Refuse(name, *record, bytes, status.ToString());
  const std::string twice = DescribeKeyThatIsTwice(bytes);
  if (!twice.empty()) throw Failure(name + twice, "Take one of them out.");
  DecodeBinary(name, binary, record);
}

// Some editors begin a file with this mark, though JSON has none. Columns are counted without it,
// as editors do.
constexpr char kByteOrderMark[] = "\xef\xbb\xbf";

bool HasByteOrderMark(std::string_view bytes) {
  return bytes.compare(0, sizeof kByteOrderMark - 1, kByteOrderMark) == 0;
}

std::string_view Unmarked(std::string_view bytes) {
  return bytes.substr(sizeof kByteOrderMark - 1);
}

}  // namespace

void DecodeJson(const std::string& name, std::string_view bytes, Message* record) {
  HasByteOrderMark(bytes) ? DecodeUnmarked(name, Unmarked(bytes), record)
                          : DecodeUnmarked(name, bytes, record);
}

bool FitsJson(std::string_view bytes, Message* record) {
  std::string binary;
  const Status status = HasByteOrderMark(bytes) ? ToBinary(*record, Unmarked(bytes), &binary)
                                                : ToBinary(*record, bytes, &binary);
  if (!status.ok() || !DescribeKeyThatIsTwice(bytes).empty()) return false;
  DecodeBinary("", binary, record);
  return true;
}

}  // namespace calib
