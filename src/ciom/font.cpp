#include "font.h"

#include <cstring>
#include <vector>

#include "langtable.h"

namespace {

struct sFontGlobals {
  std::vector<std::unique_ptr<cFontObject>> store; // myFontsStore: never shrinks
  cFontObject::fMaker maker = nullptr;
  _guardchar<char> stdFace, fixedFace;
  double wrapFactor = 1.2;
};

sFontGlobals& globals() {
  static sFontGlobals g;
  return g;
}

const char* orEmpty(const char* s) {
  return s ? s : "";
}

} // namespace

cFontObject* cFontObject::get(int kind, int size, const char* face, bool bold, bool underline,
                              bool italic) {
  sFontGlobals& g = globals();
  for (const auto& font : g.store) {
    if (font->eq(kind, size, face, bold, underline, italic)) return font.get();
  }
  if (!g.maker) return nullptr;
  std::unique_ptr<cFontObject> font = g.maker();
  if (!font || !font->define(kind, size, face, bold, underline, italic)) return nullptr;
  g.store.push_back(std::move(font));
  return g.store.back().get();
}

void cFontObject::setMaker(fMaker maker) {
  globals().maker = maker;
}

size_t cFontObject::cached() {
  return globals().store.size();
}

bool cFontObject::define(int kind, int size, const char* face, bool bold, bool underline,
                         bool italic) {
  myKind = kind;
  mySize = size;
  myFace.set(orEmpty(face));
  myBold = bold;
  myUnderline = underline;
  myItalic = italic;
  return true;
}

bool cFontObject::eq(int kind, int size, const char* face, bool bold, bool underline,
                     bool italic) const {
  return myKind == kind && mySize == size && std::strcmp(myFace.c_str(), orEmpty(face)) == 0 &&
         myBold == bold && myUnderline == underline && myItalic == italic;
}

const char* _glbalStdFont() {
  const _guardchar<char>& face = globals().stdFace;
  return face.isNull() ? "Tahoma" : face.c_str();
}

void setGlobalStdFont(const char* face) {
  globals().stdFace.set(orEmpty(face));
}

const char* _glbalFixedFont() {
  const _guardchar<char>& face = globals().fixedFace;
  return face.isNull() ? "Courier" : face.c_str();
}

void setGlobalFixedFont(const char* face) {
  globals().fixedFace.set(orEmpty(face));
}

double textWrapYFactor() {
  return globals().wrapFactor;
}

void setDefaultPlatformFont(int* out) {
  if (out) *out = 3;
  const char* face = nullptr;
  switch (static_cast<int>(cLibLang::appliedLang())) {
  case 3:
    face = "Meiryo";
    break;
  case 4:
    face = "Malgun Gothic";
    break;
  case 8:
    face = "Microsoft YaHei";
    break;
  case 9:
    face = "Microsoft JhengHei";
    break;
  default:
    break;
  }
  if (face && cFontObject::get(5, 13, face, false, false, false)) {
    setGlobalStdFont(face);
    globals().wrapFactor = 1.07;
    if (out) *out = 0;
    return;
  }
  setGlobalStdFont("Tahoma");
}
