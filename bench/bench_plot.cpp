// Plotting drawings of 37,500 to 300,000 entities (lines, circles, arcs and
// polylines in a grid, on eight layers with their own colours, a quarter
// dashed) to a PNG of 3000 x 2000 pixels. Prints the wall and processor time
// of each size, to show how the time grows with the drawing.
#include <cstdio>
#include <ctime>
#include <filesystem>

#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbPolyline.h"
#include "DbSymbolTable.h"
#include "bench_entities.h"
#include "bench_util.h"
#include "plot/Plotter.h"

namespace {

constexpr int kLayers = 8;

OdDbDatabasePtr buildDrawing(int count) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbObjectId layers[kLayers];
  for (int i = 0; i < kLayers; ++i) {
    layers[i] = benchAddLayer(db.get(), OdString().format(L"L%d", i), static_cast<OdInt16>(1 + i));
  }
  OdDbObjectId dashed;
  {
    OdSmartPtr<OdDbLinetypeTableRecord> linetype = OdDbLinetypeTableRecord::createObject();
    linetype->setName(L"DASHED");
    linetype->setNumDashes(2);
    linetype->setDashLengthAt(0, 0.5);
    linetype->setDashLengthAt(1, -0.25);
    linetype->setPatternLength(0.75);
    OdDbObjectPtr table = db->getLinetypeTableId().openObject(OdDb::kForWrite);
    dashed = static_cast<OdDbSymbolTable*>(table.get())->add(linetype.get());
  }
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  const int columns = 600;
  for (int i = 0; i < count; ++i) {
    const double x = (i % columns) * 10.0, y = (i / columns) * 10.0 * 600.0 / (count / columns + 1);
    OdDbEntityPtr entity;
    switch (i % 4) {
      case 0:
        entity = benchLine({x, y, 0}, {x + 8, y + 3, 0});
        break;
      case 1:
        entity = benchCircle({x + 4, y + 4, 0}, 3);
        break;
      case 2:
        entity = benchArc({x + 4, y + 4, 0}, 4, 0.3, 2.5);
        break;
      default: {
        OdSmartPtr<OdDbPolyline> pline = OdDbPolyline::createObject();
        pline->addVertexAt(0, OdGePoint2d(x, y));
        pline->addVertexAt(1, OdGePoint2d(x + 6, y), 0.5);
        pline->addVertexAt(2, OdGePoint2d(x + 6, y + 6));
        entity = pline;
        break;
      }
    }
    space->appendOdDbEntity(entity.get());
    entity->setLayer(layers[i % kLayers]);
    if (i % 4 == 0) entity->setLinetype(dashed);
  }
  return db;
}

}  // namespace

int main() {
  const std::string out = (std::filesystem::temp_directory_path() / "bench_plot.png").string();
  ryhost::plot::Settings settings;
  settings.device = ryhost::plot::Device::kPng;
  settings.pixelWidth = 3000;
  settings.pixelHeight = 2000;
  settings.dpi = 300;
  std::printf("entities   wall s   cpu s   (PNG 3000 x 2000)\n");
  for (int count : {37500, 75000, 150000, 300000}) {
    OdDbDatabasePtr db = buildDrawing(count);
    const std::clock_t cpu = std::clock();
    BenchTimer timer;
    OdString error;
    if (!ryhost::plot::plotToFile(db.get(), settings, OdString(out), error)) {
      std::printf("plot failed: %s\n", error.toUtf8().c_str());
      return 1;
    }
    std::printf("%8d  %7.3f  %6.3f\n", count, timer.seconds(), double(std::clock() - cpu) / CLOCKS_PER_SEC);
  }
  std::filesystem::remove(out);
  return 0;
}
