#include "newfolder.h"

#include <memory>

#include "ciom/themeimages.h"
#include "langfile.h"
#include "theme.h"

namespace {

constexpr unsigned kRefusedColour = 0x0000B0; // dark red (colours are 0xBBGGRR)

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
  clientArea()->anchor(&myEdit, 5, 0, -11, 20);
  myEdit.setBanner(string(bannerString()));
  if (myText && !myText->empty()) myEdit.setText(myText->c_str(), -1, false);

  addDialogButtons(okText(), cancelText(), true);
}

bool cNewFolderNameReqForm::onAfterConstruct() {
  myEdit.focus();
  return true;
}

bool cNewFolderNameReqForm::onFormAccept() {
  const char* typed = myEdit.text();
  if (!typed || !*typed) {
    // An empty name is not an answer; the banner says so where there is one.
    if (const char* why = emptyText()) {
      myEdit.setBanner(why);
      myEdit.setBannerColour(kRefusedColour);
    }
    myEdit.focus();
    return true;
  }
  if (myText) myText->set(typed);
  end_modal(1);
  return true;
}
