#include "calib/images/calibration_image.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "calib/console/failure.h"
#include "calib/console/printable.h"
#include "calib/images/png_file.h"

namespace calib {

using zarvo::calibration::CalibrationImage;

namespace {

struct Format {
  const char* name;
  const char* alias;  // another customary name; "" for none
  int channels, bits;
  bool blue_first;
};

constexpr Format kFormats[] = {
    {"GRAY8", "MONO8", 1, 8, false},    {"GRAY16", "MONO16", 1, 16, false},
    {"RGB8", "", 3, 8, false},          {"BGR8", "", 3, 8, true},
    {"RGBA8", "", 4, 8, false},         {"BGRA8", "", 4, 8, true},
    {"BAYER_RGGB8", "", 1, 8, false},   {"BAYER_GRBG8", "", 1, 8, false},
    {"BAYER_GBRG8", "", 1, 8, false},   {"BAYER_BGGR8", "", 1, 8, false},
    {"BAYER_RGGB16", "", 1, 16, false}, {"BAYER_GRBG16", "", 1, 16, false},
    {"BAYER_GBRG16", "", 1, 16, false}, {"BAYER_BGGR16", "", 1, 16, false}};

const Format& FormatOf(const CalibrationImage& image, const std::string& name) {
  std::string upper = image.format();
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  for (const Format& format : kFormats) {
    if (upper == format.name || (!upper.empty() && upper == format.alias)) return format;
  }
  throw Failure(
      name + ": format is " +
          (image.has_format() ? "'" + Printable(image.format()) + "'" : "not set") +
          ", expected one of " + ImageFormatNames(),
      "Octets that are a PNG or JPEG file need none; 'calib get' writes any as they are.");
}

// The distance of rows in octets.
size_t StrideOf(const CalibrationImage& image, size_t row, const std::string& name) {
  if (!image.has_stride() || image.stride() == 0) return row;
  if (image.stride() < 0 || static_cast<size_t>(image.stride()) < row) {
    throw Failure(name + ": stride is " + std::to_string(image.stride()) +
                  ", expected at least the " + std::to_string(row) + " bytes of a row");
  }
  return static_cast<size_t>(image.stride());
}

std::string Base64(const std::string& bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t i = 0; i < bytes.size(); i += 3) {
    unsigned group = 0;
    for (size_t j = i; j < i + 3; ++j) {
      group = group << 8 | (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0U);
    }
    for (int shift = 18; shift >= 0; shift -= 6) text += kDigits[group >> shift & 63];
    if (bytes.size() - i == 2) text.back() = '=';
    if (bytes.size() - i == 1) text.replace(text.size() - 2, 2, "==");
  }
  return text;
}

void SwapEveryTwo(std::string* bytes) {
  for (size_t i = 0; i + 1 < bytes->size(); i += 2) std::swap((*bytes)[i], (*bytes)[i + 1]);
}

}  // namespace

std::string ImageFormatNames() {
  std::string names;
  for (const Format& format : kFormats)
    names += (names.empty() ? "" : ", ") + std::string(format.name);
  return names;
}

Raster RasterOf(const CalibrationImage& image, const std::string& name) {
  const std::string compression = CompressionOf(image.imgdata());
  if (compression == "png") return DecodePng(image.imgdata(), name);
  if (compression == "jpeg") {
    throw Failure(name + ": is a JPEG file, whose samples are not read here");
  }
  const Format& format = FormatOf(image, name);
  if (image.width() <= 0 || image.height() <= 0) {
    throw Failure(name + ": is " + std::to_string(image.width()) + " x " +
                  std::to_string(image.height()) + ", expected a width and a height above 0");
  }
  Raster raster{image.width(), image.height(), format.channels, format.bits, ""};
  const size_t row = raster.RowBytes(), stride = StrideOf(image, row, name);
  const size_t height = static_cast<size_t>(raster.height);
  const std::string& data = image.imgdata();
  // The padding of the last row may be left out.
  if (data.size() != stride * height && data.size() != stride * (height - 1) + row) {
    throw Failure(name + ": imgdata has " + std::to_string(data.size()) + " bytes, expected " +
                  std::to_string(stride * height) + ": " + std::to_string(height) + " rows of " +
                  std::to_string(stride));
  }
  raster.bytes.reserve(row * height);
  for (size_t y = 0; y < height; ++y) raster.bytes.append(data, y * stride, row);
  if (format.bits == 16) SwapEveryTwo(&raster.bytes);
  if (format.blue_first) {
    const size_t step = static_cast<size_t>(format.channels);
    for (size_t i = 0; i < raster.bytes.size(); i += step) {
      std::swap(raster.bytes[i], raster.bytes[i + 2]);
    }
  }
  return raster;
}

std::string ImageFileOf(const CalibrationImage& image, const std::string& name) {
  if (!CompressionOf(image.imgdata()).empty()) return image.imgdata();
  return EncodePng(RasterOf(image, name), name);
}

std::string ImageUrl(const CalibrationImage& image, const std::string& name) {
  const std::string file = ImageFileOf(image, name);
  if (IsCutOff(file)) throw Failure(name + ": is a PNG or JPEG file that ends early");
  return "data:image/" + CompressionOf(file) + ";base64," + Base64(file);
}

CalibrationImage ImageOf(const Raster& raster) {
  CalibrationImage image;
  image.set_width(raster.width);
  image.set_height(raster.height);
  image.set_stride(static_cast<int>(raster.RowBytes()));
  image.set_format(raster.channels == 3   ? "RGB8"
                   : raster.channels == 4 ? "RGBA8"
                   : raster.bits == 16    ? "GRAY16"
                                          : "GRAY8");
  std::string bytes = raster.bytes;
  if (raster.bits == 16) SwapEveryTwo(&bytes);
  image.set_imgdata(std::move(bytes));
  return image;
}

}  // namespace calib
