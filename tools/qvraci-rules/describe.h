// Texts of qvraci-rules: a definition's words as the editor shows them, and paths.
#pragma once

#include <string>

#include "base/files.h"
#include "zorb/customsig.h"

std::string hitModeText(int hitMode);       // "Always (active)", ...
std::string combinationText(bool allRules); // "ALL own rules hit" / "ANY of own rules hits"
std::string subsetText(const cScanSigSubset* subset); // "" for none
std::string ruleText(const cScanSigRule& rule);
std::string ruleText(const cScanSigEndRule& rule);
// Builds a tree from the definition text in file (at most 64 MiB); on failure prints
// "qvraci-rules: FILE[:LINE]: reason" to stderr and returns false.
bool buildRulesText(const char* path, cFileIO& file, cCustomSignaturesTree& tree);
// Loads a rules file, or builds a definition text in memory; on failure prints
// "qvraci-rules: FILE: reason" to stderr and returns false.
bool loadRules(const char* path, cCustomSignaturesTree& tree);
