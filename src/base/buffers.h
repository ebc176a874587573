// Owned buffers of the base library.
//
//   _typebuf<T>   array of plain values with a count. set(n) discards and allocates n
//                 zeroed elements; reset(n) resizes and keeps the common prefix (new
//                 elements are zeroed). Indexing outside 0..count-1 throws cException
//                 "_typebuf::Out of bounds".
//   _classbuf<T>  the same for objects (default-constructed), "_classbuf::Out of bounds".
//   _guardchar<T> owned zero-terminated string of char or unsigned short units; a null
//                 (unset) string reads as empty through c_str() and is told apart by
//                 isNull().
//
// All three copy deeply and move cheaply. None is thread-safe.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

#include "except.h"

namespace base_detail {
[[noreturn]] void throwOutOfBounds(const char* message, unsigned int line);
} // namespace base_detail

namespace base_detail {

// The owned array behind _typebuf and _classbuf; Tag names the buffer in bounds errors.
template <class T, class Tag> class cOwnedBuf {
public:
  cOwnedBuf() = default;
  explicit cOwnedBuf(long long n) { set(n); }
  cOwnedBuf(const cOwnedBuf& o) { assign(o.begin(), o.myCount); }
  cOwnedBuf(cOwnedBuf&& o) noexcept
      : myData(std::move(o.myData)), myCount(std::exchange(o.myCount, 0)) {}
  cOwnedBuf& operator=(const cOwnedBuf& o) {
    if (this != &o) assign(o.begin(), o.myCount);
    return *this;
  }
  cOwnedBuf& operator=(cOwnedBuf&& o) noexcept {
    myData = std::move(o.myData);
    myCount = std::exchange(o.myCount, 0);
    return *this;
  }

  // Discards the contents and holds n value-initialised (zeroed) elements; none for n <= 0.
  void set(long long n) {
    myData = n > 0 ? std::make_unique<T[]>(static_cast<size_t>(n)) : nullptr;
    myCount = n > 0 ? n : 0;
  }
  // Resizes to n elements keeping the first min(n, count) of them.
  void reset(long long n) {
    if (n <= 0) return clear();
    auto fresh = std::make_unique<T[]>(static_cast<size_t>(n));
    std::move(begin(), begin() + std::min(n, myCount), fresh.get());
    myData = std::move(fresh);
    myCount = n;
  }
  // Copies n elements from src.
  void assign(const T* src, long long n) {
    set(n);
    std::copy(src, src + myCount, begin());
  }
  void clear() {
    myData.reset();
    myCount = 0;
  }

  long long count() const { return myCount; }
  bool empty() const { return myCount == 0; }
  T* data() { return myData.get(); }
  const T* data() const { return myData.get(); }
  T* begin() { return myData.get(); }
  T* end() { return myData.get() + myCount; }
  const T* begin() const { return myData.get(); }
  const T* end() const { return myData.get() + myCount; }

  T& operator[](long long i) { return myData[check(i)]; }
  const T& operator[](long long i) const { return myData[check(i)]; }

private:
  size_t check(long long i) const {
    if (i < 0 || i >= myCount) throwOutOfBounds(Tag::outOfBounds, Tag::line);
    return static_cast<size_t>(i);
  }

  std::unique_ptr<T[]> myData;
  long long myCount = 0;
};

struct sTypeBufTag {
  static constexpr const char* outOfBounds = "_typebuf::Out of bounds";
  static constexpr unsigned int line = 17;
};
struct sClassBufTag {
  static constexpr const char* outOfBounds = "_classbuf::Out of bounds";
  static constexpr unsigned int line = 18;
};

} // namespace base_detail

template <class T> class _typebuf : public base_detail::cOwnedBuf<T, base_detail::sTypeBufTag> {
  static_assert(std::is_trivially_copyable_v<T>, "_typebuf holds plain values");

public:
  using base_detail::cOwnedBuf<T, base_detail::sTypeBufTag>::cOwnedBuf;
};

template <class T> class _classbuf : public base_detail::cOwnedBuf<T, base_detail::sClassBufTag> {
public:
  using base_detail::cOwnedBuf<T, base_detail::sClassBufTag>::cOwnedBuf;
};

template <class T> class _guardchar {
  static_assert(std::is_same_v<T, char> || std::is_same_v<T, unsigned short>,
                "_guardchar holds 8-bit or UTF-16 text");

public:
  _guardchar() = default;
  explicit _guardchar(const T* text) { set(text); }
  _guardchar(const _guardchar& o) { set(o.myText.get(), o.myLength); }
  _guardchar(_guardchar&&) noexcept = default;
  _guardchar& operator=(const _guardchar& o) {
    if (this != &o) set(o.myText.get(), o.myLength);
    return *this;
  }
  _guardchar& operator=(_guardchar&&) noexcept = default;

  // Copies text up to its terminator; null clears.
  void set(const T* text) { set(text, text ? measure(text) : 0); }
  // Copies n units of text and terminates them (n = 0 gives an empty, not a null,
  // string); null text or a negative n leaves it null.
  void set(const T* text, long long n) {
    if (!text || n < 0) return clear();
    auto fresh = std::make_unique<T[]>(static_cast<size_t>(n) + 1);
    if (n > 0) std::memcpy(fresh.get(), text, sizeof(T) * static_cast<size_t>(n));
    fresh[static_cast<size_t>(n)] = 0;
    myText = std::move(fresh);
    myLength = n;
  }
  // Takes ownership of a buffer of n units plus its terminator, as produced by converters.
  void adopt(std::unique_ptr<T[]> text, long long n) {
    myText = std::move(text);
    myLength = myText ? n : 0;
  }
  void clear() {
    myText.reset();
    myLength = 0;
  }

  // The text, "" when unset.
  const T* c_str() const {
    static const T none[1] = {0};
    return myText ? myText.get() : none;
  }
  // The units copied in, which stop early only if a copied text held a zero unit.
  long long length() const { return myLength; }
  bool empty() const { return myLength == 0; }
  bool isNull() const { return !myText; }
  const T* data() const { return myText.get(); } // null for a null string
  T* data() { return myText.get(); }

private:
  static long long measure(const T* text) {
    long long n = 0;
    while (text[n]) ++n;
    return n;
  }

  std::unique_ptr<T[]> myText;
  long long myLength = 0;
};
