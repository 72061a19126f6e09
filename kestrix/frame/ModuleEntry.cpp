// The module's entry points: the host's messages (initialise, unload, a
// drawing loaded, unloaded or saved), the module object, the interface
// version, and the frame-nesting export.
#include <cstdint>

#include "DbBlockTableRecord.h"
#include "DbDictionary.h"
#include "RxModule.h"
#include "RyApDocManager.h"
#include "RyHostServices.h"
#include "compare/Compare.h"
#include "frame/DocData.h"
#include "frame/ModuleResources.h"
#include "frame/ModuleWide.h"
#include "frame/NesterFrame.h"
#include "frame/Reactors.h"
#include "frame/commands.h"
#include "ryed.h"
#include "ryut.h"

namespace {

// ---------------------------------------------------------------- the module object

class Arx2DrxModule : public OdRxExtendModule {
 public:
  explicit Arx2DrxModule(void* instance) : m_instance(instance) {}
  OdString moduleName() const override { return L"kestrix"; }
  void* sysData() const override { return m_instance; }

 private:
  void* m_instance;
};

// The module's run-time wrapper: holds the one module object.
class OdRxWin32Module {
 public:
  OdRxModule* module(void** instance) {
    if (!m_module) {
      // The module takes the instance value over; the caller's copy is cleared.
      m_module = OdRxModulePtr(new Arx2DrxModule(instance ? *instance : nullptr));
      if (instance) *instance = nullptr;
    }
    return m_module.get();
  }
  void release() { m_module.release(); }

 private:
  OdRxModulePtr m_module;
};

OdRxWin32Module& wrapper() {
  static OdRxWin32Module module;
  return module;
}

// ---------------------------------------------------------------- load time

// The comparison engine, looked up on the host's search path when the
// library is attached and freed when it is detached. A plain handle with a
// library destructor, not a static object: the run-time's exit handlers of a
// module's statics may outlive the module's code once it is unloaded.
struct ComparisonEngine {
  HMODULE handle = nullptr;
  void load() {
    wchar_t path[MAX_PATH * 4] = {};
    if (ryedFindFile(L"dwgcmp.dll", path, MAX_PATH * 4) == RTNORM) handle = LoadLibraryW(path);
  }
  void free() {
    if (handle) FreeLibrary(handle);
    handle = nullptr;
  }
};

ComparisonEngine g_engine;

ComparisonEngine& comparisonEngine() { return g_engine; }

__attribute__((constructor)) void attachComparisonEngine() { g_engine.load(); }
__attribute__((destructor)) void detachComparisonEngine() { g_engine.free(); }

}  // namespace

HMODULE kestrix::comparisonLibrary() { return comparisonEngine().handle; }

namespace {

bool g_initialised = false;

// ---------------------------------------------------------------- registration

// Keeps the module's data folder "ExtendCmd" on the host's support path,
// the profile value "RYAD" of section "General" (";"-separated folders).
void keepDataFolderOnSupportPath() {
  CMqSystem* system = CMqSystem::instance();
  OdString value;
  if (!system || !system->getProfileString(L"General", L"RYAD", value)) return;
  OdString folder = ryutCombinePath(ryutGetRyadAppDir(), L"ExtendCmd");
  if (value.upper().find(folder.upper().c_str()) >= 0) return;
  value += L";";
  value += folder;
  system->writeProfileString(L"General", L"RYAD", value);
}

void registerCommands() {
  keepDataFolderOnSupportPath();
  for (const KestrixCommand& row : kestrixCommandTable()) {
    OdEdCommandStack* stack = odedRegCmds();
    if (!stack) continue;
    OdString local = kestrix::localCommandName(row.localNameId, row.globalName);
    // A failed registration does not stop the others.
    stack->addCommand(row.group, row.globalName, local.c_str(), row.flags, row.handler, nullptr, -1,
                      kestrix::messageLibrary(), nullptr);
  }
}

void removeCommands() {
  for (const wchar_t* group : kestrixCommandGroupsInRemovalOrder()) {
    if (OdEdCommandStack* stack = odedRegCmds()) stack->removeGroup(group);
  }
}

// ---------------------------------------------------------------- messages

void initialise() {
  if (!kestrix::loadMessageLibrary()) ryutPrintf(L"Error: Cannot load kestrixres.dll!\n");
  kestrix::registerReactorClasses();
  kestrix::commandEndReactor(true);
  if (RyApDocument* doc = ryDocManagerPtr()->curDocument()) {
    if (oddbHostApplicationServices()->workingDatabase()) {
      CDocData& slot = kestrix::documentData().docData(doc);
      if (slot.isEmpty()) slot.attach(doc->database());
    }
  }
  if (!g_initialised) registerCommands();
  g_initialised = true;
}

void unload() {
  kestrix::deleteCommandEndReactor();
  kestrix::unregisterReactorClasses();
  removeCommands();
  kestrix::releaseDocumentData();
  kestrix::unregisterDragEntityClass();
  kestrix::releaseMessageLibrary();
  kestrix::resetModuleWideValues();
  wrapper().release();
  g_initialised = false;
}

void drawingLoaded() {
  if (!ryedIsMenuGroupLoaded(L"kestrix")) ryedLoadMenuGroup(L"kestrix.cuix", true);
}

void drawingUnloaded() {
  RyApDocument* doc = ryDocManagerPtr()->curDocument();
  if (!doc || !kestrix::documentData().hasSlot(doc)) return;
  CDocData& slot = kestrix::documentData().docData(doc);
  slot.clear();
}

// Marked block definitions of the spreadsheet link that no reference uses
// any more are erased before the drawing is saved.
void drawingSaved() {
  static const wchar_t* const kMark = L"{82380376-776B-484f-B3C4-9520E99003CF}";
  OdDbDatabase* db = oddbHostApplicationServices()->workingDatabase();
  if (!db) return;
  try {
    OdSmartPtr<OdDbBlockTable> table = OdDbBlockTable::cast(db->getBlockTableId().openObject().get());
    if (table.isNull()) return;
    for (OdDbSymbolTableIteratorPtr it = table->newIterator(); !it->done(); it->step()) {
      OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::cast(it->getRecordId().openObject(OdDb::kForWrite).get());
      if (block.isNull()) return;
      OdDbDictionaryPtr dictionary = OdDbDictionary::cast(block->extensionDictionary().openObject().get());
      if (dictionary.isNull() || !dictionary->has(kMark)) continue;
      OdDbObjectIdArray references;
      if (block->getBlockReferenceIds(references) != eOk) return;
      if (references.isEmpty()) block->erase();
    }
  } catch (const OdError&) {
    // Any failure ends the walk quietly.
  }
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) std::uintptr_t ryrxEntryPoint(unsigned int message, void*) {
  switch (message) {
    case kRyrxInitAppMsg: initialise(); break;
    case kRyrxUnloadAppMsg: unload(); break;
    case kRyrxLoadDwgMsg: drawingLoaded(); break;
    case kRyrxUnloadDwgMsg: drawingUnloaded(); break;
    case kRyrxSaveMsg: drawingSaved(); break;
    default: break;
  }
  return 0;
}

__attribute__((visibility("default"))) OdRxModule* odrxCreateModuleObject(void** instance) {
  return wrapper().module(instance);
}

__attribute__((visibility("default"))) int odrxGetAPIVersion(unsigned int* major, unsigned int* minor, unsigned int* build,
                                                             unsigned int* revision) {
  if (major) *major = 3;
  if (minor) *minor = 5;
  if (build) *build = 0;
  if (revision) *revision = 0;
  return 0;
}

__attribute__((visibility("default"))) int NesterFrame(NestPlacement* placements, OdInt32 count, double* parameters,
                                                      NestSummary* summary) {
  // A negative sheet height asks for an endless strip.
  if (parameters && parameters[1] < 0) parameters[1] = kNestEndlessStrip;
  return nestFrames(placements, count, parameters, summary);
}

}  // extern "C"
