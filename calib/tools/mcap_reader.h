// The messages of an MCAP file, in its order, from the start to its end or to the damage. Chunks
// are decompressed one at a time; the index that may stand behind the messages is not trusted, nor
// needed.
#ifndef CALIB_TOOLS_MCAP_READER_H_
#define CALIB_TOOLS_MCAP_READER_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace calib {

struct McapChannel {
  uint16_t id = 0;
  std::string topic, encoding;
  std::string schema;  // its name; "" if the channel has none
};

using McapVisitor = std::function<void(const McapChannel& channel, std::string_view message)>;

struct McapEnd {
  size_t messages = 0;  // that were visited
  size_t at = 0;        // where reading ended: the first byte of the record that is damaged
  std::string damage;   // what is wrong there; "" if the file is whole
};

// Whether the file has the first bytes of one.
bool BeginsAsMcap(std::string_view file);

// Visits all messages of a file that begins as one. Those of a chunk whose checksum is wrong are
// not visited.
McapEnd ReadMcap(std::string_view file, const McapVisitor& visit);

}  // namespace calib

#endif  // CALIB_TOOLS_MCAP_READER_H_
