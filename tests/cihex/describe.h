// Test helpers: compile a pattern and describe its positions as readable text.
#pragma once

#include <string>
#include <vector>

#include "cihex/search.h"

// One position: "*" allows every byte, "" none, "^00,0A" all but those, else the allowed
// values with runs as ranges ("41,61", "40-4F").
inline std::string describe(const sHexSearchRule::sByteDescr& d) {
  const int n = d.count();
  if (n == 256) return "*";
  const bool inverse = n > 128;
  std::string out = inverse ? "^" : "";
  char buf[16];
  for (int v = 0; v < 256; ++v) {
    if (d.has(static_cast<unsigned char>(v)) == inverse) continue;
    int end = v;
    while (end + 1 < 256 && d.has(static_cast<unsigned char>(end + 1)) != inverse) ++end;
    if (out.size() > (inverse ? 1u : 0u)) out += ",";
    if (end > v + 1) {
      snprintf(buf, sizeof buf, "%02X-%02X", v, end);
    } else {
      snprintf(buf, sizeof buf, "%02X", v);
      end = v;
    }
    out += buf;
    v = end;
  }
  return out;
}

inline std::vector<std::string> describe(const sHexSearchRule::_pattern& p) {
  std::vector<std::string> out;
  for (const auto& d : p) out.push_back(describe(d));
  return out;
}

// The positions of a pattern, or {"FAIL"} when it does not compile.
inline std::vector<std::string> adv(const char* text) {
  sHexSearchRule::_pattern p;
  if (!sHexSearchRule::cnvAdv(p, text)) return {"FAIL"};
  return describe(p);
}

using positions = std::vector<std::string>;
inline const positions kFail = {"FAIL"};
