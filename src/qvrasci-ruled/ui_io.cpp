// Opening, merging and saving rules files through the file dialogs; the document does the
// work (a save writes a new file beside the old one and renames it over it).
#include "ciom/filechoose.h"
#include "ciom/messageform.h"
#include "ui.h"
#include "uitext.h"

namespace {

std::string folderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash ? slash : 1);
}

std::string nameOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

} // namespace

std::vector<sFileFilter> cRuledMainForm::rulesFilter() {
  return {{string(txDefinition), "qrrs", "*.qrrs"}};
}

void cRuledMainForm::loadSigs(bool merge) {
  const std::optional<std::string> path =
      cFileChooseDialog::open(this, string(txOpen), rulesFilter(), myLastFolder.c_str());
  if (!path) return;
  myLastFolder = folderOf(*path);
  loadFile(path->c_str(), merge);
}

bool cRuledMainForm::loadFile(const char* path, bool merge) {
  // A file that cannot be opened changes nothing, and the view stays as it is; otherwise
  // the view is built anew from what the document now holds.
  const sRulesFileResult result = merge ? myDoc.merge(path) : myDoc.open(path);
  if (result.outcome == sRulesFileResult::roCannotOpen) {
    fileError(txCannotOpen, result);
    return false;
  }
  if (myLastFolder.empty() && path) myLastFolder = folderOf(path);
  redrawRules();
  // What could be read stays, shown behind the message.
  if (!result.ok()) fileError(txCannotParse, result);
  return true;
}

void cRuledMainForm::fileError(int text, const sRulesFileResult& result) {
  // The message first, then the file and what went wrong with it.
  const std::string message = std::string(string(text)) + "\n" + result.message;
  cMessageForm::errorbox(this, message.c_str(), nullptr);
}

void cRuledMainForm::saveSigs() {
  if (myDoc.empty()) return;
  const std::string name = nameOf(myDoc.path());
  const std::optional<std::string> path =
      cFileChooseDialog::save(this, string(txSave), rulesFilter(), myLastFolder.c_str(),
                              name.empty() ? nullptr : name.c_str());
  if (!path) return;
  myLastFolder = folderOf(*path);
  saveFile(path->c_str());
}

void cRuledMainForm::saveFile(const char* path) {
  if (!path) return;
  const sRulesFileResult result = myDoc.save(path);
  if (!result.ok())
    fileError(result.outcome == sRulesFileResult::roCannotCreate ? txCannotCreate : txCannotWrite,
              result);
}
