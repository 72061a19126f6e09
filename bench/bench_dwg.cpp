// Reads every R13-R2000 DWG drawing of the corpus many times, and the same
// drawing saved as DXF as many times, and prints the time of a read of each
// (the fastest of the reads). The DWG reader's objects go to the DXF reader
// as tags in memory, so the DWG figure is the decoding plus the building of
// the objects, the DXF figure the text's tokenizing plus the same building.
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "DbDatabase.h"
#include "DwgRead.h"
#include "DxfFile.h"

namespace {

// The fastest of `times` reads: on a shared machine the others measure the
// machine's other work as well.
double secondsPerRead(const std::string& data, bool dwg, int times) {
  double best = 1e30;
  for (int i = 0; i < times; ++i) {
    const auto start = std::chrono::steady_clock::now();
    OdDbDatabasePtr db = dwg ? odDwgReadBuffer(data) : odDxfReadBuffer(data);
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return best;
}

}  // namespace

int main(int argc, char** argv) {
  const int times = argc > 1 ? std::atoi(argv[1]) : 20;
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(std::string(KESTRIX_CORPUS_DIR) + "/dwg")) {
    if (entry.path().extension() != ".dwg") continue;
    char version[7] = {};
    std::ifstream(entry.path(), std::ios::binary).read(version, 6);
    const std::string v(version);
    if (v == "AC1012" || v == "AC1014" || v == "AC1015") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  std::printf("%-28s %9s %9s %10s %10s %6s\n", "drawing", "DWG KB", "objects", "DWG ms", "DXF ms", "ratio");
  double dwgTotal = 0, dxfTotal = 0;
  for (const auto& path : files) {
    std::ifstream in(path, std::ios::binary);
    const std::string dwg((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    OdDbDatabasePtr db = odDwgReadBuffer(dwg);
    size_t objects = 0;
    db->forEachObjectId([&](const OdDbObjectId&) { ++objects; });
    const std::string dxf = odDxfWriteBuffer(db.get(), odDxfSaveVersion(db.get()));
    const double a = secondsPerRead(dwg, true, times), b = secondsPerRead(dxf, false, times);
    dwgTotal += a;
    dxfTotal += b;
    std::printf("%-28s %9zu %9zu %10.3f %10.3f %6.2f\n", path.filename().string().c_str(), dwg.size() / 1024, objects,
                a * 1e3, b * 1e3, a / b);
  }
  std::printf("%-28s %9s %9s %10.3f %10.3f %6.2f\n", "all", "", "", dwgTotal * 1e3, dxfTotal * 1e3, dwgTotal / dxfTotal);
  return 0;
}
