// The demonstration's second form: every control for text and layout. A splitter holds a
// scrolled list of selectable labels on the left; on the right a vertical splitter holds
// the fields (edit boxes, a drop-down list, a link, progress bars) above a picture with an
// active zone. What the user does is reported through the answer function.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ciom/combo.h"
#include "ciom/customform.h"
#include "ciom/edit.h"
#include "ciom/link.h"
#include "ciom/pictzones.h"
#include "ciom/progress.h"
#include "ciom/scrollable.h"
#include "ciom/selstatic.h"
#include "ciom/static.h"
#include "ciom/vsplit.h"

// The list on the left: labels stacked on a scrolled area.
class cDemoList : public cScrollableElement {
public:
  void fill(int count);
  cSelectableStaticChild* label(size_t i) {
    return i < myLabels.size() ? myLabels[i].get() : nullptr;
  }

  void onPaint(cCanvas* canvas) override;
  int wantBorderWidth() override { return 1; }

private:
  std::vector<std::unique_ptr<cSelectableStaticChild>> myLabels;
  std::vector<std::string> myTexts;
};

class cControlsForm : public cCustomForm {
public:
  explicit cControlsForm(std::function<void(const std::string&)> answer)
      : myAnswer(std::move(answer)) {}

  cEditChild& name() { return myName; }
  cComboBoxChild& hits() { return myHits; }
  cDemoList& list() { return myList; }

  void onConstruct() override;
  bool onAfterConstruct() override;
  bool onAction(cChildElement* source, cChildAction* action) override;
  bool onFormCancel() override;

private:
  void field(cPanelChild* pane, cStaticChild& caption, const char* text, cChildElement& control,
             int y, int height);
  void say(const std::string& text);

  std::function<void(const std::string&)> myAnswer;
  cSplitterChild mySplit;
  cVSplitterChild myRight;
  cDemoList myList;
  cStaticChild myCaptions[7];
  cEditChild myName, myPattern, myPassword, myReadonly;
  cComboBoxChild myHits;
  cLinkChild myLink;
  cProgressChild myProgress, myBusy;
  cPictureZonesChild myPicture;
  cStaticChild myLastAnswer;
};
