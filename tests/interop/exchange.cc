// The C++ side of the exchange with another language (interop_test.sh tells how it goes).
//
//   exchange write FOLDER COUNT SEED    writes random records of all types
//   exchange check FOLDER               reads the records there
//   exchange judge FOLDER               tells of each file there whether it is a record
//
// A record is two files: NUMBER.TYPE.binpb, its encoding, and NUMBER.TYPE.facts, its values as
// text, one sorted line for each: path=value. Integers and bool are decimal, floating-point values
// the hexadecimal digits of their bits, or nan; strings and bytes hexadecimal. An empty sub-message
// is a line, too. So each side can tell what the other meant.

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/support/random_record.h"
#include "tests/support/records.h"

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using namespace zarvo::calibration::testing;

std::string Hex(const void* data, size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  std::string text;
  for (size_t i = 0; i < size; ++i) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", bytes[i]);
    text += digits;
  }
  return text;
}

template <class T, class Bits>
std::string FloatText(T value, Bits bits) {
  if (std::isnan(value)) return "nan";
  std::memcpy(&bits, &value, sizeof bits);
  char digits[17];
  std::snprintf(digits, sizeof digits, "%0*" PRIx64, static_cast<int>(2 * sizeof bits),
                static_cast<uint64_t>(bits));
  return digits;
}

void AddFacts(const Message& m, const std::string& path, std::set<std::string>* facts);

void AddFact(const Message& m, const FieldDescriptor* f, int index, const std::string& path,
             std::set<std::string>* facts) {
  const Reflection* r = m.GetReflection();
  const bool repeated = f->is_repeated();
  std::string value;
  switch (f->cpp_type()) {
    case FieldDescriptor::CPPTYPE_DOUBLE:
      value =
          FloatText(repeated ? r->GetRepeatedDouble(m, f, index) : r->GetDouble(m, f), uint64_t());
      break;
    case FieldDescriptor::CPPTYPE_FLOAT:
      value =
          FloatText(repeated ? r->GetRepeatedFloat(m, f, index) : r->GetFloat(m, f), uint32_t());
      break;
    case FieldDescriptor::CPPTYPE_INT32:
      value = std::to_string(repeated ? r->GetRepeatedInt32(m, f, index) : r->GetInt32(m, f));
      break;
    case FieldDescriptor::CPPTYPE_INT64:
      value = std::to_string(repeated ? r->GetRepeatedInt64(m, f, index) : r->GetInt64(m, f));
      break;
    case FieldDescriptor::CPPTYPE_BOOL:
      value = std::to_string(repeated ? r->GetRepeatedBool(m, f, index) : r->GetBool(m, f));
      break;
    case FieldDescriptor::CPPTYPE_STRING: {
      const std::string text = repeated ? r->GetRepeatedString(m, f, index) : r->GetString(m, f);
      value = Hex(text.data(), text.size());
      break;
    }
    case FieldDescriptor::CPPTYPE_MESSAGE:
      facts->insert(path + "=message");
      AddFacts(repeated ? r->GetRepeatedMessage(m, f, index) : r->GetMessage(m, f), path + ".",
               facts);
      return;
    default:
      std::cerr << f->full_name() << ": a field of type " << f->cpp_type_name()
                << " is not served here\n";
      std::exit(1);
  }
  facts->insert(path + "=" + value);
}

void AddFacts(const Message& m, const std::string& path, std::set<std::string>* facts) {
  std::vector<const FieldDescriptor*> fields;
  m.GetReflection()->ListFields(m, &fields);
  for (const FieldDescriptor* f : fields) {
    if (!f->is_repeated()) {
      AddFact(m, f, 0, path + f->name(), facts);
      continue;
    }
    for (int i = 0; i < m.GetReflection()->FieldSize(m, f); ++i) {
      AddFact(m, f, i, path + f->name() + "[" + std::to_string(i) + "]", facts);
    }
  }
}

std::string Facts(const Message& m) {
  std::set<std::string> facts;
  AddFacts(m, "", &facts);
  std::string text;
  for (const std::string& fact : facts) text += fact + "\n";
  return text;
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

int Write(const std::filesystem::path& folder, int count, uint32_t seed) {
  std::mt19937 random(seed);
  const std::vector<RecordType>& types = RecordTypes();
  for (int i = 0; i < count; ++i) {
    const RecordType& type = types[static_cast<size_t>(i) % types.size()];
    RandomOptions options;
    options.percent_set = i % 2 == 0 ? kSparse : kDense;
    options.only_text = true;  // other languages hold a string to be text
    std::unique_ptr<Message> record = type.make();
    FillRandomly(&random, options, record.get());
    const std::string stem = std::to_string(i) + "." + type.name;
    std::ofstream(folder / (stem + ".binpb"), std::ios::binary) << record->SerializeAsString();
    std::ofstream(folder / (stem + ".facts"), std::ios::binary) << Facts(*record);
  }
  return 0;
}

int Check(const std::filesystem::path& folder) {
  int count = 0, failures = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::filesystem::path path = entry.path();
    if (path.extension() != ".binpb") continue;
    ++count;
    const std::string stem = path.stem().string();  // NUMBER.TYPE
    std::unique_ptr<Message> record = NewRecord(stem.substr(stem.find('.') + 1));
    const std::string bytes = ReadFile(path);
    const char* wrong = nullptr;
    if (!record->ParseFromString(bytes)) {
      wrong = "does not parse";
    } else if (Facts(*record) != ReadFile(path.replace_extension(".facts"))) {
      wrong = "parses to other values than its .facts";
    } else if (record->SerializeAsString() != bytes) {
      wrong = "is written back as other bytes";
    }
    if (wrong != nullptr) {
      std::cerr << entry.path().string() << " " << wrong << "\n";
      ++failures;
    }
  }
  std::cout << count - failures << " of " << count << " records agree\n";
  return failures == 0 ? 0 : 1;
}

int Judge(const std::filesystem::path& folder) {
  std::set<std::string> verdicts;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::filesystem::path& path = entry.path();
    const std::string stem = path.stem().string();  // NUMBER.TYPE
    const bool accepted =
        NewRecord(stem.substr(stem.find('.') + 1))->ParseFromString(ReadFile(path));
    verdicts.insert(path.filename().string() + (accepted ? " accepted" : " refused"));
  }
  for (const std::string& verdict : verdicts) std::cout << verdict << "\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string command = argc > 1 ? argv[1] : "";
  if (command == "write" && argc == 5) {
    return Write(argv[2], std::atoi(argv[3]), static_cast<uint32_t>(std::atoi(argv[4])));
  }
  if (command == "check" && argc == 3) return Check(argv[2]);
  if (command == "judge" && argc == 3) return Judge(argv[2]);
  std::cerr << "usage: exchange write FOLDER COUNT SEED | exchange check FOLDER | exchange judge "
               "FOLDER\n";
  return 2;
}
