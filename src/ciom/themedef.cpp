// The built-in theme: its dimensions and colours here, its image elements drawn at build
// time from data/theme/theme.txt.
#include "theme.h"

extern const sStaticCIThemeImage kThemeImages[cCITheme::kImages];

namespace {

// value, minimum, maximum. Dimension 5's value lies above its maximum: kept as it stands.
constexpr int kDimensions[cCITheme::kDimensions * 3] = {
    30, 16, 100, // 0
    5,  0,  20,  // 1
    40, 16, 80,  // 2
    5,  0,  10,  // 3
    5,  0,  10,  // 4
    22, 0,  10,  // 5
    44, 0,  50,  // 6
    24, 0,  40,  // 7
    16, 0,  20,  // 8
    10, 0,  20,  // 9
    7,  0,  10,  // 10
    5,  0,  10,  // 11
    3,  0,  10,  // 12
    24, 24, 40,  // 13
    7,  0,  10,  // 14
    14, 10, 16,  // 15
    3,  1,  5,   // 16
    12, 12, 24,  // 17
    20, 12, 24,  // 18
    14, 10, 20,  // 19
    20, 10, 40,  // 20
    48, 32, 100, // 21
    12, 12, 30,  // 22
    18, 18, 24,  // 23
    18, 18, 24,  // 24
};

constexpr unsigned kColours[cCITheme::kColours] = {
    0xF3E5DF, 0xF3E5DF, 0xF3E5DF, 0xF3E5DF, 0x404040, 0x808080, 0x606060, 0xFF4040, 0xA0A0A0,
    0xFFFFFF, 0xFFFFFF, 0xF0FFFF, 0xC0C0C0, 0x404040, 0xFFFFFF, 0xFCF6F0, 0xFF9933, 0xFF9933,
    0xF1EBE5, 0xF1EBE5, 0xFFFFFF, 0xF1D5C6, 0xF1D5C6, 0xDCB6A9, 0xFCF3E1, 0xCA9685, 0xE4CDC3,
    0xFCF7F5, 0xFFFCFA, 0xFFFFFF, 0xF0F0F0, 0xF0F0FF, 0xF1D5C6, 0xDCB6A9, 0xCA9685, 0xFFFFFF,
    0xFFFFFF, 0xFBF7F6, 0xF4E4DB, 0xF3E5DF, 0x404040, 0x404040, 0xF3E5DF, 0xD6ADA0, 0xA0A0A0,
    0xE0E0E0, 0xB0B0B0, 0xC0C0C0, 0xFCF7F5, 0x404040, 0x404040, 0xFFFFFF, 0xFFFFFF, 0xEFD8CE,
    0xEFD8CE, 0xEFD8CE, 0xEFD8CE, 0xEFD8CE, 0xEFD8CE, 0xE8DBD6, 0xE8DBD6, 0x908280};

const cStaticCIThemeDef kBuiltIn{kDimensions, kColours, kThemeImages};

} // namespace

const cStaticCIThemeDef& cCITheme::builtIn() {
  return kBuiltIn;
}
