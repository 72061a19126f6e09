// Reads every DWG drawing of the corpus that the reader opens many times,
// and the same drawing saved as DXF as many times, and prints the time of a
// read of each (the fastest of the reads). The DWG reader's objects go to the
// DXF reader as tags in memory (extended records' data straight into the
// records), so the DWG figure is the decoding plus the building of the
// objects, the DXF figure the text's tokenizing plus the same building.
// Where the corpus has the drawing's DXF twin (saved by the program that
// made it), its read time is printed too.
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
template <class Read>
double secondsPerRead(const std::string& data, Read read, int times) {
  double best = 1e30;
  for (int i = 0; i < times; ++i) {
    const auto start = std::chrono::steady_clock::now();
    OdDbDatabasePtr db = read(data);
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return best;
}

// One function per kind of read, so that an instruction counter can count
// each apart (valgrind --tool=callgrind --toggle-collect='timeDwgReads*').
[[gnu::noipa]] double timeDwgReads(const std::string& data, int times) { return secondsPerRead(data, [](const std::string& d) { return odDwgReadBuffer(d); }, times); }
[[gnu::noipa]] double timeDxfReads(const std::string& data, int times) { return secondsPerRead(data, [](const std::string& d) { return odDxfReadBuffer(d); }, times); }
[[gnu::noipa]] double timeTwinReads(const std::string& data, int times) { return secondsPerRead(data, [](const std::string& d) { return odDxfReadBuffer(d); }, times); }

struct Totals {
  double dwg = 0, dxf = 0;
};

// Reads the drawings of the given versions and prints their times and the
// group's total, which it returns. A drawing the reader refuses is named
// and left out.
Totals benchVersions(const char* title, const std::vector<std::string>& versions, int times, const std::string& only) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(std::string(KESTRIX_CORPUS_DIR) + "/dwg")) {
    if (entry.path().extension() != ".dwg") continue;
    if (!only.empty() && entry.path().filename().string().find(only) == std::string::npos) continue;
    char version[7] = {};
    std::ifstream(entry.path(), std::ios::binary).read(version, 6);
    if (std::find(versions.begin(), versions.end(), std::string(version)) != versions.end()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  std::printf("%s\n%-28s %9s %9s %10s %10s %6s %10s\n", title, "drawing", "DWG KB", "objects", "DWG ms", "DXF ms", "ratio", "twin ms");
  double dwgTotal = 0, dxfTotal = 0;
  for (const auto& path : files) {
    std::ifstream in(path, std::ios::binary);
    const std::string dwg((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    OdDbDatabasePtr db;
    try {
      db = odDwgReadBuffer(dwg);
    } catch (const OdError&) {
      std::printf("%-28s not read\n", path.filename().string().c_str());
      continue;
    }
    size_t objects = 0;
    db->forEachObjectId([&](const OdDbObjectId&) { ++objects; });
    const std::string dxf = odDxfWriteBuffer(db.get(), odDxfSaveVersion(db.get()));
    const double a = timeDwgReads(dwg, times), b = timeDxfReads(dxf, times);
    dwgTotal += a;
    dxfTotal += b;
    std::filesystem::path twinPath = path;
    twinPath.replace_extension(".dxf");
    std::string twinTime = "-";
    if (std::filesystem::exists(twinPath)) {
      std::ifstream twinIn(twinPath, std::ios::binary);
      const std::string twin((std::istreambuf_iterator<char>(twinIn)), std::istreambuf_iterator<char>());
      char text[32];
      std::snprintf(text, sizeof text, "%.3f", timeTwinReads(twin, times) * 1e3);
      twinTime = text;
    }
    std::printf("%-28s %9zu %9zu %10.3f %10.3f %6.2f %10s\n", path.filename().string().c_str(), dwg.size() / 1024, objects,
                a * 1e3, b * 1e3, a / b, twinTime.c_str());
  }
  if (dxfTotal > 0) std::printf("%-28s %9s %9s %10.3f %10.3f %6.2f\n\n", "all", "", "", dwgTotal * 1e3, dxfTotal * 1e3, dwgTotal / dxfTotal);
  return {dwgTotal, dxfTotal};
}

}  // namespace

// By group of versions, since each group keeps its sections in its own
// container: R13-R2000 plain, R2004 on paged, R2007 Reed-Solomon coded.
int main(int argc, char** argv) {
  const int times = argc > 1 ? std::atoi(argv[1]) : 20;
  // A second argument keeps the drawings whose names contain it.
  const std::string only = argc > 2 ? argv[2] : "";
  Totals all;
  for (const Totals& group : {benchVersions("R13 to R2004", {"AC1012", "AC1014", "AC1015", "AC1018"}, times, only),
                              benchVersions("R2007", {"AC1021"}, times, only),
                              benchVersions("R2010 on", {"AC1024", "AC1027", "AC1032"}, times, only)}) {
    all.dwg += group.dwg;
    all.dxf += group.dxf;
  }
  if (all.dxf > 0) {
    std::printf("%-28s %9s %9s %10.3f %10.3f %6.2f\n", "every drawing", "", "", all.dwg * 1e3, all.dxf * 1e3, all.dwg / all.dxf);
  }
  return 0;
}
