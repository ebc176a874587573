#include "startgate.h"

#include <algorithm>
#include <optional>

#include "zorb/csigstrrules.h"

namespace {

using sValues = sHexSearchRule::sByteDescr;

struct sByteDemand {
  unsigned int offset = 0;
  sValues values{};
};

// How many blocks a demand lets through, roughly: the number of values, with the bytes
// that fill empty space on disks (zero, FF, blank) counting as many.
int cost(const sValues& values) {
  return values.count() + (values.has(0x00) ? 1024 : 0) + (values.has(0xFF) ? 256 : 0) +
         (values.has(0x20) ? 64 : 0);
}

sValues only(unsigned char v) {
  sValues s{};
  s.add(v);
  return s;
}

// The single byte that a content rule demands most narrowly whenever it hits; none when
// the rule can hit without a demand at a fixed offset.
std::optional<sByteDemand> ruleDemand(const cScanSigRule& rule) {
  switch (rule.typeOf()) {
  case 1: {
    const auto& r = static_cast<const cScanSigRuleExactMatch&>(rule);
    const long long n = r.bytes().count();
    if (n == 0) return std::nullopt;
    long long best = 0;
    for (long long i = 1; i < n; ++i) {
      if (cost(only(r.bytes().data()[i])) < cost(only(r.bytes().data()[best]))) best = i;
    }
    return sByteDemand{r.offset() + static_cast<unsigned int>(best), only(r.bytes().data()[best])};
  }
  case 6: {
    const auto& r = static_cast<const cScanSigRuleMaskMatch&>(rule);
    // The field byte that lets the fewest through; a value bit outside the mask never hits.
    std::optional<sByteDemand> best;
    for (int i = 0; i < (1 << r.width()); ++i) {
      const auto m = static_cast<unsigned char>(r.mask() >> (8 * i));
      const auto v = static_cast<unsigned char>(r.value() >> (8 * i));
      sValues s{};
      for (int x = 0; x < 256 && (r.value() & ~r.mask()) == 0; ++x) {
        if ((x & m) == v) s.add(static_cast<unsigned char>(x));
      }
      if (!best || cost(s) < cost(best->values)) {
        best = sByteDemand{r.offset() + static_cast<unsigned int>(i), s};
      }
    }
    return best;
  }
  case 7: {
    const auto& r = static_cast<const cScanSigRuleUniHexMatch&>(rule);
    const auto& p = r.pattern();
    if (r.blockSize() != 0 || r.offset() < 0 || p.count() == 0) return std::nullopt;
    long long best = 0;
    for (long long i = 1; i < p.count(); ++i) {
      if (cost(p.data()[i]) < cost(p.data()[best])) best = i;
    }
    return sByteDemand{static_cast<unsigned int>(r.offset() + best), p.data()[best]};
  }
  default:
    return std::nullopt;
  }
}

// What a definition demands of every block it hits: with ALL rules, the narrowest demand
// of any rule; with ANY rule, one demand from each. Empty with false when it cannot be
// judged.
bool nodeDemands(const cScanSignature& node, std::vector<sByteDemand>& out) {
  out.clear();
  for (const cScanSigRule* r = node.first_str(); r; r = node.next_str(r)) {
    const std::optional<sByteDemand> d = ruleDemand(*r);
    if (!node.allRules && !d) return false;
    if (!d) continue;
    if (node.allRules && !out.empty()) {
      if (cost(d->values) < cost(out[0].values)) out[0] = *d;
    } else {
      out.push_back(*d);
    }
  }
  return !out.empty();
}

} // namespace

cStartGate::cStartGate(const cCustomSignaturesTree& tree) {
  gather(tree.firstSig());
}

void cStartGate::gather(const cScanSignature* first) {
  std::vector<sByteDemand> demands;
  for (const cScanSignature* node = first; node && !myAlwaysOpen; node = node->nextSig()) {
    if (node->subset) {
      myAlwaysOpen = true; // its rules read the block from a place found at scan time
    } else if (node->hasStrRules()) {
      if (!nodeDemands(*node, demands)) myAlwaysOpen = true;
      for (const sByteDemand& d : demands) demand(d.offset, d.values);
    } else {
      gather(node->firstChildSig()); // a node without rules hands the block on
    }
  }
  if (myAlwaysOpen) myDemands.clear();
}

void cStartGate::demand(unsigned int offset, const sHexSearchRule::sByteDescr& values) {
  auto at = std::lower_bound(myDemands.begin(), myDemands.end(), offset,
                             [](const sDemand& d, unsigned int o) { return d.offset < o; });
  if (at == myDemands.end() || at->offset != offset) at = myDemands.insert(at, {offset, {}});
  for (int w = 0; w < 8; ++w) at->values.bits[w] |= values.bits[w];
}
