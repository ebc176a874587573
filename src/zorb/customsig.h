// The definition tree: containers and file-type definitions, and the matching interface
// a scanning engine uses.
//
// A cScanSignature owns its content rules, end rules and subset. The tree owns its nodes.
// Matching writes per-node state (startPos, the size rule's computed size), so one tree
// serves one scan at a time, on one thread. Matching allocates nothing.
//
// Every block is given as data, size (the range in which searched items may start) and
// avail (the bytes readable from data for items at fixed positions); data must hold
// max(size, avail) bytes.
#pragma once

#include <memory>
#include <unordered_map>

#include "base/buffers.h"
#include "base/files.h"
#include "base/list.h"
#include "base/tree.h"
#include "csigendrules.h"
#include "csigstrrules.h"
#include "cssubset.h"

class cScanSignature : public cTreeItem {
public:
  static constexpr unsigned long long kNoFile = ~0ULL; // startPos while no file is open
  enum eHitMode { hmNever = 0, hmPassive = 1, hmActive = 2 };

  // Empties both rule lists, destroying their rules, and sets name and extension.
  void create(const char* name, const char* ext);
  // A node with the same names, modes, rules and subset (their clone()s) and no children,
  // and no file open; null when a rule cannot be copied (its pattern no longer compiles).
  std::unique_ptr<cScanSignature> copy() const;
  // Exchanges names, modes, rules and subset with other; places in a tree and the state of
  // a scan stay.
  void swapContent(cScanSignature& other) noexcept;

  cScanSigRule* addStrRule(std::unique_ptr<cScanSigRule> rule);
  cScanSigEndRule* addEndRule(std::unique_ptr<cScanSigEndRule> rule);
  std::unique_ptr<cScanSigRule> remove(cScanSigRule* rule); // null if not this node's
  std::unique_ptr<cScanSigEndRule> remove(cScanSigEndRule* rule);

  cScanSigRule* first_str() const;
  cScanSigRule* next_str(const cScanSigRule* rule) const; // null for null
  cScanSigEndRule* first_end() const;
  cScanSigEndRule* next_end(const cScanSigEndRule* rule) const;
  cScanSigRule* first_typed_str(int type) const;
  cScanSigEndRule* first_typed_end(int type) const;
  bool hasStrRules() const { return !myStrRules.empty(); }
  bool hasEndRules() const { return !myEndRules.empty(); }
  cScanSigEndRuleMatchSize* getSizeEndRule() const;
  int subsetType() const { return subset ? subset->typeOf() : int{stNone}; }

  // True when the content rules hit (all of them, or any, by allRules).
  bool match(const unsigned char* data, unsigned int size, unsigned int avail,
             unsigned long long pos);
  // Records a hit at pos and reads the size field, if the node has one (false when it
  // cannot be read).
  bool matchNotify(const unsigned char* data, unsigned long long pos, unsigned int avail);
  // True when the open file ends in this block (at once, at offset 0, when none is open).
  bool shouldEnd(const unsigned char* data, unsigned int size, unsigned int avail,
                 unsigned long long pos, unsigned int& endOffset);

  cScanSignature* parentSig() const { return static_cast<cScanSignature*>(parent()); }
  cScanSignature* firstChildSig() const { return static_cast<cScanSignature*>(firstChild()); }
  cScanSignature* nextSig() const { return static_cast<cScanSignature*>(next()); }

  _guardchar<char> ext;  // extension of found files
  _guardchar<char> name; // file-type name
  unsigned long long startPos = kNoFile;
  long long extVFID = -1; // the scanning engine's identifier; -1 unassigned
  int hitMode = hmActive;
  std::unique_ptr<cScanSigSubset> subset;
  bool allRules = true; // ALL own content rules must hit, else ANY

private:
  cList myStrRules; // of cScanSigRule
  cList myEndRules; // of cScanSigEndRule
};

// For the nodes of a copied tree, the nodes they copy.
using tNodeOrigins = std::unordered_map<const cScanSignature*, const cScanSignature*>;

class cCustomSignaturesTree : public cTree {
public:
  // Levels of nesting a tree may have. Loading and matching recurse once per level; the
  // rules file refuses a deeper tree with result 3.
  static constexpr int kMaxDepth = 1024;

  // The rules file. save: 0, or 1 when a write fails (what was written stays). load: 0;
  // 1 read failure or file too short; 2 unknown magic; 3 a value too long or a rule that
  // cannot be built; 4 an unknown rule type. A failed load leaves the nodes read so far.
  int save(cFileIOTarget* target) const;
  int saveLevel(cFileIOTarget* target, const cScanSignature* first) const;
  int load(cFileIOTarget* target);
  int loadLevel(cFileIOTarget* target, cScanSignature* parent, bool oldFormat);

  cScanSignature* add(cScanSignature* parent, std::unique_ptr<cScanSignature> node) {
    return static_cast<cScanSignature*>(cTree::add(parent, std::move(node)));
  }
  cScanSignature* firstSig() const { return static_cast<cScanSignature*>(first()); }

  // Copies every node, in the same places, into `into`, emptied first: a scan of the copy
  // changes nothing here, so a tree that is only read may be scanned by several threads at
  // once, each on a copy of its own. origins receives, for each node made, the node it
  // copies. False, with `into` empty, when a rule cannot be copied.
  bool copyTo(cCustomSignaturesTree& into, tNodeOrigins& origins) const;
  // Appends a copy of top with everything under it to into's top level, and returns it;
  // null, with into as it was, when a rule cannot be copied. origins as for copyTo.
  static cScanSignature* copySubtree(const cScanSignature& top, cCustomSignaturesTree& into,
                                     tNodeOrigins* origins = nullptr);

  // The definition that recognises a file start in this block, or null (also when the
  // node found is a container).
  cScanSignature* find_match(const unsigned char* data, unsigned int size, unsigned int avail,
                             unsigned long long pos);
  cScanSignature* find_match_level(cScanSignature* first, const unsigned char* data,
                                   unsigned int size, unsigned int avail, unsigned long long pos);
  // True when the file that node opened ends here, by its own end rules or, failing
  // those, by its ancestors' (the nearest first).
  bool shouldEnd(cScanSignature* node, const unsigned char* data, unsigned int size,
                 unsigned int avail, unsigned long long pos, unsigned int& endOffset);

  unsigned int numRules() const; // nodes that are not containers
  void enumTerminalRules(const cScanSignature* first, int& count) const;
  void resetExtVFIDs();
  void resetExtID_level(cScanSignature* first);

private:
  int loadNodes(cFileIOTarget* target, cScanSignature* parent, bool oldFormat, int depth);
};
