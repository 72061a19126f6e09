// Writes and reads a generated drawing of 1,000,000 mixed entities (lines,
// arcs, lightweight polylines, texts, block references with attributes) and
// prints the speed of each and the peak memory. When the independent reader
// (python3-ezdxf) is there, it reads the same file too, for comparison.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbPolyline.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "DxfFile.h"
#include "bench_entities.h"
#include "bench_util.h"

namespace {

OdDbObjectId makeBlock(OdDbDatabase* db) {
  OdSmartPtr<OdDbBlockTable> table = OdDbBlockTable::cast(db->getBlockTableId().safeOpenObject(OdDb::kForWrite));
  OdSmartPtr<OdDbBlockTableRecord> block = OdDbBlockTableRecord::createObject();
  block->setName(L"TAG");
  OdDbObjectId id = table->add(block.get());
  OdDbLinePtr line = OdDbLine::createObject();
  line->setEndPoint({1, 1, 0});
  block->appendOdDbEntity(line.get());
  OdDbAttributeDefinitionPtr definition = OdDbAttributeDefinition::createObject();
  definition->setTag(L"NUMBER");
  definition->setHeight(0.5);
  block->appendOdDbEntity(definition.get());
  return id;
}

void build(OdDbDatabase* db, int count) {
  const OdDbObjectId blockId = makeBlock(db);
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  for (int i = 0; i < count; ++i) {
    const double x = (i % 1000) * 10.0 + 0.123456789, y = (i / 1000) * 10.0 + 0.987654321;
    switch (i % 5) {
      case 0:
        space->appendOdDbEntity(benchLine({x, y, 0}, {x + 5.5, y + 3.25, 0}).get());
        break;
      case 1:
        space->appendOdDbEntity(benchArc({x, y, 0}, 2.75, 0.5, 2.5).get());
        break;
      case 2: {
        OdDbPolylinePtr polyline = OdDbPolyline::createObject();
        polyline->addVertexAt(0, OdGePoint2d(x, y));
        polyline->addVertexAt(1, OdGePoint2d(x + 4, y), 0.5);
        polyline->addVertexAt(2, OdGePoint2d(x + 4, y + 4));
        polyline->addVertexAt(3, OdGePoint2d(x, y + 4));
        polyline->setClosed(true);
        space->appendOdDbEntity(polyline.get());
        break;
      }
      case 3: {
        OdDbTextPtr text = OdDbText::createObject();
        text->setPosition({x, y, 0});
        text->setHeight(2.5);
        text->setTextString(OdString().format(L"ROOM %d", i));
        space->appendOdDbEntity(text.get());
        break;
      }
      default: {
        OdDbBlockReferencePtr ref = OdDbBlockReference::createObject();
        ref->setBlockTableRecord(blockId);
        space->appendOdDbEntity(ref.get());
        ref->setPosition({x, y, 0});
        OdDbAttributePtr attribute = OdDbAttribute::createObject();
        attribute->setTag(L"NUMBER");
        attribute->setHeight(0.5);
        attribute->setPosition({x, y, 0});
        attribute->setTextString(OdString().format(L"%d", i));
        ref->appendAttribute(attribute.get());
        break;
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 1000000;
  const std::string path = (std::filesystem::temp_directory_path() / "kestrix-bench.dxf").string();
  {
    OdDbDatabasePtr db = OdDbDatabase::createNew();
    build(db.get(), count);
    BenchTimer timer;
    const std::clock_t cpu = std::clock();
    odDxfWriteFile(db.get(), OdString(path));
    const double seconds = timer.seconds();
    const double cpuSeconds = double(std::clock() - cpu) / CLOCKS_PER_SEC;
    const double mb = std::filesystem::file_size(path) / 1048576.0;
    std::printf("entities:      %d (%.1f MB of DXF)\n", count, mb);
    std::printf("write:         %.3f s, %.0f MB/s; processor time %.3f s, %.0f MB/s (target: 150 MB/s or more)\n",
                seconds, mb / seconds, cpuSeconds, mb / cpuSeconds);
  }
  const double mb = std::filesystem::file_size(path) / 1048576.0;
  std::fflush(stdout);
  // Reading runs in a child process, so that its peak memory is its own.
  pid_t child = fork();
  if (child == 0) {
    const size_t base = benchResidentNow();
    BenchTimer timer;
    const std::clock_t cpu = std::clock();
    OdDbDatabasePtr db = odDxfReadFile(OdString(path));
    const double seconds = timer.seconds();
    const double cpuSeconds = double(std::clock() - cpu) / CLOCKS_PER_SEC;
    std::printf("read:          %.3f s, %.0f MB/s; processor time %.3f s, %.0f MB/s (target: 100 MB/s or more)\n",
                seconds, mb / seconds, cpuSeconds, mb / cpuSeconds);
    std::printf("peak memory:   %.0f MB = %.2f x the file (target: at most 3 x)\n", (benchPeakResident() - base) / 1048576.0,
                (benchPeakResident() - base) / 1048576.0 / mb);
    std::fflush(stdout);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  double ours = 0;
  {
    BenchTimer timer;
    odDxfReadFile(OdString(path));
    ours = timer.seconds();
  }
  if (std::system("/usr/bin/python3 -c 'import ezdxf' 2>/dev/null") == 0) {
    BenchTimer timer;
    const std::string command = "/usr/bin/python3 -c 'import ezdxf; ezdxf.readfile(\"" + path + "\")'";
    if (std::system(command.c_str()) == 0) {
      const double theirs = timer.seconds();
      std::printf("independent reader (ezdxf): %.2f s, %.1f x our read time\n", theirs, theirs / ours);
    }
  } else {
    std::printf("independent reader (ezdxf) not installed: no comparison\n");
  }
  std::filesystem::remove(path);
  return 0;
}
