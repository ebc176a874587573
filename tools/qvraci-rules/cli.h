// What the commands of qvraci-rules share: arguments, messages, numbers and report texts.
#pragma once

#include <atomic>
#include <string>
#include <utility>
#include <vector>

extern const char kUsage[];
extern const char kVersion[];

// Options after the positional arguments: --name VALUE or --flag.
struct sArgs {
  std::vector<std::string> positional;
  std::vector<std::pair<std::string, std::string>> options;
  std::string error;

  bool has(const std::string& name) const {
    for (const auto& [n, v] : options) {
      if (n == name) return true;
    }
    return false;
  }
  const char* value(const std::string& name) const {
    for (const auto& [n, v] : options) {
      if (n == name) return v.c_str();
    }
    return nullptr;
  }
};

sArgs parseArgs(int argc, char** argv, int from, const std::vector<std::string>& flags,
                const std::vector<std::string>& valued);

// "qvraci-rules: what" and the usage on stderr; returns 2.
int usage(const char* what);
// "qvraci-rules: what" on stderr; returns 1.
int fail(const std::string& what);
bool exists(const char* path);
// A size: a number with an optional K, M, G or T (powers of 1024, "KiB" and "KB" alike).
bool parseSize(const char* text, unsigned long long& out);
// A number, decimal or 0x hexadecimal.
bool parseNumber(const char* text, unsigned long long& out);

// Set by Ctrl+C once onInterrupt is the SIGINT handler: long commands stop and report.
extern std::atomic<bool> gStop;
void onInterrupt(int);

std::string jsonText(const std::string& s); // escaped for a JSON string, without quotes
std::string csvText(const std::string& s);  // quoted for a CSV field
