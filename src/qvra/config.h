// cQVRAConfigFile: a small store of numbered tags, each an opaque byte string, kept in one
// zlib-compressed file and written through on every change.
//
// File: "QVCF" | u32 record-area length | the record area deflated (level 5), where each
// record is i32 tag | u32 n | n bytes, in ascending tag order. An empty store is "QVCF"
// and four zero bytes. A foreign file is replaced by an empty store; a damaged one loads
// what it can and init() answers false. flush() does not truncate: a shorter content
// leaves the old tail behind the new stream, which init() ignores.
//
// Values by convention: integers as 4 bytes little-endian; 8-bit strings with their zero;
// 16-bit strings with their zero unit; a null string as 0 bytes.
#pragma once

#include "base/btree.h"
#include "base/buffers.h"
#include "base/files.h"

class cQVRAConfigFile : public cFileIO {
public:
  // The largest record area accepted; beyond it a file counts as damaged.
  static constexpr unsigned int kMaxRecordArea = 64u << 20;

  bool init(const char* fileName);
  bool setTag(int tag, const void* data, long long length);
  bool tag(int tag, _typebuf<unsigned char>& out) const;
  const void* tag(int tag) const; // the bytes in place, or null
  long long sizeOf(int tag) const;
  bool setStr(const unsigned short* text, int tag);
  bool setStr(const char* text, int tag);
  bool setInt(int value, int tag);
  bool tagInt(int& out, int tag) const; // only for a tag of exactly 4 bytes
  bool flush();

private:
  bool startEmpty(const char* fileName);
  bool loadRecords(const unsigned char* area, unsigned int length);

  cFasterTreeList<int, _typebuf<unsigned char>> myTable;
};
