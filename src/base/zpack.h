// zlib as the stored formats use it: one stream (RFC 1950 wrapper) per block of data.
#pragma once

#include <cstddef>
#include <vector>

// Deflates at level 5 in one finishing call into a buffer of twice the input's size;
// false when that does not complete (an empty input included: it leaves no room).
bool zpackOnce(const unsigned char* in, size_t size, std::vector<unsigned char>& out);
// Inflates one stream that must fill out exactly; bytes after the stream are ignored.
bool zunpackExactly(const unsigned char* in, size_t size, unsigned char* out, size_t outSize);
