// dxfcheck IN [OUT]: reads a DXF drawing, prints what it holds (version,
// objects by class, repairs) and writes it to OUT when given.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>

#include "DbDatabase.h"
#include "DwgRead.h"
#include "DxfFile.h"

namespace {
const char kUsage[] =
    "usage: dxfcheck IN [OUT]\n"
    "Reads the DXF drawing IN and prints its version, its objects by class and\n"
    "every repair the reader made, each with the line of IN it concerns.\n"
    "With OUT, writes the repaired drawing there.\n"
    "Exit status: 0 read (repairs or not), 1 refused or not written, 2 bad arguments.\n";
}

int main(int argc, char** argv) {
  if (argc == 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  if (argc < 2 || argc > 3 || (argv[1][0] == '-' && argv[1][1] != '\0')) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  try {
    OdDxfReadReport report;
    OdDbDatabasePtr db = odDxfReadFile(OdString(argv[1]), &report);
    char start[6] = {};
    std::ifstream(argv[1], std::ios::binary).read(start, sizeof start);
    const char* format = odIsDwgData(std::string_view(start, sizeof start)) ? "DWG" : report.binary ? "binary DXF" : "ASCII DXF";
    std::printf("%s: %s %s\n", argv[1], format,
                report.versionName.isEmpty() ? "(no version)" : report.versionName.toUtf8().c_str());
    std::map<std::string, int> counts;
    size_t erased = 0;
    db->forEachObjectId([&](const OdDbObjectId& id) {
      if (id.isErased()) {
        ++erased;
        return;
      }
      OdDbObjectPtr object = id.openObject();
      OdString name = object->dxfName();
      counts[(name.isEmpty() ? object->isA()->name() : name).toUtf8() + " (" + object->isA()->name().toUtf8() + ")"]++;
    });
    size_t total = 0;
    for (const auto& [name, count] : counts) {
      std::printf("  %7d  %s\n", count, name.c_str());
      total += static_cast<size_t>(count);
    }
    std::printf("  %7zu  objects in all, handle seed %s\n", total, db->handseed().ascii().toUtf8().c_str());
    std::printf("%zu repair%s\n", report.repairs.size(), report.repairs.size() == 1 ? "" : "s");
    for (const auto& repair : report.repairs) std::printf("repaired: %s\n", repair.toUtf8().c_str());
    if (argc == 3) {
      odDxfWriteFile(db.get(), OdString(argv[2]));
      std::printf("written: %s (%s)\n", argv[2], OdString(odDxfVersionName(odDxfSaveVersion(db.get()))).toUtf8().c_str());
    }
    return 0;
  } catch (const OdError& error) {
    std::fprintf(stderr, "dxfcheck: %s: %s\n", argv[1], error.description().toUtf8().c_str());
    return 1;
  }
}
