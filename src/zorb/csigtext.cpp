// Writing and reading the text form of a definition tree.
#include "csigtext.h"

#include <memory>
#include <vector>

#include "base/hex.h"
#include "cihex/advlexer.h"
#include "csigformat.h"

namespace {

constexpr unsigned int kMaxPatternText = 0xFFFF; // kept with a 16-bit length
constexpr unsigned long long kMaxSigned = 0x7FFFFFFF;
constexpr unsigned long long kMaxU32 = 0xFFFFFFFF;
const char* const kWidths[] = {"u8", "u16le", "u32le", "u64le", "u16be", "u32be", "u64be"};
const char* const kModes[] = {"never", "passive", "always"};

// ---- Writing ----------------------------------------------------------------------------

void appendByte(std::string& out, unsigned char b) {
  static const char digits[] = "0123456789ABCDEF";
  out += "\\x";
  out += digits[b >> 4];
  out += digits[b & 15];
}

bool isControl(unsigned char c) {
  return c < 0x20 || c == 0x7F;
}

std::string quoted(const char* s) {
  std::string out = "\"";
  for (const char* p = s; *p; ++p) {
    const auto c = static_cast<unsigned char>(*p);
    if (c == '"' || c == '\\') out += '\\';
    if (isControl(c))
      appendByte(out, c);
    else
      out += *p;
  }
  return out + "\"";
}

bool plainPattern(std::string_view p) {
  if (p.empty() || p.front() == ' ' || p.back() == ' ') return false;
  for (char c : p) {
    if (isControl(static_cast<unsigned char>(c))) return false;
  }
  return true;
}

// The pattern as the end of its line: ": TEXT", or " escaped: TEXT" for a text that
// would not survive as it stands.
std::string patternTail(std::string_view p) {
  if (plainPattern(p)) return ": " + std::string(p);
  std::string out = " escaped: ";
  for (size_t i = 0; i < p.size(); ++i) {
    const auto c = static_cast<unsigned char>(p[i]);
    if (c == '\\')
      out += "\\\\";
    else if (isControl(c) || (c == ' ' && (i == 0 || i + 1 == p.size())))
      appendByte(out, c);
    else
      out += p[i];
  }
  return out;
}

std::string modeWord(int hitMode) {
  const int mode = hitMode & 7; // what the rules file keeps
  return mode <= 2 ? kModes[mode] : std::to_string(mode);
}

std::string subsetLine(const cScanSigSubset& subset) {
  if (subset.typeOf() == stField) {
    const auto& f = static_cast<const cFieldRelativeSubset&>(subset);
    return "subset field at " + std::to_string(f.offset()) + " width " +
           kWidths[f.width() > 6 ? 6 : f.width()] + " multiplier " +
           std::to_string(f.multiplier()) + " increment " + std::to_string(f.increment());
  }
  const auto& m = static_cast<const cMagicRelativeSubset&>(subset);
  return "subset magic after " + std::to_string(m.offset()) + patternTail(m.text());
}

bool startLine(const cScanSigRule& rule, std::string& line) {
  switch (rule.typeOf()) {
  case rtIsAsciiText:
    line = "start ascii-text";
    return true;
  case rtIsUnicodeText:
    line = "start unicode-text";
    return true;
  case rtAdvHex: {
    const auto& r = static_cast<const cScanSigRuleUniHexMatch&>(rule);
    line = r.offset() == -1 ? "start scan" : "start at " + std::to_string(r.offset());
    if (r.blockSize() != 0) line += " block " + std::to_string(r.blockSize());
    line += patternTail(r.text());
    return true;
  }
  default:
    return false;
  }
}

bool endLine(const cScanSigEndRule& rule, std::string& line) {
  switch (rule.typeOf()) {
  case etSizeField: {
    const auto& r = static_cast<const cScanSigEndRuleMatchSize&>(rule);
    line = "end size at " + std::to_string(r.fieldOffset()) + " width " +
           std::to_string(r.fieldBytes()) + (r.bigEndian() ? " big-endian" : " little-endian") +
           " multiplier " + std::to_string(r.multiplier()) + " increment " +
           std::to_string(r.increment());
    return true;
  }
  case etAsciiTextEnd:
    line = "end ascii-text";
    return true;
  case etUnicodeTextEnd:
    line = "end unicode-text";
    return true;
  case etAdvHex: {
    const auto& r = static_cast<const cScanSigEndRuleUniHex&>(rule);
    line = "end after " + std::to_string(r.distance()) + patternTail(r.text());
    return true;
  }
  default:
    return false;
  }
}

// A definition's opening line and the lines of its subset and rules.
bool writeNode(std::string& out, const cScanSignature& n, const std::string& indent,
               std::string& error) {
  out += indent + "definition " + quoted(n.name.c_str()) + " ext " + quoted(n.ext.c_str());
  if ((n.hitMode & 7) != cScanSignature::hmActive) out += " mode " + modeWord(n.hitMode);
  if (!n.allRules) out += " match any";
  out += " {\n";
  if (n.subset) out += indent + "  " + subsetLine(*n.subset) + "\n";
  std::string line;
  for (const cScanSigRule* r = n.first_str(); r; r = n.next_str(r)) {
    if (!startLine(*r, line)) {
      error = "definition \"" + std::string(n.name.c_str()) + "\" holds a start rule of the " +
              "older kind " + std::to_string(r->typeOf()) + "; save and load the tree first";
      return false;
    }
    out += indent + "  " + line + "\n";
  }
  for (const cScanSigEndRule* r = n.first_end(); r; r = n.next_end(r)) {
    if (!endLine(*r, line)) {
      error = "definition \"" + std::string(n.name.c_str()) + "\" holds an end rule of the " +
              "older kind " + std::to_string(r->typeOf()) + "; save and load the tree first";
      return false;
    }
    out += indent + "  " + line + "\n";
  }
  return true;
}

std::string indentOf(int depth) {
  return std::string(2 * static_cast<size_t>(depth), ' ');
}

// ---- Reading: lines into tokens ---------------------------------------------------------

struct sToken {
  std::string text;
  bool quoted = false;
};

struct sLine {
  std::vector<sToken> tokens;
  bool hasPattern = false;
  std::string_view pattern; // after the colon, without the blanks around it
};

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

std::string_view trimmed(std::string_view s) {
  while (!s.empty() && isBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && isBlank(s.back())) s.remove_suffix(1);
  return s;
}

// Reads "\xHH" at s[i] (after the backslash: s[i] is 'x'); a zero byte is refused.
bool readByteEscape(std::string_view s, size_t& i, std::string& out) {
  if (i + 3 > s.size() || s[i] != 'x') return false;
  const int byte = getHexb(s.data() + i + 1);
  if (byte <= 0) return false;
  out += static_cast<char>(byte);
  i += 3;
  return true;
}

bool splitLine(std::string_view line, sLine& out, std::string& error) {
  size_t i = 0;
  while (i < line.size()) {
    const char c = line[i];
    if (isBlank(c)) {
      ++i;
    } else if (c == ':') {
      out.hasPattern = true;
      out.pattern = trimmed(line.substr(i + 1));
      return true;
    } else if (c == '{' || c == '}') {
      out.tokens.push_back({std::string(1, c), false});
      ++i;
    } else if (c == '"') {
      sToken token{"", true};
      for (++i;;) {
        if (i >= line.size()) {
          error = "a string is not closed";
          return false;
        }
        const char d = line[i++];
        if (d == '"') break;
        if (d != '\\') {
          token.text += d;
        } else if (i < line.size() && (line[i] == '"' || line[i] == '\\')) {
          token.text += line[i++];
        } else if (!readByteEscape(line, i, token.text)) {
          error = "a string has a bad escape (use \\\", \\\\ or \\xHH, not \\x00)";
          return false;
        }
      }
      out.tokens.push_back(std::move(token));
    } else {
      const size_t from = i;
      while (i < line.size() && !isBlank(line[i]) && line[i] != ':' && line[i] != '"' &&
             line[i] != '{' && line[i] != '}')
        ++i;
      out.tokens.push_back({std::string(line.substr(from, i - from)), false});
    }
  }
  return true;
}

bool unescapePattern(std::string_view s, std::string& out) {
  out.clear();
  for (size_t i = 0; i < s.size();) {
    if (s[i] != '\\') {
      out += s[i++];
    } else if (i + 1 < s.size() && s[i + 1] == '\\') {
      out += '\\';
      i += 2;
    } else {
      ++i;
      if (!readByteEscape(s, i, out)) return false;
    }
  }
  return true;
}

bool parseNumber(const std::string& s, unsigned long long max, unsigned long long& value) {
  // At most 20 digits, leading zeros included.
  const size_t digits =
      s.size() - (s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X') ? 2 : 0);
  return digits <= 20 && readWholeNumber(s, value) && value <= max;
}

// ---- Reading: the words of a line -------------------------------------------------------

enum class eField { Flag, Number, Word, String };

struct sFieldForm {
  const char* name;
  eField kind;
  unsigned long long max = 0; // numbers
};

// The words after a line's kind: flags and `name value` pairs, each at most once.
class cFields {
public:
  bool read(const std::vector<sToken>& tokens, size_t from, size_t to,
            std::initializer_list<sFieldForm> forms, std::string& error) {
    for (size_t i = from; i < to; ++i) {
      const sToken& t = tokens[i];
      const sFieldForm* form = nullptr;
      for (const sFieldForm& s : forms) {
        if (!t.quoted && t.text == s.name) form = &s;
      }
      if (!form) {
        error = "unexpected " + shown(t);
        return false;
      }
      if (has(form->name)) {
        error = "\"" + t.text + "\" is given twice";
        return false;
      }
      if (form->kind == eField::Flag) {
        myValues.push_back({form->name, "", 0});
        continue;
      }
      if (i + 1 >= to || !valueFits(*form, tokens[i + 1])) {
        error = "\"" + t.text + "\" needs " + wanted(*form) +
                (i + 1 < to ? ", not " + shown(tokens[i + 1]) : "");
        return false;
      }
      ++i;
      unsigned long long number = 0;
      if (form->kind == eField::Number) parseNumber(tokens[i].text, form->max, number);
      myValues.push_back({form->name, tokens[i].text, number});
    }
    return true;
  }

  bool has(const std::string& name) const { return find(name) != nullptr; }
  unsigned long long number(const std::string& name, unsigned long long fallback) const {
    const sValue* v = find(name);
    return v ? v->number : fallback;
  }
  std::string text(const std::string& name, const std::string& fallback) const {
    const sValue* v = find(name);
    return v ? v->text : fallback;
  }

  static std::string shown(const sToken& t) { return t.quoted ? "a string" : "\"" + t.text + "\""; }

private:
  struct sValue {
    std::string name, text;
    unsigned long long number;
  };

  const sValue* find(const std::string& name) const {
    for (const sValue& v : myValues) {
      if (v.name == name) return &v;
    }
    return nullptr;
  }
  static bool valueFits(const sFieldForm& form, const sToken& value) {
    unsigned long long n = 0;
    switch (form.kind) {
    case eField::Number:
      return !value.quoted && parseNumber(value.text, form.max, n);
    case eField::String:
      return value.quoted;
    default:
      return !value.quoted && value.text != "{" && value.text != "}";
    }
  }
  static std::string wanted(const sFieldForm& form) {
    switch (form.kind) {
    case eField::Number:
      return "a number from 0 to " + std::to_string(form.max);
    case eField::String:
      return "a quoted string";
    default:
      return "a word";
    }
  }

  std::vector<sValue> myValues;
};

// ---- Reading: building the tree ---------------------------------------------------------

class cBuilder {
public:
  cBuilder(cCustomSignaturesTree& tree, sRulesTextError& error) : myTree(tree), myError(error) {}

  bool line(std::string_view text, int number) {
    myLine = number;
    if (!text.empty() && text.back() == '\r') text.remove_suffix(1);
    const std::string_view content = trimmed(text);
    if (content.empty() || content.front() == '#') return true;
    if (content.find('\0') != std::string_view::npos) return fail("the line holds a zero byte");
    if (!myHeader) {
      if (content != kRulesTextHeader)
        return fail(std::string("this is not a definition text: it must begin with \"") +
                    kRulesTextHeader + "\"");
      myHeader = true;
      return true;
    }
    sLine l;
    std::string why;
    if (!splitLine(content, l, why)) return fail(why);
    if (l.tokens.empty() || l.tokens[0].quoted) return fail("a line must begin with a word");
    const std::string kind = l.tokens[0].text;
    if (kind == "definition") return definition(l);
    if (kind == "}") return close(l);
    if (myOpen.empty())
      return fail("\"" + kind + "\" must be inside a definition, or is not a known word");
    if (kind == "subset") return subset(l);
    if (kind == "start") return start(l);
    if (kind == "end") return end(l);
    return fail("unknown line: it begins with \"" + kind + "\"");
  }

  bool finish() {
    if (!myHeader) {
      myLine = 0;
      return fail(std::string("the text is empty: it must begin with \"") + kRulesTextHeader +
                  "\"");
    }
    if (myOpen.empty()) return true;
    myLine = myOpen.back().line;
    return fail("definition \"" + std::string(myOpen.back().node->name.c_str()) +
                "\" is not closed with \"}\"");
  }

private:
  struct sOpen {
    cScanSignature* node;
    int line;
  };

  bool fail(std::string message) {
    myError.line = myLine;
    myError.message = std::move(message);
    return false;
  }
  cScanSignature* node() const { return myOpen.back().node; }

  bool definition(const sLine& l) {
    if (l.hasPattern) return fail("a definition line has no colon outside its strings");
    if (l.tokens.size() < 3 || !l.tokens[1].quoted || l.tokens.back().text != "{" ||
        l.tokens.back().quoted)
      return fail("write a definition as: definition \"NAME\" [ext \"EXT\"] [mode M] "
                  "[match all|any] {");
    cFields f;
    std::string why;
    if (!f.read(l.tokens, 2, l.tokens.size() - 1,
                {{"ext", eField::String}, {"mode", eField::Word}, {"match", eField::Word}}, why))
      return fail(why);
    const std::string& name = l.tokens[1].text;
    const std::string ext = f.text("ext", "");
    if (name.size() > qrrs::kMaxName || ext.size() > qrrs::kMaxName)
      return fail("a name or extension is longer than " + std::to_string(qrrs::kMaxName) +
                  " bytes");
    int mode = 0;
    if (!modeOf(f.text("mode", "always"), mode))
      return fail("mode is always, passive, never or a number from 0 to 7");
    const std::string match = f.text("match", "all");
    if (match != "all" && match != "any") return fail("match is all or any");
    if (myOpen.size() >= static_cast<size_t>(cCustomSignaturesTree::kMaxDepth))
      return fail("definitions are nested deeper than " +
                  std::to_string(cCustomSignaturesTree::kMaxDepth) + " levels");
    cScanSignature* parent = myOpen.empty() ? nullptr : node();
    cScanSignature* n = myTree.add(parent, std::make_unique<cScanSignature>());
    n->create(name.c_str(), ext.c_str());
    n->hitMode = mode;
    n->allRules = match == "all";
    myOpen.push_back({n, myLine});
    return true;
  }

  static bool modeOf(const std::string& word, int& mode) {
    for (int i = 0; i < 3; ++i) {
      if (word == kModes[i]) {
        mode = i;
        return true;
      }
    }
    unsigned long long n = 0;
    if (!parseNumber(word, 7, n)) return false;
    mode = static_cast<int>(n);
    return true;
  }

  bool close(const sLine& l) {
    if (l.tokens.size() != 1 || l.hasPattern) return fail("\"}\" stands alone on its line");
    if (myOpen.empty()) return fail("\"}\" closes no definition");
    myOpen.pop_back();
    return true;
  }

  // The pattern of a line, unescaped when the line says so.
  bool pattern(const sLine& l, const cFields& f, std::string& out) {
    if (!l.hasPattern) return fail("the pattern is missing: put it after a colon");
    if (!f.has("escaped")) {
      out = l.pattern;
    } else if (!unescapePattern(l.pattern, out)) {
      return fail("an escaped pattern has a bad escape (use \\\\ or \\xHH, not \\x00)");
    }
    if (out.size() > kMaxPatternText)
      return fail("the pattern is longer than " + std::to_string(kMaxPatternText) + " bytes");
    return true;
  }
  bool noPattern(const sLine& l) { return !l.hasPattern || fail("this line takes no pattern"); }
  bool badPattern(const std::string& text) {
    const std::string why = advTextProblem(text.c_str());
    return fail(why.empty() ? "the pattern does not compile" : why);
  }
  // Reads the words after the first `skip` tokens.
  bool fields(const sLine& l, size_t skip, std::initializer_list<sFieldForm> forms, cFields& f) {
    std::string why;
    return f.read(l.tokens, skip, l.tokens.size(), forms, why) || fail(why);
  }

  bool subset(const sLine& l) {
    if (node()->subset) return fail("a definition has one subset at most");
    const std::string kind = l.tokens.size() > 1 ? l.tokens[1].text : "";
    cFields f;
    if (kind == "field") {
      if (!fields(l, 2,
                  {{"at", eField::Number, kMaxU32},
                   {"width", eField::Word},
                   {"multiplier", eField::Number, kMaxU32},
                   {"increment", eField::Number, kMaxU32}},
                  f) ||
          !noPattern(l))
        return false;
      if (!f.has("at") || !f.has("width")) return fail("a field subset needs \"at\" and \"width\"");
      int width = -1;
      for (int i = 0; i < 7; ++i) {
        if (f.text("width", "") == kWidths[i]) width = i;
      }
      if (width < 0) return fail("width is u8, u16le, u32le, u64le, u16be, u32be or u64be");
      auto s = std::make_unique<cFieldRelativeSubset>();
      s->create(static_cast<unsigned int>(f.number("at", 0)), static_cast<unsigned char>(width),
                static_cast<unsigned int>(f.number("multiplier", 1)),
                static_cast<unsigned int>(f.number("increment", 0)));
      node()->subset = std::move(s);
      return true;
    }
    if (kind == "magic") {
      std::string text;
      if (!fields(l, 2, {{"after", eField::Number, kMaxU32}, {"escaped", eField::Flag}}, f) ||
          !pattern(l, f, text))
        return false;
      auto s = std::make_unique<cMagicRelativeSubset>();
      if (!s->create(text.c_str(), static_cast<unsigned int>(f.number("after", 0))))
        return badPattern(text);
      node()->subset = std::move(s);
      return true;
    }
    return fail("a subset is \"subset field ...\" or \"subset magic ...\"");
  }

  bool start(const sLine& l) {
    const std::string kind = l.tokens.size() > 1 ? l.tokens[1].text : "";
    if (kind == "ascii-text" || kind == "unicode-text") {
      cFields f;
      if (!fields(l, 2, {}, f) || !noPattern(l)) return false;
      if (kind == "ascii-text")
        node()->addStrRule(std::make_unique<cScanSigRuleIsStr>());
      else
        node()->addStrRule(std::make_unique<cScanSigRuleIsUniStr>());
      return true;
    }
    cFields f;
    std::string text;
    if (!fields(l, 1,
                {{"at", eField::Number, kMaxSigned},
                 {"scan", eField::Flag},
                 {"block", eField::Number, kMaxSigned},
                 {"escaped", eField::Flag}},
                f))
      return false;
    if (f.has("at") == f.has("scan"))
      return fail("a start rule is \"start at N: PATTERN\", \"start scan: PATTERN\", "
                  "\"start ascii-text\" or \"start unicode-text\"");
    if (!pattern(l, f, text)) return false;
    const auto offset = f.has("scan") ? 0xFFFFFFFFu : static_cast<unsigned int>(f.number("at", 0));
    auto rule = std::make_unique<cScanSigRuleUniHexMatch>();
    if (!rule->create(text.c_str(), static_cast<unsigned int>(f.number("block", 0)), offset))
      return badPattern(text);
    node()->addStrRule(std::move(rule));
    return true;
  }

  bool end(const sLine& l) {
    const std::string kind = l.tokens.size() > 1 ? l.tokens[1].text : "";
    cFields f;
    if (kind == "ascii-text" || kind == "unicode-text") {
      if (!fields(l, 2, {}, f) || !noPattern(l)) return false;
      if (kind == "ascii-text")
        node()->addEndRule(std::make_unique<cScanSigEndRuleIsStrEnd>());
      else
        node()->addEndRule(std::make_unique<cScanSigEndRuleIsUniStrEnd>());
      return true;
    }
    if (kind == "size") {
      if (!fields(l, 2,
                  {{"at", eField::Number, kMaxU32},
                   {"width", eField::Number, 255},
                   {"big-endian", eField::Flag},
                   {"little-endian", eField::Flag},
                   {"multiplier", eField::Number, kMaxU32},
                   {"increment", eField::Number, kMaxU32}},
                  f) ||
          !noPattern(l))
        return false;
      if (!f.has("at") || !f.has("width")) return fail("a size rule needs \"at\" and \"width\"");
      if (f.has("big-endian") && f.has("little-endian"))
        return fail("a size field is big-endian or little-endian, not both");
      auto rule = std::make_unique<cScanSigEndRuleMatchSize>();
      rule->create(static_cast<unsigned int>(f.number("at", 0)),
                   static_cast<unsigned char>(f.number("width", 0)),
                   static_cast<unsigned int>(f.number("increment", 0)),
                   static_cast<unsigned int>(f.number("multiplier", 1)), f.has("big-endian"));
      node()->addEndRule(std::move(rule));
      return true;
    }
    std::string text;
    if (!fields(l, 1, {{"after", eField::Number, kMaxU32}, {"escaped", eField::Flag}}, f))
      return false;
    if (!f.has("after"))
      return fail("an end rule is \"end after N: PATTERN\", \"end size ...\", "
                  "\"end ascii-text\" or \"end unicode-text\"");
    if (!pattern(l, f, text)) return false;
    auto rule = std::make_unique<cScanSigEndRuleUniHex>();
    if (!rule->create(text.c_str(), static_cast<unsigned int>(f.number("after", 0))))
      return badPattern(text);
    node()->addEndRule(std::move(rule));
    return true;
  }

  cCustomSignaturesTree& myTree;
  sRulesTextError& myError;
  std::vector<sOpen> myOpen;
  int myLine = 0;
  bool myHeader = false;
};

} // namespace

bool rulesToText(const cCustomSignaturesTree& tree, std::string& text, std::string& error) {
  std::string out = std::string(kRulesTextHeader) + "\n";
  int open = 0; // definitions whose closing brace is still due
  for (const cTreeItem* p = tree.first(); p; p = p->nextInOrder()) {
    const auto& node = static_cast<const cScanSignature&>(*p);
    const int depth = node.depth();
    for (; open > depth; --open) out += indentOf(open - 1) + "}\n";
    if (!writeNode(out, node, indentOf(depth), error)) return false;
    open = depth + 1;
  }
  for (; open > 0; --open) out += indentOf(open - 1) + "}\n";
  text = std::move(out);
  return true;
}

bool rulesFromText(std::string_view text, cCustomSignaturesTree& tree, sRulesTextError& error) {
  cBuilder builder(tree, error);
  int number = 0;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    if (!builder.line(line, ++number)) return false;
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return builder.finish();
}

bool looksLikeRulesText(std::string_view text) {
  constexpr std::string_view kFamily = "qvraci-rules text";
  while (!text.empty()) {
    const size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    const std::string_view content = trimmed(line);
    if (!content.empty() && content.front() != '#')
      return content.substr(0, kFamily.size()) == kFamily;
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return false;
}
