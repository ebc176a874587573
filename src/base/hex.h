// Strict readers of hex strings.
#pragma once

#include "buffers.h"

// The byte (0-255) of the two hex digits at s, either case; -1 when s is null or either
// character is not a hex digit.
int getHexb(const char* s);
int getHexb(const unsigned short* s);

// Reads a text of hex digit pairs. The length must be even and not zero; the output holds
// half that many bytes. False at the first pair that is not hex.
bool hexToBytes(const char* text, _typebuf<unsigned char>& out);
bool hexToBytes(const unsigned short* text, _typebuf<unsigned char>& out);
