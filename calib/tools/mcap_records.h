// The records that an MCAP file consists of (mcap.dev): a magic number, records, and the magic
// number once more. A record is its kind, the size of its content as 64 bits, and the content,
// whose integers have the low byte first. Text has its size as 32 bits ahead of it.
#ifndef CALIB_TOOLS_MCAP_RECORDS_H_
#define CALIB_TOOLS_MCAP_RECORDS_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace calib {

constexpr std::string_view kMcapMagic("\x89MCAP0\r\n", 8);
constexpr size_t kMcapRecordHead = 9;  // kind and size

enum class McapRecord : uint8_t {
  kHeader = 1,
  kFooter = 2,
  kSchema = 3,
  kChannel = 4,
  kMessage = 5,
  kChunk = 6,
  kMessageIndex = 7,
  kChunkIndex = 8,
  kStatistics = 11,
  kSummaryOffset = 14,
  kDataEnd = 15
};

}  // namespace calib

#endif  // CALIB_TOOLS_MCAP_RECORDS_H_
