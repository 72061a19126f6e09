// tcase and tcount of the kestrix module in a host session, on drawings of
// n, 2n, 4n and 8n single-line texts (n = 10,000 unless given): each command
// runs on every text. Prints the time of each run and the time per text,
// which stays flat when the work grows as n log n or better.
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbText.h"
#include "bench_entities.h"
#include "bench_module_command.h"
#include "bench_util.h"
#include "core/Host.h"
#include "core/Modules.h"

namespace {

OdDbDatabasePtr buildDrawing(int count) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  for (int i = 0; i < count; ++i) {
    OdDbTextPtr text = OdDbText::createObject();
    text->setTextString(OdString().format(L"room %d. north wing", i));
    text->setHeight(2.5);
    space->appendOdDbEntity(text.get());
    // Scattered in X so that the sort has work to do.
    text->setPosition({static_cast<double>((i * 7919) % count), static_cast<double>(i % 100), 0});
  }
  return db;
}

}  // namespace

int main(int argc, char** argv) {
  const int base = argc > 1 ? std::atoi(argv[1]) : 10000;
  const std::string folder = benchScratchFolder("text-adjust");
  ryhost::Host& host = ryhost::Host::instance();
  ryhost::ListInput input;
  ryhost::StringTranscript transcript;
  std::printf("%-34s %9s %11s %14s\n", "command", "texts", "seconds", "us per text");
  for (int factor = 1; factor <= 8; factor *= 2) {
    const int count = base * factor;
    startModuleSession(buildDrawing(count), folder, input, transcript);
    auto timed = [&](const char* what, std::initializer_list<const char*> replies) {
      for (const char* reply : replies) input.add(OdString(reply));
      BenchTimer timer;
      host.runCommandLine();
      const double seconds = timer.seconds();
      std::printf("%-34s %9d %11.4f %14.3f\n", what, count, seconds, seconds / count * 1e6);
    };
    timed("tcase (Title Case)", {"tcase", "ALL", "", "3117", "OK"});
    timed("tcount (sorted by X, suffix)", {"tcount", "ALL", "", "X", "1,1", "Suffix"});
    timed("tcount (selection order, prefix)", {"tcount", "ALL", "", "Select-order", "1,1", "Prefix"});
  }
  std::printf("%-34s %9.1f MB\n", "peak resident", benchPeakResident() / 1e6);
  host.reset();
  std::filesystem::remove_all(folder);
  return 0;
}
