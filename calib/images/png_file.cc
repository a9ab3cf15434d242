// libpng reports errors by a call that must not return: each of the two functions that it may leave
// by longjmp() has nothing to destroy, and its state is outside of it.
#include "calib/images/png_file.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <vector>

#include "calib/console/failure.h"

namespace calib {
namespace {

constexpr size_t kMostBytes = size_t{1} << 30;
// That one compressed byte can stand for.
constexpr size_t kMostInflated = 1032;
// Calibration images are looked at once and kept for years; but a page waits for them.
constexpr int kCompression = 6;

struct Source {
  const std::string* bytes;
  size_t position = 0;
};

struct Png {
  png_structp png = nullptr;
  png_infop info = nullptr;
  std::string error;
};

[[noreturn]] void OnError(png_structp png, png_const_charp message) {
  static_cast<Png*>(png_get_error_ptr(png))->error = message;
  png_longjmp(png, 1);
}

void OnWarning(png_structp /*png*/, png_const_charp /*message*/) {}

void Read(png_structp png, png_bytep data, size_t size) {
  Source* source = static_cast<Source*>(png_get_io_ptr(png));
  if (size > source->bytes->size() - source->position) png_error(png, "it ends early");
  std::memcpy(data, source->bytes->data() + source->position, size);
  source->position += size;
}

void Write(png_structp png, png_bytep data, size_t size) {
  static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<char*>(data), size);
}

void Flush(png_structp /*png*/) {}

png_bytep RowOf(Raster* raster, int row) {
  return reinterpret_cast<png_bytep>(&raster->bytes[static_cast<size_t>(row) * raster->RowBytes()]);
}

// Whether compressed bytes of that number can hold the image.
bool CanHold(size_t bytes, png_structp png, png_infop info) {
  return png_get_rowbytes(png, info) <=
         bytes * kMostInflated / std::max<size_t>(png_get_image_height(png, info), 1);
}

// Reads up to the rows. False if libpng gave up.
bool ReadHead(Png* reader, Source* source, Raster* raster) {
  if (setjmp(png_jmpbuf(reader->png)) != 0) return false;
  png_set_read_fn(reader->png, source, Read);
  png_read_info(reader->png, reader->info);
  const int type = png_get_color_type(reader->png, reader->info);
  const int bits = png_get_bit_depth(reader->png, reader->info);
  if (bits == 16 && type != PNG_COLOR_TYPE_GRAY) {
    png_error(reader->png, "it has 16 bits for each color; only grey images may");
  }
  if (!CanHold(source->bytes->size(), reader->png, reader->info)) {
    png_error(reader->png, "it ends early");
  }
  png_set_expand(reader->png);  // palettes, few bits, transparency
  if (type == PNG_COLOR_TYPE_GRAY_ALPHA) png_set_gray_to_rgb(reader->png);
  png_set_interlace_handling(reader->png);
  png_read_update_info(reader->png, reader->info);
  raster->width = static_cast<int>(png_get_image_width(reader->png, reader->info));
  raster->height = static_cast<int>(png_get_image_height(reader->png, reader->info));
  raster->channels = png_get_channels(reader->png, reader->info);
  raster->bits = png_get_bit_depth(reader->png, reader->info);
  // Grey with a transparent value has become grey with alpha, which no raster is.
  if (raster->channels == 2) png_error(reader->png, "it is grey with a transparent value");
  return true;
}

bool ReadRows(Png* reader, png_bytep* rows) {
  if (setjmp(png_jmpbuf(reader->png)) != 0) return false;
  png_read_image(reader->png, rows);
  png_read_end(reader->png, nullptr);
  return true;
}

bool WriteAll(Png* writer, std::string* file, const Raster& raster, png_bytep* rows) {
  if (setjmp(png_jmpbuf(writer->png)) != 0) return false;
  png_set_write_fn(writer->png, file, Write, Flush);
  png_set_compression_level(writer->png, kCompression);
  const int type = raster.channels == 1   ? PNG_COLOR_TYPE_GRAY
                   : raster.channels == 3 ? PNG_COLOR_TYPE_RGB
                                          : PNG_COLOR_TYPE_RGB_ALPHA;
  png_set_IHDR(writer->png, writer->info, static_cast<png_uint_32>(raster.width),
               static_cast<png_uint_32>(raster.height), raster.bits, type, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(writer->png, writer->info);
  png_write_image(writer->png, rows);
  png_write_end(writer->png, nullptr);
  return true;
}

std::vector<png_bytep> RowsOf(Raster* raster) {
  std::vector<png_bytep> rows;
  rows.reserve(static_cast<size_t>(raster->height));
  for (int row = 0; row < raster->height; ++row) rows.push_back(RowOf(raster, row));
  return rows;
}

}  // namespace

std::string EncodePng(const Raster& raster, const std::string& name) {
  Png writer;
  writer.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &writer, OnError, OnWarning);
  if (writer.png != nullptr) writer.info = png_create_info_struct(writer.png);
  std::string file;
  // libpng takes rows that it does not change as ones that it might.
  std::vector<png_bytep> rows = RowsOf(const_cast<Raster*>(&raster));
  const bool written = writer.info != nullptr && WriteAll(&writer, &file, raster, rows.data());
  png_destroy_write_struct(&writer.png, &writer.info);
  if (!written) throw Failure(name + ": cannot be written as PNG: " + writer.error);
  return file;
}

Raster DecodePng(const std::string& bytes, const std::string& name) {
  const auto refuse = [&](const std::string& why) {
    throw Failure(name + ": cannot be read as PNG: " + why, "Name a PNG file.");
  };
  if (CompressionOf(bytes) != "png") refuse("it does not begin as one");
  Png reader;
  Source source{&bytes, 0};
  Raster raster;
  reader.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &reader, OnError, OnWarning);
  if (reader.png != nullptr) reader.info = png_create_info_struct(reader.png);
  bool read = reader.info != nullptr && ReadHead(&reader, &source, &raster);
  if (read && raster.RowBytes() > kMostBytes / static_cast<size_t>(raster.height)) {
    reader.error = "it has more than 1 GiB";
    read = false;
  }
  if (read) {
    raster.bytes.resize(raster.RowBytes() * static_cast<size_t>(raster.height));
    std::vector<png_bytep> rows = RowsOf(&raster);
    read = ReadRows(&reader, rows.data());
  }
  png_destroy_read_struct(&reader.png, &reader.info, nullptr);
  if (!read) refuse(reader.error);
  return raster;
}

bool IsCutOff(const std::string& bytes) {
  const std::string compression = CompressionOf(bytes);
  if (compression == "jpeg") return bytes.rfind("\xff\xd9") == std::string::npos;
  return compression == "png" &&
         bytes.rfind(std::string("IEND\xae\x42\x60\x82", 8)) == std::string::npos;
}

std::string CompressionOf(const std::string& bytes) {
  if (bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") == 0) return "png";
  if (bytes.compare(0, 3, "\xff\xd8\xff") == 0) return "jpeg";
  return "";
}

}  // namespace calib
