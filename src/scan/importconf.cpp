#include "importconf.h"

#include <cctype>
#include <climits>
#include <cstdio>
#include <memory>
#include <optional>

#include "scan.h"

namespace {

struct sByte {
  unsigned char value = 0;
  bool any = false; // a wildcard: any byte
};

bool isHex(char c) {
  return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

int hexValue(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) ? c - '0' : std::tolower(c) - 'a' + 10;
}

// The words foremost and scalpel take after a footer.
bool isKeyword(const std::string& word) {
  return word == "NEXT" || word == "REVERSE" || word == "FORWARD_NEXT" || word == "ASCII";
}

std::vector<std::string> words(std::string_view line) {
  std::vector<std::string> out;
  size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && std::isspace(static_cast<unsigned char>(line[i]))) ++i;
    const size_t from = i;
    while (i < line.size() && !std::isspace(static_cast<unsigned char>(line[i]))) ++i;
    if (i > from) out.emplace_back(line.substr(from, i - from));
  }
  return out;
}

bool isNumber(const std::string& s) {
  if (s.empty() || s.size() > 19) return false; // fits in 64 bits
  for (char c : s) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
  }
  return true;
}

// The bytes of a foremost or scalpel header or footer: \xHH, \ooo (three octal digits,
// the first 0 to 3), \s for a blank, a backslash before any other character that is not a
// digit for that character; a decoded byte equal to the wildcard matches any byte.
std::optional<std::vector<sByte>> decodeField(const std::string& field, char wildcard,
                                              std::string& why) {
  std::vector<sByte> out;
  for (size_t i = 0; i < field.size(); ++i) {
    unsigned char c = static_cast<unsigned char>(field[i]);
    if (c == '\\') {
      if (i + 1 == field.size()) {
        why = "\"" + field + "\" ends in a lone backslash";
        return std::nullopt;
      }
      const char n = field[++i];
      const auto octal = [&](size_t k) {
        return k < field.size() && field[k] >= '0' && field[k] <= '7';
      };
      if (n == 'x' || n == 'X') {
        if (i + 2 >= field.size() || !isHex(field[i + 1]) || !isHex(field[i + 2])) {
          why = "\"" + field + "\" has \\x without two hex digits";
          return std::nullopt;
        }
        c = static_cast<unsigned char>(hexValue(field[i + 1]) * 16 + hexValue(field[i + 2]));
        i += 2;
      } else if (n >= '0' && n <= '3' && octal(i + 1) && octal(i + 2)) {
        c = static_cast<unsigned char>((n - '0') * 64 + (field[i + 1] - '0') * 8 + field[i + 2] -
                                       '0');
        i += 2;
      } else if (std::isdigit(static_cast<unsigned char>(n))) {
        why = "\"" + field + "\" has \\" + n + ", neither a hex nor a three-digit octal escape";
        return std::nullopt;
      } else {
        c = n == 's' ? ' ' : static_cast<unsigned char>(n);
      }
    }
    out.push_back({c, c == static_cast<unsigned char>(wildcard)});
  }
  return out;
}

// Advanced/HEX text for bytes: runs of printable characters as texts (case-insensitive
// ones after '-'), other bytes in hex, wildcards as ??.
std::string patternOf(const std::vector<sByte>& bytes, bool caseless) {
  std::string out = caseless ? "-" : "";
  std::string run;
  const auto flush = [&] {
    if (run.empty()) return;
    out += (out.empty() || out == "-" ? "" : " ") + ("'" + run + "'");
    run.clear();
  };
  for (const sByte& b : bytes) {
    const bool printable =
        !b.any && b.value > 0x20 && b.value < 0x7F && b.value != '\'' && b.value != '\\';
    if (printable || (!b.any && b.value == ' ' && !run.empty())) {
      run += static_cast<char>(b.value);
      continue;
    }
    flush();
    char hex[4];
    std::snprintf(hex, sizeof hex, "%02X", b.value);
    out += (out.empty() || out == "-" ? "" : " ") + (b.any ? std::string("??") : std::string(hex));
  }
  // A text may not end in a blank, where the text form would need escaping: the blanks go
  // back out as bytes.
  size_t blanks = 0;
  while (blanks < run.size() && run[run.size() - 1 - blanks] == ' ') ++blanks;
  run.resize(run.size() - blanks);
  flush();
  for (size_t i = 0; i < blanks; ++i) out += " 20";
  return out;
}

bool allWildcards(const std::vector<sByte>& bytes) {
  for (const sByte& b : bytes) {
    if (!b.any) return false;
  }
  return true;
}

// A definition named after its extension and line, for the tree once all its rules are
// made.
std::unique_ptr<cScanSignature> definition(const std::string& ext, int line) {
  auto n = std::make_unique<cScanSignature>();
  const std::string shown = ext.empty() ? "no extension" : ext;
  n->create((shown + " (line " + std::to_string(line) + ")").c_str(), ext.c_str());
  n->hitMode = cScanSignature::hmActive;
  return n;
}

bool addStart(cScanSignature& n, const std::string& pattern, unsigned int offset) {
  auto rule = std::make_unique<cScanSigRuleUniHexMatch>();
  if (!rule->create(pattern.c_str(), 0, offset)) return false;
  n.addStrRule(std::move(rule));
  return true;
}

// The text after the first `count` words of line.
std::string_view afterWords(std::string_view line, int count) {
  size_t i = 0;
  for (int k = 0; k < count; ++k) {
    while (i < line.size() && std::isspace(static_cast<unsigned char>(line[i]))) ++i;
    while (i < line.size() && !std::isspace(static_cast<unsigned char>(line[i]))) ++i;
  }
  return line.substr(i);
}

class cImporter {
public:
  cImporter(eCarverFormat format, const std::string& name, bool commented,
            cCustomSignaturesTree& tree)
      : myFormat(format), myCommented(commented), myTree(tree) {
    myGroup = tree.add(nullptr, std::make_unique<cScanSignature>());
    myGroup->create(name.c_str(), "");
    myGroup->hitMode = cScanSignature::hmNever;
  }

  void line(std::string_view text, int number) {
    myLine = number;
    size_t i = 0;
    while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
    const bool comment = i < text.size() && text[i] == '#';
    if (comment) {
      if (!myCommented) return;
      while (i < text.size() &&
             (text[i] == '#' || std::isspace(static_cast<unsigned char>(text[i]))))
        ++i;
    }
    text.remove_prefix(i);
    if (text.empty()) return;
    if (myFormat == eCarverFormat::photorec)
      photorecLine(text, comment);
    else
      carverLine(words(text), comment);
  }

  sImported result() { return std::move(myResult); }

private:
  void note(const std::string& message) { myResult.notes.push_back({myLine, message}); }

  // Whether a line is a definition to read. Definitions and other uncommented lines count;
  // an uncommented line that is no definition is noted as not having the expected shape. A
  // commented one that is no definition is prose, and passes unseen.
  bool takeLine(bool looksLikeOne, bool comment, const char* shape) {
    if (looksLikeOne || !comment) ++myResult.lines;
    if (!looksLikeOne && !comment) note(std::string("not \"") + shape + "\"");
    return looksLikeOne;
  }

  // extension, case (y or n), size, header, [footer], [keyword]; or "wildcard C".
  void carverLine(const std::vector<std::string>& w, bool comment) {
    if (w.size() == 2 && w[0] == "wildcard" && w[1].size() == 1) {
      myWildcard = w[1][0];
      return;
    }
    const bool looksLikeOne = w.size() >= 4 && w[1].size() == 1 &&
                              std::string("yYnN").find(w[1][0]) != std::string::npos &&
                              isNumber(w[2]);
    if (!takeLine(looksLikeOne, comment, "extension case size header [footer] [keyword]")) return;
    // Fields after the header: a footer, then perhaps a keyword.
    if (w.size() > 6 || (w.size() == 6 && !isKeyword(w[5])))
      return note("more fields than extension, case, size, header, footer and keyword");
    const std::string footer = w.size() > 4 ? w[4] : "", keyword = w.size() > 5 ? w[5] : "";
    if (isKeyword(footer)) return note(footer + " needs a footer before it");
    if (keyword == "REVERSE")
      return note("REVERSE (the last footer within the size) cannot be expressed: end rules "
                  "end a file at its first footer");
    if (keyword == "ASCII")
      return note("ASCII (the text around the header) cannot be expressed: a file starts at "
                  "its header");
    const unsigned long long size = std::stoull(w[2]);
    if (size == 0 || size > UINT_MAX)
      return note("the size " + w[2] + " is not between 1 and 4294967295 bytes");
    std::string why;
    const auto header = decodeField(w[3], myWildcard, why);
    if (!header) return note("the header " + why);
    if (allWildcards(*header)) return note("a header of wildcards alone starts a file anywhere");
    std::optional<std::vector<sByte>> tail;
    if (!footer.empty()) {
      tail = decodeField(footer, myWildcard, why);
      if (!tail) return note("the footer " + why);
    }
    const bool caseless = w[1] == "n" || w[1] == "N";
    auto n = definition(w[0] == "NONE" ? "" : w[0], myLine);
    bool ok = addStart(*n, patternOf(*header, caseless), 0);
    if (tail) {
      auto end = std::make_unique<cScanSigEndRuleUniHex>();
      const auto distance = static_cast<unsigned int>(keyword == "NEXT" ? 0 : tail->size());
      ok = ok && end->create(patternOf(*tail, caseless).c_str(), distance);
      n->addEndRule(std::move(end));
    }
    if (!ok) return note("its patterns do not compile");
    // The maximum size: a fixed size (no field: multiplier 0) that ends the file there
    // when no footer did.
    auto cap = std::make_unique<cScanSigEndRuleMatchSize>();
    cap->create(0, 1, static_cast<unsigned int>(size), 0, false);
    n->addEndRule(std::move(cap));
    myTree.add(myGroup, std::move(n));
  }

  // extension, offset, magic: "strings" (escapes \b \n \r \t \0 \\) and 0x hex, with blanks
  // or commas between them.
  void photorecLine(std::string_view text, bool comment) {
    const std::vector<std::string> w = words(text);
    const bool looksLikeOne = w.size() >= 3 && isNumber(w[1]);
    if (!takeLine(looksLikeOne, comment, "extension offset signature")) return;
    std::vector<sByte> magic;
    std::string why;
    if (!decodeMagic(afterWords(text, 2), magic, why)) return note(why);
    const unsigned long long offset = std::stoull(w[1]);
    if (offset + magic.size() > cRawScanner::kLookahead)
      return note("the signature at " + w[1] + " lies beyond the 64 KiB a start rule can see");
    auto n = definition(w[0], myLine);
    if (!addStart(*n, patternOf(magic, false), static_cast<unsigned int>(offset)))
      return note("its signature does not compile");
    myTree.add(myGroup, std::move(n));
  }

  static bool decodeMagic(std::string_view s, std::vector<sByte>& out, std::string& why) {
    size_t i = 0;
    while (i < s.size()) {
      const char c = s[i];
      if (c == ' ' || c == '\t' || c == ',' || c == '\r') {
        ++i;
      } else if (c == '"') {
        for (++i;; ++i) {
          if (i >= s.size()) return why = "a string has no closing quote", false;
          if (s[i] == '"') break;
          unsigned char b = static_cast<unsigned char>(s[i]);
          if (b == '\\') {
            const std::string escapes = "bnrt0\\", values = std::string("\b\n\r\t") + '\0' + "\\";
            const size_t e = i + 1 < s.size() ? escapes.find(s[i + 1]) : std::string::npos;
            if (e == std::string::npos)
              return why = "a string has an escape other than \\b \\n \\r \\t \\0 \\\\", false;
            b = static_cast<unsigned char>(values[e]);
            ++i;
          }
          out.push_back({b, false});
        }
        ++i;
      } else if (c == '0' && i + 1 < s.size() && (s[i + 1] == 'x' || s[i + 1] == 'X')) {
        size_t j = i + 2;
        while (j < s.size() && isHex(s[j])) ++j;
        if (j == i + 2 || (j - i) % 2 != 0)
          return why = "hex data needs pairs of digits after 0x", false;
        for (size_t k = i + 2; k < j; k += 2)
          out.push_back(
              {static_cast<unsigned char>(hexValue(s[k]) * 16 + hexValue(s[k + 1])), false});
        i = j;
      } else {
        return why = "the signature is neither \"strings\" nor 0x hex data", false;
      }
    }
    if (out.empty()) return why = "the signature is empty", false;
    return true;
  }

  eCarverFormat myFormat;
  bool myCommented;
  cCustomSignaturesTree& myTree;
  cScanSignature* myGroup = nullptr;
  char myWildcard = '?';
  int myLine = 0;
  sImported myResult;
};

} // namespace

sImported importCarverConfig(eCarverFormat format, std::string_view config, const std::string& name,
                             bool commented, cCustomSignaturesTree& tree) {
  cImporter importer(format, name, commented, tree);
  int number = 0;
  while (!config.empty()) {
    const size_t end = config.find('\n');
    importer.line(config.substr(0, end), ++number);
    config.remove_prefix(end == std::string_view::npos ? config.size() : end + 1);
  }
  return importer.result();
}
