// The layer tools of the kestrix module in a host session, on drawings of n
// lines spread over 50 layers (and 1,000 empty layers), n doubling: prints
// the time of each command and its ratio to the run before (near 2 when the
// time grows as n, near 4 when it grows as n²).
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "bench_entities.h"
#include "bench_module_command.h"

namespace {

constexpr int kUsedLayers = 50, kEmptyLayers = 1000;

OdDbDatabasePtr buildDrawing(int count) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  std::vector<OdDbObjectId> layers;
  {
    OdSmartPtr<OdDbSymbolTable> table = OdDbSymbolTable::cast(db->getLayerTableId().safeOpenObject(OdDb::kForWrite));
    for (int i = 0; i < kUsedLayers + kEmptyLayers; ++i) {
      OdSmartPtr<OdDbLayerTableRecord> layer = OdDbLayerTableRecord::createObject();
      layer->setName(OdString().format(L"L%d", i));
      layers.push_back(table->add(layer.get()));
    }
  }
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  for (int i = 0; i < count; ++i) {
    OdDbLinePtr line = OdDbLine::createObject();
    const double x = (i % 1000) * 10.0, y = (i / 1000) * 10.0;
    line->setStartPoint({x, y, 0});
    line->setEndPoint({x + 5, y + 5, 0});
    space->appendOdDbEntity(line.get());
    line->setLayer(layers[static_cast<size_t>(i % kUsedLayers)]);
  }
  return db;
}

}  // namespace

int main(int argc, char** argv) {
  const int to = argc > 1 ? std::atoi(argv[1]) : 64000;
  const std::string folder = benchScratchFolder("layers");
  const struct {
    const char* name;
    std::initializer_list<const char*> replies;
  } commands[] = {
      {"LAYFRZOTHER", {"LAYFRZOTHER", "", "L", ""}},
      {"LAYMOVE", {"LAYMOVE", "ALL", "", "L7"}},
      {"LAYCHGCOLOR", {"LAYCHGCOLOR", "ALL", "", "3"}},
      {"LAYDRAWORDER", {"LAYDRAWORDER", "1001:60", "1002", "OK"}},
  };
  for (const auto& command : commands) {
    double previous = 0;
    for (int n = 8000; n <= to; n *= 2) {
      const double seconds = timeModuleCommand(buildDrawing(n), command.replies, folder);
      std::printf("%-13s n = %7d  %8.4f s", command.name, n, seconds);
      if (previous > 0) std::printf("  (x%.2f for twice n)", seconds / previous);
      std::printf("\n");
      previous = seconds;
    }
  }
  ryhost::Host::instance().reset();
  std::filesystem::remove_all(folder);
  return 0;
}
