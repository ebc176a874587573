// qvraci-rules: checks rules files and tests them against real data.
#include <cstdio>
#include <string>

#include "commands.h"

namespace {

struct sCommand {
  const char* name;
  int (*run)(const sArgs&);
};

// build is convert under the name its users know for a text in, a rules file out.
constexpr sCommand kCommands[] = {
    {"show", showCommand},         {"check", checkCommand},   {"convert", convertCommand},
    {"build", convertCommand},     {"export", exportCommand}, {"match", matchCommand},
    {"identify", identifyCommand}, {"import", importCommand}, {"scan", scanCommand},
};

} // namespace

int main(int argc, char** argv) {
  if (argc < 2) return usage("no command");
  const std::string command = argv[1];
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--version") {
      std::printf("%s\n", kVersion);
      return 0;
    }
    if (arg == "--help" || arg == "-h" || (i == 1 && arg == "help")) {
      std::printf("%s", kUsage);
      return 0;
    }
  }
  const sArgs a =
      parseArgs(argc, argv, 2, {"--why", "--force", "--no-walk", "--commented"},
                {"--offset", "--block", "--carve", "--report", "--max-size", "--align"});
  if (!a.error.empty()) return usage(a.error.c_str());
  for (const sCommand& c : kCommands) {
    if (command == c.name) return c.run(a);
  }
  return usage(("unknown command " + command).c_str());
}
