#include "png.h"

#include <fstream>
#include <zlib.h>

namespace {

void put32(std::string& out, std::uint32_t v) {
  for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>(v >> shift & 0xFF);
}

void chunk(std::string& out, const char* type, const std::string& data) {
  put32(out, static_cast<std::uint32_t>(data.size()));
  const std::string body = std::string(type, 4) + data;
  out += body;
  put32(out, static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(body.data()),
                                              static_cast<uInt>(body.size()))));
}

} // namespace

bool writePng(const std::string& path, int width, int height,
              const std::vector<std::uint32_t>& pixels) {
  if (width <= 0 || height <= 0 || pixels.size() != static_cast<size_t>(width) * height)
    return false;
  std::string raw;
  raw.reserve(pixels.size() * 4 + height);
  for (int y = 0; y < height; ++y) {
    raw += '\0'; // no filter
    for (int x = 0; x < width; ++x) {
      const std::uint32_t p = pixels[static_cast<size_t>(y) * width + x];
      raw += static_cast<char>(p >> 16 & 0xFF);
      raw += static_cast<char>(p >> 8 & 0xFF);
      raw += static_cast<char>(p & 0xFF);
      raw += static_cast<char>(p >> 24);
    }
  }
  uLongf packedSize = compressBound(raw.size());
  std::string packed(packedSize, '\0');
  if (compress2(reinterpret_cast<Bytef*>(packed.data()), &packedSize,
                reinterpret_cast<const Bytef*>(raw.data()), raw.size(), 9) != Z_OK)
    return false;
  packed.resize(packedSize);

  std::string header;
  put32(header, static_cast<std::uint32_t>(width));
  put32(header, static_cast<std::uint32_t>(height));
  header +=
      std::string("\x08\x06\x00\x00\x00", 5); // 8 bits, RGBA, deflate, no filter, no interlace
  std::string file = "\x89PNG\r\n\x1a\n";
  chunk(file, "IHDR", header);
  chunk(file, "IDAT", packed);
  chunk(file, "IEND", "");
  std::ofstream out(path, std::ios::binary);
  out.write(file.data(), static_cast<std::streamsize>(file.size()));
  return static_cast<bool>(out);
}
