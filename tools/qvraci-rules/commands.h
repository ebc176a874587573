// The commands of qvraci-rules that live in files of their own.
#pragma once

#include "cli.h"

int identifyCommand(const sArgs& a);
int importCommand(const sArgs& a);
