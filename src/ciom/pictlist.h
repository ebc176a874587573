// Lists of pictures by id, and the holder through which an element keeps one picture.
#pragma once

#include <map>
#include <memory>

#include "picture.h"

class cPicturesList {
public:
  // A picture the list owns, or one owned elsewhere that it refers to.
  struct sImageRef {
    std::unique_ptr<cPicture> owned;
    cPicture* ref = nullptr;
    cPicture* get() const { return owned ? owned.get() : ref; }
  };

  // Takes the picture (replacing any under that id); false for null.
  bool storeImage(int id, std::unique_ptr<cPicture> picture);
  // Refers to a picture owned elsewhere, which must outlive the list; false for null.
  bool refImage(int id, cPicture* picture);
  cPicture* image(int id) const; // null when there is none
  bool remove(int id);
  void clear() { myImages.clear(); }
  size_t count() const { return myImages.size(); }
  const std::map<int, sImageRef>& images() const { return myImages; }

  // Fill `out` with the disabled or highlighted look of every image, under the same ids.
  void mkDisabled(cPicturesList& out) const;
  void mkActive(cPicturesList& out) const;

private:
  template <class F> void derive(cPicturesList& out, F look) const;

  std::map<int, sImageRef> myImages;
};

// One picture of an element: owned (a copy) or referred to.
class cChildPicture {
public:
  void refImage(cPicturesList* list, int id); // the list's picture now; none for a bad id
  void refImage(cPicture* picture);
  bool setImage(const cPicture* picture); // keeps a copy; false (and none) for null or empty
  bool setImage(const unsigned* pixels, int w, int h);
  void clear();
  cPicture* image() const { return myOwned ? myOwned.get() : myRef; }

private:
  std::unique_ptr<cPicture> myOwned;
  cPicture* myRef = nullptr;
};
