#include "config.h"

#include <cstring>
#include <vector>

#include "base/str.h"
#include "base/zpack.h"

namespace {

constexpr char kMagic[4] = {'Q', 'V', 'C', 'F'};
constexpr unsigned long kMaxInflateRatio = 1032; // deflate cannot expand more than this

void putLE(unsigned char* p, unsigned int v) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}

unsigned int getLE(const unsigned char* p) {
  return p[0] | p[1] << 8 | p[2] << 16 | static_cast<unsigned int>(p[3]) << 24;
}

} // namespace

bool cQVRAConfigFile::startEmpty(const char* fileName) {
  if (!create(fileName, fmReadWrite)) return false;
  unsigned char header[8] = {};
  std::memcpy(header, kMagic, 4);
  return writef(header, 8);
}

bool cQVRAConfigFile::init(const char* fileName) {
  myTable.destroy();
  if (!open(fileName, fmReadWrite)) return startEmpty(fileName);
  unsigned char header[8];
  if (!readf(header, 8) || std::memcmp(header, kMagic, 4) != 0) return startEmpty(fileName);
  const unsigned int length = getLE(header + 4);
  if (length == 0) return true;
  const unsigned long long stored = size();
  if (stored <= 8 || stored - 8 > kMaxRecordArea || length > kMaxRecordArea ||
      length > (stored - 8) * kMaxInflateRatio + 64)
    return false; // damaged: no stream could hold that much
  std::vector<unsigned char> compressed(static_cast<size_t>(stored - 8));
  std::vector<unsigned char> area(length);
  if (!readf(compressed.data(), static_cast<unsigned int>(compressed.size())) ||
      !zunpackExactly(compressed.data(), compressed.size(), area.data(), area.size()))
    return false;
  return loadRecords(area.data(), length);
}

bool cQVRAConfigFile::loadRecords(const unsigned char* area, unsigned int length) {
  unsigned int at = 0;
  while (length - at >= 8) {
    const int tagNumber = static_cast<int>(getLE(area + at));
    const unsigned int n = getLE(area + at + 4);
    if (n > length - at - 8 || myTable.find(tagNumber)) return false;
    myTable.insert(tagNumber)->assign(area + at + 8, n);
    at += 8 + n;
  }
  return at == length;
}

bool cQVRAConfigFile::setTag(int tagNumber, const void* data, long long length) {
  if (!valid() || length < 0 || (length > 0 && !data)) return false;
  if (const _typebuf<unsigned char>* old = myTable.find(tagNumber)) {
    if (old->count() == length &&
        (length == 0 || std::memcmp(old->data(), data, static_cast<size_t>(length)) == 0))
      return true; // unchanged: the file is not touched
  }
  myTable.insert(tagNumber)->assign(static_cast<const unsigned char*>(data), length);
  return flush();
}

bool cQVRAConfigFile::tag(int tagNumber, _typebuf<unsigned char>& out) const {
  const _typebuf<unsigned char>* value = myTable.find(tagNumber);
  if (!value) return false;
  out = *value;
  return true;
}

const void* cQVRAConfigFile::tag(int tagNumber) const {
  const _typebuf<unsigned char>* value = myTable.find(tagNumber);
  return value ? value->data() : nullptr;
}

long long cQVRAConfigFile::sizeOf(int tagNumber) const {
  const _typebuf<unsigned char>* value = myTable.find(tagNumber);
  return value ? value->count() : 0;
}

bool cQVRAConfigFile::setStr(const unsigned short* text, int tagNumber) {
  if (!text) return setTag(tagNumber, nullptr, 0);
  return setTag(tagNumber, text, 2 * (_wcslen(text) + 1));
}

bool cQVRAConfigFile::setStr(const char* text, int tagNumber) {
  if (!text) return setTag(tagNumber, nullptr, 0);
  return setTag(tagNumber, text, static_cast<long long>(std::strlen(text)) + 1);
}

bool cQVRAConfigFile::setInt(int value, int tagNumber) {
  unsigned char bytes[4];
  putLE(bytes, static_cast<unsigned int>(value));
  return setTag(tagNumber, bytes, 4);
}

bool cQVRAConfigFile::tagInt(int& out, int tagNumber) const {
  const _typebuf<unsigned char>* value = myTable.find(tagNumber);
  if (!value || value->count() != 4) return false;
  out = static_cast<int>(getLE(value->data()));
  return true;
}

bool cQVRAConfigFile::flush() {
  unsigned long long length = 0;
  for (const auto& [tagNumber, value] : myTable)
    length += 8 + static_cast<unsigned long long>(value.count());
  if (length > kMaxRecordArea) return false;
  std::vector<unsigned char> area(static_cast<size_t>(length));
  size_t at = 0;
  for (const auto& [tagNumber, value] : myTable) {
    putLE(area.data() + at, static_cast<unsigned int>(tagNumber));
    putLE(area.data() + at + 4, static_cast<unsigned int>(value.count()));
    if (value.count())
      std::memcpy(area.data() + at + 8, value.data(), static_cast<size_t>(value.count()));
    at += 8 + static_cast<size_t>(value.count());
  }
  // One finishing call into twice the record area: an empty table leaves no room, so it
  // cannot finish and the file stays as it was.
  std::vector<unsigned char> packed;
  if (!zpackOnce(area.data(), area.size(), packed)) return false;
  unsigned char header[8];
  std::memcpy(header, kMagic, 4);
  putLE(header + 4, static_cast<unsigned int>(length));
  return set_fp(0) && writef(header, 8) &&
         writef(packed.data(), static_cast<unsigned int>(packed.size()));
}
