// Language files and tables: hand-built images, limits, merging, finding files, applying.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>
#include <zlib.h>

#include "base/files.h"
#include "ciom/langtable.h"

namespace {

using bytes = std::vector<unsigned char>;

void le32(bytes& b, unsigned v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
}
void le16(bytes& b, unsigned v) {
  b.push_back(static_cast<unsigned char>(v));
  b.push_back(static_cast<unsigned char>(v >> 8));
}
void add(bytes& b, const std::string& s) {
  b.insert(b.end(), s.begin(), s.end());
}

bytes sectionData(const std::vector<std::string>& strings) {
  bytes d;
  le16(d, static_cast<unsigned>(strings.size()));
  for (const auto& s : strings) le16(d, static_cast<unsigned>(s.size()));
  for (const auto& s : strings) add(d, s);
  return d;
}

// One section: name padded with zeros to a multiple of 4, then its data.
bytes section(const std::string& name, const bytes& data) {
  bytes b;
  std::string padded = name;
  padded.resize((name.size() + 3) / 4 * 4, '\0');
  le32(b, static_cast<unsigned>(padded.size()));
  add(b, padded);
  le32(b, static_cast<unsigned>(data.size()));
  b.insert(b.end(), data.begin(), data.end());
  return b;
}

// u32 U and the set deflated.
bytes packedSet(const bytes& set, unsigned claimed) {
  bytes b;
  le32(b, claimed);
  uLongf n = compressBound(set.size());
  bytes z(n);
  compress2(z.data(), &n, set.data(), set.size(), 5);
  b.insert(b.end(), z.begin(), z.begin() + static_cast<long>(n));
  return b;
}

bytes image(const std::string& id, const std::string& code, const std::string& name,
            const std::vector<bytes>& sections, long long claimed = -1) {
  bytes set;
  add(set, "CIOMLANG");
  for (const bytes& s : sections) set.insert(set.end(), s.begin(), s.end());
  bytes b;
  add(b, "CIOMLAFI");
  std::string field = id;
  field.resize(8, ' ');
  add(b, field);
  add(b, code);
  b.push_back(static_cast<unsigned char>(name.size()));
  add(b, name);
  const bytes packed = packedSet(set, claimed < 0 ? static_cast<unsigned>(set.size())
                                                  : static_cast<unsigned>(claimed));
  b.insert(b.end(), packed.begin(), packed.end());
  return b;
}

bool load(const bytes& b, cCiomLang& lang) {
  return loadCiomLangData(b.data(), static_cast<int>(b.size()), lang);
}

std::string text(const cCiomLang& lang, const char* section, int n) {
  const cCiomLangData* s = lang.section(section);
  const char* t = s ? s->string(n) : nullptr;
  return t ? t : "(null)";
}

TEST(LangFile, ReadsAHandBuiltImage) {
  const bytes b = image("CIOMBASE", "DEU", "Deutsch",
                        {section("ciom::messages", sectionData({"OK", "Ja", "", "Information"})),
                         section("ruled::main", sectionData({"Datei"}))});
  cCiomLang lang;
  ASSERT_TRUE(load(b, lang));
  EXPECT_STREQ(lang.code(), "DEU");
  EXPECT_EQ(lang.name()[0], 'D');
  EXPECT_EQ(text(lang, "ciom::messages", 1), "Ja");
  EXPECT_EQ(text(lang, "ciom::messages", 2), ""); // empty, not missing
  EXPECT_EQ(text(lang, "ciom::messages", 4), "(null)");
  EXPECT_EQ(text(lang, "ciom::messages", -1), "(null)");
  EXPECT_EQ(text(lang, "ruled::main", 0), "Datei");
  EXPECT_EQ(lang.section("ruled::about"), nullptr);
}

TEST(LangFile, WritesTheSameBytesItReads) {
  cCiomLang lang;
  const unsigned short name[] = {'E', 'n', 'g', 'l', 'i', 's', 'h', 0};
  lang.create("ENG", name);
  cFasterTreeList<unsigned short, _guardchar<char>> strings;
  strings.insert(0)->set("Ok");
  strings.insert(1)->set("Yes");
  lang.sections().insert(cStringKey("ciom::messages"))->create(strings);
  strings.destroy();
  strings.insert(0)->set("About");
  lang.sections().insert(cStringKey("ruled::about"))->create(strings);
  _typebuf<unsigned char> out;
  ASSERT_TRUE(saveCiomLangData("CIOMBASE", lang, out));
  // Sections in key order; "ruled::about" (12 bytes) is not padded, "ciom::messages" is.
  // The header, up to and including the set's size U, must match byte for byte.
  const bytes expected = image("CIOMBASE", "ENG", "English",
                               {section("ciom::messages", sectionData({"Ok", "Yes"})),
                                section("ruled::about", sectionData({"About"}))});
  const bytes got(out.begin(), out.end());
  ASSERT_GE(got.size(), 28u);
  EXPECT_EQ(bytes(got.begin(), got.begin() + 31), bytes(expected.begin(), expected.begin() + 31));
  // The compressed parts may differ in zlib's choices; the data inside may not.
  bytes set;
  add(set, "CIOMLANG");
  for (const bytes& part : {section("ciom::messages", sectionData({"Ok", "Yes"})),
                            section("ruled::about", sectionData({"About"}))}) {
    set.insert(set.end(), part.begin(), part.end());
  }
  bytes inflated(set.size());
  uLongf n = inflated.size();
  ASSERT_EQ(uncompress(inflated.data(), &n, got.data() + 31, got.size() - 31), Z_OK);
  EXPECT_EQ(inflated, set);
  cCiomLang back;
  ASSERT_TRUE(load(got, back));
  EXPECT_EQ(text(back, "ciom::messages", 1), "Yes");
  EXPECT_EQ(text(back, "ruled::about", 0), "About");
}

TEST(LangFile, Limits) {
  cCiomLang lang;
  const bytes twenty(20, 'x');
  EXPECT_FALSE(loadCiomLangData(twenty.data(), 20, lang));
  bytes named = image("CIOMBASE", "ENG", std::string(255, 'n'), {});
  named.resize(275); // L = 255 needs at least 276 bytes
  EXPECT_FALSE(load(named, lang));

  // A set of exactly 4 MiB is accepted, one byte more is refused.
  std::vector<std::string> big(63, std::string(65535, 'a'));
  bytes data = sectionData(big);
  const size_t wanted = 0x400000 - 8 - 4 - 4 - 4;
  data.resize(wanted, 'a'); // bytes after the last string are ignored by the section reader
  bytes set;
  add(set, "CIOMLANG");
  const bytes s = section("big", data);
  set.insert(set.end(), s.begin(), s.end());
  ASSERT_EQ(set.size(), 0x400000u);
  const bytes ok = packedSet(set, 0x400000);
  EXPECT_TRUE(loadCiomLang(ok.data(), static_cast<int>(ok.size()), lang.sections()));
  set.push_back('a');
  const bytes tooBig = packedSet(set, 0x400001);
  EXPECT_FALSE(loadCiomLang(tooBig.data(), static_cast<int>(tooBig.size()), lang.sections()));
  const bytes zero = packedSet(set, 0);
  EXPECT_FALSE(loadCiomLang(zero.data(), static_cast<int>(zero.size()), lang.sections()));
}

TEST(LangFile, BadSections) {
  cCiomLang lang;
  EXPECT_FALSE(load(image("CIOMBASE", "ENG", "E", {section("s", sectionData({}))}), lang));
  bytes overrun = sectionData({"abc"});
  overrun[2] = 9; // claims 9 bytes for 3
  EXPECT_FALSE(load(image("CIOMBASE", "ENG", "E", {section("t", overrun)}), lang));
  EXPECT_EQ(text(lang, "t", 0), "(null)"); // nothing was stored for it
  bytes cut = section("u", sectionData({"x"}));
  cut.pop_back();
  EXPECT_FALSE(load(image("CIOMBASE", "ENG", "E", {cut}), lang));
  bytes foreign = image("CIOMBASE", "ENG", "E", {});
  foreign[0] = 'X';
  EXPECT_FALSE(load(foreign, lang));

  cCiomLangData hole;
  cFasterTreeList<unsigned short, _guardchar<char>> strings;
  strings.insert(0)->set("a");
  strings.insert(2)->set("c"); // 1 is a null entry
  ASSERT_TRUE(hole.create(strings));
  _typebuf<unsigned char> raw;
  ASSERT_TRUE(hole.raw(raw));
  EXPECT_EQ(raw[4], 0xFF); // 65535 for the null entry
  EXPECT_EQ(raw[5], 0xFF);
  cCiomLangData back;
  EXPECT_FALSE(back.create(raw.data(), static_cast<int>(raw.count())));
  cCiomLangData empty;
  EXPECT_FALSE(empty.raw(raw));
}

TEST(LangFile, LaterImagesReplaceWholeSections) {
  cCiomLang lang;
  ASSERT_TRUE(cLibLang::defines(lngEnglish, cCIOMLang::rows(), cCIOMLang::kRows));
  ASSERT_TRUE(loadCiomLangData(cCIOMLang::rows()[0].data,
                               static_cast<int>(cCIOMLang::rows()[0].size), lang));
  EXPECT_EQ(lang.section("ciom::messages")->count(), 7);
  ASSERT_TRUE(load(
      image("CIOMBASE", "ENG", "E", {section("ciom::messages", sectionData({"A", "B"}))}), lang));
  EXPECT_EQ(lang.section("ciom::messages")->count(), 2);
  EXPECT_EQ(lang.section("ciom::filechoose")->count(), 25); // untouched
}

TEST(LangFile, FilesAreFoundByLibrary) {
  char pattern[] = "/tmp/qvraci-lang-XXXXXX";
  const std::string dir = mkdtemp(pattern);
  auto write = [&](const std::string& name, const bytes& b) {
    cFileIO f;
    ASSERT_TRUE(f.create((dir + "/" + name).c_str(), fmWrite));
    f.writef(b.data(), static_cast<unsigned>(b.size()));
  };
  write("de.laci", image("CIOMBASE", "DEU", "Deutsch", {section("m", sectionData({"x"}))}));
  write("other.laci", image("OTHERLIB", "FRA", "F", {section("m", sectionData({"x"}))}));
  write("notes.txt", image("CIOMBASE", "RUS", "R", {}));
  write("junk.laci", bytes{1, 2, 3});
  cFasterTreeList<int, sCiomLangDescrInfo> found;
  ASSERT_TRUE(findCiomLangFiles(dir.c_str(), "CIOMBASE", found));
  ASSERT_EQ(found.count(), 1);
  EXPECT_STREQ(found.find(0)->code, "DEU");
  EXPECT_EQ(found.find(0)->name.c_str()[0], 'D');
  cCiomLang loaded;
  EXPECT_TRUE(loadCiomLangFile(found.find(0)->path.c_str(), loaded));
  ASSERT_TRUE(findCiomLangFiles(dir.c_str(), "CIOM", found));
  EXPECT_EQ(found.count(), 0);
  EXPECT_FALSE(findCiomLangFiles((dir + "/de.laci").c_str(), "CIOMBASE", found));
  EXPECT_FALSE(findCiomLangFiles(dir.c_str(), nullptr, found));

  cFileIO big; // larger than 4 MiB: refused before reading
  ASSERT_TRUE(big.create((dir + "/big.laci").c_str(), fmWrite));
  big.set_eof(0x400001);
  big.close();
  EXPECT_FALSE(loadCiomLangFile((dir + "/big.laci").c_str(), loaded));
  EXPECT_TRUE(saveCiomLangFile("CIOMBASE", (dir + "/saved.laci").c_str(), loaded));
  EXPECT_TRUE(loadCiomLangFile((dir + "/saved.laci").c_str(), loaded));
  EXPECT_EQ(std::system(("rm -rf " + dir).c_str()), 0);
}

TEST(LangTables, BuiltInToolkitLanguages) {
  const char* codes[] = {"ENG", "RUS", "UKR", "DEU", "FRA", "JPN", "KOR", "CHI", "TWN"};
  const int ids[] = {0, 1, 6, 2, 5, 3, 4, 8, 9};
  const char* names[] = {"English", "Русский", "Українська", "Deutsch", "French",
                         "日本語",  "한국어",  "中国语",     "中國語"};
  std::string englishYes;
  for (int i = 0; i < cCIOMLang::kRows; ++i) {
    const cLibLang::sLangDef& row = cCIOMLang::rows()[i];
    EXPECT_EQ(row.lang, ids[i]);
    cCiomLang lang;
    ASSERT_TRUE(loadCiomLangData(row.data, static_cast<int>(row.size), lang)) << codes[i];
    EXPECT_STREQ(lang.code(), codes[i]);
    _guardchar<char> name;
    _w2pc(lang.name(), name);
    EXPECT_STREQ(name.c_str(), names[i]);
    const std::pair<const char*, int> sections[] = {{"ciom::filechoose", 25},
                                                    {"ciom::folderchoose", 8},
                                                    {"ciom::messages", 7},
                                                    {"ciom::progress", 5},
                                                    {"ciom::propsheet", 3}};
    for (const auto& [section, count] : sections) {
      ASSERT_NE(lang.section(section), nullptr) << codes[i] << " " << section;
      EXPECT_EQ(lang.section(section)->count(), count) << codes[i] << " " << section;
    }
    if (i == 0)
      englishYes = text(lang, "ciom::messages", 1);
    else
      EXPECT_NE(text(lang, "ciom::messages", 1), englishYes) << codes[i]; // translated
  }
  EXPECT_EQ(englishYes, "Yes");
}

TEST(LangTables, ApplyFallsBackPerTable) {
  // An editor-like table that carries English only.
  cCiomLang editor;
  const unsigned short name[] = {'E', 0};
  editor.create("ENG", name);
  cFasterTreeList<unsigned short, _guardchar<char>> strings;
  strings.insert(0)->set("Rules editor");
  editor.sections().insert(cStringKey("ruled::main"))->create(strings);
  _typebuf<unsigned char> image;
  ASSERT_TRUE(saveCiomLangData("CIOMBASE", editor, image));
  const cLibLang::sLangDef rows[] = {{lngEnglish, image.data(), image.count()}};
  cStaticLangTable editorTable(rows, 1);
  cCIOMLang toolkit;

  EXPECT_TRUE(cLibLang::applyLang(lngKorean));
  EXPECT_EQ(cLibLang::appliedLang(), lngKorean);
  EXPECT_EQ(text(cLibLang::gCiomLang(), "ciom::messages", 1), "예");
  EXPECT_EQ(text(cLibLang::gCiomLang(), "ruled::main", 0), "Rules editor");
  EXPECT_TRUE(cLibLang::applyLang(static_cast<eCIOMStdLangs>(7))); // unassigned: defaults
  EXPECT_EQ(cLibLang::appliedLang(), 7);
  EXPECT_EQ(text(cLibLang::gCiomLang(), "ciom::messages", 1), "Yes");
  EXPECT_TRUE(cLibLang::applyDefaultLang()); // the editor table registered first: English
  EXPECT_EQ(cLibLang::appliedLang(), lngEnglish);

  cLangContainer empty; // no rows, no default: applying fails for it
  EXPECT_FALSE(cLibLang::applyLang(lngGerman));
  EXPECT_EQ(cLibLang::appliedLang(), lngGerman);
}

TEST(LangTables, Container) {
  cLangContainer c;
  const unsigned char data[] = {1, 2, 3};
  long long size = 3;
  long long none = 0;
  EXPECT_FALSE(c.addDef(0, nullptr, size, false));
  EXPECT_FALSE(c.addDef(0, data, none, false));
  EXPECT_FALSE(c.addDef(11, data, size, false));
  EXPECT_EQ(c.defaltLang(), cLangContainer::kNoDefault);
  EXPECT_TRUE(c.addDef(3, data, size, false));
  EXPECT_EQ(c.defaltLang(), 3); // the first row becomes the default
  EXPECT_TRUE(c.addDef(10, data, size, false));
  EXPECT_EQ(c.defaltLang(), 3);
  EXPECT_TRUE(c.addDef(5, data, size, true));
  EXPECT_EQ(c.defaltLang(), 5);
  const unsigned char* got = nullptr;
  long long gotSize = 0;
  EXPECT_TRUE(c.getLang(10, got, gotSize));
  EXPECT_EQ(gotSize, 3);
  EXPECT_EQ(got[2], 3);
  EXPECT_FALSE(c.getLang(4, got, gotSize));
  EXPECT_EQ(c.sizeOf(lngFrench), 3);
  EXPECT_EQ(c.langData(lngGerman), nullptr);
}

} // namespace
