// The compressions of MCAP's chunks: zstd, lz4 (its frames) and none.
#ifndef CALIB_TOOLS_MCAP_CHUNK_H_
#define CALIB_TOOLS_MCAP_CHUNK_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace calib {

// What a chunk of a file of that size may be decompressed to. Writers make chunks of some
// megabytes, or of one message that is larger.
constexpr size_t LargestMcapChunk(size_t file_size) {
  constexpr size_t kOfAnyFile = size_t{9} << 20, kOfNoFile = size_t{256} << 20;
  return file_size >= kOfNoFile / 10    ? kOfNoFile
         : file_size >= kOfAnyFile / 10 ? 10 * file_size
                                        : kOfAnyFile;
}

// Decompresses a chunk that says that it becomes so many bytes, and may become no more than `most`.
// Returns what is wrong with it, "" if nothing is. Takes room for what it becomes, and for what
// zstd looks back at: no more again, or 8 MiB.
std::string DecompressMcapChunk(std::string_view compression, std::string_view compressed,
                                uint64_t announced, size_t most, std::string* records);

}  // namespace calib

#endif  // CALIB_TOOLS_MCAP_CHUNK_H_
