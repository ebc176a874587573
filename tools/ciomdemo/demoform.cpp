#include "demoform.h"

#include <unistd.h>

#include <cstdio>

#include "ciom/filechoose.h"
#include "ciom/messageform.h"
#include "ciom/popup.h"
#include "controlsform.h"
#include "defsform.h"

namespace {

constexpr int kPressCode = 100; // a posted press: 100 + the button's id

std::string workingFolder() {
  char buffer[4096];
  return getcwd(buffer, sizeof buffer) ? buffer : "";
}

std::string chosenOr(const std::optional<std::string>& path) {
  return path ? *path : "cancelled";
}

} // namespace

void cDemoForm::onConstruct() {
  cCustomForm::onConstruct();
  cPanelChild* panel = clientArea();
  myTitle.setTransparent(true);
  myTitle.setFont(stdFontBold());
  myTitle.setText("Each button opens one of the toolkit's standard windows, or its controls.", -1,
                  false);
  panel->anchor(&myTitle, 10, 10, ~10, 20);

  panel->attach(&myButtons, 10, 40, 0, 24);
  myButtons.addButton(kInfo, "Information", "infobox: one line of text, one button");
  myButtons.addButton(kWarning, "Warning", "warningbox: a heading and two lines");
  myButtons.addButton(kError, "Error", "errorbox");
  myButtons.addButton(kConfirm, "Confirm", "confirmbox: Yes or No");
  myButtons.addButton(kWarnConfirm, "Warn and confirm", "warnconfirmbox: Yes or No");
  myButtons.addButton(kPopup, "Popup menu", "A popup list below the button");
  myButtons.addButton(kControls, "Controls",
                      "Edit boxes, a drop-down list, splitters, scroll bars");
  myButtons.addButton(kDefinitions, "Definitions", "A tree view beside a property sheet");
  myButtons.addButton(kOpenFile, "Open file", "The file dialog, opening a rules file");
  myButtons.addButton(kSaveFile, "Save file", "The file dialog, saving a rules file");
  myButtons.move(10, 40, myButtons.wantedWidth(), 24);

  myHintLabel.setTransparent(true);
  myHintLabel.setText("Point here to see a tooltip.", -1, false);
  myHintLabel.setHint("A tooltip: the element's hint,\nshown while the pointer is over it.");
  panel->attach(&myHintLabel, 10, 84, 220, 20);

  myAnswerLine.setTransparent(true);
  panel->anchor(&myAnswerLine, 10, 114, ~10, 20);
  answer("Nothing asked yet.");
}

void cDemoForm::answer(const std::string& text) {
  myAnswer = text;
  myAnswerLine.setText(("Last answer: " + text).c_str(), -1, true);
  std::printf("%s\n", text.c_str());
  std::fflush(stdout);
}

void cDemoForm::press(int id) {
  postAction(new cChildAction(kPressCode + id));
}

bool cDemoForm::onAction(cChildElement* source, cChildAction* action) {
  int id = 0;
  if (source == &myButtons && action->code == cToolBarAction::kCode)
    id = static_cast<cToolBarAction*>(action)->id;
  else if (source == this && action->code > kPressCode)
    id = action->code - kPressCode;
  if (id == 0) return cCustomForm::onAction(source, action);

  switch (id) {
  case kInfo:
    cMessageForm::infobox(this, "The rules file was saved.", nullptr);
    answer("information closed");
    break;
  case kWarning:
    cMessageForm::warningbox(this,
                             "The block size is not a power of two\nScanning will be slower.\n"
                             "Definitions with a subset may miss their files.",
                             nullptr);
    answer("warning closed");
    break;
  case kError:
    cMessageForm::errorbox(this, "The rules file cannot be read\nIt ends inside a definition.",
                           nullptr);
    answer("error closed");
    break;
  case kConfirm:
    answer(cMessageForm::confirmbox(this, "Delete the definition \"JPEG (EXIF)\"?", nullptr)
               ? "confirm: yes"
               : "confirm: no");
    break;
  case kWarnConfirm:
    answer(cMessageForm::warnconfirmbox(
               this, "Discard the unsaved changes?\nThey cannot be restored.", nullptr)
               ? "warn and confirm: yes"
               : "warn and confirm: no");
    break;
  case kPopup: {
    tActiveElementItems items;
    const char* names[] = {"Add definition", "Add container", "Duplicate", "Delete"};
    for (int i = 0; i < 4; ++i) {
      sActiveElementItem* item = items.insert(i + 1);
      item->id = i + 1;
      item->text.set(names[i]);
      item->enabled = i != 2; // one disabled item, to show its look
    }
    sPoint at;
    cButtonChild* button = myButtons.button(kPopup);
    button->absPos(at);
    const int chosen = cPopupMaster::simplePopup(this, items, at.x, at.y + button->height());
    answer(chosen < 0 ? "popup: dismissed" : std::string("popup: ") + names[chosen - 1]);
    break;
  }
  case kControls: {
    cControlsForm controls([this](const std::string& text) { answer(text); });
    if (myControlsHook) myControlsHook(&controls);
    controls.modal("Controls", 640, 380, this, true);
    if (myControlsHook) myControlsHook(nullptr);
    break;
  }
  case kDefinitions: {
    cDefinitionsForm definitions([this](const std::string& text) { answer(text); });
    if (myDefinitionsHook) myDefinitionsHook(&definitions);
    definitions.modal("Definitions", 760, 460, this, true);
    if (myDefinitionsHook) myDefinitionsHook(nullptr);
    break;
  }
  case kOpenFile:
  case kSaveFile: {
    const std::vector<sFileFilter> filters = {{"Rules file (*.qrrs)", "qrrs", "*.qrrs"}};
    const std::string folder = workingFolder();
    answer(id == kOpenFile
               ? "open: " +
                     chosenOr(cFileChooseDialog::open(this, nullptr, filters, folder.c_str()))
               : "save: " + chosenOr(cFileChooseDialog::save(this, nullptr, filters, folder.c_str(),
                                                             "new rules")));
    break;
  }
  default:
    break;
  }
  if (myQuit && winTarget()) winTarget()->_rt_destroy();
  return true;
}

bool cDemoForm::onFormCancel() {
  // Escape closes the demonstration.
  if (winTarget()) winTarget()->_rt_destroy();
  return true;
}
