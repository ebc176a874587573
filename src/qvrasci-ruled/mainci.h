// The editor's run: where it was started from, its configuration and language, and the
// main window until it closes.
#pragma once

#include <cstdio>
#include <string>

#include "base/buffers.h"

// The running image's load handle, learnt from the dynamic loader at start.
extern void* gAppInstance;
// The program's path as started (argv[0]), and the folder part of it ("./" when the path
// names no folder).
extern _guardchar<char> gAppPath;
extern _guardchar<char> gAppFolder;

inline constexpr const char* kMainTitle = "Zorbex rules editor - version 2.0 (64 bit)";
inline constexpr int kMainWidth = 800, kMainHeight = 480;

// Records argv[0] in gAppPath and gAppFolder.
void setAppPath(const char* argv0);

// The command line: --help and --version write to out and give 0, an unknown option or a
// second file one line to err and 2; otherwise -1, with the rules file to open (if one was
// named; "--" ends the options) in file.
int editorCommandLine(int argc, char** argv, std::string& file, std::FILE* out, std::FILE* err);

// The whole run; its result is the process's exit status: that of the command line when it
// ends the run, 1 without a display (one line on stderr says which display was tried, and
// no configuration is touched), else the main window's result when it closes.
int runUI(void* platformArg1, void* platformArg2, int platformFlags, int argc, char** argv);
