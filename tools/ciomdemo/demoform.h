// The demonstration form: a row of buttons that open each message box, a popup menu, the
// form of controls (controlsform.h), the form of definitions (defsform.h) and the file
// dialog for opening and for saving (in the working folder), a label with a tooltip, and
// a line that shows the last answer.
#pragma once

#include <functional>
#include <string>

#include "ciom/customform.h"
#include "ciom/static.h"
#include "ciom/toolbar.h"

class cControlsForm;
class cDefinitionsForm;

class cDemoForm : public cCustomForm {
public:
  enum eButton {
    kInfo = 1,
    kWarning,
    kError,
    kConfirm,
    kWarnConfirm,
    kPopup,
    kControls,
    kDefinitions,
    kOpenFile,
    kSaveFile
  };

  // With quit set, the form closes its window after the first button's work is done.
  void setQuitAfterOne(bool quit) { myQuit = quit; }
  // Runs what a button does, as if it had been pressed.
  void press(int id);
  const std::string& lastAnswer() const { return myAnswer; }
  cToolBarChild& buttons() { return myButtons; }
  // Called with the controls form once it is built and again (null) when it has closed.
  void setControlsHook(std::function<void(cControlsForm*)> hook) {
    myControlsHook = std::move(hook);
  }
  // The same for the definitions form.
  void setDefinitionsHook(std::function<void(cDefinitionsForm*)> hook) {
    myDefinitionsHook = std::move(hook);
  }
  cStaticChild& hintLabel() { return myHintLabel; }

  void onConstruct() override;
  bool onAction(cChildElement* source, cChildAction* action) override;
  bool onFormCancel() override;

private:
  void answer(const std::string& text);

  cToolBarChild myButtons{cButtonChild::lkPush};
  cStaticChild myTitle, myHintLabel, myAnswerLine;
  std::string myAnswer;
  bool myQuit = false;
  std::function<void(cControlsForm*)> myControlsHook;
  std::function<void(cDefinitionsForm*)> myDefinitionsHook;
};
