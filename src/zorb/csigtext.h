// The text form of a definition tree: a readable, line-based file for version control and
// review, that builds back into the very same tree.
//
//   qvraci-rules text 1
//   # a comment line
//   definition "Images" mode never {
//     definition "JPEG image" ext "jpg" {
//       start at 0: FF D8 FF
//       end after 2: FF D9
//     }
//   }
//
// The first line that is not blank or a comment is the header. Then, one item per line:
//
//   definition "NAME" [ext "EXT"] [mode always|passive|never|0..7] [match all|any] {
//     ... the definition's subset, rules and child definitions, in any order ...
//   }
//   subset field at N width u8|u16le|u32le|u64le|u16be|u32be|u64be
//                [multiplier N] [increment N]
//   subset magic [after N]: PATTERN
//   start ascii-text | start unicode-text
//   start at N [block N]: PATTERN       (a pattern at a fixed offset, or on a grid)
//   start scan [block N]: PATTERN       (a pattern anywhere in the block)
//   end size at N width N [big-endian|little-endian] [multiplier N] [increment N]
//   end ascii-text | end unicode-text
//   end after N: PATTERN                (the file ends N bytes after the pattern begins)
//
// Defaults: ext "", mode always, match all, multiplier 1, increment 0, little-endian,
// after 0. Numbers are decimal or 0x-hex. PATTERN is Advanced/HEX text: everything after
// the colon, without the blanks around it. A pattern with control characters or blanks
// at its ends is written with the word `escaped` before the colon; then `\\` is a
// backslash and `\xHH` a byte. Names take `\"`, `\\` and `\xHH`.
//
// rulesToText writes every field the rules file keeps, so building its output saves the
// same bytes as saving the tree it came from.
#pragma once

#include <string>
#include <string_view>

#include "customsig.h"

// The header line of the present version.
inline constexpr char kRulesTextHeader[] = "qvraci-rules text 1";

struct sRulesTextError {
  int line = 0; // 1-based; 0 when it is about the whole text
  std::string message;
};

// The text of a tree as the rules file loads it (start rules 4, 5 and 7, end rules 1, 4,
// 5 and 7). False, with a message, for a rule of the older kinds, which only a tree built
// in memory can hold: save and load such a tree first.
bool rulesToText(const cCustomSignaturesTree& tree, std::string& text, std::string& error);

// Builds text into an empty tree. On failure the tree holds what was built so far, to be
// discarded, and error says where and what is wrong.
bool rulesFromText(std::string_view text, cCustomSignaturesTree& tree, sRulesTextError& error);

// True when the first line that is not blank or a comment names this text form, of any
// version: such bytes are read as a definition text, whose reader then says what is wrong.
bool looksLikeRulesText(std::string_view text);
