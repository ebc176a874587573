// Asks for one line of text in a small modal form: an edit box with a banner, OK and
// Cancel. The file dialog asks for a new folder's name with it; a subclass that takes its
// texts from another language section asks for any other value.
#pragma once

#include "base/buffers.h"
#include "customform.h"
#include "edit.h"
#include "pictlist.h"
#include "toolbar.h"

class cNewFolderNameReqForm : public cCustomForm {
public:
  static constexpr int kWidth = 300, kHeight = 110;

  // Shows form (a new cNewFolderNameReqForm when null) modally over parent, prefilled
  // with text; on acceptance text holds what was typed. True for any non-zero result;
  // false at once for a null parent.
  static bool reqNewFolderName(cChildElement* parent, _guardchar<char>& text,
                               cNewFolderNameReqForm* form);

  cEditChild& edit() { return myEdit; }

  const char* wantLangResource() override { return "ciom::filechoose"; }
  void onConstruct() override;
  bool onAfterConstruct() override;
  bool onFormAccept() override;

protected:
  // Texts by number in the form's section: the title and the banner of the empty box.
  virtual int titleString() const { return 14; }  // "New folder"
  virtual int bannerString() const { return 15; } // "Name of the new folder:"
  // What the empty box's banner says, in the error colour, after an empty answer was
  // refused; null: the banner stays.
  virtual const char* emptyText() { return nullptr; }
  // The buttons' texts.
  virtual const char* okText();
  virtual const char* cancelText() { return string(7); }
  // The size reqNewFolderName opens the form with.
  virtual sSize formSize() const { return {kWidth, kHeight}; }

private:
  _guardchar<char>* myText = nullptr;
  cEditChild myEdit;
};
