#include "zpack.h"

#include <climits>
#include <zlib.h>

bool zpackOnce(const unsigned char* in, size_t size, std::vector<unsigned char>& out) {
  if (size > UINT_MAX / 2) return false;
  out.assign(2 * size, 0);
  z_stream z = {};
  if (deflateInit(&z, 5) != Z_OK) return false;
  z.next_in = const_cast<unsigned char*>(in);
  z.avail_in = static_cast<uInt>(size);
  z.next_out = out.data();
  z.avail_out = static_cast<uInt>(out.size());
  const int rc = deflate(&z, Z_FINISH);
  out.resize(out.size() - z.avail_out);
  deflateEnd(&z);
  return rc == Z_STREAM_END;
}

bool zunpackExactly(const unsigned char* in, size_t size, unsigned char* out, size_t outSize) {
  if (size > UINT_MAX || outSize > UINT_MAX) return false;
  z_stream z = {};
  if (inflateInit(&z) != Z_OK) return false;
  z.next_in = const_cast<unsigned char*>(in);
  z.avail_in = static_cast<uInt>(size);
  z.next_out = out;
  z.avail_out = static_cast<uInt>(outSize);
  const int rc = inflate(&z, Z_FINISH);
  const bool full = rc == Z_STREAM_END && z.avail_out == 0;
  inflateEnd(&z);
  return full;
}
