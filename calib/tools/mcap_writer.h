// Writes an MCAP file that any reader takes: messages in chunks that are not compressed, with
// checksums, and the index and counts behind them by which viewers find their way. All messages are
// of the time 0: a calibration holds for a whole recording.
#ifndef CALIB_TOOLS_MCAP_WRITER_H_
#define CALIB_TOOLS_MCAP_WRITER_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace calib {

class McapWriter {
 public:
  McapWriter();

  // Adds a schema of protobuf, by a type's full name and the FileDescriptorSet that has it. Returns
  // what AddChannel() calls it.
  uint16_t AddSchema(const std::string& name, const std::string& descriptor_set);
  // Returns what AddMessage() calls it.
  uint16_t AddChannel(const std::string& topic, uint16_t schema);
  void AddMessage(uint16_t channel, const std::string& bytes);

  // The file. To be called once, at the end.
  std::string Finish();

 private:
  struct Chunk {
    uint64_t at, size;          // of its record
    uint64_t index_size;        // of the records behind it that index its messages
    uint64_t records;           // the size of what is in it
    std::string index_offsets;  // by channel
  };

  void EndChunk();

  std::string file_;
  std::string declarations_[2];  // the records of schemas and of channels
  uint16_t schemas_ = 0, channels_ = 0;
  std::string chunk_;                                // records of messages
  std::map<uint16_t, std::vector<uint64_t>> index_;  // of chunk_: where they begin, by channel
  std::map<uint16_t, uint64_t> messages_;            // how many, by channel
  std::vector<Chunk> chunks_;
};

}  // namespace calib

#endif  // CALIB_TOOLS_MCAP_WRITER_H_
