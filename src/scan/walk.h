// Structure walkers: find where a file ends by following its own layout, for formats whose
// end no rule can find exactly. A GIF's trailer byte also occurs inside its image data, a
// JPEG holds the end marker of its thumbnail, MP4 and MPEG program streams have neither a
// total size nor a footer, ELF programs and fonts end where their furthest part ends, and
// compressed streams end where their decoder (zlib, libbz2, liblzma) says they do.
//
// A walk reads only from its start up to the limit it is given, and stops with no length
// when the structure is broken, cut short or longer than the limit. Decoders also stop
// when a stream would decode to far more than it holds (a bomb), so a walk's time is
// bounded by the bytes it may read.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "source.h"

enum class eWalker {
  none,
  gif,
  isoMedia,
  mpegProgram,
  jpeg,
  png,
  tiff,
  zip,
  pdf,
  elf,
  font,
  gzip,
  bzip2,
  xz,
  sevenZip,
  sqlite,
  markup,
  ogg,
  matroska,
  flv,
  mp3,
  tar,
  riff,
  asf,
  bmp,
  count // the number of kinds, none included
};

// The walker for files with that extension: gif; mp4, mov, m4a, m4v, 3gp, 3g2; mpg, mpeg,
// vob; jpg, jpeg; png; tif, tiff; zip and the formats built on it (docx, xlsx, pptx, odt,
// ods, odp, epub, jar, apk); pdf; elf, so, o; ttf, otf; gz, tgz; bz2; xz; 7z; sqlite, db;
// html, htm, xhtml, xml, svg; ogg, oga, ogv, opus; mkv, mka, webm; flv; mp3; tar; wav,
// avi, webp; wmv, wma, asf; bmp.
eWalker walkerFor(std::string_view extension);

// The length of the file of that format that starts at start, reading no further than
// start + limit; 0 when the structure is broken before it ends or runs past the limit.
// reached, when given, receives the end of the furthest byte the walk read.
unsigned long long walkLength(eWalker walker, cByteSource& source, unsigned long long start,
                              unsigned long long limit, unsigned long long* reached = nullptr);
