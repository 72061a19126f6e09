// Entity-data lists over every entity of the corpus drawings: rydbEntGet
// (the list as result buffers, freed again) and the tags the selection
// filters test (entityTags into one list used again). Each pass goes over
// every entity once; prints entities per second of the best, median and
// worst of the passes (the machine is shared: the spread shows the noise).
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "DxfFile.h"
#include "bench_util.h"
#include "core/Host.h"
#include "rydb.h"
#include "ryut.h"
#include "sdk/EntityLists.h"

namespace {

struct Named {
  ads_name name;
};

// Every entity of the current document, subentities included, in drawing order.
void collectEntities(std::vector<Named>& out) {
  ads_name at = {0, 0}, next;
  bool first = true;
  while (rydbEntNext(first ? nullptr : at, next) == RTNORM) {
    out.push_back({{next[0], next[1]}});
    at[0] = next[0];
    at[1] = next[1];
    first = false;
  }
}

double threadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

// Rates by wall time and by the thread's processor time (less disturbed by
// other work on the machine).
void measure(const char* what, size_t entities, int passes, const std::function<void()>& pass) {
  std::vector<double> rates, cpuRates;
  for (int run = 0; run < passes; ++run) {
    BenchTimer timer;
    const double cpu = threadSeconds();
    pass();
    rates.push_back(double(entities) / timer.seconds());
    cpuRates.push_back(double(entities) / (threadSeconds() - cpu));
  }
  std::sort(rates.begin(), rates.end());
  std::sort(cpuRates.begin(), cpuRates.end());
  std::printf("%-24s wall %9.0f entities/s best, %9.0f median, %9.0f worst; processor %9.0f best, %9.0f median\n",
              what, rates.back(), rates[rates.size() / 2], rates.front(), cpuRates.back(),
              cpuRates[cpuRates.size() / 2]);
}

}  // namespace

int main(int argc, char** argv) {
  const int passes = argc > 1 ? std::atoi(argv[1]) : 60;
  ryhost::Host& host = ryhost::Host::instance();
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(KESTRIX_CORPUS_DIR)) {
    if (entry.path().extension() == ".dxf") files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  std::vector<Named> entities;
  BenchTimer load;
  for (const std::string& file : files) {
    OdDbDatabasePtr db = odDxfReadFile(OdString(file.c_str()));
    if (db.isNull()) continue;
    host.setCurDocument(host.addDocument(db, OdString()));
    collectEntities(entities);
  }
  std::printf("%-24s %7.2f s (%zu drawings, %zu entities, %d passes over them)\n", "read corpus", load.seconds(), files.size(),
              entities.size(), passes);

  size_t groups = 0;
  measure("rydbEntGet", entities.size(), passes, [&] {
    groups = 0;
    for (const Named& entity : entities) {
      resbuf* list = rydbEntGet(entity.name);
      for (const resbuf* rb = list; rb; rb = rb->rbnext) ++groups;
      ryutRelRb(list);
    }
  });
  std::printf("%-24s %zu groups per pass\n", "", groups);

  std::vector<const OdDbObject*> objects;
  for (const Named& entity : entities) {
    OdDbObjectId id;
    if (rydbGetObjectId(id, entity.name) == RTNORM) objects.push_back(id.stub()->object);
  }
  OdDxfTagList tags;
  measure("entity tags (filters)", objects.size(), passes, [&] {
    for (const OdDbObject* object : objects) ryhost::entityTags(object, tags, true);
  });
  host.reset();
  return 0;
}
