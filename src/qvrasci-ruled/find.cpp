#include "find.h"

#include <algorithm>
#include <cstring>

#include "base/str.h"

namespace {

// UTF-8 into lowered UTF-16 units, without a terminator.
void lowered(const char* utf8, long long len, std::vector<unsigned short>& out) {
  // UTF-8 never takes fewer bytes than the UTF-16 units it makes.
  out.resize(static_cast<size_t>(len));
  const long long made = len > 0 ? _pc2w(utf8, len, out.data(), len) : 0;
  out.resize(static_cast<size_t>(made));
  for (unsigned short& u : out) u = __acp_lower(u);
}

} // namespace

cDefinitionFinder::cDefinitionFinder(std::string_view text) {
  lowered(text.data(), static_cast<long long>(text.size()), myNeedle);
}

bool cDefinitionFinder::contains(const char* utf8) const {
  lowered(utf8, static_cast<long long>(std::strlen(utf8)), myHay);
  return std::search(myHay.begin(), myHay.end(), myNeedle.begin(), myNeedle.end()) != myHay.end();
}

bool cDefinitionFinder::matches(const cScanSignature& sig) const {
  return !empty() && (contains(sig.name.c_str()) || contains(sig.ext.c_str()));
}

const cScanSignature* cDefinitionFinder::next(const cCustomSignaturesTree& tree,
                                              const cScanSignature* from, bool backward,
                                              bool includeFrom) const {
  if (empty() || !tree.first()) return nullptr;
  auto step = [&](const cTreeItem* i) -> const cTreeItem* {
    const cTreeItem* n = backward ? i->prevInOrder() : i->nextInOrder();
    return n ? n : backward ? tree.lastInOrder() : tree.first();
  };
  const cTreeItem* first = !from ? tree.first() : includeFrom ? from : step(from);
  // Every node once, from the first round to it.
  const cTreeItem* i = first;
  do {
    const auto* sig = static_cast<const cScanSignature*>(i);
    if (matches(*sig)) return sig;
    i = step(i);
  } while (i != first);
  return nullptr;
}
