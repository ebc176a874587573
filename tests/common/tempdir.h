// A fresh folder under /tmp for one test, removed with all it holds when the test ends,
// and whole files read and written.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

class cTempDir {
public:
  cTempDir() {
    char pattern[] = "/tmp/qvraci-test-XXXXXX";
    if (const char* made = mkdtemp(pattern)) myPath = made;
    EXPECT_FALSE(myPath.empty()) << "no temporary folder";
  }
  ~cTempDir() {
    if (!myPath.empty() && std::system(("rm -rf '" + myPath + "'").c_str()) != 0)
      ADD_FAILURE() << "rm " << myPath;
  }
  cTempDir(const cTempDir&) = delete;
  cTempDir& operator=(const cTempDir&) = delete;

  const std::string& path() const { return myPath; }
  const char* c_str() const { return myPath.c_str(); }
  std::string operator/(const std::string& name) const { return myPath + "/" + name; }

private:
  std::string myPath;
};

inline std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

inline void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}
