// Pictures, picture lists and the theme.
#include <gtest/gtest.h>

#include <functional>
#include <vector>
#include <zlib.h>

#include "ciom/pictlist.h"
#include "ciom/theme.h"

namespace {

// A 3 × 2 picture whose pixels name their place: 0xFF0000yx.
cPicture numbered(int w = 3, int h = 2) {
  std::vector<unsigned> pixels;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) pixels.push_back(0xFF000000u | static_cast<unsigned>(y << 4 | x));
  }
  cPicture p;
  EXPECT_TRUE(p.create(pixels.data(), w, h, false));
  return p;
}

std::vector<unsigned> pixelsOf(const cPicture& p) {
  return {p.raw(), p.raw() + static_cast<long long>(p.width()) * p.height()};
}

// A resource: width, height, then the zlib stream of the given pixel bytes.
std::vector<unsigned char> resource(int w, int h, const std::vector<unsigned>& pixels) {
  std::vector<unsigned char> out(8);
  for (int i = 0; i < 4; ++i) {
    out[i] = static_cast<unsigned char>(static_cast<unsigned>(w) >> 8 * i);
    out[4 + i] = static_cast<unsigned char>(static_cast<unsigned>(h) >> 8 * i);
  }
  uLongf packed = compressBound(pixels.size() * 4);
  std::vector<unsigned char> stream(packed);
  EXPECT_EQ(compress(stream.data(), &packed, reinterpret_cast<const Bytef*>(pixels.data()),
                     pixels.size() * 4),
            Z_OK);
  out.insert(out.end(), stream.begin(), stream.begin() + static_cast<long>(packed));
  return out;
}

TEST(Picture, CreateCopiesRowsAsToldAndRefusesBadSizes) {
  const unsigned rows[] = {1, 2, 3, 4, 5, 6};
  cPicture p;
  ASSERT_TRUE(p.create(rows, 3, 2, true)); // the last source row comes first
  EXPECT_EQ(pixelsOf(p), (std::vector<unsigned>{4, 5, 6, 1, 2, 3}));
  ASSERT_TRUE(p.create(0x80FF0000u, 2, 2));
  EXPECT_EQ(pixelsOf(p), (std::vector<unsigned>(4, 0x80FF0000u)));
  EXPECT_FALSE(p.create(0, 5));
  EXPECT_TRUE(p.empty());
  EXPECT_FALSE(p.create(1, cPicture::kMaxSide + 1));
  EXPECT_FALSE(p.create(static_cast<const unsigned*>(nullptr), 1, 1, false));
  _typebuf<unsigned> buffer(6);
  EXPECT_FALSE(p.create_on(buffer, 2, 2));
  EXPECT_TRUE(p.create_on(buffer, 3, 2));
  EXPECT_EQ(buffer.count(), 0);
  EXPECT_EQ(p.width(), 3);
}

TEST(Picture, ResourcesAreBottomUpAndCheckedBeforeMemoryIsTaken) {
  const std::vector<unsigned> pixels = {1, 2, 3, 4, 5, 6};
  std::vector<unsigned char> r = resource(2, 3, pixels);
  cPicture p;
  ASSERT_TRUE(p.create(r.data(), static_cast<unsigned>(r.size())));
  EXPECT_EQ(pixelsOf(p), (std::vector<unsigned>{5, 6, 3, 4, 1, 2}));
  EXPECT_FALSE(p.create(r.data(), 8));                                   // no stream
  EXPECT_FALSE(p.create(r.data(), static_cast<unsigned>(r.size() - 1))); // cut short
  EXPECT_TRUE(p.empty());
  std::vector<unsigned char> wide = resource(65537, 1, std::vector<unsigned>(65537));
  EXPECT_FALSE(p.create(wide.data(), static_cast<unsigned>(wide.size())));
  // The stream holds 6 pixels but the header claims 65536 × 65536: refused at once.
  r[0] = r[4] = 0;
  r[2] = r[6] = 1;
  EXPECT_FALSE(p.create(r.data(), static_cast<unsigned>(r.size())));
  // A stream with more pixels than the header says is refused too.
  std::vector<unsigned char> more = resource(1, 1, {7, 8});
  EXPECT_FALSE(p.create(more.data(), static_cast<unsigned>(more.size())));
}

TEST(Picture, CutsTurnsAndFlips) {
  cPicture p = numbered(), out;
  ASSERT_TRUE(p.subPictTo({1, 0, 5, 1}, &out)); // cut to the picture
  EXPECT_EQ(pixelsOf(out), (std::vector<unsigned>{0xFF000001, 0xFF000002}));
  EXPECT_FALSE(p.subPictTo({3, 0, 1, 1}, &out));
  EXPECT_TRUE(out.empty());

  cPicture q = numbered();
  q.flip_right(); // 2 × 3; the left column was the bottom row
  ASSERT_EQ(q.width(), 2);
  EXPECT_EQ(q.pixel(0, 0), 0xFF000010u);
  EXPECT_EQ(q.pixel(1, 0), 0xFF000000u);
  EXPECT_EQ(q.pixel(1, 2), 0xFF000002u);
  q.flip_left();
  EXPECT_EQ(pixelsOf(q), pixelsOf(numbered()));
  ASSERT_TRUE(q.rotate(180));
  EXPECT_EQ(q.pixel(0, 0), 0xFF000012u);
  ASSERT_TRUE(q.rotate(-180));
  EXPECT_FALSE(q.rotate(45));
  EXPECT_TRUE(q.rotate(-90));
  q.flip_right();
  EXPECT_EQ(pixelsOf(q), pixelsOf(numbered()));
  q.flip();
  EXPECT_EQ(q.pixel(2, 0), 0xFF000012u);
}

TEST(Picture, StretchScaleAndHorizontalStretch) {
  cPicture p = numbered(), out;
  ASSERT_TRUE(p.resizing(cPicture::rmStretch, 6, 4, &out));
  EXPECT_EQ(out.pixel(5, 3), 0xFF000012u);
  EXPECT_EQ(out.pixel(1, 1), 0xFF000000u);

  // Halving two pixels averages them; transparent pixels give no colour.
  const unsigned pair[] = {0xFF0000FF, 0xFF000001, 0x00FFFFFF, 0xFF000080};
  cPicture two;
  ASSERT_TRUE(two.create(pair, 4, 1, false));
  ASSERT_TRUE(two.resizing(cPicture::rmScaling, 2, 1, &out));
  EXPECT_EQ(out.pixel(0, 0), 0xFF000080u);
  EXPECT_EQ(out.pixel(1, 0), 0x80000080u);
  ASSERT_TRUE(two.scaling(8, 3, &out)); // enlarging keeps the ends
  EXPECT_EQ(out.pixel(0, 1), 0xFF0000FFu);
  EXPECT_EQ(out.pixel(7, 1), 0xFF000080u);

  const unsigned strip[] = {1, 2, 3, 4};
  cPicture s;
  ASSERT_TRUE(s.create(strip, 4, 1, false));
  ASSERT_TRUE(s.hStretch(7, 1, &out));
  EXPECT_EQ(pixelsOf(out), (std::vector<unsigned>{1, 2, 3, 2, 3, 2, 4}));
  EXPECT_FALSE(s.hStretch(1, 1, &out));
  EXPECT_FALSE(s.hStretch(7, 2, &out)); // no middle left
}

TEST(Picture, BltAndBlendClipToBothPictures) {
  cPicture dst;
  ASSERT_TRUE(dst.create(0xFF0000FFu, 2, 2)); // opaque blue
  const cPicture src = numbered();
  ASSERT_TRUE(src.blt(&dst, 1, -1, 3, 2, false));
  EXPECT_EQ(pixelsOf(dst), (std::vector<unsigned>{0xFF0000FF, 0xFF000010, 0xFF0000FF, 0xFF0000FF}));
  EXPECT_FALSE(src.blt(&dst, 2, 0, 3, 2, false));
  cPicture half;
  ASSERT_TRUE(half.create(0x80FF0000u, 1, 1)); // red at half alpha
  ASSERT_TRUE(dst.blend(0, 1, &half));
  EXPECT_EQ(dst.pixel(0, 1), 0xFF80007Fu);
  EXPECT_FALSE(dst.blend(-1, 0, &half));
  half.makesolid();
  EXPECT_EQ(half.pixel(0, 0), 0xFFFF0000u);
}

TEST(Picture, DisabledAndHighlightedLooks) {
  const unsigned pixels[] = {0xFFFFFFFF, 0x40000000, 0xFF808080, 0x12345678};
  cPicture p;
  ASSERT_TRUE(p.create(pixels, 4, 1, false));
  cPicture disabled = p, active = p;
  disabled.mkDisabled();
  EXPECT_EQ(disabled.pixel(0, 0), 0xFFE0E0E0u); // 224: the weights sum to just under 255
  EXPECT_EQ(disabled.pixel(1, 0), 0x401E1E1Eu); // black: 30, alpha kept
  EXPECT_EQ(disabled.pixel(2, 0), 0xFF7F7F7Fu); // 128 → 97 + 30
  active.mkActive();
  EXPECT_EQ(active.pixel(0, 0), 0xFFFFFFFFu);
  EXPECT_EQ(active.pixel(1, 0), 0x40000000u);
  EXPECT_EQ(active.pixel(2, 0), 0xFF6A6A6Au); // 128 → 106

  cPicturesList list, derived;
  list.storeImage(3, std::make_unique<cPicture>(p));
  list.refImage(5, &p);
  list.mkDisabled(derived);
  ASSERT_EQ(derived.count(), 2u);
  EXPECT_EQ(pixelsOf(*derived.image(5)), pixelsOf(disabled));
  list.mkActive(derived);
  EXPECT_EQ(pixelsOf(*derived.image(3)), pixelsOf(active));
  EXPECT_EQ(derived.image(4), nullptr);
  EXPECT_EQ(pixelsOf(p), (std::vector<unsigned>(pixels, pixels + 4))); // sources untouched
}

TEST(Picture, TheDetailFollowsEveryChangeAndIsDroppedWhereItCannot) {
  // A 3 × 2 picture whose detail is 6 × 4, numbered like the picture.
  cPicture bottomUp = numbered(6, 4);
  bottomUp.flip();
  const std::vector<unsigned char> detail = resource(6, 4, pixelsOf(bottomUp));
  cPicture p = numbered();
  ASSERT_TRUE(p.createDetail(detail.data(), static_cast<unsigned>(detail.size())));
  const std::vector<unsigned char> wrong = resource(5, 4, pixelsOf(numbered(5, 4)));
  cPicture refused = numbered();
  EXPECT_FALSE(refused.createDetail(wrong.data(), static_cast<unsigned>(wrong.size())));
  EXPECT_EQ(refused.detail(), nullptr);

  // Each derived picture has a detail of twice its own size.
  struct sCase {
    const char* what;
    std::function<bool(const cPicture&, cPicture&)> make;
  };
  const sCase cases[] = {
      {"copy", [](const cPicture& from, cPicture& to) { return (to = from, true); }},
      {"cut",
       [](const cPicture& from, cPicture& to) {
         return from.subPictTo({1, 0, 2, 1}, &to);
       }},
      {"stretch", [](const cPicture& from, cPicture& to) { return from.stretch(5, 3, &to); }},
      {"scale", [](const cPicture& from, cPicture& to) { return from.scaling(2, 1, &to); }},
      {"hStretch", [](const cPicture& from, cPicture& to) { return from.hStretch(7, 1, &to); }},
      {"turn", [](const cPicture& from, cPicture& to) { return (to = from, to.rotate(90)); }},
      {"grey",
       [](const cPicture& from, cPicture& to) { return (to = from, to.mkDisabled(), true); }},
  };
  for (const sCase& c : cases) {
    cPicture out;
    ASSERT_TRUE(c.make(p, out)) << c.what;
    ASSERT_NE(out.detail(), nullptr) << c.what;
    EXPECT_EQ(out.detail()->width(), 2 * out.width()) << c.what;
    EXPECT_EQ(out.detail()->height(), 2 * out.height()) << c.what;
  }
  // The cut takes the matching part of the detail: columns 2 and 3, rows 0 and 1.
  cPicture cut;
  ASSERT_TRUE(p.subPictTo({1, 0, 1, 1}, &cut));
  EXPECT_EQ(pixelsOf(*cut.detail()),
            (std::vector<unsigned>{0xFF000002, 0xFF000003, 0xFF000012, 0xFF000013}));
  // Laid over a picture without a detail, the detail would no longer match: none is kept.
  cPicture target = numbered();
  cPicture withDetail = p;
  ASSERT_TRUE(target.blend(0, 0, &withDetail));
  EXPECT_EQ(target.detail(), nullptr);
  ASSERT_TRUE(withDetail.blend(0, 0, &target));
  EXPECT_EQ(withDetail.detail(), nullptr);
}

TEST(Picture, ChildPictureOwnsOrRefers) {
  cPicture p = numbered();
  cPicturesList list;
  list.refImage(1, &p);
  cChildPicture child;
  child.refImage(&list, 1);
  EXPECT_EQ(child.image(), &p);
  child.refImage(&list, 2);
  EXPECT_EQ(child.image(), nullptr);
  ASSERT_TRUE(child.setImage(&p));
  EXPECT_NE(child.image(), &p);
  EXPECT_EQ(pixelsOf(*child.image()), pixelsOf(p));
  EXPECT_FALSE(child.setImage(static_cast<const cPicture*>(nullptr)));
  EXPECT_EQ(child.image(), nullptr);
  const unsigned one = 0xFF123456;
  ASSERT_TRUE(child.setImage(&one, 1, 1));
  EXPECT_EQ(child.image()->pixel(0, 0), one);
}

TEST(Theme, BuiltInTables) {
  cCITheme theme(&cCITheme::builtIn());
  EXPECT_EQ(theme.getDimension(5, 0), 22); // above its maximum, as defined
  EXPECT_EQ(theme.getDimension(5, 2), 10);
  EXPECT_EQ(theme.getDimension(0, 3), 5);  // the value of dimension 1
  EXPECT_EQ(theme.getDimension(24, 3), 0); // nothing follows the last
  EXPECT_EQ(theme.getDimension(25, 0), 0);
  EXPECT_EQ(theme.getDimension(3, 4), 0);
  EXPECT_EQ(theme.getColor(61), 0x908280u);
  EXPECT_EQ(theme.getColor(62), 0u);
  theme.setDimension(5, 7);
  EXPECT_EQ(theme.getDimension(4, 3), 7);
  theme.setColor(7, 0x0000FF);
  EXPECT_EQ(theme.getColor(7), 0x0000FFu);
}

TEST(Theme, ImageElements) {
  cCITheme theme(nullptr);
  sSize size{9, 9};
  EXPECT_EQ(theme.getDimension(0, 0), 0);
  EXPECT_EQ(theme.getImage(156, size), nullptr);
  EXPECT_EQ(size, (sSize{0, 0}));
  EXPECT_EQ(theme.getImage(157, size), nullptr);
  const unsigned one = 0xFFABCDEF;
  ASSERT_TRUE(theme.setImage(4, &one, 1, 1, false));
  const unsigned* colour = theme.getImage(4, size);
  ASSERT_NE(colour, nullptr);
  EXPECT_EQ(*colour, one);
  EXPECT_EQ(size, (sSize{1, 1}));
  EXPECT_EQ(theme.getPict(4), nullptr);
  const unsigned rows[] = {1, 2, 3, 4};
  ASSERT_TRUE(theme.setImage(4, rows, 2, 2, true));
  const unsigned* pixels = theme.getImage(4, size);
  EXPECT_EQ(size, (sSize{2, 2}));
  EXPECT_EQ(std::vector<unsigned>(pixels, pixels + 4), (std::vector<unsigned>{3, 4, 1, 2}));
  EXPECT_FALSE(theme.setImage(157, rows, 2, 2, false));
  EXPECT_FALSE(theme.setImage(4, rows, 0, 2, false));
  EXPECT_FALSE(theme.setImage(4, nullptr, 2, 2, false));

  // The global theme is made once and replaced whole.
  cCITheme& first = cCITheme::theme();
  EXPECT_EQ(&first, &cCITheme::theme());
  EXPECT_EQ(first.getColor(0), 0xF3E5DFu);
  cCITheme::setTheme(nullptr);
  EXPECT_EQ(cCITheme::theme().getColor(0), 0u);
  cCITheme::setTheme(&cCITheme::builtIn());
  EXPECT_EQ(cCITheme::theme().getColor(0), 0xF3E5DFu);
}

} // namespace
