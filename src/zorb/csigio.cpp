// Reading and writing the rules file. Older rule kinds are turned into Advanced/HEX rules
// as they are read.
#include <cstring>
#include <string>
#include <vector>

#include "base/str.h"
#include "csigformat.h"
#include "customsig.h"

using namespace qrrs;

namespace {

// ---- Bytes out --------------------------------------------------------------------------

class cWriter {
public:
  explicit cWriter(cFileIOTarget* target) : myTarget(target) {}
  bool ok() const { return myOk; }

  void bytes(const void* p, size_t n) {
    if (myOk && n) myOk = myTarget->writef(p, static_cast<unsigned int>(n));
  }
  void u8(unsigned int v) {
    const unsigned char b = static_cast<unsigned char>(v);
    bytes(&b, 1);
  }
  void u16(unsigned int v) { le(v, 2); }
  void u32(unsigned long long v) { le(v, 4); }
  void le(unsigned long long v, int n) {
    unsigned char b[8];
    for (int i = 0; i < n; ++i) b[i] = static_cast<unsigned char>(v >> (8 * i));
    bytes(b, static_cast<size_t>(n));
  }
  // Platform text in the default code page (the same UTF-8 bytes), u16 length first;
  // the length keeps its low 16 bits and that many bytes follow.
  void text16(const char* s) {
    _guardchar<char> a;
    _pc2a(s ? s : "", a);
    const size_t n = std::strlen(a.c_str()) & 0xFFFF;
    u16(static_cast<unsigned int>(n));
    bytes(a.c_str(), n);
  }
  void units(const unsigned short* s, long long n) {
    for (long long i = 0; i < n; ++i) u16(s[i]);
  }

private:
  cFileIOTarget* myTarget;
  bool myOk = true;
};

void writeSubset(cWriter& w, const cScanSigSubset* subset) {
  if (!subset) return;
  if (subset->typeOf() == stField) {
    const auto* f = static_cast<const cFieldRelativeSubset*>(subset);
    w.u32(f->offset());
    w.u8(f->width());
    w.u32(f->multiplier());
    w.u32(f->increment());
  } else if (subset->typeOf() == stMagic) {
    const auto* m = static_cast<const cMagicRelativeSubset*>(subset);
    _guardchar<char> a;
    _pc2a(m->text(), a);
    const size_t n = std::strlen(a.c_str());
    w.u32(n);
    w.bytes(a.c_str(), n);
    w.u32(m->offset());
  }
}

void writeContent(cWriter& w, const cScanSigRule* rule) {
  const int type = rule->typeOf();
  w.u8(static_cast<unsigned int>(type));
  switch (type) {
  case rtExactBytes: {
    const auto* r = static_cast<const cScanSigRuleExactMatch*>(rule);
    w.u32(r->offset());
    w.u32(static_cast<unsigned long long>(r->bytes().count()));
    w.bytes(r->bytes().data(), static_cast<size_t>(r->bytes().count()));
    break;
  }
  case rtAsciiString: {
    const cAsciiNeedle& n = static_cast<const cScanSigRuleHasStr*>(rule)->needle();
    w.u8(n.caseSensitive() ? 1 : 0);
    const size_t length = std::strlen(n.text());
    w.u32(length);
    w.bytes(n.text(), length);
    break;
  }
  case rtUnicodeString: {
    const cUnicodeNeedle& n = static_cast<const cScanSigRuleHasUniStr*>(rule)->needle();
    w.u8(n.caseSensitive() ? 1 : 0);
    w.u32(static_cast<unsigned long long>(n.length()));
    w.units(n.text(), n.length());
    break;
  }
  case rtMaskedValue: {
    const auto* r = static_cast<const cScanSigRuleMaskMatch*>(rule);
    const int code = r->width() > 3 ? 0 : r->width();
    w.u8(static_cast<unsigned int>(code));
    w.le(r->value(), 1 << code);
    w.le(r->mask(), 1 << code);
    w.u32(r->offset());
    break;
  }
  case rtAdvHex: {
    const auto* r = static_cast<const cScanSigRuleUniHexMatch*>(rule);
    w.text16(r->text());
    w.u32(static_cast<unsigned int>(r->blockSize()));
    w.u32(static_cast<unsigned int>(r->offset()));
    break;
  }
  default:
    break; // the text checks have no fields; an unknown type is its type byte alone
  }
}

void writeEnd(cWriter& w, const cScanSigEndRule* rule) {
  const int type = rule->typeOf();
  w.u8(static_cast<unsigned int>(type));
  switch (type) {
  case etSizeField: {
    const auto* r = static_cast<const cScanSigEndRuleMatchSize*>(rule);
    w.u8(r->bigEndian() ? 1 : 0);
    w.u8(r->fieldBytes());
    w.u32(r->fieldOffset());
    w.u32(r->increment()); // the increment is stored before the multiplier
    w.u32(r->multiplier());
    break;
  }
  case etAsciiString: {
    const auto* r = static_cast<const cScanSigEndRuleHasStr*>(rule);
    w.u8(r->needle().caseSensitive() ? 1 : 0);
    w.u32(r->distance());
    const size_t length = std::strlen(r->needle().text());
    w.u32(length);
    w.bytes(r->needle().text(), length);
    break;
  }
  case etUnicodeString: {
    const auto* r = static_cast<const cScanSigEndRuleHasUniStr*>(rule);
    w.u8(r->needle().caseSensitive() ? 1 : 0);
    w.u32(r->distance());
    w.u32(static_cast<unsigned long long>(r->needle().length()));
    w.units(r->needle().text(), r->needle().length());
    break;
  }
  case etByteSequence: {
    const auto* r = static_cast<const cScanSigEndRuleHasHex*>(rule);
    w.u32(r->distance());
    w.u32(static_cast<unsigned long long>(r->needle().length()));
    w.bytes(r->needle().bytes(), static_cast<size_t>(r->needle().length()));
    break;
  }
  case etAdvHex: {
    const auto* r = static_cast<const cScanSigEndRuleUniHex*>(rule);
    w.text16(r->text());
    w.u32(r->distance());
    break;
  }
  default:
    break;
  }
}

void writeNode(cWriter& w, const cScanSignature* node) {
  w.u8(kNode);
  const unsigned int subsetType = static_cast<unsigned int>(node->subsetType());
  w.u8((static_cast<unsigned int>(node->hitMode) & 7) | (node->allRules ? 0 : kAnyRules) |
       ((subsetType & 15) << 4));
  writeSubset(w, node->subset.get());
  w.text16(node->name.c_str());
  w.text16(node->ext.c_str());
  for (const cScanSigRule* r = node->first_str(); r; r = node->next_str(r)) writeContent(w, r);
  w.u8(kEnd);
  for (const cScanSigEndRule* r = node->first_end(); r; r = node->next_end(r)) writeEnd(w, r);
  w.u8(kEnd);
}

// ---- Bytes in ---------------------------------------------------------------------------

class cReader {
public:
  explicit cReader(cFileIOTarget* target) : myTarget(target) {}

  bool bytes(void* p, size_t n) { return !n || myTarget->readf(p, static_cast<unsigned int>(n)); }
  bool u8(unsigned int& v) { return le(v, 1); }
  bool u16(unsigned int& v) { return le(v, 2); }
  bool u32(unsigned int& v) { return le(v, 4); }
  bool le(unsigned int& v, int n) {
    unsigned char b[4];
    if (!bytes(b, static_cast<size_t>(n))) return false;
    v = 0;
    for (int i = n - 1; i >= 0; --i) v = v << 8 | b[i];
    return true;
  }
  bool text(size_t n, std::string& out) {
    out.assign(n, '\0');
    return bytes(out.data(), n);
  }
  bool units(size_t n, std::vector<unsigned short>& out) {
    std::vector<unsigned char> raw(2 * n);
    if (!bytes(raw.data(), raw.size())) return false;
    out.resize(n);
    for (size_t i = 0; i < n; ++i)
      out[i] = static_cast<unsigned short>(raw[2 * i] | raw[2 * i + 1] << 8);
    return true;
  }

private:
  cFileIOTarget* myTarget;
};

// The outcome of reading one piece: ok, or a result code.
struct sStep {
  int result = lrOk;
  bool ok() const { return result == lrOk; }
};

sStep fail(int result) {
  return {result};
}

std::string platformText(const std::string& bytes) {
  _guardchar<char> pc;
  _a2pc(bytes.c_str(), pc);
  return pc.c_str();
}

std::string platformText(const std::vector<unsigned short>& units) {
  std::vector<unsigned short> z(units);
  z.push_back(0);
  _guardchar<char> pc;
  _w2pc(z.data(), pc);
  return pc.c_str();
}

std::string hexText(const std::string& bytes) {
  static const char digits[] = "0123456789ABCDEF";
  std::string text;
  for (unsigned char b : bytes) {
    text += digits[b >> 4];
    text += digits[b & 15];
  }
  return text;
}

// "+'…'" or "-'…'" with every quote character escaped by a backslash.
template <class Unit>
std::vector<Unit> quoted(const std::vector<Unit>& text, bool sensitive, Unit quote) {
  std::vector<Unit> out = {static_cast<Unit>(sensitive ? '+' : '-'), quote};
  for (Unit c : text) {
    if (c == quote) out.push_back(static_cast<Unit>('\\'));
    out.push_back(c);
  }
  out.push_back(quote);
  return out;
}

// A name or extension in the form the magic selected.
sStep readName(cReader& in, bool oldFormat, std::string& out) {
  unsigned int n = 0;
  if (oldFormat) {
    std::vector<unsigned short> units;
    if (!in.u32(n)) return fail(lrIo);
    if (n > kMaxName) return fail(lrValue);
    if (!in.units(n, units)) return fail(lrIo);
    out = platformText(units);
    return {};
  }
  std::string bytes;
  if (!in.u16(n)) return fail(lrIo);
  if (n > kMaxName) return fail(lrValue);
  if (!in.text(n, bytes)) return fail(lrIo);
  out = platformText(bytes);
  return {};
}

// An ASCII or Unicode string rule's text as an Advanced/HEX pattern.
sStep readStringPattern(cReader& in, bool unicode, bool sensitive, std::string& pattern) {
  unsigned int n = 0;
  if (!in.u32(n)) return fail(lrIo);
  if (n > kMaxQuoted) return fail(lrValue);
  if (unicode) {
    std::vector<unsigned short> units;
    if (!in.units(n, units)) return fail(lrIo);
    pattern = platformText(quoted<unsigned short>(units, sensitive, '"'));
    return {};
  }
  std::string bytes;
  if (!in.text(n, bytes)) return fail(lrIo);
  const std::vector<char> chars(bytes.begin(), bytes.end());
  const std::vector<char> text = quoted<char>(chars, sensitive, '\'');
  pattern = platformText(std::string(text.begin(), text.end()));
  return {};
}

sStep readByteRun(cReader& in, std::string& hex) {
  unsigned int n = 0;
  std::string bytes;
  if (!in.u32(n)) return fail(lrIo);
  if (n > kMaxName) return fail(lrValue);
  if (!in.text(n, bytes)) return fail(lrIo);
  hex = hexText(bytes);
  return {};
}

sStep readAdvText(cReader& in, std::string& text) {
  unsigned int n = 0;
  std::string bytes;
  if (!in.u16(n) || !in.text(n, bytes)) return fail(lrIo);
  text = platformText(bytes);
  return {};
}

sStep addAdvContent(cScanSignature* node, const std::string& text, unsigned int block,
                    unsigned int offset) {
  auto rule = std::make_unique<cScanSigRuleUniHexMatch>();
  if (!rule->create(text.c_str(), block, offset)) return fail(lrValue);
  node->addStrRule(std::move(rule));
  return {};
}

sStep addAdvEnd(cScanSignature* node, const std::string& text, unsigned int distance) {
  auto rule = std::make_unique<cScanSigEndRuleUniHex>();
  if (!rule->create(text.c_str(), distance)) return fail(lrValue);
  node->addEndRule(std::move(rule));
  return {};
}

sStep readContent(cReader& in, unsigned int type, cScanSignature* node) {
  unsigned int a = 0, b = 0;
  std::string text;
  sStep step;
  switch (type) {
  case rtExactBytes:
    if (!in.u32(a)) return fail(lrIo);
    if (!(step = readByteRun(in, text)).ok()) return step;
    return addAdvContent(node, text, 0, a);
  case rtAsciiString:
  case rtUnicodeString:
    if (!in.u8(a)) return fail(lrIo);
    if (!(step = readStringPattern(in, type == rtUnicodeString, a == 1, text)).ok()) return step;
    return addAdvContent(node, text, 0, 0xFFFFFFFF);
  case rtIsAsciiText:
    node->addStrRule(std::make_unique<cScanSigRuleIsStr>());
    return {};
  case rtIsUnicodeText:
    node->addStrRule(std::make_unique<cScanSigRuleIsUniStr>());
    return {};
  case rtMaskedValue: {
    if (!in.u8(a)) return fail(lrIo);
    if (a > 3) return fail(lrValue);
    std::string value, mask;
    if (!in.text(1u << a, value) || !in.text(1u << a, mask) || !in.u32(b)) return fail(lrIo);
    return addAdvContent(node, "[" + hexText(value) + "/" + hexText(mask) + "]", 0, b);
  }
  default: // rtAdvHex
    if (!(step = readAdvText(in, text)).ok()) return step;
    if (!in.u32(a) || !in.u32(b)) return fail(lrIo);
    return addAdvContent(node, text, a, b);
  }
}

sStep readEnd(cReader& in, unsigned int type, cScanSignature* node) {
  unsigned int a = 0, b = 0, c = 0, d = 0;
  std::string text;
  sStep step;
  switch (type) {
  case etSizeField: {
    if (!in.u8(a) || !in.u8(b) || !in.u32(c) || !in.u32(d)) return fail(lrIo);
    unsigned int multiplier = 0;
    if (!in.u32(multiplier)) return fail(lrIo);
    auto rule = std::make_unique<cScanSigEndRuleMatchSize>();
    rule->create(c, static_cast<unsigned char>(b), d, multiplier, a == 1);
    node->addEndRule(std::move(rule));
    return {};
  }
  case etAsciiString:
  case etUnicodeString:
    if (!in.u8(a) || !in.u32(b)) return fail(lrIo);
    if (!(step = readStringPattern(in, type == etUnicodeString, a == 1, text)).ok()) return step;
    return addAdvEnd(node, text, b);
  case etAsciiTextEnd:
    node->addEndRule(std::make_unique<cScanSigEndRuleIsStrEnd>());
    return {};
  case etUnicodeTextEnd:
    node->addEndRule(std::make_unique<cScanSigEndRuleIsUniStrEnd>());
    return {};
  case etByteSequence:
    if (!in.u32(a)) return fail(lrIo);
    if (!(step = readByteRun(in, text)).ok()) return step;
    return addAdvEnd(node, text, a);
  default: // etAdvHex
    if (!(step = readAdvText(in, text)).ok()) return step;
    if (!in.u32(a)) return fail(lrIo);
    return addAdvEnd(node, text, a);
  }
}

// Reads a rule list up to its 0x00, building each rule with `read`.
template <class Read> sStep readRules(cReader& in, cScanSignature* node, Read read) {
  for (;;) {
    unsigned int type = 0;
    if (!in.u8(type)) return fail(lrIo);
    if (type == 0) return {};
    if (type > rtAdvHex) return fail(lrType); // both lists end at 7
    const sStep step = read(in, type, node);
    if (!step.ok()) return step;
  }
}

sStep readSubset(cReader& in, unsigned int type, cScanSignature* node) {
  unsigned int a = 0, b = 0, c = 0, d = 0;
  if (type == stField) {
    if (!in.u32(a) || !in.u8(b) || !in.u32(c) || !in.u32(d)) return fail(lrIo);
    auto subset = std::make_unique<cFieldRelativeSubset>();
    subset->create(a, static_cast<unsigned char>(b), c, d);
    node->subset = std::move(subset);
  } else if (type == stMagic) {
    std::string text;
    if (!in.u32(a)) return fail(lrIo);
    if (a > kMaxMagicText) return fail(lrValue);
    if (!in.text(a, text) || !in.u32(b)) return fail(lrIo);
    auto subset = std::make_unique<cMagicRelativeSubset>();
    if (!subset->create(platformText(text).c_str(), b)) return fail(lrValue);
    node->subset = std::move(subset);
  }
  return {};
}

} // namespace

const char* loadResultText(int result) {
  switch (result) {
  case lrOk:
    return "ok";
  case lrIo:
    return "read failure or file too short";
  case lrMagic:
    return "unknown magic: not a rules file";
  case lrValue:
    return "a value too long or a rule that cannot be built";
  case lrType:
    return "unknown rule type";
  default:
    return "unknown load result";
  }
}

int cCustomSignaturesTree::save(cFileIOTarget* target) const {
  if (!target || !target->writef(kMagic, kMagicSize)) return lrIo;
  return saveLevel(target, firstSig());
}

// Written without recursion: a node's children follow it at once, and each row ends with
// 0x00, so a walk in tree order that closes the rows it leaves writes the same bytes.
int cCustomSignaturesTree::saveLevel(cFileIOTarget* target, const cScanSignature* first) const {
  if (!target) return lrIo;
  cWriter w(target);
  const cScanSignature* top = first ? first->parentSig() : nullptr;
  const cScanSignature* node = first;
  while (node && w.ok()) {
    writeNode(w, node);
    if (node->firstChildSig()) {
      node = node->firstChildSig();
      continue;
    }
    w.u8(kEnd); // no children: an empty level
    while (!node->nextSig()) {
      w.u8(kEnd); // the end of this node's row
      node = node->parentSig();
      if (node == top) return w.ok() ? lrOk : lrIo;
    }
    node = node->nextSig();
  }
  if (!first) w.u8(kEnd);
  return w.ok() ? lrOk : lrIo;
}

int cCustomSignaturesTree::load(cFileIOTarget* target) {
  char magic[kMagicSize];
  if (!target || !target->readf(magic, kMagicSize)) return lrIo;
  const bool old = std::memcmp(magic, kOldMagic, kMagicSize) == 0;
  if (!old && std::memcmp(magic, kMagic, kMagicSize) != 0) return lrMagic;
  return loadLevel(target, nullptr, old);
}

int cCustomSignaturesTree::loadLevel(cFileIOTarget* target, cScanSignature* parent,
                                     bool oldFormat) {
  if (!target) return lrIo;
  return loadNodes(target, parent, oldFormat, parent ? parent->depth() + 1 : 0);
}

int cCustomSignaturesTree::loadNodes(cFileIOTarget* target, cScanSignature* parent, bool oldFormat,
                                     int depth) {
  cReader in(target);
  for (;;) {
    unsigned int marker = 0, flags = 0;
    if (!in.u8(marker)) return lrIo;
    if (marker == kEnd) return lrOk;
    if (depth >= kMaxDepth) return lrValue; // deeper than any real definition set
    if (!in.u8(flags)) return lrIo;
    cScanSignature* node = add(parent, std::make_unique<cScanSignature>());
    sStep step = readSubset(in, flags >> 4, node);
    std::string name, ext;
    if (step.ok()) step = readName(in, oldFormat, name);
    if (step.ok()) step = readName(in, oldFormat, ext);
    if (!step.ok()) return step.result;
    node->create(name.c_str(), ext.c_str());
    node->hitMode = static_cast<int>(flags & 7);
    node->allRules = !(flags & kAnyRules);
    if (!(step = readRules(in, node, readContent)).ok()) return step.result;
    if (!(step = readRules(in, node, readEnd)).ok()) return step.result;
    const int children = loadNodes(target, node, oldFormat, depth + 1);
    if (children != lrOk) return children;
  }
}
