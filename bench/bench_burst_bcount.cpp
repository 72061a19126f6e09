// bcount and BURST of the kestrix module in a host session, on drawings of
// n block references (a block of a line on layer 0 in colour BYBLOCK and a
// circle, two attributes on each reference), n doubling: prints the time of
// each run and its ratio to the run before, which stays near 2 when the
// time grows as n (or n log n) and near 4 when it grows as n².
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "bench_entities.h"
#include "bench_module_command.h"

namespace {

OdDbDatabasePtr buildDrawing(int count) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbObjectId blockIds[2];
  {
    OdSmartPtr<OdDbSymbolTable> table =
        OdDbSymbolTable::cast(db->getBlockTableId().safeOpenObject(OdDb::kForWrite));
    const wchar_t* names[2] = {L"Valve", L"PUMP"};
    for (int b = 0; b < 2; ++b) {
      OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::createObject();
      block->setName(names[b]);
      blockIds[b] = table->add(block.get());
      OdDbLinePtr line = OdDbLine::createObject();
      line->setEndPoint({1, 1, 0});
      block->appendOdDbEntity(line.get());
      line->setColorIndex(0);
      OdDbCirclePtr circle = OdDbCircle::createObject();
      circle->setRadius(0.5);
      block->appendOdDbEntity(circle.get());
    }
  }
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  for (int i = 0; i < count; ++i) {
    OdDbBlockReferencePtr ref = OdDbBlockReference::createObject();
    ref->setBlockTableRecord(blockIds[i % 2]);
    space->appendOdDbEntity(ref.get());
    const double x = (i % 1000) * 10.0, y = (i / 1000) * 10.0;
    ref->setPosition({x, y, 0});
    ref->setColorIndex(static_cast<OdInt16>(1 + i % 7));
    for (int k = 0; k < 2; ++k) {
      OdSmartPtr<OdDbAttribute> attribute = OdDbAttribute::createObject();
      attribute->setTag(k ? L"SIZE" : L"NUMBER");
      attribute->setTextString(OdString().format(L"%d-%d", i, k));
      attribute->setPosition({x, y + 0.3 * k, 0});
      attribute->setHeight(0.25);
      ref->appendAttribute(attribute.get());
    }
  }
  return db;
}

void series(const std::string& folder, const char* what, int from, int to, std::initializer_list<const char*> replies) {
  double previous = 0;
  for (int n = from; n <= to; n *= 2) {
    const double seconds = timeModuleCommand(buildDrawing(n), replies, folder);
    if (previous > 0)
      std::printf("%-8s n = %7d  %8.4f s  (x%.2f for twice n)\n", what, n, seconds, seconds / previous);
    else
      std::printf("%-8s n = %7d  %8.4f s\n", what, n, seconds);
    previous = seconds;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int bcountTo = argc > 1 ? std::atoi(argv[1]) : 128000;
  const int burstTo = argc > 2 ? std::atoi(argv[2]) : 8000;
  const std::string folder = benchScratchFolder("burst");
  series(folder, "bcount", 8000, bcountTo, {"bcount", ""});
  series(folder, "BURST", 500, burstTo, {"BURST", "ALL", ""});
  std::printf("%-28s %7.1f MB\n", "peak resident", benchPeakResident() / 1e6);
  ryhost::Host::instance().reset();
  std::filesystem::remove_all(folder);
  return 0;
}
