#include "calib/tools/mcap_writer.h"

#include <zlib.h>

#include "calib/tools/mcap_records.h"

namespace calib {

namespace {

// A chunk ends once it is so large.
constexpr size_t kChunk = size_t{1} << 20;

template <typename Number>
std::string Int(uint64_t value) {
  std::string bytes;
  for (size_t i = 0; i < sizeof(Number); ++i) bytes += static_cast<char>(value >> 8 * i & 255);
  return bytes;
}
constexpr auto Int16 = Int<uint16_t>;
constexpr auto Int32 = Int<uint32_t>;
constexpr auto Int64 = Int<uint64_t>;

std::string Sized(const std::string& text) { return Int32(text.size()) + text; }

std::string RecordOf(McapRecord kind, const std::string& content) {
  return static_cast<char>(kind) + Int64(content.size()) + content;
}

std::string Checksum(const std::string& bytes) {
  return Int32(crc32_z(0, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()));
}

// From the first message to the last.
std::string Times() { return std::string(16, '\0'); }

}  // namespace

McapWriter::McapWriter()
    : file_(std::string(kMcapMagic) + RecordOf(McapRecord::kHeader, Sized("") + Sized("calib"))) {}

uint16_t McapWriter::AddSchema(const std::string& name, const std::string& descriptor_set) {
  declarations_[0] += RecordOf(McapRecord::kSchema, Int16(++schemas_) + Sized(name) +
                                                        Sized("protobuf") + Sized(descriptor_set));
  return schemas_;
}

uint16_t McapWriter::AddChannel(const std::string& topic, uint16_t schema) {
  declarations_[1] +=
      RecordOf(McapRecord::kChannel,
               Int16(++channels_) + Int16(schema) + Sized(topic) + Sized("protobuf") + Sized(""));
  return channels_;
}

void McapWriter::AddMessage(uint16_t channel, const std::string& bytes) {
  index_[channel].push_back(chunk_.size());
  chunk_ += RecordOf(McapRecord::kMessage,
                     Int16(channel) + Int32(messages_[channel]++) + Times() + bytes);
  if (chunk_.size() >= kChunk) EndChunk();
}

void McapWriter::EndChunk() {
  if (chunk_.empty()) return;
  // What declares its channels stands ahead of the messages, with the first of them.
  const std::string& ahead = chunks_.empty() ? declarations_[0] + declarations_[1] : "";
  const std::string records = ahead + chunk_;
  Chunk chunk;
  chunk.at = file_.size();
  chunk.records = records.size();
  file_ += RecordOf(McapRecord::kChunk, Times() + Int64(records.size()) + Checksum(records) +
                                            Sized("") + Int64(records.size()) + records);
  chunk.size = file_.size() - chunk.at;
  for (const auto& [channel, places] : index_) {
    std::string entries;
    for (const uint64_t place : places) entries += Int64(0) + Int64(ahead.size() + place);
    chunk.index_offsets += Int16(channel) + Int64(file_.size());
    file_ += RecordOf(McapRecord::kMessageIndex, Int16(channel) + Sized(entries));
  }
  chunk.index_size = file_.size() - chunk.at - chunk.size;
  chunks_.push_back(chunk);
  chunk_.clear();
  index_.clear();
}

std::string McapWriter::Finish() {
  EndChunk();
  file_ += RecordOf(McapRecord::kDataEnd, Checksum(file_));
  const size_t summary = file_.size();
  std::string offsets;
  const auto add_group = [&](McapRecord kind, const std::string& records) {
    if (records.empty()) return;
    offsets += RecordOf(McapRecord::kSummaryOffset,
                        static_cast<char>(kind) + Int64(file_.size()) + Int64(records.size()));
    file_ += records;
  };
  add_group(McapRecord::kSchema, declarations_[0]);
  add_group(McapRecord::kChannel, declarations_[1]);
  uint64_t messages = 0;
  std::string counts, chunks;
  for (const auto& [channel, count] : messages_) {
    messages += count;
    counts += Int16(channel) + Int64(count);
  }
  add_group(McapRecord::kStatistics,
            RecordOf(McapRecord::kStatistics, Int64(messages) + Int16(schemas_) + Int32(channels_) +
                                                  Int32(0) + Int32(0) + Int32(chunks_.size()) +
                                                  Times() + Sized(counts)));
  for (const Chunk& chunk : chunks_) {
    chunks += RecordOf(McapRecord::kChunkIndex, Times() + Int64(chunk.at) + Int64(chunk.size) +
                                                    Sized(chunk.index_offsets) +
                                                    Int64(chunk.index_size) + Sized("") +
                                                    Int64(chunk.records) + Int64(chunk.records));
  }
  add_group(McapRecord::kChunkIndex, chunks);
  const std::string places = Int64(summary) + Int64(file_.size());
  file_ += offsets;
  file_ += static_cast<char>(McapRecord::kFooter) + Int64(places.size() + 4) + places;
  file_ += Checksum(file_.substr(summary));
  file_ += kMcapMagic;
  return std::move(file_);
}

}  // namespace calib
