// The compressions of MCAP's chunks: zstd, lz4 (its frames) and none.
#ifndef CALIB_TOOLS_MCAP_CHUNK_H_
#define CALIB_TOOLS_MCAP_CHUNK_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace calib {

// What a chunk may be decompressed to. Writers make chunks of about a megabyte, or of one message
// that is larger.
constexpr size_t kLargestMcapChunk = size_t{256} << 20;

// Decompresses a chunk that says that it becomes `size` bytes. Returns what is wrong with it, "" if
// nothing is. Memory is taken as bytes come out, whatever the chunk says, and for what zstd looks
// back at: 128 MiB at most.
std::string DecompressMcapChunk(std::string_view compression, std::string_view compressed,
                                uint64_t size, std::string* records);

}  // namespace calib

#endif  // CALIB_TOOLS_MCAP_CHUNK_H_
