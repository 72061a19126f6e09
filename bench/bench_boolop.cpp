// RY_boolop of the kestrix module in a host session: the union of n
// overlapping outlines on a grid, circles and bulged polylines in turn, each
// overlapping its neighbours but leaving a hole at each inner grid corner,
// so that the result is one region with many holes of arcs. Prints, for each n, the wall and processor time of the
// command and the loops written; the target is under 2 s for 1,000.
//
//     bench_boolop [n ...]        (default 250 500 1000 2000)
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbPolyline.h"
#include "bench_entities.h"
#include "bench_module_command.h"
#include "bench_util.h"
#include "core/Host.h"
#include "core/Modules.h"

namespace {

constexpr double kTarget = 2.0;

// n outlines on a grid of pitch 1, 40 to a row: circles of radius 0.6 and
// squares of half side 0.45 whose sides bulge out by 0.135, in a chequered
// pattern. Neighbours overlap; the four outlines round a grid corner leave
// a small hole there.
OdDbDatabasePtr buildDrawing(int count) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  for (int i = 0; i < count; ++i) {
    const double x = i % 40, y = i / 40;
    if ((i % 40 + i / 40) % 2 == 0) {
      OdSmartPtr<OdDbCircle> circle = OdDbCircle::createObject();
      circle->setCenter(OdGePoint3d(x, y, 0));
      circle->setRadius(0.6);
      space->appendOdDbEntity(circle.get());
      continue;
    }
    OdSmartPtr<OdDbPolyline> square = OdDbPolyline::createObject();
    const double h = 0.45, bulge = 0.3;
    square->addVertexAt(0, OdGePoint2d(x - h, y - h), bulge);
    square->addVertexAt(1, OdGePoint2d(x + h, y - h), bulge);
    square->addVertexAt(2, OdGePoint2d(x + h, y + h), bulge);
    square->addVertexAt(3, OdGePoint2d(x - h, y + h), bulge);
    square->setClosed(true);
    space->appendOdDbEntity(square.get());
  }
  return db;
}

int liveEntities(OdDbDatabase* db) {
  int n = 0;
  OdDbObjectPtr object = db->getModelSpaceId().openObject();
  for (const auto& id : static_cast<OdDbBlockTableRecord*>(object.get())->entityIds()) n += id.isErased() ? 0 : 1;
  return n;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sizes;
  for (int i = 1; i < argc; ++i) sizes.push_back(std::atoi(argv[i]));
  if (sizes.empty()) sizes = {250, 500, 1000, 2000};
  const std::string folder = benchScratchFolder("boolop");

  for (int count : sizes) {
    OdDbDatabasePtr db = buildDrawing(count);
    OdDbObjectId first;
    {
      OdDbObjectPtr object = db->getModelSpaceId().openObject();
      first = static_cast<OdDbBlockTableRecord*>(object.get())->entityIds().front();
    }
    ryhost::ListInput input;
    ryhost::StringTranscript transcript;
    ryhost::Host& host = startModuleSession(db, folder, input, transcript);
    // Union, the first outline as the base and every outline as a tool.
    for (const OdString& reply : {OdString(L"RY_boolop"), OdString(L"!14835"), L"#" + first.handle().ascii(),
                                  OdString(L"ALL"), OdString()})
      input.add(reply);
    BenchTimer timer;
    const std::clock_t cpu = std::clock();
    host.runCommandLine();
    const double seconds = timer.seconds(), processor = double(std::clock() - cpu) / CLOCKS_PER_SEC;
    const int loops = liveEntities(db.get());
    std::printf("union of %5d outlines: %7.3f s, processor %7.3f s, %4d loops written (%.1f us per outline)%s\n",
                count, seconds, processor, loops, 1e6 * seconds / count,
                count == 1000 ? (seconds < kTarget ? "  target < 2 s: met" : "  target < 2 s: MISSED") : "");
    host.reset();
  }
  std::printf("peak resident %.1f MB\n", benchPeakResident() / 1e6);
  std::filesystem::remove_all(folder);
  return 0;
}
