#include "rulesfile.h"

#include <cerrno>
#include <cstring>

#include "base/memtarget.h"
#include "csigformat.h"
#include "csigtext.h"

namespace {

using R = sRulesFileResult;

R failure(R::eOutcome outcome, const char* path, const std::string& why) {
  return {outcome, std::string(path) + ": " + why};
}

// The binary form's reason, with where in the file the reading stopped.
std::string binaryReason(int result, size_t at) {
  const std::string where = std::to_string(at);
  switch (result) {
  case lrIo:
    return "truncated at byte " + where;
  case lrValue:
    return "a value too long or a rule that cannot be built, by byte " + where;
  case lrType:
    return "an unknown rule type at byte " + (at ? std::to_string(at - 1) : where);
  default:
    return loadResultText(result);
  }
}

R loadBinary(const char* name, std::string_view bytes, cCustomSignaturesTree& tree) {
  // Bytes that cannot begin a magic are no rules file, however short.
  const std::string_view head = bytes.substr(0, qrrs::kMagicSize);
  const bool old = head == qrrs::kOldMagic;
  const bool magic = head == std::string_view(qrrs::kOldMagic).substr(0, head.size()) ||
                     head == std::string_view(qrrs::kMagic).substr(0, head.size());
  cMemoryTarget in(bytes.data(), bytes.size());
  const int result = magic ? tree.load(&in) : lrMagic;
  if (result == lrOk) return {};
  if (result == lrMagic)
    return failure(R::roDamaged, name, "unknown magic: neither a rules file nor a definition text");
  return failure(R::roDamaged, name,
                 std::string("rules file ") + (old ? qrrs::kOldMagic : qrrs::kMagic) + ": " +
                     binaryReason(result, in.position()));
}

R loadText(const char* name, std::string_view bytes, cCustomSignaturesTree& tree) {
  sRulesTextError error;
  if (rulesFromText(bytes, tree, error)) return {};
  const std::string where = error.line ? ", line " + std::to_string(error.line) : "";
  return failure(R::roDamaged, name, "definition text" + where + ": " + error.message);
}

} // namespace

R loadRulesBytes(const char* name, std::string_view bytes, cCustomSignaturesTree& tree,
                 eRulesForm* form) {
  // Read into a tree of their own, then appended: the text reader builds into an empty
  // tree, and a merge keeps what was read before a fault as a load does.
  const bool binary = bytes.substr(0, qrrs::kMagicSize - 1) ==
                          std::string_view(qrrs::kMagic, qrrs::kMagicSize - 1) ||
                      !looksLikeRulesText(bytes);
  if (form) *form = binary ? rfBinary : rfText;
  cCustomSignaturesTree read;
  R result = binary ? loadBinary(name, bytes, read) : loadText(name, bytes, read);
  while (cTreeItem* top = read.first()) tree.cTree::add(nullptr, read.remove(top));
  return result;
}

R loadRulesFile(const char* path, cCustomSignaturesTree& tree, eRulesForm* form) {
  if (!path) return {R::roCannotOpen, "no file named"};
  cFileIO file;
  if (!file.open(path, fmRead))
    return failure(R::roCannotOpen, path, std::string("cannot be opened: ") + std::strerror(errno));
  // Whole, in one read: files are small, and what is parsed cannot change under the reader.
  const unsigned long long size = file.size();
  if (size > kMaxRulesFile)
    return failure(R::roCannotOpen, path,
                   "too large for definitions (over " + std::to_string(kMaxRulesFile >> 20) +
                       " MiB)");
  std::string bytes(static_cast<size_t>(size), '\0');
  long long got = 0;
  while (got < static_cast<long long>(size)) {
    const long long n = file.read(bytes.data() + got, static_cast<unsigned int>(size - got));
    if (n < 0)
      return failure(R::roCannotOpen, path, std::string("read failure: ") + std::strerror(errno));
    if (n == 0) break; // it shrank under us: what is there is parsed
    got += n;
  }
  bytes.resize(static_cast<size_t>(got));
  return loadRulesBytes(path, bytes, tree, form);
}

bool rulesBytes(const cCustomSignaturesTree& tree, eRulesForm form, std::string& out,
                std::string& why) {
  if (form == rfText) return rulesToText(tree, out, why);
  cMemoryTarget bytes;
  tree.save(&bytes); // memory takes every write
  out.assign(bytes.bytes().begin(), bytes.bytes().end());
  return true;
}

R saveRulesFile(const char* path, const cCustomSignaturesTree& tree, eRulesForm form) {
  if (!path) return {R::roCannotCreate, "no file named"};
  std::string bytes, why;
  if (!rulesBytes(tree, form, bytes, why)) return failure(R::roCannotWrite, path, why);
  const sReplaceResult written = file_replace(path, bytes.data(), bytes.size());
  static const char* const kSteps[] = {"", "cannot be created", "write failure", "flush failure",
                                       "cannot replace the old file"};
  if (written.ok()) return {};
  return failure(written.failed == rsCreate ? R::roCannotCreate : R::roCannotWrite, path,
                 std::string(kSteps[written.failed]) + ": " + std::strerror(written.error));
}

eRulesForm rulesFormOf(const char* path) {
  const std::string_view p = path ? path : "";
  constexpr std::string_view kText = ".txt";
  return p.size() >= kText.size() && p.substr(p.size() - kText.size()) == kText ? rfText : rfBinary;
}
