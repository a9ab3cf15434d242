// Prints, for each peer and payload, what takes no time: the bytes of the encoded record, those
// that zstd makes of them, and those in memory once the record has been read so that all of it can
// be asked for. One line each: side, payload and the three numbers, with tabs between.
//
// Memory is what the allocator has in use (glibc's mallinfo2), and the store itself.
#include <malloc.h>
#include <zstd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "benchmarks/peers/peer_cells.h"

namespace {

using zarvo::calibration::benchmarks::CheckAgreement;
using zarvo::calibration::benchmarks::EveryPeer;
using zarvo::calibration::benchmarks::PeerCatalogue;
using zarvo::calibration::benchmarks::PeerFigures;

size_t BytesInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

size_t Compressed(const std::string& bytes) {
  std::string room(ZSTD_compressBound(bytes.size()), '\0');
  const size_t size =
      ZSTD_compress(room.data(), room.size(), bytes.data(), bytes.size(), ZSTD_CLEVEL_DEFAULT);
  if (ZSTD_isError(size)) {
    std::fprintf(stderr, "benchmark_peer_figures: zstd: %s\n", ZSTD_getErrorName(size));
    std::exit(1);
  }
  return size;
}

}  // namespace

int main() {
  const PeerCatalogue catalogue = EveryPeer();
  CheckAgreement(catalogue.cells);
  for (const PeerFigures& figures : catalogue.figures) {
    const std::string bytes = figures.bytes();
    const size_t compressed = Compressed(bytes);
    const size_t before = BytesInUse();
    const auto loaded = figures.load(bytes);
    const size_t memory = BytesInUse() - before;
    std::printf("%s\t%s\t%zu\t%zu\t%zu\n", figures.side.c_str(), figures.payload.c_str(),
                bytes.size(), compressed, memory);
  }
  return 0;
}
