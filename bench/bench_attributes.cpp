// attout and attin of the kestrix module in a host session: a drawing of
// 100,000 block references with 5 attributes each is exported, every value
// of the file is changed, and the file is imported (then the original file,
// so that each import changes every row). Prints wall and processor time of
// each run, the best of three against the target.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "bench_entities.h"
#include "bench_module_command.h"
#include "bench_util.h"
#include "core/Host.h"
#include "core/Modules.h"

namespace {

constexpr int kAttributes = 5;
constexpr double kTarget = 2.0;

OdDbDatabasePtr buildDrawing(int count) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbObjectId blockId;
  {
    OdSmartPtr<OdDbSymbolTable> table =
        OdDbSymbolTable::cast(db->getBlockTableId().safeOpenObject(OdDb::kForWrite));
    OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::createObject();
    block->setName(L"ROOM");
    blockId = table->add(block.get());
    OdDbLinePtr line = OdDbLine::createObject();
    line->setEndPoint({1, 1, 0});
    block->appendOdDbEntity(line.get());
  }
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  static const wchar_t* const kTags[kAttributes] = {L"NUMBER", L"NAME", L"AREA", L"FLOOR", L"USE"};
  for (int i = 0; i < count; ++i) {
    OdDbBlockReferencePtr ref = OdDbBlockReference::createObject();
    ref->setBlockTableRecord(blockId);
    space->appendOdDbEntity(ref.get());
    const double x = (i % 1000) * 10.0, y = (i / 1000) * 10.0;
    ref->setPosition({x, y, 0});
    for (int k = 0; k < kAttributes; ++k) {
      OdSmartPtr<OdDbAttribute> attribute = OdDbAttribute::createObject();
      attribute->setTag(kTags[k]);
      attribute->setTextString(OdString().format(L"%ls-%d", kTags[k], i));
      attribute->setPosition({x, y + 0.3 * k, 0});
      attribute->setHeight(0.25);
      ref->appendAttribute(attribute.get());
    }
  }
  return db;
}

std::string readAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

// The file with "x" after every value of every data row.
std::string everyValueChanged(const std::string& file) {
  std::string result;
  result.reserve(file.size() + file.size() / 4);
  std::istringstream in(file);
  bool header = true;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!header) {
      size_t tabs = 0;
      std::string changed;
      for (char c : line) {
        if (c == '\t' && ++tabs > 2) changed += 'x';
        changed += c;
      }
      line = changed + 'x';
    }
    header = false;
    result += line + "\r\n";
  }
  return result;
}

struct Figures {
  double first = 0, best = 1e30, bestCpu = 1e30;
};

void timeRun(Figures& figures, int run, const std::function<void()>& step) {
  BenchTimer timer;
  const std::clock_t cpu = std::clock();
  step();
  const double seconds = timer.seconds();
  if (run == 0) figures.first = seconds;
  figures.best = std::min(figures.best, seconds);
  figures.bestCpu = std::min(figures.bestCpu, double(std::clock() - cpu) / CLOCKS_PER_SEC);
}

void print(const char* what, const Figures& figures, const std::string& result) {
  std::printf("%-28s %7.4f s first, %7.4f s best, processor %7.4f s (%s; target < %.1f s: %s)\n", what,
              figures.first, figures.best, figures.bestCpu, result.c_str(), kTarget,
              figures.best < kTarget ? "met" : "MISSED");
}

// The last line of the command line's text that holds the text given.
std::string lastLineWith(const OdString& transcript, const char* text) {
  const std::string all = transcript.toUtf8();
  const size_t at = all.rfind(text);
  if (at == std::string::npos) return "not found: " + std::string(text);
  const size_t start = all.rfind('\n', at) + 1;
  return all.substr(start, all.find('\n', at) - start);
}

}  // namespace

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 100000;
  const std::string folder = benchScratchFolder("attributes");
  const std::string exported = folder + "/exported.txt", edited = folder + "/edited.txt";

  BenchTimer step;
  OdDbDatabasePtr db = buildDrawing(count);
  std::printf("%-28s %7.4f s (%d references, %d attributes each)\n", "build drawing", step.seconds(), count,
              kAttributes);

  ryhost::ListInput input;
  ryhost::StringTranscript transcript;
  ryhost::Host& host = startModuleSession(db, folder, input, transcript);
  auto run = [&](std::initializer_list<const char*> replies) {
    for (const char* reply : replies) input.add(OdString(reply));
    host.runCommandLine();
  };

  Figures out;
  for (int i = 0; i < 3; ++i) {
    std::filesystem::remove(exported);
    timeRun(out, i, [&] { run({"attout", exported.c_str(), "ALL", ""}); });
  }
  const std::string original = readAll(exported);
  print("attout", out, std::to_string(original.size() / 1000) + " kB written");
  std::ofstream(edited, std::ios::binary) << everyValueChanged(original);

  // Edited, original, edited: each import changes every reference.
  Figures in;
  for (int i = 0; i < 3; ++i)
    timeRun(in, i, [&] { run({"attin", i == 1 ? exported.c_str() : edited.c_str()}); });
  print("attin (every row changed)", in, lastLineWith(transcript.text(), "block references updated"));

  step.restart();
  run({"U"});
  std::printf("%-28s %7.4f s\n", "U (one import undone)", step.seconds());
  std::printf("%-28s %7.1f MB\n", "peak resident", benchPeakResident() / 1e6);
  host.reset();
  std::filesystem::remove_all(folder);
  return 0;
}
