#include "calib/tools/mcap_reader.h"

#include <zlib.h>

#include <map>

#include "calib/tools/byte_cursor.h"
#include "calib/tools/mcap_chunk.h"
#include "calib/tools/mcap_records.h"

namespace calib {

namespace {

// No name or topic is longer.
constexpr size_t kLongestName = 1024;

uint32_t Checksum(std::string_view bytes) {
  return static_cast<uint32_t>(
      crc32_z(0, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()));
}

struct Record {
  McapRecord kind;
  std::string_view content;
};

class Reader {
 public:
  Reader(std::string_view file, const McapVisitor& visit) : file_(file), visit_(visit) {}

  McapEnd Read() {
    ByteCursor file(file_);
    file.Take(kMcapMagic.size());
    McapEnd end;
    bool ended = false;
    while (!ended && end.damage.empty()) {
      end.at = file.at();
      Record record;
      end.damage = Next(&file, &record);
      if (end.damage.empty()) end.damage = Take(record, end.at, file, &ended);
    }
    end.messages = messages_;
    return end;
  }

 private:
  // Each of these returns what is wrong, "" if nothing is.

  static std::string Next(ByteCursor* bytes, Record* record) {
    if (bytes->left() == 0) return "it ends without the records that a file ends with";
    record->kind = static_cast<McapRecord>(bytes->Read<uint8_t>());
    record->content = bytes->TakeSized<uint64_t>();
    if (!bytes->ok()) return "it ends within a record";
    return static_cast<uint8_t>(record->kind) == 0 ? "there is no record of the kind 0" : "";
  }

  // A record of the file.
  std::string Take(const Record& record, size_t at, const ByteCursor& file, bool* ended) {
    const bool in_summary = summary_ != 0;
    switch (record.kind) {
      case McapRecord::kFooter:
        *ended = true;
        return TakeFooter(record.content, file);
      case McapRecord::kDataEnd: {
        if (in_summary) return "its messages end twice";
        ByteCursor content(record.content);
        const uint32_t checksum = content.Read<uint32_t>();
        if (!content.ok()) return "its record of the end of messages is too short";
        summary_ = file.at();
        if (checksum == 0 || checksum == Checksum(file_.substr(0, at))) return "";
        return "the bytes ahead of it do not have the checksum that it says";
      }
      case McapRecord::kChunk:
        return in_summary ? "a chunk stands behind the end of the messages"
                          : TakeChunk(record.content);
      case McapRecord::kSchema:
      case McapRecord::kChannel:
      case McapRecord::kMessage:
        return in_summary ? "" : TakePart(record);
      default:
        return "";
    }
  }

  std::string TakeFooter(std::string_view record, const ByteCursor& file) {
    ByteCursor content(record);
    content.Take(16);  // where the summary is
    const uint32_t checksum = content.Read<uint32_t>();
    if (!content.ok()) return "its last record is too short";
    if (summary_ == 0) return "it has no record that its messages end with";
    const size_t end = file.at() - record.size() + 16;
    const std::string_view summed = file_.substr(summary_, end - summary_);
    if (checksum != 0 && checksum != Checksum(summed)) {
      return "its summary does not have the checksum that it says";
    }
    return file_.substr(file.at()) == kMcapMagic ? ""
                                                 : "it does not end with MCAP's eight last bytes";
  }

  std::string TakeChunk(std::string_view record) {
    ByteCursor content(record);
    content.Take(16);  // the times of its messages
    const uint64_t size = content.Read<uint64_t>();
    const uint32_t checksum = content.Read<uint32_t>();
    const std::string_view compression = content.TakeSized<uint32_t>();
    const std::string_view compressed = content.TakeSized<uint64_t>();
    if (!content.ok()) return "its chunk is too short";
    std::string wrong =
        DecompressMcapChunk(compression, compressed, size, LargestMcapChunk(file_.size()), &chunk_);
    if (!wrong.empty()) return wrong;
    if (checksum != 0 && checksum != Checksum(chunk_)) {
      return "its chunk does not have the checksum that it says";
    }
    for (ByteCursor parts(chunk_); parts.left() > 0;) {
      Record part;
      std::string damage = Next(&parts, &part);
      if (damage.empty()) damage = TakePart(part);
      if (!damage.empty()) return "in its chunk, " + damage;
    }
    return "";
  }

  // A record of the file or of a chunk.
  std::string TakePart(const Record& record) {
    ByteCursor content(record.content);
    switch (record.kind) {
      case McapRecord::kSchema: {
        const uint16_t id = content.Read<uint16_t>();
        const std::string_view name = content.TakeSized<uint32_t>();
        content.TakeSized<uint32_t>();  // the encoding
        content.TakeSized<uint32_t>();
        if (!content.ok()) return "a schema is too short";
        if (name.size() > kLongestName) return "a schema has a name of too many bytes";
        schemas_[id] = name;
        return "";
      }
      case McapRecord::kChannel:
        return TakeChannel(&content);
      case McapRecord::kMessage: {
        const uint16_t id = content.Read<uint16_t>();
        content.Take(20);  // its number and times
        if (!content.ok()) return "a message is too short";
        const auto channel = channels_.find(id);
        if (channel == channels_.end()) {
          return "a message is of the channel " + std::to_string(id) + ", which is not there";
        }
        ++messages_;
        visit_(channel->second, content.Take(content.left()));
        return "";
      }
      default:
        return static_cast<uint8_t>(record.kind) < 16 ? "there is a record that belongs elsewhere"
                                                      : "";
    }
  }

  std::string TakeChannel(ByteCursor* content) {
    McapChannel channel;
    channel.id = content->Read<uint16_t>();
    const uint16_t schema = content->Read<uint16_t>();
    const std::string_view topic = content->TakeSized<uint32_t>();
    const std::string_view encoding = content->TakeSized<uint32_t>();
    content->TakeSized<uint32_t>();  // whatever else its writer says of it
    if (!content->ok()) return "a channel is too short";
    if (topic.size() > kLongestName || encoding.size() > kLongestName) {
      return "a channel has a name of too many bytes";
    }
    const auto of = schemas_.find(schema);
    if (of != schemas_.end()) channel.schema = of->second;
    if (of == schemas_.end() && schema != 0) {
      return "a channel has the schema " + std::to_string(schema) + ", which is not there";
    }
    channel.topic = topic;
    channel.encoding = encoding;
    channels_[channel.id] = channel;
    return "";
  }

  const std::string_view file_;
  const McapVisitor& visit_;
  std::map<uint16_t, std::string> schemas_;
  std::map<uint16_t, McapChannel> channels_;
  size_t summary_ = 0;  // where it begins, once the messages have ended
  size_t messages_ = 0;
  std::string chunk_;  // the records of the last one, whose memory the next one takes
};

}  // namespace

bool BeginsAsMcap(std::string_view file) { return file.substr(0, kMcapMagic.size()) == kMcapMagic; }

McapEnd ReadMcap(std::string_view file, const McapVisitor& visit) {
  return Reader(file, visit).Read();
}

}  // namespace calib
