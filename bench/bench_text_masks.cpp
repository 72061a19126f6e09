// textmask, textunmask and txt2mtxt of the kestrix module in a host session,
// on drawings of n texts (n doubling): every text is masked ("ALL"), every
// mask removed again, and every text merged into one multiline text. Prints
// the time of each and the ratio to the run at half the size; a ratio near 2
// is linear growth (n log n shows slightly above 2), near 4 quadratic.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbText.h"
#include "RyWindows.h"
#include "bench_entities.h"
#include "bench_module_command.h"

namespace {

OdDbDatabasePtr buildDrawing(int count) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  for (int i = 0; i < count; ++i) {
    OdDbTextPtr text = OdDbText::createObject();
    text->setDatabaseDefaults(db.get());
    text->setTextString(OdString().format(L"Room %d", i));
    text->setHeight(0.5 + (i % 3) * 0.25);
    text->setColorIndex(static_cast<OdInt16>(1 + i % 4));
    text->setPosition({(i % 500) * 10.0, (i / 500) * 3.0, 0});
    space->appendOdDbEntity(text.get());
  }
  return db;
}

}  // namespace

int main(int argc, char** argv) {
  const int largest = argc > 1 ? std::atoi(argv[1]) : 32000;
  const std::string folder = benchScratchFolder("text");
  ryhost::ListInput input;
  ryhost::StringTranscript transcript;
  auto run = [&](std::initializer_list<const char*> replies) {
    for (const char* reply : replies) input.add(OdString(reply));
    BenchTimer timer;
    ryhost::Host::instance().runCommandLine();
    return timer.seconds();
  };

  std::printf("%8s %12s %6s %12s %6s %12s %6s\n", "texts", "textmask s", "ratio", "textunmask s", "ratio",
              "txt2mtxt s", "ratio");
  double previous[3] = {0, 0, 0};
  for (int count = 1000; count <= largest; count *= 2) {
    startModuleSession(buildDrawing(count), folder, input, transcript);
    WritePrivateProfileStringW(L"RYADEXCMD", L"TXT2MTXT_MERGEMTEXT", L"TRUE", L"RYAD.INI");
    const double times[3] = {run({"textmask", "ALL", ""}), run({"textunmask", "ALL", ""}),
                             run({"txt2mtxt", "ALL", ""})};
    std::printf("%8d", count);
    for (int k = 0; k < 3; ++k) {
      std::printf(" %12.4f %6.2f", times[k], previous[k] > 0 ? times[k] / previous[k] : 0.0);
      previous[k] = times[k];
    }
    std::printf("\n");
    std::fflush(stdout);
  }
  ryhost::Host::instance().reset();
  std::filesystem::remove_all(folder);
  return 0;
}
