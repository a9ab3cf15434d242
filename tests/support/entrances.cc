// The rows are written once, over the class on which the call is made: a record class or Message.
#include "tests/support/entrances.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>

#include "tests/support/fenced_bytes.h"
#include "tests/support/records.h"
#include "tests/support/sizes.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

using ::google::protobuf::Message;
using ::google::protobuf::io::ArrayInputStream;
using ::google::protobuf::io::ArrayOutputStream;
using ::google::protobuf::io::CodedInputStream;
using ::google::protobuf::io::CodedOutputStream;
using ::google::protobuf::io::StringOutputStream;

int Size(const std::string& bytes) { return static_cast<int>(bytes.size()); }

// A file that is gone when closed.
class TemporaryFile {
 public:
  TemporaryFile() : file_(std::tmpfile()) { Require(file_ != nullptr, "made"); }
  ~TemporaryFile() { std::fclose(file_); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  int descriptor() const { return fileno(file_); }

  void Fill(const std::string& bytes) {
    Require(write(descriptor(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
            "written");
    Rewind();
  }

  std::string Contents() {
    Rewind();
    std::string bytes;
    char block[4096];
    ssize_t count;
    while ((count = read(descriptor(), block, sizeof block)) > 0) bytes.append(block, count);
    Require(count == 0, "read");
    return bytes;
  }

 private:
  void Rewind() { Require(lseek(descriptor(), 0, SEEK_SET) == 0, "rewound"); }

  static void Require(bool ok, const char* what) {
    if (ok) return;
    std::cerr << "entrances: a temporary file could not be " << what << "\n";
    std::abort();
  }

  std::FILE* file_;
};

template <class M>
M* As(Message* record) {
  return static_cast<M*>(record);
}
template <class M>
const M& As(const Message& record) {
  return static_cast<const M&>(record);
}

// "ParseFromArray" is "ParsePartialFromArray" in its partial form. A block size of 0: no blocks.
std::string RowName(const char* call, bool partial, int block_size) {
  std::string name = call;
  if (partial) name.insert(name.find_first_of("FTA", 1), "Partial");
  if (block_size != 0) name += ", blocks of " + std::to_string(block_size);
  return name;
}

void Add(std::vector<Entrance>* table, bool partial, const char* call, int block_size,
         Source source, bool merges, bool (*parse)(Message*, const std::string&)) {
  table->push_back({RowName(call, partial, block_size), source, partial, merges, parse});
}

void Add(std::vector<Exit>* table, bool partial, const char* call, int block_size,
         bool (*write)(const Message&, std::string*)) {
  table->push_back({RowName(call, partial, block_size), partial, write});
}

// The call of a row, in its plain and its partial form, chosen by the surrounding kPartial.
#define CALL(record, Plain, Partial, ...) \
  [&](auto&& target) -> bool {            \
    if constexpr (kPartial)               \
      return target.Partial(__VA_ARGS__); \
    else                                  \
      return target.Plain(__VA_ARGS__);   \
  }(record)

// The bytes come in blocks of kBlock, as from a slow connection.
template <class M, bool kPartial, int kBlock>
void AddBlockEntrances(std::vector<Entrance>* table) {
  Add(table, kPartial, "ParseFromZeroCopyStream", kBlock, Source::kStream, false,
      [](Message* record, const std::string& bytes) {
        ArrayInputStream stream(bytes.data(), Size(bytes), kBlock);
        return CALL(*As<M>(record), ParseFromZeroCopyStream, ParsePartialFromZeroCopyStream,
                    &stream);
      });
  Add(table, kPartial, "ParseFromBoundedZeroCopyStream, more behind", kBlock, Source::kStream,
      false, [](Message* record, const std::string& bytes) {
        // What lies behind the bound would be refused by any reader.
        const std::string all = bytes + std::string(20, '\x07');
        ArrayInputStream stream(all.data(), Size(all), kBlock);
        return CALL(*As<M>(record), ParseFromBoundedZeroCopyStream,
                    ParsePartialFromBoundedZeroCopyStream, &stream, Size(bytes));
      });
  Add(table, kPartial, "ParseFromCodedStream", kBlock, Source::kStream, false,
      [](Message* record, const std::string& bytes) {
        ArrayInputStream stream(bytes.data(), Size(bytes), kBlock);
        CodedInputStream input(&stream);
        return CALL(*As<M>(record), ParseFromCodedStream, ParsePartialFromCodedStream, &input) &&
               input.ConsumedEntireMessage();
      });
  Add(table, kPartial, "MergeFromCodedStream", kBlock, Source::kStream, true,
      [](Message* record, const std::string& bytes) {
        ArrayInputStream stream(bytes.data(), Size(bytes), kBlock);
        CodedInputStream input(&stream);
        return CALL(*As<M>(record), MergeFromCodedStream, MergePartialFromCodedStream, &input) &&
               input.ConsumedEntireMessage();
      });
}

template <class M, bool kPartial>
void AddEntrances(std::vector<Entrance>* table) {
  Add(table, kPartial, "ParseFromArray", 0, Source::kMemory, false,
      [](Message* record, const std::string& bytes) {
        const FencedBytes fenced(bytes);
        return CALL(*As<M>(record), ParseFromArray, ParsePartialFromArray, fenced.data(),
                    Size(bytes));
      });
  Add(table, kPartial, "ParseFromString", 0, Source::kMemory, false,
      [](Message* record, const std::string& bytes) {
        return CALL(*As<M>(record), ParseFromString, ParsePartialFromString, bytes);
      });
  Add(table, kPartial, "ParseFromIstream", 0, Source::kStream, false,
      [](Message* record, const std::string& bytes) {
        std::istringstream stream(bytes);
        return CALL(*As<M>(record), ParseFromIstream, ParsePartialFromIstream, &stream);
      });
  Add(table, kPartial, "ParseFromFileDescriptor", 0, Source::kStream, false,
      [](Message* record, const std::string& bytes) {
        TemporaryFile file;
        file.Fill(bytes);
        return CALL(*As<M>(record), ParseFromFileDescriptor, ParsePartialFromFileDescriptor,
                    file.descriptor());
      });
  Add(table, kPartial, "ParseFromCodedStream, flat", 0, Source::kStream, false,
      [](Message* record, const std::string& bytes) {
        const FencedBytes fenced(bytes);
        CodedInputStream input(fenced.data(), Size(bytes));
        return CALL(*As<M>(record), ParseFromCodedStream, ParsePartialFromCodedStream, &input) &&
               input.ConsumedEntireMessage();
      });
  Add(table, kPartial, "MergeFromCodedStream, flat", 0, Source::kStream, true,
      [](Message* record, const std::string& bytes) {
        const FencedBytes fenced(bytes);
        CodedInputStream input(fenced.data(), Size(bytes));
        return CALL(*As<M>(record), MergeFromCodedStream, MergePartialFromCodedStream, &input) &&
               input.ConsumedEntireMessage();
      });
  AddBlockEntrances<M, kPartial, 1>(table);
  AddBlockEntrances<M, kPartial, 2>(table);
  AddBlockEntrances<M, kPartial, 3>(table);
  AddBlockEntrances<M, kPartial, 7>(table);
  AddBlockEntrances<M, kPartial, 4096>(table);
}

template <class M, bool kPartial, int kBlock>
void AddBlockExits(std::vector<Exit>* table) {
  Add(table, kPartial, "SerializeToZeroCopyStream", kBlock,
      [](const Message& record, std::string* bytes) {
        bytes->assign(SizeOf(As<M>(record)) + 64, '\0');
        ArrayOutputStream stream(&(*bytes)[0], Size(*bytes), kBlock);
        const bool ok = CALL(As<M>(record), SerializeToZeroCopyStream,
                             SerializePartialToZeroCopyStream, &stream);
        bytes->resize(stream.ByteCount());
        return ok;
      });
  Add(table, kPartial, "SerializeToCodedStream", kBlock,
      [](const Message& record, std::string* bytes) {
        bytes->assign(SizeOf(As<M>(record)) + 64, '\0');
        ArrayOutputStream stream(&(*bytes)[0], Size(*bytes), kBlock);
        bool ok;
        {
          CodedOutputStream output(&stream);
          ok =
              CALL(As<M>(record), SerializeToCodedStream, SerializePartialToCodedStream, &output) &&
              !output.HadError();
        }
        bytes->resize(stream.ByteCount());
        return ok;
      });
}

template <class M, bool kPartial>
void AddExits(std::vector<Exit>* table) {
  Add(table, kPartial, "SerializeToArray", 0, [](const Message& record, std::string* bytes) {
    bytes->assign(SizeOf(As<M>(record)), '\0');
    return CALL(As<M>(record), SerializeToArray, SerializePartialToArray, &(*bytes)[0],
                Size(*bytes));
  });
  Add(table, kPartial, "SerializeToString", 0, [](const Message& record, std::string* bytes) {
    *bytes = "to be replaced";
    return CALL(As<M>(record), SerializeToString, SerializePartialToString, bytes);
  });
  Add(table, kPartial, "SerializeToOstream", 0, [](const Message& record, std::string* bytes) {
    std::ostringstream stream;
    const bool ok = CALL(As<M>(record), SerializeToOstream, SerializePartialToOstream, &stream);
    *bytes = stream.str();
    return ok;
  });
  Add(table, kPartial, "SerializeToFileDescriptor", 0,
      [](const Message& record, std::string* bytes) {
        TemporaryFile file;
        const bool ok = CALL(As<M>(record), SerializeToFileDescriptor,
                             SerializePartialToFileDescriptor, file.descriptor());
        *bytes = file.Contents();
        return ok;
      });
  Add(table, kPartial, "AppendToString", 0, [](const Message& record, std::string* bytes) {
    const std::string before = "kept";
    std::string all = before;
    const bool ok = CALL(As<M>(record), AppendToString, AppendPartialToString, &all);
    if (all.compare(0, before.size(), before) != 0) return false;
    *bytes = all.substr(before.size());
    return ok;
  });
  Add(table, kPartial, "SerializeAsString", 0, [](const Message& record, std::string* bytes) {
    if constexpr (kPartial) {
      *bytes = As<M>(record).SerializePartialAsString();
    } else {
      *bytes = As<M>(record).SerializeAsString();
    }
    return true;
  });
  AddBlockExits<M, kPartial, 1>(table);
  AddBlockExits<M, kPartial, 3>(table);
  AddBlockExits<M, kPartial, 4096>(table);
}

// The two writers themselves, after the size they build on.
template <class M>
void AddWriters(std::vector<Exit>* table) {
  table->push_back(
      {"SerializeWithCachedSizes", true, [](const Message& record, std::string* bytes) {
         bytes->clear();
         const int size = SizeOf(As<M>(record));
         bool ok;
         {
           StringOutputStream stream(bytes);
           CodedOutputStream output(&stream);
           As<M>(record).SerializeWithCachedSizes(&output);
           ok = !output.HadError();
         }
         return ok && Size(*bytes) == size && record.GetCachedSize() == size;
       }});
  table->push_back(
      {"SerializeWithCachedSizesToArray", true, [](const Message& record, std::string* bytes) {
         // A byte of room, so that an empty record has a target too.
         const int size = SizeOf(As<M>(record));
         bytes->assign(size + 1, '\x5A');
         uint8_t* begin = reinterpret_cast<uint8_t*>(&(*bytes)[0]);
         uint8_t* end = As<M>(record).SerializeWithCachedSizesToArray(begin);
         const bool ok = end == begin + size && bytes->back() == '\x5A';
         bytes->resize(size);
         return ok;
       }});
}

#undef CALL

template <class M>
std::vector<Entrance> EntrancesOf() {
  std::vector<Entrance> table;
  AddEntrances<M, false>(&table);
  AddEntrances<M, true>(&table);
  return table;
}

template <class M>
std::vector<Exit> ExitsOf() {
  std::vector<Exit> table;
  AddExits<M, false>(&table);
  AddExits<M, true>(&table);
  AddWriters<M>(&table);
  return table;
}

}  // namespace

template <class T>
std::vector<Entrance> ConcreteEntrances() {
  return EntrancesOf<T>();
}

template <class T>
std::vector<Exit> ConcreteExits() {
  return ExitsOf<T>();
}

std::vector<Entrance> GenericEntrances() { return EntrancesOf<Message>(); }
std::vector<Exit> GenericExits() { return ExitsOf<Message>(); }

#define MESSAGE(Class)                                       \
  template std::vector<Entrance> ConcreteEntrances<Class>(); \
  template std::vector<Exit> ConcreteExits<Class>();
#include "tests/support/schema.def"

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
