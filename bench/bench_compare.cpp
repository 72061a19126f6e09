// Compares two versions of a drawing of n mixed entities (lines, circles,
// texts, polylines) through the comparison engine library, as the module
// does: both versions read from their files, handed to the engine, which
// pairs, classifies, marks and saves them and writes its report. The new
// version has 1% of its objects moved, 1% recoloured, 1% of the texts
// edited, 1% erased and 1% added, some of the erased ones drawn again under
// new handles. Prints the read and compare times for n/4, n/2 and n.
#include <dlfcn.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbPolyline.h"
#include "DbText.h"
#include "DwgCompareJet.h"
#include "DxfFile.h"
#include "bench_entities.h"
#include "bench_util.h"

namespace {

OdDbEntityPtr makeEntity(int i) {
  const double x = (i % 1000) * 10.0, y = (i / 1000) * 10.0;
  switch (i % 4) {
    case 0: {
      OdDbLinePtr line = OdDbLine::createObject();
      line->setStartPoint({x, y, 0});
      line->setEndPoint({x + 5, y + 3, 0});
      return line;
    }
    case 1: {
      OdDbCirclePtr circle = OdDbCircle::createObject();
      circle->setCenter({x, y, 0});
      circle->setRadius(1.0 + (i % 7));
      return circle;
    }
    case 2: {
      OdDbTextPtr text = OdDbText::createObject();
      text->setPosition({x, y, 0});
      text->setHeight(2.5);
      text->setTextString(OdString(("ROOM " + std::to_string(i)).c_str()));
      return text;
    }
    default: {
      OdDbPolylinePtr polyline = OdDbPolyline::createObject();
      for (int v = 0; v < 4; ++v) polyline->addVertexAt(v, OdGePoint2d(x + v, y + (v % 2)));
      return polyline;
    }
  }
}

void writeVersions(int n, const std::string& oldPath, const std::string& newPath) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  {
    OdDbBlockTableRecordPtr space = benchModelSpace(db);
    for (int i = 0; i < n; ++i) space->appendOdDbEntity(makeEntity(i).get());
  }
  odDxfWriteFile(db.get(), OdString(oldPath.c_str()));
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  const OdDbObjectIdArray ids = space->entityIds();
  for (size_t k = 0; k < ids.size(); ++k) {
    if (k % 100 == 0 || k % 100 == 50) {
      OdDbEntityPtr entity = OdDbEntity::cast(ids[k].safeOpenObject(OdDb::kForWrite));
      if (k % 100 == 0) entity->setColorIndex(1);
      else if (auto* text = dynamic_cast<OdDbText*>(entity.get())) text->setTextString(L"EDITED");
      else if (auto* line = dynamic_cast<OdDbLine*>(entity.get())) line->setEndPoint({0, 0, 0});
      else entity->setLayer(L"0");
    } else if (k % 100 == 33) {
      ids[k].safeOpenObject(OdDb::kForWrite)->erase();
      // Every other erased object is drawn again alike under a new handle.
      if (k % 200 == 33) space->appendOdDbEntity(makeEntity(static_cast<int>(k)).get());
    }
  }
  for (int i = 0; i < n / 100; ++i) space->appendOdDbEntity(makeEntity(n + i).get());
  space.release();
  odDxfWriteFile(db.get(), OdString(newPath.c_str()));
}

}  // namespace

int main(int argc, char** argv) {
  const int n = argc > 1 ? std::atoi(argv[1]) : 200000;
  void* library = dlopen(KESTRIX_BIN_DIR "/dwgcmp.dll", RTLD_NOW);
  auto get = library ? reinterpret_cast<GetDwgCompareJetFn>(dlsym(library, "GetDwgCompareJet")) : nullptr;
  auto free = library ? reinterpret_cast<FreeDwgCompareJetFn>(dlsym(library, "FreeDwgCompareJet")) : nullptr;
  if (!get || !free) {
    std::printf("The engine library cannot be loaded: %s\n", dlerror());
    return 1;
  }
  const std::string dir = (std::filesystem::temp_directory_path() / ("bench-compare-" + std::to_string(getpid()))).string();
  std::filesystem::create_directories(dir);
  std::printf("%10s %10s %10s %10s %10s %10s %10s %10s\n", "objects", "read s", "compare s", "cpu s", "added",
              "deleted", "changed", "props");
  for (int size : {n / 4, n / 2, n}) {
    const std::string oldPath = dir + "/old.dxf", newPath = dir + "/new.dxf";
    writeVersions(size, oldPath, newPath);
    BenchTimer step;
    OdDbDatabasePtr oldDb = odDxfReadFile(OdString(oldPath.c_str()));
    OdDbDatabasePtr newDb = odDxfReadFile(OdString(newPath.c_str()));
    const double read = step.seconds();
    step.restart();
    const std::clock_t cpu = std::clock();
    DwgCompareJet* jet = get();
    jet->setOldDatabase(oldDb.get());
    jet->setNewDatabase(newDb.get());
    const DwgCompareOptions options;
    const DwgCompareColors colors;
    const std::int32_t result = jet->compare(&options, &colors);
    const DwgCompareCounts counts = jet->counts();
    free(jet);
    const double compare = step.seconds();
    std::printf("%10d %10.2f %10.2f %10.2f %10lld %10lld %10lld %10lld%s\n", size, read, compare,
                double(std::clock() - cpu) / CLOCKS_PER_SEC, static_cast<long long>(counts.added),
                static_cast<long long>(counts.deleted), static_cast<long long>(counts.changed),
                static_cast<long long>(counts.propertyOnly), result ? "" : " (nothing compared)");
  }
  std::filesystem::remove_all(dir);
  return 0;
}
