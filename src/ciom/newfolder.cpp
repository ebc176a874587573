#include "newfolder.h"

#include <memory>

#include "ciom/themeimages.h"
#include "langfile.h"
#include "theme.h"

namespace {

constexpr int kButtonHeightDim = 7;
constexpr int kButtonMinWidth = 75;

} // namespace

bool cNewFolderNameReqForm::reqNewFolderName(cChildElement* parent, _guardchar<char>& text,
                                             cNewFolderNameReqForm* form) {
  if (!parent) return false;
  std::unique_ptr<cNewFolderNameReqForm> own;
  if (!form) form = (own = std::make_unique<cNewFolderNameReqForm>()).get();
  form->myText = &text;
  // The form is not in the tree yet: its title comes from its section through the parent.
  const cCiomLangData* section = parent->requestNamedLangResource(form->wantLangResource());
  const char* title = section ? section->string(form->titleString()) : nullptr;
  const sSize size = form->formSize();
  return form->modal(title ? title : "", size.width, size.height, parent, false) != 0;
}

const char* cNewFolderNameReqForm::okText() {
  const cCiomLangData* messages = requestNamedLangResource("ciom::messages");
  return messages ? messages->string(0) : "OK";
}

void cNewFolderNameReqForm::onConstruct() {
  cCustomForm::onConstruct();
  const cCITheme& theme = cCITheme::theme();
  clientArea()->anchor(&myEdit, 5, 0, -11, 20);
  myEdit.setBanner(string(bannerString()));
  if (myText && !myText->empty()) myEdit.setText(myText->c_str(), -1, false);

  myPictures.refImage(kOk, theme.getPict(tiOk));
  myPictures.refImage(kCancel, theme.getPict(tiCancel));
  myButtons.setPictures(&myPictures);
  myButtons.setTransparent(true);
  const int h = theme.getDimension(kButtonHeightDim, 0);
  attach(&myButtons, 0, 0, 0, h);
  myButtons.addButton(kOk, okText(), nullptr, kOk, kButtonMinWidth);
  myButtons.addButton(kCancel, cancelText(), nullptr, kCancel, kButtonMinWidth);
  if (cButtonChild* ok = myButtons.button(kOk)) ok->setDefault(true);
  anchorFooterButtons(&myButtons, myButtons.wantedWidth());
}

bool cNewFolderNameReqForm::onAfterConstruct() {
  myEdit.focus();
  return true;
}

bool cNewFolderNameReqForm::onFormAccept() {
  const char* typed = myEdit.text();
  if (!typed || !*typed) {
    myEdit.focus(); // an empty name is not an answer
    return true;
  }
  if (myText) myText->set(typed);
  end_modal(1);
  return true;
}

bool cNewFolderNameReqForm::onFormCancel() {
  end_modal(0);
  return true;
}

bool cNewFolderNameReqForm::onAction(cChildElement* source, cChildAction* action) {
  if (source == &myButtons && action && action->code == cToolBarAction::kCode) {
    const int id = static_cast<cToolBarAction*>(action)->id;
    if (id == kOk) return onFormAccept();
    if (id == kCancel) return onFormCancel();
  }
  return cCustomForm::onAction(source, action);
}
