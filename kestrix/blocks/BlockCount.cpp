// bcount: counts the block references of a selection (or, on Enter, of the
// whole drawing) by block name and prints a table of names and counts. The
// names are compared without regard to case; anonymous blocks and blocks
// from external references are not counted. The references counted are
// handed to the document's selection (pick-first and grips); the host keeps
// them gripped after the command.
#include <string>
#include <unordered_map>
#include <vector>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "frame/Guards.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

namespace {

struct BlockTally {
  OdString name;
  OdUInt32 count = 1;
};

// The count list in order of first appearance, found by the upper-case name.
class CountList {
 public:
  void add(const OdString& name) {
    OdString key = name;
    key.makeUpper();
    auto [it, inserted] = m_index.try_emplace(std::wstring(key.c_str()), m_entries.size());
    if (!inserted) {
      ++m_entries[it->second].count;
      return;
    }
    m_entries.push_back({name, 1});
    m_longest = std::max(m_longest, name.getLength());
  }
  const std::vector<BlockTally>& entries() const { return m_entries; }
  int longest() const { return m_longest; }

 private:
  std::vector<BlockTally> m_entries;
  std::unordered_map<std::wstring, size_t> m_index;
  int m_longest = 0;
};

// The name of the reference's block when it is counted: not anonymous, not
// from an external reference. Empty otherwise.
OdString countedBlockName(const ads_name entity) {
  OdDbObjectId id;
  if (rydbGetObjectId(id, entity) != RTNORM) return OdString();
  OdDbObjectPtr object = id.openObject();
  auto* reference = dynamic_cast<const OdDbBlockReference*>(object.get());
  if (!reference) return OdString();
  OdDbObjectPtr block = reference->blockTableRecord().openObject();
  auto* record = dynamic_cast<const OdDbBlockTableRecord*>(block.get());
  if (!record) return OdString();
  OdString name;
  record->getName(name);
  if (name.left(1) == L"*" || record->isFromExternalReference()) return OdString();
  return name;
}

// The selection: objects chosen at the prompt, or on Enter every block reference of the drawing.
bool selectReferences(ads_name ss) {
  const ResourceString prompt(30001, L"\n回车选择全部块或...\n选择对象: ");
  const ACHAR* prompts[2] = {prompt.c_str(), nullptr};
  const int status = ryedSSGet(L":$", prompts, nullptr, nullptr, ss);
  if (status == RTNORM) return true;
  if (status != RTERROR) return false;
  kestrix::ResultList filter(ryutBuildList(-4, L"<AND", RTDXF0, L"INSERT", -4, L"AND>", RTNONE));
  if (ryedSSGet(L"A", nullptr, nullptr, filter.get(), ss) == RTNORM) return true;
  ryutPrintf(L"%ls", ResourceString(30000, L"\n没有选中有效实体。").c_str());
  return false;
}

OdString repeated(wchar_t c, int count) {
  OdString text;
  for (int i = 0; i < count; ++i) text += c;
  return text;
}

void printTable(const CountList& list) {
  const int longest = list.longest();
  OdString heading = ResourceString(30006, L"\n块 ").text() + repeated(L'.', longest + 1) +
                     ResourceString(30007, L"\n计数 ").text() + repeated(L'-', longest + 11) + L"\n";
  ryutPrintf(L"%ls", heading.c_str());
  const std::vector<BlockTally>& entries = list.entries();
  for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
    const OdString dots = repeated(L'.', longest - it->name.getLength() + 6);
    ryutPrintf(L"%ls%ls%d\n", it->name.c_str(), dots.c_str(), static_cast<int>(it->count));
  }
}

}  // namespace

void bcountCommand() {
  kestrix::CmdEchoGuard echo;
  ads_name ss = {0, 0};
  if (!selectReferences(ss)) return;
  CountList list;
  ads_name counted = {0, 0};
  bool anyCounted = false;
  OdInt32 length = 0;
  ryedSSLength(ss, &length);
  for (OdInt32 i = 0; i < length; ++i) {
    ads_name entity;
    if (ryedSSName(ss, i, entity) != RTNORM) continue;
    const OdString name = countedBlockName(entity);
    if (name.isEmpty()) continue;
    list.add(name);
    anyCounted = ryedSSAdd(entity, anyCounted ? counted : nullptr, counted) == RTNORM || anyCounted;
  }
  ryedSSSetFirst(anyCounted ? counted : nullptr, anyCounted ? counted : nullptr);
  if (anyCounted) ryedSSFree(counted);
  ryedSSFree(ss);

  if (list.entries().empty()) {
    ryutPrintf(L"%ls", ResourceString(30000, L"\n没有选中有效实体。").c_str());
    return;
  }
  printTable(list);
  ryedRedraw(nullptr, 0);
}
