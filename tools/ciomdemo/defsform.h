// The demonstration's third form: a definition tree on the left and, on the right, the
// selected item's properties in an extended property sheet (every kind of row, the
// description of the selected row below). What the user does is reported through the
// answer function.
#pragma once

#include <functional>
#include <string>

#include "ciom/customform.h"
#include "ciom/pictlist.h"
#include "ciom/propssheetex.h"
#include "ciom/split.h"
#include "ciom/treeview.h"

class cDefinitionsForm : public cCustomForm {
public:
  enum eSection { kGeneral = 1, kContent, kEnd };
  enum eProp {
    kName = 1,
    kKind,
    kRuleHits,
    kExtension,
    kIdentifier,
    kPattern,
    kSubset,
    kEndRule,
    kMaxSize,
    kHelp
  };

  explicit cDefinitionsForm(std::function<void(const std::string&)> answer)
      : myAnswer(std::move(answer)) {}

  cTreeViewChild& tree() { return myTree; }
  cPropSheetExChild& properties() { return myProps; }

  void onConstruct() override;
  bool onAfterConstruct() override;
  bool onAction(cChildElement* source, cChildAction* action) override;
  bool onFormCancel() override;

private:
  void fillTree();
  void showItem(cTreeViewChild::cTreeViewItem* item);
  void say(const std::string& text);

  std::function<void(const std::string&)> myAnswer;
  cSplitterChild mySplit;
  cTreeViewChild myTree;
  cPropSheetExChild myProps;
  cPicturesList myPictures;
};
