#include "pangofont.h"

#include <cstring>
#include <strings.h>

#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>

namespace {

// The family Pango is asked for: the generic families for the toolkit's default faces,
// the face itself when it is installed, else nothing.
const char* familyFor(const char* face) {
  if (!face || !*face) return nullptr;
  if (strcasecmp(face, "Tahoma") == 0) return "sans-serif";
  if (strcasecmp(face, "Courier") == 0) return "monospace";
  static const char* const kGeneric[] = {"sans-serif", "sans", "serif", "monospace", "mono"};
  for (const char* generic : kGeneric) {
    if (strcasecmp(face, generic) == 0) return face;
  }
  return cPangoFont::installed(face) ? face : nullptr;
}

} // namespace

bool cPangoFont::installed(const char* face) {
  if (!face || !*face || std::strlen(face) > 254) return false;
  FcPattern* pattern = FcPatternCreate();
  if (!pattern) return false;
  FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(face));
  FcObjectSet* objects = FcObjectSetBuild(FC_FAMILY, nullptr);
  FcFontSet* fonts = objects ? FcFontList(nullptr, pattern, objects) : nullptr;
  const bool found = fonts && fonts->nfont > 0;
  if (fonts) FcFontSetDestroy(fonts);
  if (objects) FcObjectSetDestroy(objects);
  FcPatternDestroy(pattern);
  return found;
}

bool cPangoFont::define(int kind, int size, const char* face, bool bold, bool underline,
                        bool italic) {
  const char* family = familyFor(face);
  if (!family || size <= 0 || size > 10000) return false;
  if (!cFontObject::define(kind, size, face, bold, underline, italic)) return false;
  myDescription.reset(pango_font_description_new());
  pango_font_description_set_family(myDescription.get(), family);
  pango_font_description_set_absolute_size(myDescription.get(), pixelSize(size) * PANGO_SCALE);
  pango_font_description_set_weight(myDescription.get(),
                                    bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
  pango_font_description_set_style(myDescription.get(),
                                   italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
  return true;
}

PangoContext* cPangoFont::context() {
  static PangoContext* const shared = [] {
    PangoContext* context = pango_font_map_create_context(pango_cairo_font_map_get_default());
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_ON);
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    pango_cairo_context_set_font_options(context, options);
    cairo_font_options_destroy(options);
    return context;
  }();
  return shared;
}

PangoLayout* cPangoFont::layout(const char* utf8, int bytes) const {
  static PangoLayout* const shared = [] {
    PangoLayout* layout = pango_layout_new(context());
    pango_layout_set_single_paragraph_mode(layout, TRUE);
    return layout;
  }();
  pango_layout_set_font_description(shared, myDescription.get());
  pango_layout_set_text(shared, utf8, bytes);
  return shared;
}

void cPangoFont::install() {
  static const bool done = [] {
    cFontObject::setMaker(
        []() -> std::unique_ptr<cFontObject> { return std::make_unique<cPangoFont>(); });
    return true;
  }();
  (void)done;
}
