#include "base/buffers.h"

#include <gtest/gtest.h>

#include <string>

namespace {

template <class F> cException thrownBy(F f) {
  try {
    f();
  } catch (const cException& e) {
    return e;
  }
  ADD_FAILURE() << "no cException thrown";
  return cException("", 0, 0, "");
}

TEST(TypeBuf, SetZeroFillsAndDiscards) {
  _typebuf<int> b;
  EXPECT_EQ(b.count(), 0);
  b.set(4);
  ASSERT_EQ(b.count(), 4);
  for (int v : b) EXPECT_EQ(v, 0);
  b[3] = 7;
  b.set(2);
  EXPECT_EQ(b.count(), 2);
  EXPECT_EQ(b[1], 0);
  b.set(0);
  EXPECT_TRUE(b.empty());
  b.set(-5);
  EXPECT_TRUE(b.empty());
}

TEST(TypeBuf, ResetKeepsCommonPrefix) {
  _typebuf<unsigned char> b;
  b.assign(reinterpret_cast<const unsigned char*>("abcd"), 4);
  b.reset(6);
  ASSERT_EQ(b.count(), 6);
  EXPECT_EQ(b[0], 'a');
  EXPECT_EQ(b[3], 'd');
  EXPECT_EQ(b[4], 0);
  EXPECT_EQ(b[5], 0);
  b.reset(2);
  ASSERT_EQ(b.count(), 2);
  EXPECT_EQ(b[1], 'b');
  b.reset(0);
  EXPECT_TRUE(b.empty());
}

TEST(TypeBuf, OutOfBoundsThrowsWithItsText) {
  _typebuf<int> b(3);
  const cException e = thrownBy([&] { b[3] = 1; });
  EXPECT_STREQ(e.message(), "_typebuf::Out of bounds");
  EXPECT_STREQ(e.file(), "src/base/buffers");
  EXPECT_EQ(e.line(), 17u);
  EXPECT_STREQ(thrownBy([&] { (void)b[-1]; }).message(), "_typebuf::Out of bounds");
  const _typebuf<int> empty;
  EXPECT_STREQ(thrownBy([&] { (void)empty[0]; }).message(), "_typebuf::Out of bounds");
}

TEST(TypeBuf, CopiesDeeplyAndMovesCheaply) {
  _typebuf<int> a(2);
  a[0] = 1;
  _typebuf<int> b = a;
  b[0] = 2;
  EXPECT_EQ(a[0], 1);
  _typebuf<int> c = std::move(b);
  EXPECT_EQ(c[0], 2);
  EXPECT_EQ(b.count(), 0); // NOLINT(bugprone-use-after-move): moved-from state is defined
  a = c;
  EXPECT_EQ(a[0], 2);
}

TEST(ClassBuf, HoldsObjectsAndThrowsItsOwnText) {
  _classbuf<std::string> b(2);
  b[0] = "first";
  b[1] = "second";
  b.reset(3);
  EXPECT_EQ(b[0], "first");
  EXPECT_EQ(b[2], "");
  _classbuf<std::string> copy = b;
  copy[0] = "changed";
  EXPECT_EQ(b[0], "first");
  EXPECT_STREQ(thrownBy([&] { (void)b[3]; }).message(), "_classbuf::Out of bounds");
}

TEST(GuardChar, NullReadsAsEmptyAndCopiesAreOwned) {
  _guardchar<char> g;
  EXPECT_STREQ(g.c_str(), "");
  g.set(nullptr);
  EXPECT_STREQ(g.c_str(), "");
  char source[] = "hello";
  g.set(source);
  source[0] = 'j';
  EXPECT_STREQ(g.c_str(), "hello");
  g.set("abcdef", 3);
  EXPECT_STREQ(g.c_str(), "abc");
  EXPECT_EQ(g.length(), 3);
  _guardchar<char> h = g;
  g.set("x");
  EXPECT_STREQ(h.c_str(), "abc");
  g.set("");
  EXPECT_FALSE(g.isNull()); // empty is not null
  EXPECT_TRUE(g.empty());
  g.set(nullptr, 0);
  EXPECT_TRUE(g.isNull());
  EXPECT_EQ(g.data(), nullptr);

  const unsigned short wide[] = {'h', 'i', 0};
  _guardchar<unsigned short> w(wide);
  EXPECT_EQ(w.length(), 2);
  EXPECT_EQ(w.c_str()[1], 'i');
  EXPECT_EQ(w.c_str()[2], 0);
}

TEST(Exception, CarriesItsFields) {
  cException e("src/base/except", 6, 11, "Signal received");
  EXPECT_STREQ(e.file(), "src/base/except");
  EXPECT_EQ(e.line(), 6u);
  EXPECT_EQ(e.code(), 11u);
  EXPECT_STREQ(e.message(), "Signal received");
  cException none(nullptr, 0, 0, nullptr);
  EXPECT_STREQ(none.message(), "");
}

} // namespace
