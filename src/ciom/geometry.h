// Pixel geometry of the toolkit: signed 32-bit, origin at the top left.
#pragma once

struct sPoint {
  int x = 0, y = 0;
  bool operator==(const sPoint&) const = default;
};

struct sSize {
  int width = 0, height = 0;
  bool operator==(const sSize&) const = default;
};

struct sRect {
  int x = 0, y = 0, width = 0, height = 0;
  bool operator==(const sRect&) const = default;
  bool empty() const { return width <= 0 || height <= 0; }
  int right() const { return x + width; } // one past the last column
  int bottom() const { return y + height; }
};

struct sArea {
  int left = 0, top = 0, right = 0, bottom = 0; // right and bottom are exclusive
  bool operator==(const sArea&) const = default;
};
