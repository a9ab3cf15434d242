#include "calib/tools/mcap_chunk.h"

#include <lz4frame.h>
#include <zstd.h>

#include <algorithm>
#include <memory>

#include "calib/console/printable.h"

namespace calib {

namespace {

constexpr size_t kPiece = size_t{128} << 10;

// One more piece behind what is there, but for at most one byte more than is expected: memory that
// is not reached is not written to.
size_t Grow(size_t size, std::string* records) {
  const size_t done = records->size();
  records->resize(std::min(size + 1, done + kPiece));
  return done;
}

// Of what zstd may look back at: the logarithm.
int LargestWindow(size_t size) {
  int window = 23;  // what it may be of any size, as its writers have it but for the last levels
  while (window < 27 && size_t{1} << window < size) ++window;
  return window;
}

std::string Zstd(std::string_view compressed, size_t size, std::string* records) {
  const std::unique_ptr<ZSTD_DStream, size_t (*)(ZSTD_DStream*)> stream(ZSTD_createDStream(),
                                                                        ZSTD_freeDStream);
  if (stream == nullptr) throw std::bad_alloc();
  ZSTD_DCtx_setParameter(stream.get(), ZSTD_d_windowLogMax, LargestWindow(size));
  ZSTD_inBuffer in = {compressed.data(), compressed.size(), 0};
  size_t expected = 1;  // 0 at the end of a frame
  while (records->size() <= size) {
    const size_t done = Grow(size, records);
    ZSTD_outBuffer out = {&(*records)[0], records->size(), done};
    while (out.pos < out.size && (in.pos < in.size || expected != 0)) {
      const size_t in_before = in.pos, out_before = out.pos;
      expected = ZSTD_decompressStream(stream.get(), &out, &in);
      if (ZSTD_isError(expected) != 0) return ZSTD_getErrorName(expected);
      if (in.pos == in_before && out.pos == out_before) break;
    }
    const bool full = out.pos == out.size;
    records->resize(out.pos);
    if (!full) return expected == 0 ? "" : "it ends within a frame";
  }
  return "";
}

std::string Lz4(std::string_view compressed, size_t size, std::string* records) {
  LZ4F_dctx* context = nullptr;
  if (LZ4F_isError(LZ4F_createDecompressionContext(&context, LZ4F_VERSION)) != 0) {
    throw std::bad_alloc();
  }
  const std::unique_ptr<LZ4F_dctx, LZ4F_errorCode_t (*)(LZ4F_dctx*)> owner(
      context, LZ4F_freeDecompressionContext);
  size_t read = 0, expected = 1;
  while (records->size() <= size) {
    const size_t done = Grow(size, records);
    size_t written = done;
    while (written < records->size() && (read < compressed.size() || expected != 0)) {
      size_t out = records->size() - written, in = compressed.size() - read;
      expected = LZ4F_decompress(context, &(*records)[written], &out, compressed.data() + read, &in,
                                 nullptr);
      if (LZ4F_isError(expected) != 0) return LZ4F_getErrorName(expected);
      written += out;
      read += in;
      if (out == 0 && in == 0) break;
    }
    const bool full = written == records->size();
    records->resize(written);
    if (!full) return expected == 0 ? "" : "it ends within a frame";
  }
  return "";
}

}  // namespace

std::string DecompressMcapChunk(std::string_view compression, std::string_view compressed,
                                uint64_t announced, size_t most, std::string* records) {
  records->clear();
  if (announced > most) {
    return "its chunk becomes " + std::to_string(announced) + " bytes, more than the " +
           std::to_string(most) + " that are read of a file of this size";
  }
  const auto size = static_cast<size_t>(announced);
  records->reserve(size + 1);
  std::string wrong;
  if (compression.empty() || compressed.empty()) {
    records->assign(compressed);
  } else if (compression == "zstd") {
    wrong = Zstd(compressed, size, records);
  } else if (compression == "lz4") {
    wrong = Lz4(compressed, size, records);
  } else {
    return "its chunk is compressed by '" + Printable(std::string(compression)) +
           "', expected zstd or lz4";
  }
  if (!wrong.empty()) {
    return "its chunk cannot be decompressed by " + std::string(compression) + ": " + wrong;
  }
  if (records->size() == size) return "";
  return "its chunk becomes " +
         (records->size() > size ? "more" : "only " + std::to_string(records->size())) +
         " bytes, but says " + std::to_string(size);
}

}  // namespace calib
