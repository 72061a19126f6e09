// Builds 1,000,000 mixed entities, walks them, opens each for read, changes
// 10% inside one undo record and undoes it. Prints the time of each step and
// the memory a line entity costs.
#include <cstdio>
#include <random>

#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbText.h"
#include "bench_entities.h"
#include "bench_util.h"

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 1000000;
  BenchTimer total;

  // Memory of line entities alone, measured on their own database.
  size_t bytesPerLine = 0;
  {
    OdDbDatabasePtr db = OdDbDatabase::createNew();
    OdDbBlockTableRecordPtr space = benchModelSpace(db);
    const size_t before = benchHeapInUse();
    for (int i = 0; i < count; ++i) {
      OdDbLinePtr line = OdDbLine::createObject();
      line->setStartPoint({double(i), 0, 0});
      line->setEndPoint({double(i), 1, 0});
      space->appendOdDbEntity(line.get());
    }
    bytesPerLine = (benchHeapInUse() - before) / static_cast<size_t>(count);
  }

  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  std::mt19937 rng(1);
  BenchTimer step;
  for (int i = 0; i < count; ++i) {
    const double x = (i % 1000) * 10.0, y = (i / 1000) * 10.0;
    switch (i % 4) {
      case 0:
      case 1:
        space->appendOdDbEntity(benchLine({x, y, 0}, {x + 5, y + 5, 0}).get());
        break;
      case 2:
        space->appendOdDbEntity(benchText({x, y, 0}, 2.5, L"ROOM 12").get());
        break;
      default: {
        OdDbMTextPtr text = OdDbMText::createObject();
        text->setLocation({x, y, 0});
        text->setTextHeight(2.5);
        text->setContents(L"Note\\Psecond line");
        space->appendOdDbEntity(text.get());
        break;
      }
    }
  }
  const double build = step.seconds();
  space.release();

  step.restart();
  OdSmartPtr<OdDbBlockTableRecord> reader = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject());
  size_t walked = 0;
  for (OdDbObjectIteratorPtr it = reader->newIterator(); !it->done(); it->step()) walked += it->objectId().isNull() ? 0 : 1;
  const double walk = step.seconds();

  step.restart();
  double sum = 0;
  for (OdDbObjectIteratorPtr it = reader->newIterator(); !it->done(); it->step()) {
    OdDbEntityPtr entity = it->entity();
    sum += entity->colorIndex();
  }
  const double open = step.seconds();

  step.restart();
  db->startUndoRecord();
  const OdDbObjectIdArray& ids = reader->entityIds();
  for (size_t i = 0; i < ids.size(); i += 10) {
    OdDbEntityPtr entity = OdDbEntity::cast(ids[i].openObject(OdDb::kForWrite).get());
    entity->setColorIndex(1);
  }
  const double change = step.seconds();

  step.restart();
  db->undo();
  const double undo = step.seconds();
  OdDbEntityPtr probe = OdDbEntity::cast(ids[0].openObject().get());
  if (probe->colorIndex() != 256) std::printf("undo did not restore the colour!\n");

  std::printf("entities:            %d (%zu walked, checksum %.0f)\n", count, walked, sum);
  std::printf("build:               %.3f s\n", build);
  std::printf("walk ids:            %.3f s\n", walk);
  std::printf("open each for read:  %.3f s\n", open);
  std::printf("change 10%% (1 undo record): %.3f s\n", change);
  std::printf("undo:                %.3f s\n", undo);
  std::printf("total:               %.3f s (target: under 2 s)\n", build + walk + open + change + undo);
  std::printf("memory per line:     %zu bytes (target: at most 300)\n", bytesPerLine);
  std::printf("peak resident:       %.1f MB\n", benchPeakResident() / 1048576.0);
  (void)total;
  return 0;
}
