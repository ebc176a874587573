// The commands of qvraci-rules, one file each; main.cpp dispatches to them.
#pragma once

#include "cli.h"

int showCommand(const sArgs& a);
int checkCommand(const sArgs& a);
int convertCommand(const sArgs& a); // also build
int exportCommand(const sArgs& a);
int matchCommand(const sArgs& a);
int identifyCommand(const sArgs& a);
int importCommand(const sArgs& a);
int scanCommand(const sArgs& a);
