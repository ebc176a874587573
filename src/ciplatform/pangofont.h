// Fonts over Pango: a cFontObject that holds a Pango font description.
//
// A face must really be installed for define() to succeed, because the choice of the
// standard face for a language asks for a font and falls back when it is missing. The
// toolkit's own defaults, "Tahoma" and "Courier", are the exception: they stand for the
// system's sans-serif and monospace faces, so the toolkit draws with whatever the
// system offers in their place.
#pragma once

#include <memory>

#include <pango/pango.h>

#include "ciom/font.h"

class cPangoFont : public cFontObject {
public:
  bool define(int kind, int size, const char* face, bool bold, bool underline,
              bool italic) override;

  // Never null once define() succeeded.
  const PangoFontDescription* description() const { return myDescription.get(); }

  // The process-wide layout (GUI thread only) holding utf8 as one line in this font:
  // line feeds do not break it. Metrics are hinted to whole pixels, so that the width of
  // a text is the sum of its characters' advances.
  PangoLayout* layout(const char* utf8, int bytes) const;
  static PangoContext* context();

  // Makes cFontObject::get build Pango fonts. Called by every Cairo canvas; repeated calls
  // do nothing.
  static void install();
  // Whether fontconfig knows face as an installed family (not as a substitute).
  static bool installed(const char* face);

private:
  struct sFree {
    void operator()(PangoFontDescription* d) const { pango_font_description_free(d); }
  };
  std::unique_ptr<PangoFontDescription, sFree> myDescription;
};
