// The editor's main form. For now its frame: the tool bar with About; the definition tree
// and the property sheet join it next.
#pragma once

#include "ciom/customform.h"
#include "ciom/pictlist.h"
#include "ciom/toolbar.h"

class cRuledMainForm : public cCustomForm {
public:
  enum eTool { kAbout = 1 };

  cToolBarChild& tools() { return myTools; }

  const char* wantLangResource() override { return "ruled::main"; }
  void onConstruct() override;
  bool onAction(cChildElement* source, cChildAction* action) override;
  bool onFormCancel() override { return false; } // Escape does not close the editor

  // Pictures shared by every main form: the tool bar's, the tree's, and the rule bar's in
  // their normal, active and disabled looks.
  static cPicturesList myToolImages, myTreeImages, myCtbImages, myCtbImagesAct, myCtbImagesDsb;

private:
  cToolBarChild myTools{cButtonChild::lkFlat};
};
