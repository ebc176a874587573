// Strict readers of hex strings, and of numbers written in decimal or hex.
#pragma once

#include <string_view>

#include "buffers.h"

// The byte (0-255) of the two hex digits at s, either case; -1 when s is null or either
// character is not a hex digit.
int getHexb(const char* s);
int getHexb(const unsigned short* s);

// Reads a text of hex digit pairs. The length must be even and not zero; the output holds
// half that many bytes. False at the first pair that is not hex.
bool hexToBytes(const char* text, _typebuf<unsigned char>& out);
bool hexToBytes(const unsigned short* text, _typebuf<unsigned char>& out);

// A whole number in decimal, or in hex after "0x" or "0X", with nothing before or after it;
// a number past 64 bits reads as the largest. False for anything else, and for nothing.
bool readWholeNumber(std::string_view text, unsigned long long& value);
