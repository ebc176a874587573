// Definitions from the configurations of other carvers: foremost.conf and scalpel.conf
// (extension, case sensitivity, maximum size, header, optional footer and keyword), and
// photorec's user signatures (extension, offset, magic of strings and hex values).
//
// Each line becomes one definition: the header as an Advanced/HEX pattern at the start
// (wildcards as any byte, case-insensitive letters as case-insensitive texts), the footer
// as an end rule that ends the file after it (or, with NEXT, before it) and the maximum
// size as a fixed-size end rule that caps the file. What the engine cannot express (a
// footer searched backwards, text carved around a keyword, an escape whose meaning is not
// certain) is not guessed: the line is left out and a note says why.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "zorb/customsig.h"

enum class eCarverFormat { foremost, scalpel, photorec };

struct sImportNote {
  int line = 0;
  std::string message;
};

struct sImported {
  int lines = 0; // the lines that define a file type: converted or noted
  std::vector<sImportNote> notes;
};

// Adds a container named `name` to tree holding one definition per line of config that
// defines a file type. With commented, lines behind a '#' that read as definitions count
// too: the packaged files ship every definition commented out.
sImported importCarverConfig(eCarverFormat format, std::string_view config, const std::string& name,
                             bool commented, cCustomSignaturesTree& tree);
