#include "config.h"

#include <string>

#include "base/folders.h"
#include "mainci.h"

cQVRAConfigFile gAppConf;

std::string configFileName() {
  _guardchar<char> folder;
  std::string base;
  if (cFolderContents::getConfigFolder(folder, kAppId) &&
      cFolderContents::objtype(folder.c_str()) == fotFolder)
    base = folder.c_str();
  else
    base = gAppPath.c_str(); // the program path itself, not its folder
  return base + "/." + kAppId + ".hbin";
}

bool initConfig() {
  const std::string name = configFileName();
  if (!gAppConf.init(name.c_str())) return false;
  // Each write that changes a tag rewrites the file; unchanged tags cost nothing.
  gAppConf.setStr("0", ctBuild);
  gAppConf.setStr(kProductTitle, ctTitle);
  gAppConf.setStr(kProductVersion, ctVersion);
  return true;
}

eCIOMStdLangs currLangID() {
  int id = 0;
  if (!gAppConf.tagInt(id, ctLanguage) || id > 9) return lngEnglish;
  // A negative id passes: applying it finds no table and each falls back to its default.
  return static_cast<eCIOMStdLangs>(id);
}

std::string configFolder(eConfigTag tag) {
  const auto* bytes = static_cast<const char*>(gAppConf.tag(tag));
  const long long size = gAppConf.sizeOf(tag);
  if (!bytes || size < 1 || bytes[size - 1] != 0) return "";
  const std::string folder(bytes, static_cast<size_t>(size - 1));
  return folder.find('\0') == std::string::npos ? folder : "";
}

void setConfigFolder(eConfigTag tag, const std::string& folder) {
  gAppConf.setStr(folder.c_str(), tag);
}
