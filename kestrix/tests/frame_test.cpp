// The module frame in the real host: registration of the whole command
// table, unloading and reloading, the resource libraries and their
// fallbacks, the support-path step, the drawing messages, selection by
// sample and frame nesting.
#include <dlfcn.h>

#include <filesystem>
#include <fstream>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbDictionary.h"
#include "core/CommandStack.h"
#include "core/SelectionSets.h"
#include "RxModule.h"
#include "harness.h"
#include "ryed.h"

namespace fs = std::filesystem;

namespace {

const std::string kModule = std::string(KESTRIX_BIN_DIR) + "/kestrix.yrx";
const wchar_t* const kGroups[] = {L"EvKestrixTools", L"EVKESTRIXTOOLSCMD", L"Velmarintools"};

std::vector<OdEdCommand*> moduleCommands() {
  std::vector<OdEdCommand*> result;
  for (OdEdCommand* command : odedRegCmds()->commands()) {
    for (const wchar_t* group : kGroups) {
      if (command->groupName() == group) result.push_back(command);
    }
  }
  return result;
}

// A copy of the module in a folder of its own, with only the files given beside it.
std::string moduleCopy(const std::string& folderName, const std::vector<std::string>& besides) {
  fs::path folder = fs::temp_directory_path() / (folderName + "-" + std::to_string(getpid()));
  fs::remove_all(folder);
  fs::create_directories(folder);
  fs::copy_file(kModule, folder / "kestrix.yrx");
  for (const auto& file : besides) fs::copy_file(std::string(KESTRIX_BIN_DIR) + "/" + file, folder / file);
  return (folder / "kestrix.yrx").string();
}

OdDbObjectId addBlockWithReferences(OdDbDatabase* db, const wchar_t* name, int references, const wchar_t* layer) {
  OdDbObjectId blockId;
  {
    OdSmartPtr<OdDbBlockTable> table = OdDbBlockTable::cast(db->getBlockTableId().safeOpenObject(OdDb::kForWrite));
    OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::createObject();
    block->setName(name);
    blockId = table->add(block.get());
    OdDbLinePtr line = OdDbLine::createObject();
    line->setEndPoint({1, 1, 0});
    block->appendOdDbEntity(line.get());
  }
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
  for (int i = 0; i < references; ++i) {
    OdDbBlockReferencePtr ref = OdDbBlockReference::createObject();
    ref->setBlockTableRecord(blockId);
    space->appendOdDbEntity(ref.get());
    ref->setPosition({10.0 * i, 0, 0});
    if (layer) ref->setLayer(layer);
  }
  return blockId;
}

}  // namespace

TEST(ModuleFrame, RegistersTheWholeTableInOrderAndRemovesItAtUnload) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const auto commands = moduleCommands();
  ASSERT_EQ(commands.size(), 184u);
  EXPECT_EQ(commands.front()->globalName(), L"attout");
  EXPECT_EQ(commands[7]->globalName(), L"BURST");
  EXPECT_EQ(commands[7]->flags(), 2);
  EXPECT_EQ(commands[3]->flags(), 0x2000000);
  EXPECT_EQ(commands[73]->groupName(), L"EVKESTRIXTOOLSCMD");
  EXPECT_EQ(commands.back()->globalName(), L"sahttp");
  EXPECT_EQ(commands.back()->groupName(), L"Velmarintools");
  // Pairs share their handler: both names run the same tool.
  EXPECT_NE(odedRegCmds()->lookupGlobalCmd(L"BLKNUM"), nullptr);
  EXPECT_EQ(odedRegCmds()->lookupCmd(L"layoffother")->globalName(), L"LAYOFFOTHER");
  // Every registration carries the message library as its resource.
  for (OdEdCommand* command : commands) EXPECT_NE(command->resourceHandle(), nullptr) << command->globalName().toUtf8();

  ASSERT_TRUE(session.host().modules().unload(OdString(kModule)));
  EXPECT_TRUE(moduleCommands().empty());
  // A second load in the same process registers the table again.
  ASSERT_TRUE(session.loadModule());
  EXPECT_EQ(moduleCommands().size(), 184u);
}

TEST(ModuleFrame, InitialisingTwiceReusesTheLibraryClassesAndModuleObject) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  void* module = dlopen(kModule.c_str(), RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(module, nullptr);
  auto entry = reinterpret_cast<std::uintptr_t (*)(unsigned int, void*)>(dlsym(module, "ryrxEntryPoint"));
  auto createModule = reinterpret_cast<OdRxModule* (*)(void**)>(dlsym(module, "odrxCreateModuleObject"));
  ASSERT_TRUE(entry && createModule);
  const ryHandle resources = moduleCommands().front()->resourceHandle();
  OdRxClass* reactorClass = odrxFindClass(L"KWIBCmdEndReactor");
  ASSERT_NE(reactorClass, nullptr);

  EXPECT_EQ(entry(kRyrxInitAppMsg, nullptr), 0u);
  EXPECT_EQ(moduleCommands().size(), 184u);
  EXPECT_EQ(moduleCommands().front()->resourceHandle(), resources);
  EXPECT_EQ(odrxFindClass(L"KWIBCmdEndReactor"), reactorClass);
  // The module object is made once and takes the caller's instance value over.
  void* instance = reinterpret_cast<void*>(0x1234);
  OdRxModule* first = createModule(&instance);
  EXPECT_EQ(instance, nullptr);
  EXPECT_EQ(first->sysData(), reinterpret_cast<void*>(0x1234));
  void* other = reinterpret_cast<void*>(0x5678);
  EXPECT_EQ(createModule(&other), first);
  // Messages the module does not handle are ignored.
  EXPECT_EQ(entry(77, nullptr), 0u);
  dlclose(module);
}

TEST(ModuleFrame, ToolsNotInThisVersionSayTheirNameAndChangeNothing) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const size_t before = session.modelSpace().size();
  std::string out = session.run({"superhatch"});
  EXPECT_NE(out.find("superhatch: this tool is not available in this version."), std::string::npos) << out;
  EXPECT_EQ(session.modelSpace().size(), before);
  EXPECT_FALSE(session.host().current()->isModified());
}

TEST(ModuleFrame, MissingMessageLibraryIsReportedOnceAndTextsFallBack) {
  HostSession session;
  const std::string path = moduleCopy("kestrix-nores", {"ryadkwlres.dll"});
  OdString reason;
  ASSERT_TRUE(session.host().modules().load(OdString(path), &reason)) << reason.toUtf8();
  std::string out = session.transcript();
  const std::string error = "Error: Cannot load kestrixres.dll!\n";
  ASSERT_NE(out.find(error), std::string::npos) << out;
  EXPECT_EQ(out.find(error, out.find(error) + 1), std::string::npos);
  // Commands are still registered; their prompts fall back to "error".
  EXPECT_EQ(moduleCommands().size(), 184u);
  out = session.run({"getBlkSel", "^C"});
  EXPECT_NE(out.find("errorerror"), std::string::npos) << out;
  session.host().modules().unload(OdString(path));
  fs::remove_all(fs::path(path).parent_path());
}

TEST(ModuleFrame, SupportPathGetsTheDataFolderOnceAndOnlyWhenReadable) {
  const OdString folder = OdString(std::string(KESTRIX_BIN_DIR) + "/ExtendCmd");
  {
    HostSession session;
    fs::remove((session.host().dataFolder() + L"profile.ini").toUtf8());
    OdString value;
    ASSERT_FALSE(CMqSystem::instance()->getProfileString(L"General", L"RYAD", value));
    session.loadModule();
    // No value to read: nothing is written.
    EXPECT_FALSE(CMqSystem::instance()->getProfileString(L"General", L"RYAD", value));
  }
  {
    HostSession session;
    CMqSystem::instance()->writeProfileString(L"General", L"RYAD", L"/opt/support");
    session.loadModule();
    session.host().modules().unloadAll();
    session.loadModule();
    OdString value;
    ASSERT_TRUE(CMqSystem::instance()->getProfileString(L"General", L"RYAD", value));
    EXPECT_EQ(value, OdString(L"/opt/support;") + folder);
  }
  {
    HostSession session;
    OdString upper = OdString(L"/opt/a;") + folder.upper() + L";/opt/b";
    CMqSystem::instance()->writeProfileString(L"General", L"RYAD", upper);
    session.loadModule();
    OdString value;
    CMqSystem::instance()->getProfileString(L"General", L"RYAD", value);
    EXPECT_EQ(value, upper);
    fs::remove((session.host().dataFolder() + L"profile.ini").toUtf8());
  }
}

TEST(ModuleFrame, DrawingMessagesLoadTheMenuAndCleanMarkedBlocksOnSave) {
  HostSession session;
  session.loadModule();
  EXPECT_TRUE(ryedIsMenuGroupLoaded(L"kestrix"));
  OdDbDatabase* db = session.db();
  // Two marked spreadsheet-link blocks: one still referenced, one not.
  OdDbObjectId used = addBlockWithReferences(db, L"LINKED_USED", 1, nullptr);
  OdDbObjectId unused = addBlockWithReferences(db, L"LINKED_UNUSED", 0, nullptr);
  for (const OdDbObjectId& id : {used, unused}) {
    OdDbObjectPtr block = id.safeOpenObject(OdDb::kForWrite);
    block->createExtensionDictionary();
    OdDbDictionaryPtr dictionary = OdDbDictionary::cast(block->extensionDictionary().safeOpenObject(OdDb::kForWrite));
    OdDbXrecordPtr mark = OdDbXrecord::createObject();
    dictionary->setAt(L"{82380376-776B-484f-B3C4-9520E99003CF}", mark.get());
  }
  const std::string file = (fs::temp_directory_path() / ("kestrix-save-" + std::to_string(getpid()) + ".dxf")).string();
  session.run({"SAVEAS", file});
  EXPECT_FALSE(used.isErased());
  EXPECT_TRUE(unused.isErased());
  // A drawing unloaded whose slot is empty, and one whose slot holds a reactor.
  session.run({"NEW", "CLOSE", "OPEN", file, "CLOSE"});
  EXPECT_EQ(session.host().documentCount(), 1);
  fs::remove(file);
}

TEST(SelectionBySample, BlocksOfTheSampleAreHandedOnAndCmdechoIsRestored) {
  HostSession session;
  session.loadModule();
  OdDbDatabase* db = session.db();
  addBlockWithReferences(db, L"DOOR", 3, nullptr);
  addBlockWithReferences(db, L"WINDOW", 2, nullptr);
  OdDbObjectIdArray all = session.modelSpace();
  const std::string door = "#" + all[0].handle().ascii().toUtf8();
  session.run({"CMDECHO", "1"});

  // Enter at the selection: the whole drawing is searched.
  session.run({"getBlkSel", door, ""});
  auto& pickFirst = session.host().current()->selections().pickFirst();
  EXPECT_EQ(pickFirst.size(), 3u);
  EXPECT_EQ(session.host().sysvars().getInt(L"CMDECHO"), 1);

  // A sample that is not a block reference ends the command; nothing is handed on.
  pickFirst.clear();
  OdDbLinePtr line = OdDbLine::createObject();
  line->setEndPoint({5, 5, 0});
  OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite))->appendOdDbEntity(line.get());
  const std::string lineHandle = "#" + line->objectId().handle().ascii().toUtf8();
  line.release();
  session.run({"getBlkSel", lineHandle});
  EXPECT_TRUE(pickFirst.empty());
  // Esc at the sample prompt leaves cmdecho as it was too.
  session.run({"getBlkSel", "^C"});
  EXPECT_EQ(session.host().sysvars().getInt(L"CMDECHO"), 1);

  // By layer: every object of the sample's layer, whatever its kind.
  session.run({"getLaySel", lineHandle, ""});
  EXPECT_EQ(pickFirst.size(), 6u);
}

TEST(SelectionBySample, NoMatchPrintsTheMessageAndKeepsThePickFirstSet) {
  HostSession session;
  session.loadModule();
  addBlockWithReferences(session.db(), L"DOOR", 1, nullptr);
  const std::string door = "#" + session.modelSpace()[0].handle().ascii().toUtf8();
  auto& pickFirst = session.host().current()->selections().pickFirst();
  // A window that finds nothing, then the whole drawing still finds the sample itself:
  // erase it from the search by selecting a window far away with a colour that matches nothing.
  session.run({"getColSel", door, "W", "1000,1000", "1001,1001", ""});
  EXPECT_EQ(pickFirst.size(), 1u);  // nothing in the window: the whole drawing was searched

  pickFirst.clear();
  std::string out = session.run({"getsel", "NO_SUCH_LAYER", "LINE"});
  EXPECT_NE(out.find("No matching objects were found."), std::string::npos) << out;
  EXPECT_TRUE(pickFirst.empty());
}

TEST(FrameNesting, FramesFitOnSheetsWithoutOverlapAndAnEndlessStrip) {
  void* module = dlopen(kModule.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(module, nullptr) << dlerror();
  struct Placement {
    OdInt32 sheet;
    double x, y;
    OdInt32 rotated;
  };
  struct Summary {
    OdInt32 sheets;
    double usedHeight, utilisation;
  };
  using Nest = int (*)(Placement*, OdInt32, double*, Summary*);
  auto nest = reinterpret_cast<Nest>(dlsym(module, "NesterFrame"));
  ASSERT_NE(nest, nullptr);

  // Six A3-sized frames and two A4s on A1 sheets (841 x 594), 5 apart, turning allowed.
  std::vector<double> params = {841, 594, 5, 1, 420, 297, 420, 297, 420, 297, 420, 297, 420, 297, 420, 297, 297, 210, 210, 297};
  const int count = 8;
  std::vector<Placement> placed(count);
  Summary summary{};
  ASSERT_EQ(nest(placed.data(), count, params.data(), &summary), 0);
  EXPECT_GE(summary.sheets, 2);
  for (int i = 0; i < count; ++i) {
    double w = params[4 + 2 * i], h = params[5 + 2 * i];
    if (placed[i].rotated) std::swap(w, h);
    ASSERT_GE(placed[i].sheet, 0);
    EXPECT_GE(placed[i].x, 5 - 1e-9);
    EXPECT_GE(placed[i].y, 5 - 1e-9);
    EXPECT_LE(placed[i].x + w, 841 - 5 + 1e-9);
    EXPECT_LE(placed[i].y + h, 594 - 5 + 1e-9);
    for (int j = 0; j < i; ++j) {
      if (placed[j].sheet != placed[i].sheet) continue;
      double wj = params[4 + 2 * j], hj = params[5 + 2 * j];
      if (placed[j].rotated) std::swap(wj, hj);
      const bool apart = placed[i].x + w + 5 <= placed[j].x + 1e-9 || placed[j].x + wj + 5 <= placed[i].x + 1e-9 ||
                         placed[i].y + h + 5 <= placed[j].y + 1e-9 || placed[j].y + hj + 5 <= placed[i].y + 1e-9;
      EXPECT_TRUE(apart) << i << " overlaps " << j;
    }
  }

  // A negative sheet height is an endless strip: one sheet, its length reported.
  params[1] = -1;
  ASSERT_EQ(nest(placed.data(), count, params.data(), &summary), 0);
  EXPECT_EQ(params[1], 1e7);
  EXPECT_EQ(summary.sheets, 1);
  EXPECT_GT(summary.usedHeight, 594);
  EXPECT_LT(summary.usedHeight, 2000);

  // A frame larger than the sheet fits nowhere; bad parameters are refused.
  std::vector<double> tooBig = {100, 100, 0, 0, 200, 50};
  ASSERT_EQ(nest(placed.data(), 1, tooBig.data(), &summary), 1);
  EXPECT_EQ(placed[0].sheet, -1);
  std::vector<double> bad = {0, 100, 0, 0, 10, 10};
  EXPECT_EQ(nest(placed.data(), 1, bad.data(), &summary), -1);
  dlclose(module);
}

TEST(SelectionBySample, NamesOfTheSampleAreMatchedAsNamesNotPatterns) {
  HostSession session;
  session.loadModule();
  OdDbDatabase* db = session.db();
  for (const wchar_t* layer : {L"A.B", L"A-B"}) {
    OdSmartPtr<OdDbSymbolTable> table = OdDbSymbolTable::cast(db->getLayerTableId().safeOpenObject(OdDb::kForWrite));
    OdSmartPtr<OdDbLayerTableRecord> record = OdDbLayerTableRecord::createObject();
    record->setName(layer);
    table->add(record.get());
  }
  // As patterns, "*U1" would take "XU1", "B#1" would take "B51" and "A.B" would take "A-B".
  addBlockWithReferences(db, L"*U1", 2, L"A.B");
  addBlockWithReferences(db, L"XU1", 3, L"A-B");
  addBlockWithReferences(db, L"B#1", 1, L"A-B");
  addBlockWithReferences(db, L"B51", 4, L"A-B");
  const OdDbObjectIdArray all = session.modelSpace();
  auto& pickFirst = session.host().current()->selections().pickFirst();
  const auto handOn = [&](const char* command, int sample) {
    pickFirst.clear();
    session.run({command, "#" + all[sample].handle().ascii().toUtf8(), ""});
    return pickFirst.size();
  };
  EXPECT_EQ(handOn("getBlkSel", 0), 2u);
  EXPECT_EQ(handOn("getBlkSel", 5), 1u);
  EXPECT_EQ(handOn("getLaySel", 0), 2u);
  EXPECT_EQ(handOn("getLaySel", 2), 8u);
  // getsel's pick takes the sample's layer by name too.
  pickFirst.clear();
  session.run({"getsel", "P", "#" + all[1].handle().ascii().toUtf8()});
  EXPECT_EQ(pickFirst.size(), 2u);
}
