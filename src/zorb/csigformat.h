// Layout constants of the rules file ("*.qrrs"). All integers are little-endian.
//
//   magic (8) | level
//   level:  { 0x01 node }* 0x00
//   node:   flags (hit mode bits 0-2, 8 = ANY, subset type << 4) | subset parameters |
//           name | extension | { type content-rule }* 0x00 | { type end-rule }* 0x00 | level
//   string: "QVRASI01": u16 n, n bytes; "QVRASI00": u32 n units, 2n bytes UTF-16LE
#pragma once

namespace qrrs {

constexpr char kMagic[] = "QVRASI01";    // written
constexpr char kOldMagic[] = "QVRASI00"; // also read
constexpr int kMagicSize = 8;

constexpr unsigned char kNode = 0x01;
constexpr unsigned char kEnd = 0x00;
constexpr unsigned char kAnyRules = 0x08;

constexpr unsigned int kMaxName = 4095;       // names, extensions, byte rules
constexpr unsigned int kMaxQuoted = 4092;     // string rules, which gain quotes and a sign
constexpr unsigned int kMaxMagicText = 65535; // the magic subset's text (as a u16 text)

} // namespace qrrs
