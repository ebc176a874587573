// The editor's built-in texts and its table beside the toolkit's.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "qvrasci-ruled/lang.h"

namespace {

std::string text(const char* section, int n) {
  const cCiomLangData* s = cLibLang::gCiomLang().section(section);
  const char* t = s ? s->string(n) : nullptr;
  return t ? t : "(null)";
}

TEST(RuledLang, SectionsAndQuotedTexts) {
  ASSERT_TRUE(cLibLang::applyLang(lngEnglish));
  const std::pair<const char*, int> sections[] = {
      {"ruled::main", 83},  {"ruled::status", 2}, {"ruled::about", 1}, {"ruled::sig", 26},
      {"ruled::field", 18}, {"ruled::txt", 5},    {"ruled::rule", 4},  {"ruled::test", 24}};
  for (const auto& [section, count] : sections) {
    ASSERT_NE(cLibLang::gCiomLang().section(section), nullptr) << section;
    EXPECT_EQ(cLibLang::gCiomLang().section(section)->count(), count) << section;
  }
  EXPECT_EQ(text("ruled::main", 83), "(null)");
  EXPECT_EQ(text("ruled::main", 9), "Zorbex\xE2\x84\xA2 definition");
  EXPECT_EQ(text("ruled::main", 8),
            "Are you sure you want to close current definition set?\nThere are unsaved "
            "modification to the opened definitions.");
  EXPECT_EQ(text("ruled::main", 42), "%s at %d (multiply by %d and add %d)");
  EXPECT_EQ(text("ruled::main", 69), "quad-word (big endian, 64bit)");
  EXPECT_EQ(text("ruled::test", 12), "short by %d bytes");
  EXPECT_EQ(text("ruled::sig", 0), "Define advanced-hex signature");
  EXPECT_EQ(text("ruled::field", 17), "quad-word (Big Endian, 64bit)");
  EXPECT_EQ(text("ruled::txt", 3), "Specify text value");
  EXPECT_NE(text("ruled::sig", 4).find("[value/mask]"), std::string::npos);
  EXPECT_NE(text("ruled::about", 0).find("version 2.0 (64 bit)"), std::string::npos);
}

TEST(RuledLang, KoreanToolkitWithEnglishEditor) {
  cCIOMLang toolkit; // registered after the editor's table, as the window maker does
  EXPECT_TRUE(cLibLang::applyLang(lngKorean));
  EXPECT_EQ(text("ciom::messages", 2), "아니요");
  EXPECT_EQ(text("ruled::main", 0), "New file");
  EXPECT_TRUE(cLibLang::applyLang(static_cast<eCIOMStdLangs>(7)));
  EXPECT_EQ(text("ciom::messages", 2), "No");
  EXPECT_EQ(cLibLang::appliedLang(), 7);
  EXPECT_TRUE(cLibLang::applyDefaultLang()); // the editor's default: English
  EXPECT_EQ(cLibLang::appliedLang(), lngEnglish);
}

} // namespace
