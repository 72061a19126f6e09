// Reads every R13-R2004 DWG drawing of the corpus many times, and the same
// drawing saved as DXF as many times, and prints the time per read of each
// (the DWG reader's objects go through the DXF reader's field tables, so the
// DWG figure includes a DXF read of the decoded objects). Where the corpus
// has the drawing's DXF twin (saved by the program that made it), its read
// time is printed too.
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

double secondsPerRead(const std::string& data, bool dwg, int times) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < times; ++i) {
    OdDbDatabasePtr db = dwg ? odDwgReadBuffer(data) : odDxfReadBuffer(data);
  }
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / times;
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
    if (v == "AC1012" || v == "AC1014" || v == "AC1015" || v == "AC1018") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  std::printf("%-28s %9s %9s %10s %10s %6s %10s\n", "drawing", "DWG KB", "objects", "DWG ms", "DXF ms", "ratio", "twin ms");
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
    std::filesystem::path twinPath = path;
    twinPath.replace_extension(".dxf");
    std::string twinTime = "-";
    if (std::filesystem::exists(twinPath)) {
      std::ifstream twinIn(twinPath, std::ios::binary);
      const std::string twin((std::istreambuf_iterator<char>(twinIn)), std::istreambuf_iterator<char>());
      char text[32];
      std::snprintf(text, sizeof text, "%.3f", secondsPerRead(twin, false, times) * 1e3);
      twinTime = text;
    }
    std::printf("%-28s %9zu %9zu %10.3f %10.3f %6.2f %10s\n", path.filename().string().c_str(), dwg.size() / 1024, objects,
                a * 1e3, b * 1e3, a / b, twinTime.c_str());
  }
  std::printf("%-28s %9s %9s %10.3f %10.3f %6.2f\n", "all", "", "", dwgTotal * 1e3, dxfTotal * 1e3, dwgTotal / dxfTotal);
  return 0;
}
