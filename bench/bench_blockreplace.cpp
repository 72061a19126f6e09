// blockreplace of the kestrix module in a host session: drawings of n
// references of block OLD (half in model space, half nested in a block
// NEST) and n other entities; every reference is switched to NEW and OLD
// purged, then the whole command undone with one U. Prints the time per
// reference at each size, so that growth faster than n log n shows.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "bench_entities.h"
#include "bench_module_command.h"
#include "bench_util.h"
#include "core/Host.h"
#include "core/Modules.h"

namespace {

OdDbObjectId addBlock(OdDbDatabase* db, const wchar_t* name) {
  OdSmartPtr<OdDbSymbolTable> table = OdDbSymbolTable::cast(db->getBlockTableId().safeOpenObject(OdDb::kForWrite));
  OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::createObject();
  block->setName(name);
  const OdDbObjectId id = table->add(block.get());
  OdDbLinePtr line = OdDbLine::createObject();
  line->setEndPoint({1, 1, 0});
  block->appendOdDbEntity(line.get());
  return id;
}

OdDbDatabasePtr buildDrawing(int count) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  const OdDbObjectId oldId = addBlock(db.get(), L"OLD");
  addBlock(db.get(), L"NEW");
  const OdDbObjectId nestId = addBlock(db.get(), L"NEST");
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  OdDbBlockTableRecordPtr nest = OdDbBlockTableRecord::cast(nestId.safeOpenObject(OdDb::kForWrite));
  for (int i = 0; i < count; ++i) {
    const double x = (i % 1000) * 10.0, y = (i / 1000) * 10.0;
    OdDbBlockReferencePtr ref = OdDbBlockReference::createObject();
    ref->setBlockTableRecord(oldId);
    (i % 2 ? nest : space)->appendOdDbEntity(ref.get());
    ref->setPosition({x, y, 0});
    OdDbLinePtr line = OdDbLine::createObject();
    line->setStartPoint({x, y + 5, 0});
    line->setEndPoint({x + 3, y + 5, 0});
    space->appendOdDbEntity(line.get());
  }
  return db;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sizes = {1000, 10000, 100000};
  if (argc > 1) sizes = {std::atoi(argv[1])};
  const std::string folder = benchScratchFolder("blockreplace");
  ryhost::Host& host = ryhost::Host::instance();
  ryhost::ListInput input;
  ryhost::StringTranscript transcript;
  for (int count : sizes) {
    startModuleSession(buildDrawing(count), folder, input, transcript);
    for (const char* reply : {"blockreplace", "3097=OLD", "3098", "3097=NEW", "3098", "Yes"}) input.add(OdString(reply));
    BenchTimer timer;
    host.runCommandLine();
    const double replace = timer.seconds();
    const bool switched = transcript.text().find(OdString().format(L"\n%d block references switched.", count)) >= 0;
    input.add(L"U");
    timer.restart();
    host.runCommandLine();
    const double undo = timer.seconds();
    std::printf("%7d references: blockreplace %8.4f s (%6.2f us each, %s), U %8.4f s\n", count, replace,
                replace / count * 1e6, switched ? "all switched" : "NOT ALL SWITCHED", undo);
  }
  host.reset();
  std::filesystem::remove_all(folder);
  return 0;
}
