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

// Text rules come in pairs (the block is text; the file ends where the text does): drops
// those of the other kind, then adds the chosen pair where missing. True when anything
// changed.
bool setTextRules(cScanSignature& sig, cRulesDocument::eContent content) {
  const bool ascii = content == cRulesDocument::ctAscii;
  const bool unicode = content == cRulesDocument::ctUnicode;
  bool changed = false;
  auto drop = [&](eRuleType start, eEndRuleType end) {
    while (cScanSigRule* r = sig.first_typed_str(start)) changed = sig.remove(r) || changed;
    while (cScanSigEndRule* r = sig.first_typed_end(end)) changed = sig.remove(r) || changed;
  };
  if (!ascii) drop(rtIsAsciiText, etAsciiTextEnd);
  if (!unicode) drop(rtIsUnicodeText, etUnicodeTextEnd);
  if (ascii && !sig.first_typed_str(rtIsAsciiText)) {
    sig.addStrRule(std::make_unique<cScanSigRuleIsStr>());
    changed = true;
  }
  if (ascii && !sig.first_typed_end(etAsciiTextEnd)) {
    sig.addEndRule(std::make_unique<cScanSigEndRuleIsStrEnd>());
    changed = true;
  }
  if (unicode && !sig.first_typed_str(rtIsUnicodeText)) {
    sig.addStrRule(std::make_unique<cScanSigRuleIsUniStr>());
    changed = true;
  }
  if (unicode && !sig.first_typed_end(etUnicodeTextEnd)) {
    sig.addEndRule(std::make_unique<cScanSigEndRuleIsUniStrEnd>());
    changed = true;
  }
  return changed;
}

} // namespace

int cRulesDocument::count(int hitMode) const {
  int n = 0;
  for (const cTreeItem* i = myTree.first(); i; i = i->nextInOrder())
    n += static_cast<const cScanSignature*>(i)->hitMode == hitMode;
  return n;
}

void cRulesDocument::setPath(const std::string& path) {
  const bool news = path != myPath;
  myPath = path;
  notifyIf(news);
}

void cRulesDocument::commit(cEditHistory::tStep step) {
  const sSavedWatch watch{*this};
  myHistory.add(std::move(step));
}

void cRulesDocument::commit(tChange change) {
  cEditHistory::tStep step;
  step.push_back(std::move(change));
  commit(std::move(step));
}

template <class Edit> bool cRulesDocument::editContent(cScanSignature* sig, Edit edit) {
  std::unique_ptr<cScanSignature> before = sig->copy();
  if (!edit()) return false;
  if (before) {
    commit(tChange::content(sig, std::move(before)));
  } else {
    // A rule that no longer compiles cannot be copied: the edit stands, but the steps
    // before it can no longer be undone to a faithful state.
    const sSavedWatch watch{*this};
    myHistory.clear(false);
  }
  return true;
}

// ---- history ------------------------------------------------------------------------------

bool cRulesDocument::travel(bool redo, cScanSignature*& touched) {
  if (!(redo ? canRedo() : canUndo())) return false;
  const sSavedWatch watch{*this};
  touched = redo ? myHistory.redo(myTree) : myHistory.undo(myTree);
  return true;
}

// ---- files --------------------------------------------------------------------------------

void cRulesDocument::clear() {
  const sSavedWatch watch{*this};
  myHistory.clear(true);
  myTree.destroy();
  myForm = rfBinary;
  setPath("");
}

sRulesFileResult cRulesDocument::open(const char* path) {
  cCustomSignaturesTree read;
  eRulesForm form = rfBinary;
  sRulesFileResult result = loadRulesFile(path, read, &form);
  if (result.outcome == sRulesFileResult::roCannotOpen) return result;
  const sSavedWatch watch{*this};
  myHistory.clear(result.ok());
  myTree.destroy();
  while (cTreeItem* top = read.first()) myTree.cTree::add(nullptr, read.remove(top));
  myForm = form;
  setPath(result.ok() ? path : "");
  return result;
}

sRulesFileResult cRulesDocument::merge(const char* path) {
  const bool wasEmpty = empty();
  cCustomSignaturesTree read;
  sRulesFileResult result = loadRulesFile(path, read);
  if (result.outcome == sRulesFileResult::roCannotOpen) return result;
  cEditHistory::tStep step;
  while (cTreeItem* top = read.first()) {
    auto* sig = static_cast<cScanSignature*>(myTree.cTree::add(nullptr, read.remove(top)));
    step.push_back(tChange::placed(sig));
  }
  const sSavedWatch watch{*this};
  myHistory.add(std::move(step));
  if (wasEmpty && result.ok()) myHistory.markSaved(); // as if it had been opened
  return result;
}

sRulesFileResult cRulesDocument::save(const char* path) {
  const eRulesForm form = rulesFormOf(path) == rfText ? rfText : myForm;
  sRulesFileResult result = saveRulesFile(path, myTree, form);
  if (!result.ok()) return result;
  const sSavedWatch watch{*this};
  myForm = form;
  setPath(path);
  myHistory.markSaved();
  return result;
}

// ---- definitions --------------------------------------------------------------------------

cScanSignature* cRulesDocument::addDefinition(cScanSignature* parent, const char* name) {
  auto fresh = std::make_unique<cScanSignature>();
  fresh->create(name, "undefined");
  fresh->hitMode = cScanSignature::hmNever;
  cScanSignature* sig = myTree.add(parent, std::move(fresh));
  commit(tChange::placed(sig));
  return sig;
}

void cRulesDocument::deleteDefinition(cScanSignature* sig) {
  if (!sig) return;
  tChange change = tChange::placed(sig);
  change.toggle(myTree); // takes it out, and holds it for an undo
  commit(std::move(change));
}

bool cRulesDocument::move(cScanSignature* sig, cScanSignature* parent, cScanSignature* after) {
  if (!sig || (parent && parent->isWithin(sig)) || after == sig) return false;
  if (sig->parentSig() == parent && sig->prev() == after) return false;
  tChange change = tChange::moved(sig, parent, after);
  change.toggle(myTree); // goes there, and remembers where it was
  commit(std::move(change));
  return true;
}

cScanSignature* cRulesDocument::duplicate(cScanSignature* sig) {
  cCustomSignaturesTree copy;
  if (!sig || !cCustomSignaturesTree::copySubtree(*sig, copy)) return nullptr;
  auto* made =
      static_cast<cScanSignature*>(myTree.insert(sig->parentSig(), sig, copy.remove(copy.first())));
  commit(tChange::placed(made));
  return made;
}

bool cRulesDocument::textOf(const cScanSignature* sig, std::string& text, std::string& why) {
  cCustomSignaturesTree copy;
  if (!sig || !cCustomSignaturesTree::copySubtree(*sig, copy)) {
    why = "a rule of the definition cannot be copied";
    return false;
  }
  return rulesToText(copy, text, why);
}

bool cRulesDocument::paste(std::string_view text, cScanSignature* parent, cScanSignature*& first,
                           sRulesTextError& error) {
  // Definitions copied from a text file often come without the header line: the text is
  // read as if it had one, and lines are counted in what was given.
  std::string withHeader;
  const bool headed = looksLikeRulesText(text);
  if (!headed) {
    withHeader = std::string(kRulesTextHeader) + "\n" + std::string(text);
    text = withHeader;
  }
  cCustomSignaturesTree read;
  if (!rulesFromText(text, read, error)) {
    if (!headed && error.line > 0) --error.line;
    return false;
  }
  if (!read.first()) {
    error = {0, "there are no definitions in the text"};
    return false;
  }
  cEditHistory::tStep step;
  first = nullptr;
  while (cTreeItem* top = read.first()) {
    cScanSignature* sig = myTree.add(
        parent,
        std::unique_ptr<cScanSignature>(static_cast<cScanSignature*>(read.remove(top).release())));
    if (!first) first = sig;
    step.push_back(tChange::placed(sig));
  }
  commit(std::move(step));
  return true;
}

bool cRulesDocument::rename(cScanSignature* sig, const char* name) {
  if (!name || !*name || std::strcmp(name, sig->name.c_str()) == 0) return false;
  return editContent(sig, [&] {
    sig->name.set(name);
    return true;
  });
}

bool cRulesDocument::setExtension(cScanSignature* sig, const char* text) {
  if (!text || !*text || std::strcmp(text, sig->ext.c_str()) == 0) return false;
  _guardchar<char> path(text);
  cFolderContents::adjustPath(path);
  const std::string ext = safeExtension(path.c_str());
  return editContent(sig, [&] {
    sig->ext.set(ext.c_str());
    return true;
  });
}

cRulesDocument::eModeChange cRulesDocument::setHitMode(cScanSignature* sig, int hitMode) {
  if (hitMode == sig->hitMode) return mcUnchanged;
  if (hitMode != cScanSignature::hmNever && !sig->hasStrRules()) return mcNoRules;
  editContent(sig, [&] {
    sig->hitMode = hitMode;
    return true;
  });
  return mcChanged;
}

void cRulesDocument::setAllRules(cScanSignature* sig, bool allRules) {
  if (sig->allRules == allRules) return;
  editContent(sig, [&] {
    sig->allRules = allRules;
    return true;
  });
}

void cRulesDocument::setSubset(cScanSignature* sig, std::unique_ptr<cScanSigSubset> subset) {
  if (!sig->subset && !subset) return;
  editContent(sig, [&] {
    sig->subset = std::move(subset);
    return true;
  });
}

cRulesDocument::eContent cRulesDocument::content(const cScanSignature* sig) {
  if (sig->first_typed_str(rtIsUnicodeText)) return ctUnicode;
  if (sig->first_typed_str(rtIsAsciiText)) return ctAscii;
  return ctBinary;
}

void cRulesDocument::setContent(cScanSignature* sig, eContent content) {
  editContent(sig, [&] { return setTextRules(*sig, content); });
}

// ---- rules --------------------------------------------------------------------------------

cScanSigRule* cRulesDocument::addStartRule(cScanSignature* sig,
                                           std::unique_ptr<cScanSigRule> rule) {
  cScanSigRule* added = nullptr;
  if (rule) editContent(sig, [&] { return (added = sig->addStrRule(std::move(rule))) != nullptr; });
  return added;
}

cScanSigEndRule* cRulesDocument::addEndRule(cScanSignature* sig,
                                            std::unique_ptr<cScanSigEndRule> rule) {
  cScanSigEndRule* added = nullptr;
  if (rule) editContent(sig, [&] { return (added = sig->addEndRule(std::move(rule))) != nullptr; });
  return added;
}

bool cRulesDocument::setStartRule(cScanSignature* sig, cScanSigRuleUniHexMatch* rule,
                                  const char* pattern, unsigned int blockSize,
                                  unsigned int position) {
  if (static_cast<unsigned int>(rule->blockSize()) == blockSize &&
      static_cast<unsigned int>(rule->offset()) == position &&
      std::strcmp(rule->text(), pattern) == 0)
    return false;
  return editContent(sig, [&] { return rule->create(pattern, blockSize, position); });
}

bool cRulesDocument::setEndRule(cScanSignature* sig, cScanSigEndRuleUniHex* rule,
                                const char* pattern, unsigned int distance) {
  if (rule->distance() == distance && std::strcmp(rule->text(), pattern) == 0) return false;
  return editContent(sig, [&] { return rule->create(pattern, distance); });
}

bool cRulesDocument::setSizeRule(cScanSignature* sig, cScanSigEndRuleMatchSize* rule,
                                 unsigned int offset, unsigned char bytes, unsigned int increment,
                                 unsigned int multiplier, bool bigEndian) {
  if (rule->fieldOffset() == offset && rule->fieldBytes() == bytes &&
      rule->increment() == increment && rule->multiplier() == multiplier &&
      rule->bigEndian() == bigEndian)
    return false;
  return editContent(sig, [&] {
    rule->create(offset, bytes, increment, multiplier, bigEndian);
    return true;
  });
}

void cRulesDocument::removeRule(cScanSignature* sig, cScanSigRule* rule) {
  editContent(sig, [&] { return sig->remove(rule) != nullptr; });
}

void cRulesDocument::removeRule(cScanSignature* sig, cScanSigEndRule* rule) {
  editContent(sig, [&] { return sig->remove(rule) != nullptr; });
}
