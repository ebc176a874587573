// The editor's built-in pictures, drawn at build time (tools/ruledimg); each is a picture
// resource of the given size in bytes, with its detail for screens of twice the density
// (cPicture::createDetail).
#pragma once

#include "ciom/picture.h"

// One picture resource and its detail.
struct sRuledPicture {
  const unsigned char* resource;
  const unsigned& size;
  const unsigned char* detail;
  const unsigned& detailSize;
};

#define QVRACI_RULED_PICTURE(name)                                                                 \
  extern const unsigned char name[], name##Detail[];                                               \
  extern const unsigned name##Size, name##DetailSize;                                              \
  inline const sRuledPicture name##Picture{name, name##Size, name##Detail, name##DetailSize};

// The About banner: 475 × 258, with its close mark at (451, 6).
QVRACI_RULED_PICTURE(kAboutBanner)

// The main tool bar's New, Open, Save, About and Test (24 × 24).
QVRACI_RULED_PICTURE(kToolNew)
QVRACI_RULED_PICTURE(kToolOpen)
QVRACI_RULED_PICTURE(kToolSave)
QVRACI_RULED_PICTURE(kToolAbout)
QVRACI_RULED_PICTURE(kToolTest)

// The tree's root (18 × 18), container, passive and active definition (16 × 16).
QVRACI_RULED_PICTURE(kTreeRoot)
QVRACI_RULED_PICTURE(kTreeContainer)
QVRACI_RULED_PICTURE(kTreePassive)
QVRACI_RULED_PICTURE(kTreeActive)

// The rule bar's new definition (16 × 16), OK, Cancel, start and end rule (14 × 14).
QVRACI_RULED_PICTURE(kRuleType)
QVRACI_RULED_PICTURE(kRuleOk)
QVRACI_RULED_PICTURE(kRuleCancel)
QVRACI_RULED_PICTURE(kRuleStart)
QVRACI_RULED_PICTURE(kRuleEnd)

#undef QVRACI_RULED_PICTURE

// The picture with its detail; false when the resource does not decode.
inline bool loadRuledPicture(const sRuledPicture& from, cPicture& to) {
  if (!to.create(from.resource, from.size)) return false;
  to.createDetail(from.detail, from.detailSize);
  return true;
}
