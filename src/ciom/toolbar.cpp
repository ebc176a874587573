#include "toolbar.h"

#include <algorithm>

cToolBarChild::cToolBarChild(cButtonChild::eLook look) : myLook(look) {
  setTransparent(true);
}

cToolBarChild::sItem* cToolBarChild::item(int id) const {
  for (const auto& it : myItems) {
    if (it->id == id) return it.get();
  }
  return nullptr;
}

cButtonChild* cToolBarChild::button(int id) const {
  sItem* it = item(id);
  return it ? it->button.get() : nullptr;
}

void cToolBarChild::setPictures(const cPicturesList* pictures) {
  myOwnActive.clear();
  myOwnDisabled.clear();
  if (pictures) {
    pictures->mkActive(myOwnActive);
    pictures->mkDisabled(myOwnDisabled);
  }
  setPictures(pictures, &myOwnActive, &myOwnDisabled);
}

void cToolBarChild::setPictures(const cPicturesList* pictures, const cPicturesList* active,
                                const cPicturesList* disabled) {
  myPictures = pictures;
  myActive = active;
  myDisabled = disabled;
  for (auto& it : myItems) applyPictures(*it);
  layout();
}

void cToolBarChild::applyPictures(sItem& it) {
  if (!myPictures || it.picture < 0) {
    it.button->setPictures(nullptr, nullptr, nullptr);
    return;
  }
  it.button->setPictures(myPictures->image(it.picture),
                         myActive ? myActive->image(it.picture) : nullptr,
                         myDisabled ? myDisabled->image(it.picture) : nullptr);
}

bool cToolBarChild::addButton(int id, const char* text, const char* hint, int picture,
                              int minWidth) {
  if (item(id)) return false;
  auto it = std::make_unique<sItem>();
  it->id = id;
  it->picture = picture;
  it->button = std::make_unique<cButtonChild>(myLook);
  cButtonChild* b = it->button.get();
  b->setText(text ? text : "", -1, false);
  if (hint) b->setHint(hint);
  b->setMinWidth(minWidth);
  b->setTransparent(true);
  applyPictures(*it);
  if (!attach(b, 0, 0, 0, height())) return false;
  myItems.push_back(std::move(it));
  layout();
  return true;
}

bool cToolBarChild::removeButton(int id) {
  const auto at = std::find_if(myItems.begin(), myItems.end(),
                               [id](const std::unique_ptr<sItem>& it) { return it->id == id; });
  if (at == myItems.end()) return false;
  dettach((*at)->button.get());
  myItems.erase(at);
  layout();
  return true;
}

bool cToolBarChild::enableButton(int id, bool on) {
  cButtonChild* b = button(id);
  if (!b) return false;
  if (on)
    b->enable();
  else
    b->disable();
  return true;
}

bool cToolBarChild::showButton(int id, bool on) {
  cButtonChild* b = button(id);
  if (!b) return false;
  if (on)
    b->show();
  else
    b->hide();
  layout();
  return true;
}

bool cToolBarChild::setButtonText(int id, const char* text) {
  cButtonChild* b = button(id);
  if (!b || !b->setText(text ? text : "", -1, false)) return false;
  layout();
  return true;
}

int cToolBarChild::wantedWidth() {
  int w = 0;
  for (const auto& it : myItems) {
    if (!it->button->visible_child()) continue;
    sSize size;
    if (!it->button->wantedSize(size)) continue;
    w += (w ? kGap : 0) + size.width;
  }
  return w;
}

void cToolBarChild::layout() {
  int x = 0;
  for (const auto& it : myItems) {
    if (!it->button->visible_child()) continue;
    sSize size;
    if (!it->button->wantedSize(size)) size = {it->button->width(), height()};
    it->button->move(x, 0, size.width, height());
    x += size.width + kGap;
  }
  repaint();
}

void cToolBarChild::onPaint(cCanvas* canvas) {
  if (!canvas || transparent()) return;
  const sRect all{0, 0, width(), height()};
  canvas->drawRect(&all, defaultBackgroundColor(), defaultBackgroundColor());
}

void cToolBarChild::onSizeChanged() {
  layout();
}

bool cToolBarChild::onAction(cChildElement* source, cChildAction* action) {
  if (source != this && action && action->code == cChildAction::acNotify) {
    for (const auto& it : myItems) {
      if (it->button.get() == source) {
        notifyAction(new cToolBarAction(it->id));
        return true;
      }
    }
  }
  return cChildElement::onAction(source, action);
}
