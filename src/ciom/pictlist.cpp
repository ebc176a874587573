#include "pictlist.h"

bool cPicturesList::storeImage(int id, std::unique_ptr<cPicture> picture) {
  if (!picture) return false;
  myImages[id] = sImageRef{std::move(picture), nullptr};
  return true;
}

bool cPicturesList::refImage(int id, cPicture* picture) {
  if (!picture) return false;
  myImages[id] = sImageRef{nullptr, picture};
  return true;
}

cPicture* cPicturesList::image(int id) const {
  const auto it = myImages.find(id);
  return it == myImages.end() ? nullptr : it->second.get();
}

bool cPicturesList::remove(int id) {
  return myImages.erase(id) != 0;
}

template <class F> void cPicturesList::derive(cPicturesList& out, F look) const {
  if (&out == this) return;
  out.clear();
  for (const auto& [id, ref] : myImages) {
    auto copy = std::make_unique<cPicture>(*ref.get());
    look(*copy);
    out.storeImage(id, std::move(copy));
  }
}

void cPicturesList::mkDisabled(cPicturesList& out) const {
  derive(out, [](cPicture& p) { p.mkDisabled(); });
}

void cPicturesList::mkActive(cPicturesList& out) const {
  derive(out, [](cPicture& p) { p.mkActive(); });
}

void cChildPicture::refImage(cPicturesList* list, int id) {
  refImage(list ? list->image(id) : nullptr);
}

void cChildPicture::refImage(cPicture* picture) {
  myOwned.reset();
  myRef = picture;
}

bool cChildPicture::setImage(const cPicture* picture) {
  clear();
  if (!picture || picture->empty()) return false;
  myOwned = std::make_unique<cPicture>(*picture);
  return true;
}

bool cChildPicture::setImage(const unsigned* pixels, int w, int h) {
  clear();
  auto picture = std::make_unique<cPicture>();
  if (!picture->create(pixels, w, h, false)) return false;
  myOwned = std::move(picture);
  return true;
}

void cChildPicture::clear() {
  myOwned.reset();
  myRef = nullptr;
}
