// Decoders of single character sets, the building blocks of the ISO-2022 and EUC pages.
//
// Each reads the character at s (n bytes available) and on success stores its UTF-16 unit
// in *unit and returns the bytes used. It returns 0 when the bytes are not a character of
// the set, and -1 when more bytes are needed than n. The 94 x 94 sets take their two bytes
// in the 7-bit form 0x21..0x7E (EUC callers strip the high bits first).
#pragma once

int jisx0201_mbtowc(unsigned short* unit, const unsigned char* s, long long n);
int jisx0208_mbtowc(unsigned short* unit, const unsigned char* s, long long n);
int jisx0212_mbtowc(unsigned short* unit, const unsigned char* s, long long n);
int gb2312_mbtowc(unsigned short* unit, const unsigned char* s, long long n);
int cns11643_1_mbtowc(unsigned short* unit, const unsigned char* s, long long n);
int cns11643_2_mbtowc(unsigned short* unit, const unsigned char* s, long long n);
