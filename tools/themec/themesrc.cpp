#include "themesrc.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <map>
#include <sstream>
#include <stdexcept>

#include "raster.h"

namespace {

constexpr int kMaxSide = 256;
constexpr int kMaxDepth = 16;
constexpr double kMaxCoordinate = 4096;

struct sLine {
  int number = 0;
  std::vector<std::string> words;
};

// A problem at a source line; caught once and turned into the error text.
struct sSourceError : std::runtime_error {
  int line;
  sSourceError(int at, const std::string& what) : std::runtime_error(what), line(at) {}
};

std::vector<sLine> splitLines(const std::string& text) {
  std::vector<sLine> lines;
  std::istringstream in(text);
  std::string raw;
  for (int number = 1; std::getline(in, raw); ++number) {
    if (const size_t comment = raw.find("//"); comment != std::string::npos) raw.resize(comment);
    std::istringstream words(raw);
    sLine line{number, {}};
    for (std::string word; words >> word;) line.words.push_back(word);
    if (!line.words.empty()) lines.push_back(std::move(line));
  }
  return lines;
}

bool isIdentifier(const std::string& s) {
  if (s.empty() || !(std::isalpha(static_cast<unsigned char>(s[0])) || s[0] == '_')) return false;
  for (char c : s) {
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_') return false;
  }
  return true;
}

class cThemeReader {
public:
  void read(const std::vector<sLine>& lines, std::vector<sThemeElement>& out);

private:
  struct sPart {
    std::vector<sLine> body;
  };
  struct sContext {
    cRaster& raster;
    const std::vector<std::string>& args;
    double dx = 0, dy = 0;
  };

  std::map<std::string, sRgba> myColours;
  std::map<std::string, sPart> myParts;
  int myLine = 0;

  [[noreturn]] void fail(const std::string& what) const { throw sSourceError(myLine, what); }
  std::vector<sLine> body(const std::vector<sLine>& lines, size_t& at);
  void run(const std::vector<sLine>& body, sContext& context, int depth);
  void command(std::vector<std::string> words, sContext& context, int depth);
  double number(const std::string& word) const;
  int integer(const std::string& word, int low, int high) const;
  sRgba colour(const std::string& word) const;
  sPaint paint(const std::string& word) const;
  std::vector<sPointD> points(const std::vector<std::string>& words, size_t from,
                              const sContext& context) const;
};

double cThemeReader::number(const std::string& word) const {
  char* end = nullptr;
  const double v = std::strtod(word.c_str(), &end);
  if (word.empty() || *end || !std::isfinite(v) || std::abs(v) > kMaxCoordinate)
    fail("not a number within ±4096: \"" + word + "\"");
  return v;
}

int cThemeReader::integer(const std::string& word, int low, int high) const {
  const double v = number(word);
  if (v != std::floor(v) || v < low || v > high)
    fail("expected a whole number from " + std::to_string(low) + " to " + std::to_string(high) +
         ": \"" + word + "\"");
  return static_cast<int>(v);
}

sRgba cThemeReader::colour(const std::string& word) const {
  if (word.empty() || word[0] != '#') {
    const auto named = myColours.find(word);
    if (named == myColours.end()) fail("unknown colour \"" + word + "\"");
    return named->second;
  }
  const std::string hex = word.substr(1);
  if ((hex.size() != 6 && hex.size() != 8) ||
      hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
    fail("a colour is #RRGGBB or #RRGGBBAA: \"" + word + "\"");
  const unsigned long v = std::strtoul(hex.c_str(), nullptr, 16);
  const unsigned long rgba = hex.size() == 6 ? v << 8 | 0xFF : v;
  const auto byte = [&](int shift) { return static_cast<double>(rgba >> shift & 0xFF) / 255; };
  return {byte(24), byte(16), byte(8), byte(0)};
}

sPaint cThemeReader::paint(const std::string& word) const {
  if (word.size() > 2 && (word[0] == 'v' || word[0] == 'h') && word[1] == ':') {
    const size_t split = word.find(':', 2);
    if (split == std::string::npos) fail("a gradient is v:FROM:TO or h:FROM:TO: \"" + word + "\"");
    return {word[0] == 'v' ? sPaint::vertical : sPaint::horizontal,
            colour(word.substr(2, split - 2)), colour(word.substr(split + 1))};
  }
  const sRgba solid = colour(word);
  return {sPaint::solid, solid, solid};
}

std::vector<sPointD> cThemeReader::points(const std::vector<std::string>& words, size_t from,
                                          const sContext& context) const {
  if (words.size() <= from || (words.size() - from) % 2) fail("points come in X Y pairs");
  std::vector<sPointD> out;
  for (size_t i = from; i < words.size(); i += 2)
    out.push_back({number(words[i]) + context.dx, number(words[i + 1]) + context.dy});
  return out;
}

// The lines up to the matching "end", which `at` is left on.
std::vector<sLine> cThemeReader::body(const std::vector<sLine>& lines, size_t& at) {
  std::vector<sLine> out;
  for (++at; at < lines.size(); ++at) {
    const std::string& head = lines[at].words[0];
    if (head == "end") return out;
    if (head == "part" || head == "element" || head == "colour") {
      myLine = lines[at].number;
      fail("\"" + head + "\" inside a block: is an \"end\" missing?");
    }
    out.push_back(lines[at]);
  }
  fail("the block has no \"end\"");
}

void cThemeReader::run(const std::vector<sLine>& lines, sContext& context, int depth) {
  for (const sLine& line : lines) {
    myLine = line.number;
    std::vector<std::string> words = line.words;
    for (std::string& word : words) {
      if (word.size() == 2 && word[0] == '$' && word[1] >= '1' && word[1] <= '9') {
        const size_t n = static_cast<size_t>(word[1] - '1');
        if (n >= context.args.size()) fail("the part has no argument " + word);
        word = context.args[n];
      }
    }
    command(std::move(words), context, depth);
  }
}

void cThemeReader::command(std::vector<std::string> w, sContext& c, int depth) {
  const std::string& op = w[0];
  const auto want = [&](size_t count) {
    if (w.size() != count + 1)
      fail("\"" + op + "\" takes " + std::to_string(count) + " values, not " +
           std::to_string(w.size() - 1));
  };
  const auto at = [&](size_t i, double offset) { return number(w[i]) + offset; };
  if (op == "rect") {
    want(5);
    c.raster.paint(shapes::rect(at(1, c.dx), at(2, c.dy), number(w[3]), number(w[4])), paint(w[5]));
  } else if (op == "rrect") {
    want(6);
    c.raster.paint(
        shapes::roundRect(at(1, c.dx), at(2, c.dy), number(w[3]), number(w[4]), number(w[5])),
        paint(w[6]));
  } else if (op == "frame") {
    want(7);
    c.raster.paint(shapes::frame(at(1, c.dx), at(2, c.dy), number(w[3]), number(w[4]), number(w[5]),
                                 number(w[6])),
                   paint(w[7]));
  } else if (op == "circle") {
    want(4);
    c.raster.paint(shapes::circle(at(1, c.dx), at(2, c.dy), number(w[3])), paint(w[4]));
  } else if (op == "ring") {
    want(5);
    c.raster.paint(shapes::ring(at(1, c.dx), at(2, c.dy), number(w[3]), number(w[4])), paint(w[5]));
  } else if (op == "poly") {
    if (w.size() < 8) fail("\"poly\" needs a paint and at least three points");
    c.raster.paint(shapes::polygon(points(w, 2, c)), paint(w[1]));
  } else if (op == "line") {
    if (w.size() < 5) fail("\"line\" needs a thickness, a paint and at least one point");
    c.raster.paint(shapes::polyline(points(w, 3, c), number(w[1])), paint(w[2]));
  } else if (op == "arc") {
    want(7);
    c.raster.paint(shapes::arc(at(1, c.dx), at(2, c.dy), number(w[3]), number(w[4]), number(w[5]),
                               number(w[6])),
                   paint(w[7]));
  } else if (op == "move") {
    want(2);
    c.dx += number(w[1]);
    c.dy += number(w[2]);
  } else if (op == "draw") {
    if (w.size() < 2) fail("\"draw\" needs a part's name");
    const auto part = myParts.find(w[1]);
    if (part == myParts.end()) fail("unknown part \"" + w[1] + "\"");
    if (depth >= kMaxDepth) fail("parts are drawn more than 16 deep");
    const std::vector<std::string> args(w.begin() + 2, w.end());
    sContext inner{c.raster, args, c.dx, c.dy};
    run(part->second.body, inner, depth + 1);
  } else {
    fail("unknown command \"" + op + "\"");
  }
}

void cThemeReader::read(const std::vector<sLine>& lines, std::vector<sThemeElement>& out) {
  for (size_t at = 0; at < lines.size(); ++at) {
    const std::vector<std::string>& w = lines[at].words;
    myLine = lines[at].number;
    if (w[0] == "colour") {
      if (w.size() != 3 || !isIdentifier(w[1])) fail("expected \"colour NAME VALUE\"");
      if (myColours.count(w[1])) fail("colour \"" + w[1] + "\" is defined twice");
      myColours[w[1]] = colour(w[2]);
    } else if (w[0] == "part") {
      if (w.size() != 2 || !isIdentifier(w[1])) fail("expected \"part NAME\"");
      if (myParts.count(w[1])) fail("part \"" + w[1] + "\" is defined twice");
      const std::string name = w[1];
      myParts[name].body = body(lines, at);
    } else if (w[0] == "element") {
      if (w.size() != 5 || !isIdentifier(w[2])) fail("expected \"element INDEX NAME W H\"");
      sThemeElement element;
      element.index = integer(w[1], 0, 1 << 20);
      if (element.index != static_cast<int>(out.size()))
        fail("element " + w[1] + " stands where element " + std::to_string(out.size()) +
             " belongs");
      element.name = w[2];
      for (const sThemeElement& other : out) {
        if (other.name == element.name) fail("element name \"" + w[2] + "\" is used twice");
      }
      element.width = integer(w[3], 1, kMaxSide);
      element.height = integer(w[4], 1, kMaxSide);
      const auto commands = body(lines, at);
      const auto draw = [&](int scale) {
        cRaster raster(element.width, element.height, scale);
        const std::vector<std::string> none;
        sContext context{raster, none};
        run(commands, context, 0);
        return raster.pixels();
      };
      element.pixels = draw(1);
      element.detail = draw(kThemeDetail);
      out.push_back(std::move(element));
    } else {
      fail("expected \"colour\", \"part\" or \"element\", not \"" + w[0] + "\"");
    }
  }
}

} // namespace

bool readThemeSource(const std::string& text, const std::string& fileName,
                     std::vector<sThemeElement>& elements, std::string& error) {
  elements.clear();
  try {
    cThemeReader().read(splitLines(text), elements);
    return true;
  } catch (const sSourceError& e) {
    error = fileName + ":" + std::to_string(e.line) + ": " + e.what();
    elements.clear();
    return false;
  }
}
