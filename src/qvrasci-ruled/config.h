// The editor's configuration: one tagged file, ~/.qvraci-ruled/.qvraci-ruled.hbin, opened at
// start and written through on every change. At each start the editor writes its identity
// (tags 5, 4 and 3); tag 16, the interface language, is only read; tags 17 and 18 keep the
// folders the file dialogs start in.
#pragma once

#include "ciom/langtable.h"
#include "qvra/config.h"

// The program's identifier: the name of its configuration folder and file.
inline constexpr const char* kAppId = "qvraci-ruled";
inline constexpr const char* kProductTitle = "Zorbex rules editor";
inline constexpr const char* kProductVersion = "2.0 (64 bit)";

enum eConfigTag {
  ctBuild = 5,
  ctTitle = 4,
  ctVersion = 3,
  ctLanguage = 16,
  ctRulesFolder = 17,  // where rules files were last opened or saved
  ctSampleFolder = 18, // the last folder of sample files tested
};

extern cQVRAConfigFile gAppConf;

// The configuration file's name: in the per-user folder when it can be made, else inside
// the program path (gAppPath) itself.
std::string configFileName();
// Opens gAppConf and writes the identity tags; false when the file can be neither opened
// nor created (the editor then runs with an empty, closed configuration).
bool initConfig();
// The stored interface language: English unless tag 16 holds exactly 4 bytes with a
// value of at most 9.
eCIOMStdLangs currLangID();
// A folder kept in a tag: "" unless the tag holds one 8-bit string with its zero.
std::string configFolder(eConfigTag tag);
void setConfigFolder(eConfigTag tag, const std::string& folder);
