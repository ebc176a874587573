// Opening, merging and saving rules files through the file dialogs; the document does the
// work (a save writes a new file beside the old one and renames it over it).
#include "base/files.h"
#include "ciom/filechoose.h"
#include "ciom/messageform.h"
#include "config.h"
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

std::vector<sFileFilter> cRuledMainForm::rulesFilters(bool open) {
  const sFileFilter binary{std::string(string(txDefinition)) + " (*.qrrs)", "qrrs", "*.qrrs"};
  const sFileFilter text{std::string(string(txDefinitionText)) + " (*.txt)", "txt", "*.txt"};
  // Open takes either form; a save offers the set's own form first.
  if (open)
    return {{std::string(string(txDefinition)) + " (*.qrrs, *.txt)", "qrrs", "*.qrrs;*.txt"},
            binary,
            text};
  if (myDoc.form() == rfText) return {text, binary};
  return {binary, text};
}

void cRuledMainForm::loadSigs(bool merge) {
  const std::optional<std::string> path =
      cFileChooseDialog::open(this, string(txOpen), rulesFilters(true), myLastFolder.c_str());
  if (!path) return;
  setLastFolder(folderOf(*path));
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
  if (myLastFolder.empty() && path) setLastFolder(folderOf(path));
  redrawRules();
  // What could be read stays, shown behind the message.
  if (!result.ok()) fileError(txCannotParse, result);
  return true;
}

void cRuledMainForm::setLastFolder(const std::string& folder) {
  myLastFolder = folder;
  setConfigFolder(ctRulesFolder, folder);
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
      cFileChooseDialog::save(this, string(txSave), rulesFilters(false), myLastFolder.c_str(),
                              name.empty() ? nullptr : name.c_str());
  if (!path) return;
  setLastFolder(folderOf(*path));
  saveFile(path->c_str());
}

void cRuledMainForm::saveFile(const char* path) {
  if (!path) return;
  // A save puts a new file in the old one's place, which a read-only file does not stop.
  if (file_read_only(path)) {
    const std::string question = std::string(string(txReadOnlyQuestion)) + "\n" + path;
    if (!cMessageForm::warnconfirmbox(this, question.c_str(), nullptr)) return;
  }
  const sRulesFileResult result = myDoc.save(path);
  if (!result.ok())
    fileError(result.outcome == sRulesFileResult::roCannotCreate ? txCannotCreate : txCannotWrite,
              result);
}
