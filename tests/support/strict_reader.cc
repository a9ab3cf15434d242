// Reading builds a tree of values, one node a message; writing the tree out is Rewrite(). Where
// only the verdict is asked for, there are no nodes: every Node and WireWriter below may be null.
#include "tests/support/strict_reader.h"

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <map>
#include <vector>

#include "tests/support/schema_table.h"
#include "tests/support/wire_writer.h"

namespace zarvo {
namespace calibration {
namespace testing {
namespace {

// The values of one message, by field number. A singular field has at most one.
struct Node {
  std::map<int, std::vector<uint64_t>> numbers;  // as they are written: bits, or a varint's value
  std::map<int, std::vector<std::string>> texts;
  std::map<int, std::vector<Node>> messages;
  WireWriter unknown;
};

class Reader {
 public:
  explicit Reader(const std::string& bytes) : bytes_(bytes) {}

  Verdict Read(const MessageRow& message, int depth_limit, Node* node) {
    if (!IsRecord(message, depth_limit, node)) return {false, position_, reason_ + detail_};
    return {true, 0, ""};
  }

  bool IsRecord(const MessageRow& message, int depth_limit, Node* node) {
    return ReadMessage(message, bytes_.size(), depth_limit, node);
  }

 private:
  bool Fail(const char* reason, const std::string& detail = std::string()) {
    reason_ = reason;
    detail_ = detail;
    return false;
  }

  bool ReadVarint(size_t end, uint64_t* value) {
    *value = 0;
    for (int i = 0; i < 10; ++i) {
      if (position_ == end) return Fail("a varint is cut off");
      const uint64_t byte = static_cast<unsigned char>(bytes_[position_++]);
      *value |= (byte & 0x7F) << (7 * i);
      if (byte < 0x80) return true;
    }
    return Fail("a varint is longer than ten bytes");
  }

  bool ReadTag(size_t end, int* number, uint32_t* wire_type) {
    uint64_t value;
    if (!ReadVarint(end, &value)) return false;
    const uint32_t tag = static_cast<uint32_t>(value);
    *number = static_cast<int>(tag >> 3);
    *wire_type = tag & 7;
    if (*number == 0) return Fail("a field number is zero");
    if (*wire_type > kFixed32) return Fail("wire type ", std::to_string(*wire_type));
    return true;
  }

  bool ReadLittleEndian(size_t end, size_t size, uint64_t* value) {
    if (end - position_ < size) return Fail("a fixed-width value is cut off");
    *value = 0;
    for (size_t i = 0; i < size; ++i) {
      *value |= static_cast<uint64_t>(static_cast<unsigned char>(bytes_[position_++])) << (8 * i);
    }
    return true;
  }

  // Finds where the length-delimited value at the current position ends.
  bool ReadLength(size_t end, size_t* value_end) {
    uint64_t length;
    if (!ReadVarint(end, &length)) return false;
    if (length > end - position_) return Fail("a length runs past its enclosing message");
    *value_end = position_ + static_cast<size_t>(length);
    return true;
  }

  bool ReadText(size_t end, std::string* text) {
    size_t text_end;
    if (!ReadLength(end, &text_end)) return false;
    if (text != nullptr) text->assign(bytes_, position_, text_end - position_);
    position_ = text_end;
    return true;
  }

  bool ReadMessage(const MessageRow& message, size_t end, int depth_left, Node* node) {
    while (position_ < end) {
      int number;
      uint32_t wire_type;
      if (!ReadTag(end, &number, &wire_type)) return false;
      if (wire_type == kEndGroup) return Fail("an end-group tag closes no group");
      const FieldRow* field = FindField(message, number);
      bool read;
      if (field != nullptr && wire_type == WireTypeOf(field->kind)) {
        read = ReadKnown(*field, end, depth_left, node);
      } else if (field != nullptr && wire_type == kLengthDelimited && field->repeated()) {
        read = ReadPacked(*field, end, node);  // a repeated message was caught above
      } else {
        read = ReadUnknown(number, wire_type, end, depth_left,
                           node == nullptr ? nullptr : &node->unknown);
      }
      if (!read) return false;
    }
    return true;
  }

  bool ReadKnown(const FieldRow& field, size_t end, int depth_left, Node* node) {
    switch (field.kind) {
      case Kind::kMessage: {
        size_t message_end;
        if (!ReadLength(end, &message_end)) return false;
        if (depth_left == 0) return Fail("nested too deeply");
        Node* child = nullptr;
        if (node != nullptr) {
          std::vector<Node>& nodes = node->messages[field.number];
          if (field.repeated() || nodes.empty()) nodes.emplace_back();
          child = &nodes.back();
        }
        return ReadMessage(FindMessage(field.message_type), message_end, depth_left - 1, child);
      }
      case Kind::kString:
      case Kind::kBytes: {
        if (node == nullptr) return ReadText(end, nullptr);
        std::string text;
        if (!ReadText(end, &text)) return false;
        node->texts[field.number] = {text};
        return true;
      }
      default: {
        uint64_t value;
        if (!ReadNumber(field.kind, end, &value)) return false;
        if (node == nullptr) return true;
        std::vector<uint64_t>& numbers = node->numbers[field.number];
        if (!field.repeated()) numbers.clear();
        numbers.push_back(value);
        return true;
      }
    }
  }

  bool ReadNumber(Kind kind, size_t end, uint64_t* value) {
    if (kind == Kind::kDouble) return ReadLittleEndian(end, 8, value);
    if (kind == Kind::kFloat) return ReadLittleEndian(end, 4, value);
    if (!ReadVarint(end, value)) return false;
    if (kind == Kind::kInt32) {
      *value = static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(*value)));
    } else if (kind == Kind::kBool) {
      *value = *value != 0;
    }
    return true;
  }

  bool ReadPacked(const FieldRow& field, size_t end, Node* node) {
    size_t run_end;
    if (!ReadLength(end, &run_end)) return false;
    while (position_ < run_end) {
      uint64_t value;
      if (!ReadNumber(field.kind, run_end, &value)) return false;
      if (node != nullptr) node->numbers[field.number].push_back(value);
    }
    return true;
  }

  bool ReadUnknown(int number, uint32_t wire_type, size_t end, int depth_left, WireWriter* out) {
    if (out != nullptr) out->Tag(number, static_cast<WireType>(wire_type));
    uint64_t value;
    std::string text;
    switch (wire_type) {
      case kVarint:
        if (!ReadVarint(end, &value)) return false;
        if (out != nullptr) out->Varint(value);
        return true;
      case kFixed64:
        if (!ReadLittleEndian(end, 8, &value)) return false;
        if (out != nullptr) out->Fixed64(value);
        return true;
      case kFixed32:
        if (!ReadLittleEndian(end, 4, &value)) return false;
        if (out != nullptr) out->Fixed32(static_cast<uint32_t>(value));
        return true;
      case kLengthDelimited:
        if (!ReadText(end, out == nullptr ? nullptr : &text)) return false;
        if (out != nullptr) out->LengthDelimited(text);
        return true;
      default:
        return ReadGroup(number, end, depth_left, out);
    }
  }

  // Everything from behind the start tag to the end tag of the same number.
  bool ReadGroup(int group_number, size_t end, int depth_left, WireWriter* out) {
    if (depth_left == 0) return Fail("nested too deeply");
    while (position_ < end) {
      int number;
      uint32_t wire_type;
      if (!ReadTag(end, &number, &wire_type)) return false;
      if (wire_type == kEndGroup) {
        if (number != group_number) {
          return Fail("a group is closed as another: ",
                      std::to_string(group_number) + " as " + std::to_string(number));
        }
        if (out != nullptr) out->Tag(number, kEndGroup);
        return true;
      }
      if (!ReadUnknown(number, wire_type, end, depth_left - 1, out)) return false;
    }
    return Fail("a group is not closed: ", std::to_string(group_number));
  }

  const std::string& bytes_;
  size_t position_ = 0;
  const char* reason_ = "";
  std::string detail_;
};

void WriteNode(const MessageRow& message, const Node& node, WireWriter* out) {
  for (const FieldRow* field : WireOrder(message)) {
    const int number = field->number;
    const WireType wire_type = WireTypeOf(field->kind);
    if (node.numbers.count(number) != 0) {
      for (const uint64_t value : node.numbers.at(number)) {
        out->Tag(number, wire_type);
        if (wire_type == kFixed64) {
          out->Fixed64(value);
        } else if (wire_type == kFixed32) {
          out->Fixed32(static_cast<uint32_t>(value));
        } else {
          out->Varint(value);
        }
      }
    }
    if (node.texts.count(number) != 0) {
      for (const std::string& text : node.texts.at(number)) {
        out->Tag(number, wire_type).LengthDelimited(text);
      }
    }
    if (node.messages.count(number) != 0) {
      for (const Node& child : node.messages.at(number)) {
        WireWriter contents;
        WriteNode(FindMessage(field->message_type), child, &contents);
        out->Tag(number, wire_type).LengthDelimited(contents.bytes());
      }
    }
  }
  out->Raw(node.unknown.bytes());
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Verdict& verdict) {
  if (verdict.accepted) return out << "accepted";
  return out << "refused at offset " << verdict.offset << ": " << verdict.reason;
}

bool IsRecord(const MessageRow& message, const std::string& bytes, int depth_limit) {
  return Reader(bytes).IsRecord(message, depth_limit, nullptr);
}

Verdict Judge(const std::string& message, const std::string& bytes, int depth_limit) {
  return Reader(bytes).Read(FindMessage(message), depth_limit, nullptr);
}

std::string Rewrite(const std::string& message, const std::string& bytes, int depth_limit) {
  Node node;
  const Verdict verdict = Reader(bytes).Read(FindMessage(message), depth_limit, &node);
  if (!verdict.accepted) {
    std::cerr << "Rewrite of a " << message << " that is no record: " << verdict << "\n";
    std::abort();
  }
  WireWriter out;
  WriteNode(FindMessage(message), node, &out);
  return out.bytes();
}

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo
