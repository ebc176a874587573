#include "describe.h"

#include <cstdio>

#include "zorb/rulesfile.h"

std::string hitModeText(int hitMode) {
  switch (hitMode) {
  case cScanSignature::hmNever:
    return "Never (container)";
  case cScanSignature::hmPassive:
    return "If no other hits (passive)";
  case cScanSignature::hmActive:
    return "Always (active)";
  default:
    return "hit mode " + std::to_string(hitMode);
  }
}

std::string combinationText(bool allRules) {
  return allRules ? "ALL own rules hit" : "ANY of own rules hits";
}

std::string subsetText(const cScanSigSubset* subset) {
  if (!subset) return "";
  char text[512];
  if (subset->typeOf() == stField) {
    static const char* const sizes[] = {"byte (8bit)",
                                        "word (16bit)",
                                        "double-word (32bit)",
                                        "quad-word (64bit)",
                                        "word (big endian, 16bit)",
                                        "double-word (big endian, 32bit)",
                                        "quad-word (big endian, 64bit)"};
    const auto* f = static_cast<const cFieldRelativeSubset*>(subset);
    std::snprintf(text, sizeof text,
                  "subset defined by offset: %s at %u (multiply by %u and add %u)",
                  sizes[f->width() % 7], f->offset(), f->multiplier(), f->increment());
  } else {
    const auto* m = static_cast<const cMagicRelativeSubset*>(subset);
    std::snprintf(text, sizeof text,
                  "subset defined by signature: advanced-hex: %s, %u bytes after it", m->text(),
                  m->offset());
  }
  return text;
}

std::string ruleText(const cScanSigRule& rule) {
  char text[16384];
  rule.genStdName(text, sizeof text);
  return text;
}

std::string ruleText(const cScanSigEndRule& rule) {
  char text[16384];
  rule.genStdName(text, sizeof text);
  return text;
}

bool loadRules(const char* path, cCustomSignaturesTree& tree) {
  const sRulesFileResult loaded = loadRulesFile(path, tree);
  if (!loaded.ok()) std::fprintf(stderr, "qvraci-rules: %s\n", loaded.message.c_str());
  return loaded.ok();
}
