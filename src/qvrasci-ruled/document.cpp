#include "document.h"

#include <cstring>
#include <utility>

#include "base/folders.h"

namespace {

std::string safeExtension(const char* text) {
  std::string ext = text;
  const size_t slash = ext.find('/');
  constexpr std::pair<char, char> kSwaps[] = {{'"', '\''}, {'*', '@'}, {'/', '='}, {':', '_'},
                                              {'|', '_'},  {'?', '~'}, {'\\', '-'}};
  for (char& c : ext) {
    for (const auto& [from, to] : kSwaps) {
      if (c == from) {
        c = to;
        break;
      }
    }
  }
  if (slash != std::string::npos) ext.resize(slash);
  return ext;
}

} // namespace

int cRulesDocument::count(int hitMode) const {
  int n = 0;
  for (const cTreeItem* i = myTree.first(); i; i = i->nextInOrder())
    n += static_cast<const cScanSignature*>(i)->hitMode == hitMode;
  return n;
}

void cRulesDocument::setSaved(bool saved) {
  const bool news = saved != mySaved;
  mySaved = saved;
  if (news && myListener) myListener();
}

void cRulesDocument::setPath(const std::string& path) {
  const bool news = path != myPath;
  myPath = path;
  if (news && myListener) myListener();
}

// ---- files --------------------------------------------------------------------------------

void cRulesDocument::clear() {
  myTree.destroy();
  myForm = rfBinary;
  setPath("");
  setSaved(true);
}

sRulesFileResult cRulesDocument::open(const char* path) {
  cCustomSignaturesTree read;
  eRulesForm form = rfBinary;
  sRulesFileResult result = loadRulesFile(path, read, &form);
  if (result.outcome == sRulesFileResult::roCannotOpen) return result;
  myTree.destroy();
  while (cTreeItem* top = read.first()) myTree.cTree::add(nullptr, read.remove(top));
  myForm = form;
  setPath(result.ok() ? path : "");
  setSaved(result.ok());
  return result;
}

sRulesFileResult cRulesDocument::merge(const char* path) {
  const bool wasEmpty = empty();
  sRulesFileResult result = loadRulesFile(path, myTree);
  if (result.outcome == sRulesFileResult::roCannotOpen) return result;
  setSaved(wasEmpty && result.ok());
  return result;
}

sRulesFileResult cRulesDocument::save(const char* path) {
  const eRulesForm form = rulesFormOf(path) == rfText ? rfText : myForm;
  sRulesFileResult result = saveRulesFile(path, myTree, form);
  if (!result.ok()) return result;
  myForm = form;
  setPath(path);
  setSaved(true);
  return result;
}

// ---- definitions --------------------------------------------------------------------------

cScanSignature* cRulesDocument::addDefinition(cScanSignature* parent, const char* name) {
  auto fresh = std::make_unique<cScanSignature>();
  fresh->create(name, "undefined");
  fresh->hitMode = cScanSignature::hmNever;
  cScanSignature* sig = myTree.add(parent, std::move(fresh));
  changed();
  return sig;
}

void cRulesDocument::deleteDefinition(cScanSignature* sig) {
  if (!sig) return;
  myTree.remove(sig);
  changed();
}

bool cRulesDocument::rename(cScanSignature* sig, const char* name) {
  if (!name || !*name || std::strcmp(name, sig->name.c_str()) == 0) return false;
  sig->name.set(name);
  changed();
  return true;
}

bool cRulesDocument::setExtension(cScanSignature* sig, const char* text) {
  if (!text || !*text || std::strcmp(text, sig->ext.c_str()) == 0) return false;
  _guardchar<char> path(text);
  cFolderContents::adjustPath(path);
  sig->ext.set(safeExtension(path.c_str()).c_str());
  changed();
  return true;
}

cRulesDocument::eModeChange cRulesDocument::setHitMode(cScanSignature* sig, int hitMode) {
  if (hitMode == sig->hitMode) return mcUnchanged;
  if (hitMode != cScanSignature::hmNever && !sig->hasStrRules()) return mcNoRules;
  sig->hitMode = hitMode;
  changed();
  return mcChanged;
}

void cRulesDocument::setAllRules(cScanSignature* sig, bool allRules) {
  if (sig->allRules == allRules) return;
  sig->allRules = allRules;
  changed();
}

void cRulesDocument::setSubset(cScanSignature* sig, std::unique_ptr<cScanSigSubset> subset) {
  if (!sig->subset && !subset) return;
  sig->subset = std::move(subset);
  changed();
}

cRulesDocument::eContent cRulesDocument::content(const cScanSignature* sig) {
  if (sig->first_typed_str(rtIsUnicodeText)) return ctUnicode;
  if (sig->first_typed_str(rtIsAsciiText)) return ctAscii;
  return ctBinary;
}

void cRulesDocument::setContent(cScanSignature* sig, eContent content) {
  // Text rules come in pairs (the block is text; the file ends where the text does): drop
  // those of the other kinds, then add the chosen pair where missing.
  const struct {
    eContent content;
    eRuleType start;
    eEndRuleType end;
  } kPairs[] = {{ctAscii, rtIsAsciiText, etAsciiTextEnd},
                {ctUnicode, rtIsUnicodeText, etUnicodeTextEnd}};
  for (const auto& pair : kPairs) {
    if (pair.content == content) continue;
    while (cScanSigRule* r = sig->first_typed_str(pair.start)) sig->remove(r);
    while (cScanSigEndRule* r = sig->first_typed_end(pair.end)) sig->remove(r);
  }
  if (content == ctAscii) {
    if (!sig->first_typed_str(rtIsAsciiText))
      sig->addStrRule(std::make_unique<cScanSigRuleIsStr>());
    if (!sig->first_typed_end(etAsciiTextEnd))
      sig->addEndRule(std::make_unique<cScanSigEndRuleIsStrEnd>());
  } else if (content == ctUnicode) {
    if (!sig->first_typed_str(rtIsUnicodeText))
      sig->addStrRule(std::make_unique<cScanSigRuleIsUniStr>());
    if (!sig->first_typed_end(etUnicodeTextEnd))
      sig->addEndRule(std::make_unique<cScanSigEndRuleIsUniStrEnd>());
  }
  changed();
}

// ---- rules --------------------------------------------------------------------------------

cScanSigRule* cRulesDocument::addStartRule(cScanSignature* sig,
                                           std::unique_ptr<cScanSigRule> rule) {
  if (!rule) return nullptr;
  changed();
  return sig->addStrRule(std::move(rule));
}

cScanSigEndRule* cRulesDocument::addEndRule(cScanSignature* sig,
                                            std::unique_ptr<cScanSigEndRule> rule) {
  if (!rule) return nullptr;
  changed();
  return sig->addEndRule(std::move(rule));
}

bool cRulesDocument::setStartRule(cScanSigRuleUniHexMatch* rule, const char* pattern,
                                  unsigned int blockSize, unsigned int position) {
  if (static_cast<unsigned int>(rule->blockSize()) == blockSize &&
      static_cast<unsigned int>(rule->offset()) == position &&
      std::strcmp(rule->text(), pattern) == 0)
    return false;
  if (!rule->create(pattern, blockSize, position)) return false;
  changed();
  return true;
}

bool cRulesDocument::setEndRule(cScanSigEndRuleUniHex* rule, const char* pattern,
                                unsigned int distance) {
  if (rule->distance() == distance && std::strcmp(rule->text(), pattern) == 0) return false;
  if (!rule->create(pattern, distance)) return false;
  changed();
  return true;
}

bool cRulesDocument::setSizeRule(cScanSigEndRuleMatchSize* rule, unsigned int offset,
                                 unsigned char bytes, unsigned int increment,
                                 unsigned int multiplier, bool bigEndian) {
  if (rule->fieldOffset() == offset && rule->fieldBytes() == bytes &&
      rule->increment() == increment && rule->multiplier() == multiplier &&
      rule->bigEndian() == bigEndian)
    return false;
  rule->create(offset, bytes, increment, multiplier, bigEndian);
  changed();
  return true;
}

void cRulesDocument::removeRule(cScanSignature* sig, cScanSigRule* rule) {
  sig->remove(rule);
  changed();
}

void cRulesDocument::removeRule(cScanSignature* sig, cScanSigEndRule* rule) {
  sig->remove(rule);
  changed();
}
