// Type-ahead: letters typed within a second of each other make one prefix that lists and
// trees jump to; a letter after a pause starts a new one, and so does the first letter
// typed again (it steps through the items that start with it). Case is ignored.
#pragma once

#include <vector>

class cTypeAhead {
public:
  static constexpr unsigned kPauseMs = 1000;

  // Adds a typed character at time now (milliseconds). True when it lengthened the
  // prefix (search from the current item on), false when it began a new one (search
  // from the next item).
  bool add(unsigned short ch, unsigned now);
  bool matches(const char* utf8) const;

private:
  std::vector<unsigned short> myTyped;
  unsigned myTypedAt = 0;
};
