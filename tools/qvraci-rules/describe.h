// Texts of qvraci-rules: a definition's words as the editor shows them, and paths.
#pragma once

#include <string>

#include "zorb/customsig.h"

std::string hitModeText(int hitMode);       // "Always (active)", ...
std::string combinationText(bool allRules); // "ALL own rules hit" / "ANY of own rules hits"
std::string subsetText(const cScanSigSubset* subset); // "" for none
std::string ruleText(const cScanSigRule& rule);
std::string ruleText(const cScanSigEndRule& rule);
// Loads definitions in either form; on failure prints "qvraci-rules: FILE: FORM: reason" to
// stderr and returns false.
bool loadRules(const char* path, cCustomSignaturesTree& tree);
