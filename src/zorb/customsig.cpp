#include "customsig.h"

#include <utility>

// ---- cScanSignature ---------------------------------------------------------------------

void cScanSignature::create(const char* newName, const char* newExt) {
  myStrRules.destroy();
  myEndRules.destroy();
  name.set(newName);
  ext.set(newExt);
}

std::unique_ptr<cScanSignature> cScanSignature::copy() const {
  auto c = std::make_unique<cScanSignature>();
  c->create(name.c_str(), ext.c_str());
  c->extVFID = extVFID;
  c->hitMode = hitMode;
  c->allRules = allRules;
  if (subset && !(c->subset = subset->clone())) return nullptr;
  for (const cScanSigRule* r = first_str(); r; r = next_str(r)) {
    std::unique_ptr<cScanSigRule> rule = r->clone();
    if (!rule) return nullptr;
    c->addStrRule(std::move(rule));
  }
  for (const cScanSigEndRule* r = first_end(); r; r = next_end(r)) {
    std::unique_ptr<cScanSigEndRule> rule = r->clone();
    if (!rule) return nullptr;
    c->addEndRule(std::move(rule));
  }
  return c;
}

void cScanSignature::swapContent(cScanSignature& other) noexcept {
  std::swap(name, other.name);
  std::swap(ext, other.ext);
  std::swap(hitMode, other.hitMode);
  std::swap(allRules, other.allRules);
  subset.swap(other.subset);
  myStrRules.swap(other.myStrRules);
  myEndRules.swap(other.myEndRules);
}

cScanSigRule* cScanSignature::addStrRule(std::unique_ptr<cScanSigRule> rule) {
  return static_cast<cScanSigRule*>(myStrRules.add(std::move(rule)));
}

cScanSigEndRule* cScanSignature::addEndRule(std::unique_ptr<cScanSigEndRule> rule) {
  return static_cast<cScanSigEndRule*>(myEndRules.add(std::move(rule)));
}

std::unique_ptr<cScanSigRule> cScanSignature::remove(cScanSigRule* rule) {
  return std::unique_ptr<cScanSigRule>(
      static_cast<cScanSigRule*>(myStrRules.remove(rule).release()));
}

std::unique_ptr<cScanSigEndRule> cScanSignature::remove(cScanSigEndRule* rule) {
  return std::unique_ptr<cScanSigEndRule>(
      static_cast<cScanSigEndRule*>(myEndRules.remove(rule).release()));
}

cScanSigRule* cScanSignature::first_str() const {
  return static_cast<cScanSigRule*>(myStrRules.first());
}

cScanSigRule* cScanSignature::next_str(const cScanSigRule* rule) const {
  return rule ? static_cast<cScanSigRule*>(rule->next()) : nullptr;
}

cScanSigEndRule* cScanSignature::first_end() const {
  return static_cast<cScanSigEndRule*>(myEndRules.first());
}

cScanSigEndRule* cScanSignature::next_end(const cScanSigEndRule* rule) const {
  return rule ? static_cast<cScanSigEndRule*>(rule->next()) : nullptr;
}

cScanSigRule* cScanSignature::first_typed_str(int type) const {
  for (cScanSigRule* r = first_str(); r; r = next_str(r)) {
    if (r->typeOf() == type) return r;
  }
  return nullptr;
}

cScanSigEndRule* cScanSignature::first_typed_end(int type) const {
  for (cScanSigEndRule* r = first_end(); r; r = next_end(r)) {
    if (r->typeOf() == type) return r;
  }
  return nullptr;
}

cScanSigEndRuleMatchSize* cScanSignature::getSizeEndRule() const {
  return static_cast<cScanSigEndRuleMatchSize*>(first_typed_end(etSizeField));
}

bool cScanSignature::match(const unsigned char* data, unsigned int size, unsigned int avail,
                           unsigned long long pos) {
  if (!hasStrRules()) return false;
  for (cScanSigRule* r = first_str(); r; r = next_str(r)) {
    const bool hit = r->match(data, size, avail);
    if (allRules && !hit) return false;
    if (!allRules && hit) {
      matchNotify(data, pos, avail); // in ANY mode an unreadable size field is no veto
      return true;
    }
  }
  return allRules && matchNotify(data, pos, avail);
}

bool cScanSignature::matchNotify(const unsigned char* data, unsigned long long pos,
                                 unsigned int avail) {
  startPos = pos;
  cScanSigEndRuleMatchSize* size = getSizeEndRule();
  return !size || size->init(data, avail);
}

bool cScanSignature::shouldEnd(const unsigned char* data, unsigned int size, unsigned int avail,
                               unsigned long long pos, unsigned int& endOffset) {
  if (startPos == kNoFile) {
    endOffset = 0;
    return true;
  }
  for (cScanSigEndRule* r = first_end(); r; r = next_end(r)) {
    if (r->match(data, size, avail, pos - startPos, endOffset)) {
      startPos = kNoFile;
      return true;
    }
  }
  return false;
}

// ---- cCustomSignaturesTree --------------------------------------------------------------

cScanSignature* cCustomSignaturesTree::find_match(const unsigned char* data, unsigned int size,
                                                  unsigned int avail, unsigned long long pos) {
  if (!firstSig()) return nullptr;
  cScanSignature* found = find_match_level(firstSig(), data, size, avail, pos);
  return found && found->hitMode != cScanSignature::hmNever ? found : nullptr;
}

cScanSignature* cCustomSignaturesTree::find_match_level(cScanSignature* first,
                                                        const unsigned char* data,
                                                        unsigned int size, unsigned int avail,
                                                        unsigned long long pos) {
  for (cScanSignature* node = first; node; node = node->nextSig()) {
    const unsigned char* d = data; // every sibling starts from the level's own range
    unsigned int s = size, a = avail;
    if (node->subset) {
      const unsigned int at = node->subset->subset(d, a);
      // A subset that is not found leaves the range as it is; one past the range skips.
      if (at != cScanSigSubset::kNotFound) {
        if (at >= s || at >= a) continue;
        d += at;
        s -= at;
        a -= at;
      }
    }
    cScanSignature* child = node->firstChildSig();
    if (node->hasStrRules()) {
      if (!node->match(d, s, a, pos)) continue;
      node->matchNotify(d, pos, a);
      if (child) {
        if (cScanSignature* deeper = find_match_level(child, d, s, a, pos)) return deeper;
      }
      return node;
    }
    if (child) {
      if (cScanSignature* deeper = find_match_level(child, d, s, a, pos)) return deeper;
    }
  }
  return nullptr;
}

bool cCustomSignaturesTree::shouldEnd(cScanSignature* node, const unsigned char* data,
                                      unsigned int size, unsigned int avail, unsigned long long pos,
                                      unsigned int& endOffset) {
  for (cScanSignature* n = node; n; n = n->parentSig()) {
    if (n->hasEndRules() && n->shouldEnd(data, size, avail, pos, endOffset)) return true;
  }
  return false;
}

cScanSignature* cCustomSignaturesTree::copySubtree(const cScanSignature& top,
                                                   cCustomSignaturesTree& into,
                                                   tNodeOrigins* origins) {
  // In tree order a parent is copied before its children, and siblings in their order, so
  // appending each copy under its parent's copy keeps every place.
  std::unordered_map<const cScanSignature*, cScanSignature*> copies;
  cScanSignature* made = nullptr;
  for (const cTreeItem* i = &top; i; i = i->nextInOrder(&top)) {
    const auto* node = static_cast<const cScanSignature*>(i);
    std::unique_ptr<cScanSignature> copied = node->copy();
    if (!copied) {
      into.remove(made).reset();
      return nullptr;
    }
    cScanSignature* parent = node == &top ? nullptr : copies.at(node->parentSig());
    cScanSignature* added = into.add(parent, std::move(copied));
    if (!made) made = added;
    copies.emplace(node, added);
    if (origins) origins->emplace(added, node);
  }
  return made;
}

bool cCustomSignaturesTree::copyTo(cCustomSignaturesTree& into, tNodeOrigins& origins) const {
  into.destroy();
  origins.clear();
  for (const cScanSignature* top = firstSig(); top; top = top->nextSig()) {
    if (!copySubtree(*top, into, &origins)) {
      into.destroy();
      origins.clear();
      return false;
    }
  }
  return true;
}

void cCustomSignaturesTree::enumTerminalRules(const cScanSignature* first, int& count) const {
  for (const cScanSignature* row = first; row; row = row->nextSig()) {
    for (const cTreeItem* p = row; p; p = p->nextInOrder(row)) {
      if (static_cast<const cScanSignature*>(p)->hitMode > cScanSignature::hmNever) ++count;
    }
  }
}

unsigned int cCustomSignaturesTree::numRules() const {
  int count = 0;
  enumTerminalRules(firstSig(), count);
  return static_cast<unsigned int>(count);
}

void cCustomSignaturesTree::resetExtID_level(cScanSignature* first) {
  for (cScanSignature* row = first; row; row = row->nextSig()) {
    for (cTreeItem* p = row; p; p = p->nextInOrder(row)) {
      static_cast<cScanSignature*>(p)->extVFID = -1;
    }
  }
}

void cCustomSignaturesTree::resetExtVFIDs() {
  resetExtID_level(firstSig());
}
