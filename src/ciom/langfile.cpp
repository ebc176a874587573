#include "langfile.h"

#include <cstring>
#include <string>
#include <vector>

#include "base/files.h"
#include "base/folders.h"
#include "base/zpack.h"

namespace {

constexpr char kFileMagic[] = "CIOMLAFI";
constexpr char kDataMagic[] = "CIOMLANG";

unsigned int le32(const unsigned char* p) {
  return p[0] | p[1] << 8 | p[2] << 16 | static_cast<unsigned int>(p[3]) << 24;
}
unsigned int le16(const unsigned char* p) {
  return p[0] | p[1] << 8;
}

void put32(std::vector<unsigned char>& out, unsigned int v) {
  for (int i = 0; i < 4; ++i) out.push_back(static_cast<unsigned char>(v >> (8 * i)));
}
void put16(std::vector<unsigned char>& out, unsigned int v) {
  out.push_back(static_cast<unsigned char>(v));
  out.push_back(static_cast<unsigned char>(v >> 8));
}

// The 8-byte library id field: up to 8 characters, then spaces.
void idField(const char* id, char field[8]) {
  std::memset(field, ' ', 8);
  for (int i = 0; i < 8 && id[i]; ++i) field[i] = id[i];
}

std::string sectionName(const cStringKey& key) {
  const std::string bytes = key.utf8();
  return bytes.substr(0, bytes.find('\0'));
}

} // namespace

// ---- Sections ---------------------------------------------------------------------------

bool cCiomLangData::create(const void* data, int size) {
  if (!data || size < 4) return false;
  const auto* p = static_cast<const unsigned char*>(data);
  const unsigned int n = le16(p);
  if (n == 0 || 2 * n + 2 > static_cast<unsigned int>(size)) return false;
  myStrings.set(n);
  long long at = 2 + 2LL * n;
  for (unsigned int i = 0; i < n; ++i) {
    const unsigned int length = le16(p + 2 + 2 * i);
    if (at + length > size) return false; // strings stored so far stay
    myStrings[i].set(reinterpret_cast<const char*>(p + at), length);
    at += length;
  }
  return true;
}

bool cCiomLangData::create(cFasterTreeList<unsigned short, _guardchar<char>>& strings) {
  long long n = 0;
  for (const auto& [number, text] : strings) n = std::max<long long>(n, number + 1LL);
  myStrings.set(n);
  for (const auto& [number, text] : strings) myStrings[number] = text;
  return n > 0;
}

bool cCiomLangData::raw(_typebuf<unsigned char>& out) const {
  const long long n = myStrings.count();
  if (n == 0 || n > 65535) return false;
  std::vector<unsigned char> bytes;
  put16(bytes, static_cast<unsigned int>(n));
  for (const auto& s : myStrings)
    put16(bytes, s.isNull() ? 65535u : static_cast<unsigned int>(std::strlen(s.c_str())));
  for (const auto& s : myStrings) {
    if (!s.isNull()) bytes.insert(bytes.end(), s.c_str(), s.c_str() + std::strlen(s.c_str()));
  }
  out.assign(bytes.data(), static_cast<long long>(bytes.size()));
  return true;
}

const char* cCiomLangData::string(long long n) const {
  if (n < 0 || n >= myStrings.count()) return nullptr;
  return myStrings[n].data();
}

// ---- A language -------------------------------------------------------------------------

void cCiomLang::setIdentity(const char* code, const unsigned short* name) {
  std::memset(myCode, 0, sizeof myCode);
  if (code) std::strncpy(myCode, code, 3);
  myName.set(name);
}

bool cCiomLang::create(const char* code, const unsigned short* name, const void* data, int size) {
  const bool loaded = loadCiomLang(data, size, mySections);
  setIdentity(code, name);
  return loaded;
}

bool cCiomLang::create(const char* code, const unsigned short* name) {
  mySections.destroy();
  setIdentity(code, name);
  return true;
}

const cCiomLangData* cCiomLang::section(const char* name) const {
  return name ? mySections.find(cStringKey(name)) : nullptr;
}

// ---- Reading ----------------------------------------------------------------------------

bool loadCiomLang(const void* data, int size, tCiomSections& sections) {
  if (!data || size < 4) return false;
  const auto* p = static_cast<const unsigned char*>(data);
  const unsigned int u = le32(p);
  if (u == 0 || u > kCiomLangMaxSize) return false;
  std::vector<unsigned char> set(u);
  const bool full = zunpackExactly(p + 4, static_cast<size_t>(size - 4), set.data(), u);
  if (!full || std::memcmp(set.data(), kDataMagic, 8) != 0) return false;

  unsigned long long at = 8;
  while (at < u) {
    if (at + 4 > u) return false;
    const unsigned int nameLength = le32(&set[at]);
    at += 4;
    if (at + nameLength + 4 > u) return false;
    const char* name = reinterpret_cast<const char*>(&set[at]);
    const std::string key(name, strnlen(name, nameLength)); // up to the first zero
    at += nameLength;
    const unsigned int dataLength = le32(&set[at]);
    at += 4;
    if (at + dataLength > u) return false;
    cCiomLangData* section = sections.insert(cStringKey(key.c_str()));
    if (!section->create(&set[at], static_cast<int>(dataLength))) return false;
    at += dataLength;
  }
  return true;
}

bool loadCiomLangData(const void* image, int size, cCiomLang& lang) {
  if (!image || size < 21) return false;
  const auto* p = static_cast<const unsigned char*>(image);
  if (std::memcmp(p, kFileMagic, 8) != 0) return false;
  char code[4] = {static_cast<char>(p[16]), static_cast<char>(p[17]), static_cast<char>(p[18]), 0};
  const int l = p[19];
  if (size - 20 <= l) return false;
  _typebuf<unsigned short> name;
  _pc2w(reinterpret_cast<const char*>(p + 20), name, l);
  name.reset(name.count() + 1); // a terminator
  return lang.create(code, name.data(), p + 20 + l, size - 20 - l);
}

bool loadCiomLangFile(const char* path, cCiomLang& lang) {
  cFileIO f;
  if (!f.open(path, fmRead)) return false;
  const unsigned long long size = f.size();
  if (size > kCiomLangMaxSize) return false; // before reading
  std::vector<unsigned char> image(static_cast<size_t>(size));
  if (!f.readf(image.data(), static_cast<unsigned int>(size))) return false;
  return loadCiomLangData(image.data(), static_cast<int>(size), lang);
}

// ---- Writing ----------------------------------------------------------------------------

bool saveCiomLang(const tCiomSections& sections, _typebuf<unsigned char>& out) {
  std::vector<unsigned char> set(kDataMagic, kDataMagic + 8);
  for (const auto& [key, section] : sections) {
    std::string name = sectionName(key);
    name.resize((name.size() + 3) / 4 * 4, '\0');
    put32(set, static_cast<unsigned int>(name.size()));
    set.insert(set.end(), name.begin(), name.end());
    _typebuf<unsigned char> data;
    if (!section.raw(data)) return false;
    put32(set, static_cast<unsigned int>(data.count()));
    set.insert(set.end(), data.begin(), data.end());
  }
  if (set.size() > kCiomLangMaxSize) return false;
  std::vector<unsigned char> packed;
  if (!zpackOnce(set.data(), set.size(), packed)) return false;
  std::vector<unsigned char> result;
  put32(result, static_cast<unsigned int>(set.size()));
  result.insert(result.end(), packed.begin(), packed.end());
  out.assign(result.data(), static_cast<long long>(result.size()));
  return true;
}

bool saveCiomLangData(const char* libraryId, const cCiomLang& lang, _typebuf<unsigned char>& out) {
  if (!libraryId) return false;
  std::vector<unsigned char> image(kFileMagic, kFileMagic + 8);
  char id[8];
  idField(libraryId, id);
  image.insert(image.end(), id, id + 8);
  for (int i = 0; i < 3; ++i) image.push_back(static_cast<unsigned char>(lang.code()[i]));
  _guardchar<char> name;
  _w2pc(lang.name(), name);
  const size_t l = std::min<size_t>(std::strlen(name.c_str()), 255);
  image.push_back(static_cast<unsigned char>(l));
  image.insert(image.end(), name.c_str(), name.c_str() + l);
  _typebuf<unsigned char> set;
  if (!saveCiomLang(lang.sections(), set)) return false;
  image.insert(image.end(), set.begin(), set.end());
  out.assign(image.data(), static_cast<long long>(image.size()));
  return true;
}

bool saveCiomLangFile(const char* libraryId, const char* path, const cCiomLang& lang) {
  _typebuf<unsigned char> image;
  if (!saveCiomLangData(libraryId, lang, image)) return false;
  cFileIO f;
  return f.create(path, fmWrite) &&
         f.writef(image.data(), static_cast<unsigned int>(image.count()));
}

bool findCiomLangFiles(const char* folder, const char* libraryId,
                       cFasterTreeList<int, sCiomLangDescrInfo>& found) {
  found.destroy();
  cFolderContents list;
  if (!libraryId || !list.init(folder, false)) return false;
  char id[8];
  idField(libraryId, id);
  int next = 0;
  for (int i = 0; i < list.count(); ++i) {
    const sFolderItemInfo* item = list.info(i);
    if (item->type != fotFile || !cFolderContents::wcmatch(item->name.c_str(), "*.laci")) continue;
    _guardchar<char> path;
    list.path(i, path);
    cFileIO f;
    unsigned char head[20];
    if (!f.open(path.c_str(), fmRead) || !f.readf(head, 20)) continue;
    if (std::memcmp(head, kFileMagic, 8) != 0 || std::memcmp(head + 8, id, 8) != 0) continue;
    char name[256];
    if (!f.readf(name, head[19])) continue;
    sCiomLangDescrInfo* info = found.insert(next++);
    std::memcpy(info->code, head + 16, 3);
    _pc2w(name, info->name, head[19]);
    info->path = path;
  }
  return true;
}
