// PDF by its end-of-file markers; ELF programs, fonts and SQLite databases by their
// headers and tables; HTML and XML by their last tag.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>

#include "walkers.h"
#include "zorb/textbytes.h"

namespace walkers {

namespace {

bool digit(unsigned char c) {
  return c >= '0' && c <= '9';
}

// Whether what stands at p continues a PDF after an end-of-file marker: an incremental
// update, which begins with an object ("12 0 obj"), a cross-reference section or a
// comment, after white space.
bool pdfContinues(cByteSource& s, tPos p) {
  for (int i = 0; i < 64; ++i, ++p) {
    const unsigned char* c = s.at(p, 1);
    if (!c) return false;
    if (*c != ' ' && *c != '\t' && *c != '\r' && *c != '\n') break;
  }
  const unsigned char* t = s.at(p, 16);
  if (!t) return false;
  if (std::memcmp(t, "xref", 4) == 0) return true;
  if (t[0] == '%') return std::memcmp(t, "%PDF", 4) != 0; // a new document is not ours
  // An object number, a generation number and "obj".
  int i = 0;
  while (i < 10 && digit(t[i])) ++i;
  if (i == 0 || t[i++] != ' ') return false;
  const int generation = i;
  while (i < 13 && digit(t[i])) ++i;
  return i > generation && t[i] == ' ' && std::memcmp(t + i + 1, "obj", 3) == 0;
}

} // namespace

// The file runs to its last end-of-file marker ("%%EOF" and the line end after it, CR,
// LF or both): a marker followed by an incremental update is not the last.
tPos walkPdf(cByteSource& s, tPos start) {
  const unsigned char* h = s.at(start, 5);
  if (!h || std::memcmp(h, "%PDF-", 5) != 0) return 0;
  const tPos end = s.size();
  for (tPos q = find(s, start + 5, "%%EOF"); q < end; q = find(s, q + 5, "%%EOF")) {
    tPos e = q + 5;
    const unsigned char* c = s.at(e, 1);
    if (c && *c == '\r') c = s.at(++e, 1);
    if (c && *c == '\n') ++e;
    if (!pdfContinues(s, e)) return e - start;
  }
  return 0;
}

// The furthest of the ELF header, the program and section header tables and the parts of
// the file that program headers and (other than NOBITS) section headers point to.
tPos walkElf(cByteSource& s, tPos start) {
  const unsigned char* h = s.at(start, 64);
  if (!h || std::memcmp(h,
                        "\x7F"
                        "ELF",
                        4) != 0)
    return 0;
  if ((h[4] != 1 && h[4] != 2) || (h[5] != 1 && h[5] != 2) || h[6] != 1) return 0;
  const bool wide = h[4] == 2, big = h[5] == 2;
  const auto n = [&](const unsigned char* p, unsigned int size) { return number(p, size, big); };
  const unsigned int word = wide ? 8 : 4;
  const tPos phoff = n(h + (wide ? 32 : 28), word), shoff = n(h + (wide ? 40 : 32), word);
  const unsigned char* counts = h + (wide ? 52 : 40);
  const tPos ehsize = n(counts, 2), phentsize = n(counts + 2, 2), phnum = n(counts + 4, 2);
  const tPos shentsize = n(counts + 6, 2), shnum = n(counts + 8, 2);
  const tPos room = s.size() - start;
  tPos furthest = ehsize;
  const auto extend = [&](tPos offset, tPos length) {
    if (offset > room || length > room - offset) return false;
    furthest = std::max(furthest, offset + length);
    return true;
  };
  if (ehsize < (wide ? 64u : 52u) || ehsize > room) return 0;
  if (phnum && (phentsize < (wide ? 56u : 32u) || !extend(phoff, phnum * phentsize))) return 0;
  if (shnum && (shentsize < (wide ? 64u : 40u) || !extend(shoff, shnum * shentsize))) return 0;
  for (tPos i = 0; i < phnum; ++i) {
    const unsigned char* p = s.at(start + phoff + i * phentsize, wide ? 48 : 32);
    if (!p) return 0;
    const tPos offset = n(p + (wide ? 8 : 4), word), size = n(p + (wide ? 32 : 16), word);
    if (!extend(offset, size)) return 0;
  }
  for (tPos i = 0; i < shnum; ++i) {
    const unsigned char* p = s.at(start + shoff + i * shentsize, wide ? 40 : 24);
    if (!p) return 0;
    if (n(p + 4, 4) == 8) continue; // NOBITS: takes no room in the file
    const tPos offset = n(p + (wide ? 24 : 16), word), size = n(p + (wide ? 32 : 20), word);
    if (!extend(offset, size)) return 0;
  }
  return furthest;
}

// TrueType and OpenType (CFF outlines, "OTTO"): the table directory's furthest table.
// Tables are padded to four bytes, the last one too when the padding is there as zeros.
tPos walkFont(cByteSource& s, tPos start) {
  const unsigned char* h = s.at(start, 12);
  if (!h) return 0;
  const tPos version = be32(h), tables = be16(h + 4);
  if (version != 0x00010000 && version != 0x4F54544F && version != 0x74727565) return 0;
  if (tables == 0 || tables > 512) return 0;
  const tPos room = s.size() - start;
  tPos furthest = 12 + 16 * tables;
  if (furthest > room) return 0;
  for (tPos i = 0; i < tables; ++i) {
    const unsigned char* r = s.at(start + 12 + 16 * i, 16);
    if (!r || !std::all_of(r, r + 4, [](unsigned char c) { return c >= 0x20 && c <= 0x7E; }))
      return 0;
    const tPos offset = be32(r + 8), length = be32(r + 12);
    if (offset < 12 + 16 * tables || offset > room || length > room - offset) return 0;
    furthest = std::max(furthest, offset + length);
  }
  const tPos padded = (furthest + 3) & ~tPos{3};
  const unsigned char* pad = padded <= room ? s.at(start + furthest, padded - furthest) : nullptr;
  if (pad && std::all_of(pad, pad + (padded - furthest), [](unsigned char c) { return !c; }))
    furthest = padded;
  return furthest;
}

// The page size times the page count, when the header's count is valid (its "valid for"
// number equals the change counter, as SQLite writes it).
tPos walkSqlite(cByteSource& s, tPos start) {
  const unsigned char* h = s.at(start, 64);
  if (!h || std::memcmp(h, "SQLite format 3\0", 16) != 0) return 0;
  const tPos raw = be16(h + 16);
  const tPos page = raw == 1 ? 65536 : raw;
  const unsigned char* validFor = s.at(start + 92, 4);
  if (page < 512 || (page & (page - 1)) || !validFor || be32(h + 24) != be32(validFor)) return 0;
  const tPos pages = be32(h + 28);
  if (pages == 0 || pages > (s.size() - start) / page) return 0;
  return pages * page;
}

namespace {

bool nameByte(unsigned char c) {
  return std::isalnum(c) || c == ':' || c == '_' || c == '-' || c == '.';
}

// The name of the root element, lower-cased: the first element's after the declarations,
// comments and document type; empty when there is none near the start.
std::string rootName(cByteSource& s, tPos p) {
  constexpr tPos kNear = 64 * 1024;
  const tPos until = p + kNear;
  while (p < until) {
    const unsigned char* c = s.at(p, 4);
    if (!c) return {};
    if (std::isspace(c[0])) {
      ++p;
    } else if (c[0] != '<') {
      return {};
    } else if (c[1] == '?' || c[1] == '!') {
      // To the end of the declaration or comment.
      const bool comment = std::memcmp(c, "<!--", 4) == 0;
      for (p += 2; p < until; ++p) {
        const unsigned char* e = s.at(p, 3);
        if (!e) return {};
        if (comment ? std::memcmp(e, "-->", 3) == 0 : e[0] == '>') break;
      }
      p += comment ? 3 : 1;
    } else {
      std::string name;
      for (const unsigned char* n;
           name.size() < 60 && (n = s.at(p + 1 + name.size(), 1)) && nameByte(*n);)
        name += static_cast<char>(std::tolower(*n));
      return name;
    }
  }
  return {};
}

} // namespace

// A page or document of markup runs from its start over text (to the first byte that is
// no text) and ends with the closing tag of its root element, or failing that with its
// last tag, and the line end right after it (LF or CR LF). Text that runs on to the limit
// gives no length.
tPos walkMarkup(cByteSource& s, tPos start) {
  const unsigned char* h = s.at(start, 1);
  if (!h || *h != '<') return 0;
  const std::string close = "/" + rootName(s, start);
  const tPos end = s.size();
  tPos p = start, lastTag = 0, lastClose = 0;
  std::string tag; // what stands after the last '<', up to a bound
  for (;;) {
    tPos have = 1 << 16;
    const unsigned char* d = s.span(p, have);
    if (!d) return 0; // no byte after the text before the limit
    tPos i = 0;
    for (; i < have && zorb::isTextByte(d[i]); ++i) {
      const unsigned char c = d[i];
      if (c == '<') {
        tag.clear();
      } else if (c == '>') {
        lastTag = p + i + 1;
        const size_t name = tag.find_first_of(" \t\r\n");
        if (close.size() > 1 && tag.substr(0, name) == close) lastClose = lastTag;
        tag = "-"; // no tag until the next '<'
      } else if (tag.size() < 64 && tag != "-") {
        tag += static_cast<char>(std::tolower(c));
      }
    }
    p += i;
    if (i < have || p >= end) break;
  }
  const tPos last = lastClose ? lastClose : lastTag;
  if (p >= end || last == 0) return 0;
  const unsigned char* after = s.at(last, 2);
  if (after && after[0] == '\r' && after[1] == '\n') return last + 2 - start;
  if ((after = s.at(last, 1)) && after[0] == '\n') return last + 1 - start;
  return last - start;
}

} // namespace walkers
