#include "describe.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <string_view>

#include "base/files.h"
#include "zorb/csigtext.h"

std::string hitModeText(int hitMode) {
  switch (hitMode) {
  case 0:
    return "Never (container)";
  case 1:
    return "If no other hits (passive)";
  case 2:
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

bool buildRulesText(const char* path, cFileIO& file, cCustomSignaturesTree& tree) {
  constexpr unsigned long long kMaxText = 64ull << 20;
  const unsigned long long size = file.size();
  if (size > kMaxText) {
    std::fprintf(stderr, "qvraci-rules: %s: too large for a definition text (over %llu MiB)\n",
                 path, kMaxText >> 20);
    return false;
  }
  std::string text(static_cast<size_t>(size), '\0');
  if (!file.set_fp(0) || (size && !file.readf(text.data(), static_cast<unsigned int>(size)))) {
    std::fprintf(stderr, "qvraci-rules: %s: read failure\n", path);
    return false;
  }
  sRulesTextError error;
  if (!rulesFromText(text, tree, error)) {
    const std::string where = error.line ? ":" + std::to_string(error.line) : "";
    std::fprintf(stderr, "qvraci-rules: %s%s: %s\n", path, where.c_str(), error.message.c_str());
    return false;
  }
  return true;
}

bool loadRules(const char* path, cCustomSignaturesTree& tree) {
  cFileIO file;
  if (!file.open(path, fmRead)) {
    std::fprintf(stderr, "qvraci-rules: %s: cannot be opened: %s\n", path, std::strerror(errno));
    return false;
  }
  // A definition text where a rules file is expected is built in memory.
  static constexpr std::string_view kTextHeader = "qvraci-rules text";
  char head[kTextHeader.size()] = {};
  if (file.size() >= kTextHeader.size() && file.readf(head, sizeof head) &&
      std::string_view(head, sizeof head) == kTextHeader)
    return buildRulesText(path, file, tree);
  if (!file.set_fp(0)) {
    std::fprintf(stderr, "qvraci-rules: %s: read failure\n", path);
    return false;
  }
  const int result = tree.load(&file);
  if (result != 0) {
    std::fprintf(stderr, "qvraci-rules: %s: %s\n", path, loadResultText(result));
    return false;
  }
  return true;
}
