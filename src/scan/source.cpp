#include "source.h"

#include <unistd.h>

bool cFileSource::load(unsigned long long offset, unsigned long long n) {
  if (offset >= myStart && offset - myStart < myHave && myHave - (offset - myStart) >= n)
    return true;
  const ssize_t got = pread(myFd, myWindow.data(), myWindow.size(), static_cast<off_t>(offset));
  myStart = offset;
  myHave = got > 0 ? static_cast<size_t>(got) : 0;
  return myHave >= n;
}

const unsigned char* cFileSource::at(unsigned long long offset, unsigned int n) {
  if (n > kMaxRead || offset > mySize || n > mySize - offset) return nullptr;
  return load(offset, n) ? myWindow.data() + (offset - myStart) : nullptr;
}

const unsigned char* cFileSource::span(unsigned long long offset, unsigned long long& n) {
  if (offset >= mySize || n == 0 || !load(offset, 1)) return nullptr;
  n = std::min({n, mySize - offset, static_cast<unsigned long long>(myHave - (offset - myStart))});
  return myWindow.data() + (offset - myStart);
}
