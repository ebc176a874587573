// The editor's language table: its sections in English, built into the program.
#pragma once

#include "ciom/langtable.h"

class cRuledLang : public cStaticLangTable {
public:
  cRuledLang();
  static const sLangDef* rows();
  static constexpr long long kRows = 1;
};

// Registered during static initialisation, before any other table.
extern cRuledLang gRuledLang;
