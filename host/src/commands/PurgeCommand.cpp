// -PURGE (also PURGE on the console): removes named objects that nothing in
// the drawing uses: blocks, dimension styles, layers, linetypes, text styles
// and registered applications.
//
// What uses a record is found from the objects themselves: every pointer an
// object files out (its fields, whatever their class), the handles and names
// in data kept as read (unknown groups, extended data) and the header
// variables that name records. A reference counts while the object that
// holds it is live and not owned, directly or through its owners, by a
// record that this purge removes; so a block used only inside a purged block
// goes too, as do the layers, linetypes and styles only its entities used.
// The command decides everything first and erases at the end.
#include <algorithm>
#include <unordered_map>
#include <utility>

#include "DbBlockTableRecord.h"
#include "DbSymbolTable.h"
#include "commands/CommandRegistry.h"
#include "commands/CommandSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"

namespace ryhost {

namespace {

using namespace cmdsupport;

void say(const OdString& text) { Host::instance().print(text); }

// The kinds of records, in the order a purge of everything takes them
// (blocks first: their entities hold most references).
enum Kind { kBlock, kDimStyle, kLayer, kLinetype, kTextStyle, kRegApp, kKindCount };

struct KindInfo {
  OdDbNameTable table;
  const wchar_t* keyword;
  const wchar_t* singular;
  const wchar_t* plural;
};

const KindInfo kKinds[kKindCount] = {
    {OdDbNameTable::kBlock, L"Blocks", L"block", L"blocks"},
    {OdDbNameTable::kDimStyle, L"Dimstyles", L"dimension style", L"dimension styles"},
    {OdDbNameTable::kLayer, L"LAyers", L"layer", L"layers"},
    {OdDbNameTable::kLinetype, L"LTypes", L"linetype", L"linetypes"},
    {OdDbNameTable::kTextStyle, L"STyles", L"text style", L"text styles"},
    {OdDbNameTable::kRegApp, L"Regapps", L"registered application", L"registered applications"},
};

// Collects the ids an object points to (not those it owns) as it files out.
class PointerCollector : public OdDbDwgFiler {
 public:
  explicit PointerCollector(std::vector<OdDbStub*>& out) : m_out(out) {}
  FilerType filerType() const override { return kIdFiler; }
  void wrBool(bool) override {}
  void wrInt8(OdInt8) override {}
  void wrUInt8(OdUInt8) override {}
  void wrInt16(OdInt16) override {}
  void wrInt32(OdInt32) override {}
  void wrInt64(OdInt64) override {}
  void wrDouble(double) override {}
  void wrString(const OdString&) override {}
  void wrBytes(const void*, OdUInt32) override {}
  void wrHardOwnershipId(const OdDbObjectId&) override {}
  void wrSoftOwnershipId(const OdDbObjectId&) override {}
  void wrHardPointerId(const OdDbObjectId& id) override { add(id); }
  void wrSoftPointerId(const OdDbObjectId& id) override { add(id); }

 private:
  void add(const OdDbObjectId& id) {
    if (id.stub()) m_out.push_back(id.stub());
  }
  std::vector<OdDbStub*>& m_out;
};

struct Candidate {
  Kind kind = kBlock;
  OdDbObjectId id;
  OdString name;
  bool inPattern = false;  // named by the user's list: may be purged
  bool purged = false;
  bool kept = false;  // the user said No
  // Objects that point to it, by index into the referrers; a referrer
  // owned by no candidate keeps it for good.
  std::vector<size_t> referrers;
  bool keptForGood = false;
};

struct Referrer {
  // The candidates among the object and its owners: the reference dies when one of them is purged.
  std::vector<size_t> ownerCandidates;
};

bool isHandleReferenceCode(int code) {
  return (code >= 331 && code <= 349) || (code >= 390 && code <= 399) || code == 480 || code == 481 ||
         code == 1005;
}

class Purger {
 public:
  explicit Purger(OdDbDatabase* db) : m_db(db) {}

  void run() {
    const OdString type = askKeyword(
        L"\nEnter type of unused objects to purge [Blocks/Dimstyles/LAyers/LTypes/STyles/Regapps/All]: ",
        L"Blocks Dimstyles LAyers LTypes STyles Regapps All");
    if (type.isEmpty()) return;
    bool wanted[kKindCount] = {};
    for (int k = 0; k < kKindCount; ++k) wanted[k] = type == L"All" || type == kKinds[k].keyword;
    OdString patterns = askText(L"\nEnter name(s) to purge <*>: ");
    if (patterns.isEmpty()) patterns = L"*";
    const bool verify = askYesNo(L"\nVerify each name to be purged? [Yes/No] <N>: ", false);

    collectCandidates(splitNameList(patterns), wanted);
    collectReferences();
    decide(verify);
    erasePurged(wanted);
  }

 private:
  // ---- candidates

  void collectCandidates(const std::vector<OdString>& patterns, const bool* wanted) {
    for (int k = 0; k < kKindCount; ++k) {
      for (const OdDbObjectId& id : tableRecords(m_db, kKinds[k].table)) {
        OdDbObjectPtr object = id.openObject();
        auto* record = static_cast<OdDbSymbolTableRecord*>(object.get());
        if (isProtected(static_cast<Kind>(k), record)) continue;
        Candidate candidate;
        candidate.kind = static_cast<Kind>(k);
        candidate.id = id;
        candidate.name = record->getName();
        candidate.inPattern =
            wanted[k] && std::any_of(patterns.begin(), patterns.end(),
                                     [&](const OdString& p) { return nameMatches(candidate.name, p); });
        m_index.emplace(id.stub(), m_candidates.size());
        m_byName[k].emplace(candidate.name.upper().str(), m_candidates.size());
        m_candidates.push_back(candidate);
      }
    }
  }

  // Records a purge never removes.
  bool isProtected(Kind kind, const OdDbSymbolTableRecord* record) const {
    if (record->isDependent() || record->getName().isEmpty()) return true;
    const OdDbObjectId id = record->objectId();
    switch (kind) {
      case kBlock: {
        auto* block = static_cast<const OdDbBlockTableRecord*>(record);
        return block->isLayout() || block->isFromExternalReference() || block->isFromOverlayReference();
      }
      case kLayer:
        return id == m_db->getLayerZeroId() || id == m_db->getCLAYER();
      case kLinetype:
        return id == m_db->getLinetypeByLayerId() || id == m_db->getLinetypeByBlockId() ||
               id == m_db->getLinetypeContinuousId() || id == m_db->getCELTYPE();
      case kTextStyle:
        return id == m_db->getTextStyleStandardId() || id == m_db->getTEXTSTYLE();
      case kDimStyle:
        return id == m_db->getDimStyleStandardId() || id == m_db->getDIMSTYLE();
      case kRegApp:
        return record->getName().iCompare(L"ACAD") == 0;
      default:
        return true;
    }
  }

  // ---- references

  void collectReferences() {
    std::vector<OdDbStub*> pointers;
    std::vector<size_t> targets;
    m_db->forEachObjectId([&](const OdDbObjectId& id) {
      OdDbStub* stub = id.stub();
      if (!stub || !stub->object || stub->isErased()) return;
      const OdDbObject* object = stub->object;
      targets.clear();
      pointers.clear();
      PointerCollector collector(pointers);
      object->dwgOutFields(&collector);
      for (OdDbStub* target : pointers) {
        if (target != stub && target != object->ownerId().stub()) addTarget(target, targets);
      }
      if (const OdDbObjectExtras* extras = object->extras()) addKeptData(*extras, targets);
      if (targets.empty()) return;
      const size_t referrer = addReferrer(stub);
      for (size_t target : targets) {
        Candidate& candidate = m_candidates[target];
        if (m_referrers[referrer].ownerCandidates.empty())
          candidate.keptForGood = true;
        else
          candidate.referrers.push_back(referrer);
      }
    });
    addHeaderReferences();
  }

  static void addUnique(size_t candidate, std::vector<size_t>& targets) {
    if (std::find(targets.begin(), targets.end(), candidate) == targets.end()) targets.push_back(candidate);
  }

  void addTarget(OdDbStub* stub, std::vector<size_t>& targets) {
    auto found = m_index.find(stub);
    if (found != m_index.end()) addUnique(found->second, targets);
  }

  void addTargetByName(Kind kind, const OdString& name, std::vector<size_t>& targets) {
    auto found = m_byName[kind].find(name.upper().str());
    if (found != m_byName[kind].end()) addUnique(found->second, targets);
  }

  void addTargetByHandle(OdInt64 handle, std::vector<size_t>& targets) {
    if (handle <= 0) return;
    if (OdDbStub* stub = m_db->stubFor(static_cast<OdUInt64>(handle))) addTarget(stub, targets);
  }

  // Extended data names its applications and may hold handles; groups kept as
  // read (classes this platform does not model) may hold handles and names.
  void addKeptData(const OdDbObjectExtras& extras, std::vector<size_t>& targets) {
    for (const OdDxfTag& tag : extras.xdata) {
      if (tag.code == 1001)
        addTargetByName(kRegApp, tag.s, targets);
      else if (tag.code == 1005)
        addTargetByHandle(tag.i, targets);
    }
    for (const OdDbObjectExtras::Unknown& unknown : extras.unknown) {
      const OdDxfTag& tag = unknown.tag;
      if (tag.type == OdDxf::ValueType::kHandle && isHandleReferenceCode(tag.code)) {
        addTargetByHandle(tag.i, targets);
      } else if (tag.type == OdDxf::ValueType::kString) {
        // The group codes that name records in the classes that have fields for them.
        static const std::pair<int, Kind> kNamingCodes[] = {
            {2, kBlock}, {3, kDimStyle}, {6, kLinetype}, {7, kTextStyle}, {8, kLayer}};
        for (const auto& [code, kind] : kNamingCodes) {
          if (tag.code == code) addTargetByName(kind, tag.s, targets);
        }
      }
    }
  }

  size_t addReferrer(OdDbStub* stub) {
    Referrer referrer;
    // The object and its owners up the chain (a block's entities, an insert's attributes...).
    OdDbStub* at = stub;
    for (int depth = 0; at && at->object && depth < 64; ++depth) {
      auto found = m_index.find(at);
      if (found != m_index.end()) referrer.ownerCandidates.push_back(found->second);
      at = at->object->ownerId().stub();
    }
    m_referrers.push_back(std::move(referrer));
    return m_referrers.size() - 1;
  }

  // Header variables that name records keep them.
  void addHeaderReferences() {
    struct Named {
      const wchar_t* variable;
      Kind kind;
    };
    static const Named kNamed[] = {
        {L"$DIMBLK", kBlock},      {L"$DIMBLK1", kBlock},      {L"$DIMBLK2", kBlock},
        {L"$DIMLDRBLK", kBlock},   {L"$DIMTXSTY", kTextStyle}, {L"$DIMLTYPE", kLinetype},
        {L"$DIMLTEX1", kLinetype}, {L"$DIMLTEX2", kLinetype},
    };
    std::vector<size_t> targets;
    for (const Named& named : kNamed) {
      const OdString value = m_db->headerString(named.variable);
      if (!value.isEmpty()) addTargetByName(named.kind, value, targets);
    }
    for (const OdDbHeaderVariable& variable : m_db->headerVariables()) {
      for (const OdDxfTag& tag : variable.tags) {
        if (tag.type == OdDxf::ValueType::kHandle && isHandleReferenceCode(tag.code))
          addTargetByHandle(tag.i, targets);
      }
    }
    for (size_t target : targets) m_candidates[target].keptForGood = true;
  }

  // ---- deciding

  bool isReferenced(const Candidate& candidate) const {
    if (candidate.keptForGood || candidate.kept) return true;
    for (size_t index : candidate.referrers) {
      const Referrer& referrer = m_referrers[index];
      const bool dead = std::any_of(referrer.ownerCandidates.begin(), referrer.ownerCandidates.end(),
                                    [&](size_t owner) { return m_candidates[owner].purged; });
      if (!dead) return true;
    }
    return false;
  }

  // Purges what nothing uses, again and again: each purge may free more.
  void decide(bool verify) {
    for (bool progress = true; progress;) {
      progress = false;
      for (Candidate& candidate : m_candidates) {
        if (!candidate.inPattern || candidate.purged || candidate.kept || isReferenced(candidate)) continue;
        if (verify && !askYesNo(L"\nPurge " + OdString(kKinds[candidate.kind].singular) + L" \"" +
                                    candidate.name + L"\"? <N>: ",
                                false)) {
          candidate.kept = true;
          continue;
        }
        candidate.purged = true;
        progress = true;
      }
    }
  }

  // ---- erasing

  void erasePurged(const bool* wanted) {
    int counts[kKindCount] = {};
    for (const Candidate& candidate : m_candidates) {
      if (!candidate.purged) continue;
      say(L"\nDeleting " + OdString(kKinds[candidate.kind].singular) + L" \"" + candidate.name + L"\".");
      OdDbObjectPtr record = candidate.id.openObject(OdDb::kForWrite);
      const OdDbObjectId dictionary = record->extensionDictionary();
      record->erase();
      record.release();
      if (OdDbObjectPtr owned = dictionary.openObject(OdDb::kForWrite)) owned->erase();
      ++counts[candidate.kind];
    }
    for (int k = 0; k < kKindCount; ++k) {
      if (!wanted[k]) continue;
      if (counts[k] == 0)
        say(L"\nNo unreferenced " + OdString(kKinds[k].plural) + L" found.");
      else
        say(OdString().format(L"\n%d %ls deleted.", counts[k],
                              counts[k] == 1 ? kKinds[k].singular : kKinds[k].plural));
    }
  }

  OdDbDatabase* m_db;
  std::vector<Candidate> m_candidates;
  std::vector<Referrer> m_referrers;
  std::unordered_map<OdDbStub*, size_t> m_index;
  std::unordered_map<std::wstring, size_t> m_byName[kKindCount];
};

void purgeCommand() { Purger(Host::instance().current()->database()).run(); }

}  // namespace

void registerPurgeCommands(CommandStack& stack) {
  addCommandAndLineForm(stack, L"PURGE", purgeCommand);
}

RYAD_HOST_COMMANDS(registerPurgeCommands);

}  // namespace ryhost
