#include "startgate.h"

#include <algorithm>
#include <optional>

#include "zorb/csigstrrules.h"

namespace {

using sValues = cStartGate::sValues;
using sDemand = cStartGate::sDemand;

// How many blocks a demanded byte lets through, roughly: the number of values, with the
// bytes that fill empty space on disks (zero, FF, blank) counting as many.
long long cost(const sValues& values) {
  return values.count() + (values.has(0x00) ? 1024 : 0) + (values.has(0xFF) ? 256 : 0) +
         (values.has(0x20) ? 64 : 0);
}

long long cost(const sDemand& d) {
  long long c = 1;
  for (const sValues& v : d.values) c *= cost(v);
  return d.values.size() == 1 ? c * 256 : c; // a lone byte lets any second one through
}

// The narrowest one or two neighbouring bytes among the values demanded from offset on.
sDemand narrowest(unsigned int offset, const std::vector<sValues>& run) {
  if (run.size() == 1) return {offset, run};
  sDemand best;
  for (size_t i = 0; i + 1 < run.size(); ++i) {
    sDemand d{offset + static_cast<unsigned int>(i), {run[i], run[i + 1]}};
    if (best.values.empty() || cost(d) < cost(best)) best = std::move(d);
  }
  return best;
}

// What a content rule demands whenever it hits; none when it can hit without a demand at
// a fixed offset.
std::optional<sDemand> ruleDemand(const cScanSigRule& rule) {
  sByteDemand d = rule.demand();
  if (d.values.empty()) return std::nullopt;
  return narrowest(d.offset, d.values);
}

// What a definition demands of every block it hits: with ALL rules, the narrowest demand
// of any rule; with ANY rule, one demand from each. False when it cannot be judged.
bool nodeDemands(const cScanSignature& node, std::vector<sDemand>& out) {
  out.clear();
  for (const cScanSigRule* r = node.first_str(); r; r = node.next_str(r)) {
    std::optional<sDemand> d = ruleDemand(*r);
    if (!node.allRules && !d) return false;
    if (!d) continue;
    if (node.allRules && !out.empty()) {
      if (cost(*d) < cost(out[0])) out[0] = std::move(*d);
    } else {
      out.push_back(std::move(*d));
    }
  }
  return !out.empty();
}

} // namespace

cStartGate::cStartGate(const cCustomSignaturesTree& tree) {
  gather(tree.firstSig());
}

void cStartGate::candidates(const unsigned char* data, unsigned int from, unsigned int to,
                            unsigned int step, unsigned int avail,
                            std::vector<unsigned int>& out) const {
  out.clear();
  if (from >= to) return;
  // Asks for each position of [first, to) alone.
  const auto oneByOne = [&](unsigned long long first) {
    for (unsigned long long q = first; q < to; q += step) {
      if (mayStart(data + q, avail - static_cast<unsigned int>(q))) {
        out.push_back(static_cast<unsigned int>(q));
      }
    }
  };
  // One position, or a gate that cannot judge.
  if (to - from <= step || myAlwaysOpen || myWindows.empty()) return oneByOne(from);
  const unsigned int first = myWindows.front().offset, last = myWindows.back().offset;
  // Positions whose pairs all lie within the data are found from the pairs; the few near
  // the end of the data, where a window may hold a lone byte or nothing, one by one.
  unsigned int whole = from;
  if (avail > last + 1) whole = std::max(from, std::min(to, avail - last - 1));
  const auto aligned = [&](unsigned int q) {
    return q >= from && q < whole && (q - from) % step == 0;
  };
  // With no such position, p would run past the data.
  for (unsigned int p = from + first; whole > from && p < whole + last; ++p) {
    if (!has(myAnyPair, data + p)) continue;
    for (const sWindow& w : myWindows) {
      if (p >= w.offset && aligned(p - w.offset) && has(w.pairs, data + p)) {
        out.push_back(p - w.offset);
      }
    }
  }
  std::sort(out.begin(), out.end());
  out.erase(std::unique(out.begin(), out.end()), out.end());
  oneByOne(from + (whole > from ? (whole - from + step - 1) / step * step : 0));
}

void cStartGate::gather(const cScanSignature* first) {
  std::vector<sDemand> demands;
  for (const cScanSignature* node = first; node && !myAlwaysOpen; node = node->nextSig()) {
    if (node->subset) {
      myAlwaysOpen = true; // its rules read the block from a place found at scan time
    } else if (node->hasStrRules()) {
      if (!nodeDemands(*node, demands)) myAlwaysOpen = true;
      for (const sDemand& d : demands) demand(d);
    } else {
      gather(node->firstChildSig()); // a node without rules hands the block on
    }
  }
  if (myAlwaysOpen) myWindows.clear();
}

void cStartGate::demand(const sDemand& d) {
  auto at = std::lower_bound(myWindows.begin(), myWindows.end(), d.offset,
                             [](const sWindow& w, unsigned int o) { return w.offset < o; });
  if (at == myWindows.end() || at->offset != d.offset) {
    at = myWindows.insert(at, sWindow{});
    at->offset = d.offset;
  }
  sValues second{};
  if (d.values.size() == 1) {
    second.addAll();
    for (int w = 0; w < 8; ++w) at->lone.bits[w] |= d.values[0].bits[w];
  } else {
    second = d.values[1];
  }
  for (unsigned int a = 0; a < 256; ++a) {
    if (!d.values[0].has(static_cast<unsigned char>(a))) continue;
    for (unsigned int b = 0; b < 256; ++b) {
      if (!second.has(static_cast<unsigned char>(b))) continue;
      const unsigned int v = a | b << 8;
      at->pairs[v >> 6] |= uint64_t{1} << (v & 63);
      myAnyPair[v >> 6] |= uint64_t{1} << (v & 63);
    }
  }
}
