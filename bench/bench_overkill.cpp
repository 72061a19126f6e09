// Overkill of the kestrix module in a host session, on generated drawings of
// 10,000, 100,000 and 1,000,000 lines, arcs and lightweight polylines: 80%
// placed at random, 10% exact copies of some of them and 10% shifted copies
// that overlap their original. Prints the time of each run, the time per
// object, and the counts the command reported.
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbPolyline.h"
#include "bench_entities.h"
#include "bench_module_command.h"

namespace {

constexpr double kTarget = 10.0;  // seconds for 1,000,000 objects
constexpr double kPi = 3.14159265358979323846;

OdDbDatabasePtr buildDrawing(int count) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  std::mt19937_64 random(count);
  std::uniform_real_distribution<double> coordinate(0, 100000), unit(0, 1);
  const int originals = count * 8 / 10;
  struct Shape {
    int kind;
    OdGePoint3d a, b;
    double radius, start, end;
  };
  std::vector<Shape> shapes;
  shapes.reserve(originals);
  auto add = [&](const Shape& s, double shift) {
    if (s.kind == 0) {
      OdDbLinePtr line = OdDbLine::createObject();
      const OdGeVector3d d = (s.b - s.a) * shift;
      line->setStartPoint(s.a + d);
      line->setEndPoint(s.b + d);
      space->appendOdDbEntity(line.get());
    } else if (s.kind == 1) {
      OdSmartPtr<OdDbArc> arc = OdDbArc::createObject();
      arc->setCenter(s.a);
      arc->setRadius(s.radius);
      arc->setStartAngle(s.start + shift);
      arc->setEndAngle(s.end + shift);
      space->appendOdDbEntity(arc.get());
    } else {
      OdDbPolylinePtr pline = OdDbPolyline::createObject();
      const OdGeVector3d d = (s.b - s.a) * shift;
      pline->addVertexAt(0, OdGePoint2d(s.a.x + d.x, s.a.y + d.y));
      pline->addVertexAt(1, OdGePoint2d(s.b.x + d.x, s.b.y + d.y));
      pline->addVertexAt(2, OdGePoint2d(s.b.x + d.x + 3, s.b.y + d.y + 7), 0.5);
      pline->addVertexAt(3, OdGePoint2d(s.b.x + d.x + 9, s.b.y + d.y + 2));
      space->appendOdDbEntity(pline.get());
    }
  };
  for (int i = 0; i < originals; ++i) {
    Shape s{};
    s.kind = i % 10 < 4 ? 0 : (i % 10 < 7 ? 1 : 2);
    s.a = OdGePoint3d(coordinate(random), coordinate(random), 0);
    const double angle = unit(random) * 2 * kPi, length = 5 + unit(random) * 50;
    s.b = s.a + OdGeVector3d(std::cos(angle), std::sin(angle), 0) * length;
    s.radius = 2 + unit(random) * 30;
    s.start = unit(random) * 2 * kPi;
    s.end = s.start + 0.5 + unit(random) * 2;
    shapes.push_back(s);
    add(s, 0);
  }
  // Exact copies, then copies shifted by a third of their length or sweep.
  for (int i = 0; i < count / 10; ++i) add(shapes[(static_cast<long long>(i) * 7919) % originals], 0);
  for (int i = 0; i < count - originals - count / 10; ++i) {
    const Shape& s = shapes[(static_cast<long long>(i) * 104729 + 1) % originals];
    add(s, s.kind == 1 ? (s.end - s.start) / 3 : 1.0 / 3);
  }
  return db;
}

std::string lastLineWith(const std::string& all, const char* text) {
  const size_t at = all.rfind(text);
  if (at == std::string::npos) return std::string("no line with ") + text;
  const size_t start = all.rfind('\n', at) + 1;
  return all.substr(start, all.find('\n', at) - start);
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sizes = {10000, 100000, 1000000};
  if (argc > 1) sizes = {std::atoi(argv[1])};
  const std::string folder = benchScratchFolder("overkill");
  ryhost::Host& host = ryhost::Host::instance();
  double firstPerObject = 0, lastPerObject = 0, lastSeconds = 0, lastProcessor = 0;
  for (int count : sizes) {
    ryhost::ListInput input;
    ryhost::StringTranscript transcript;
    BenchTimer step;
    startModuleSession(buildDrawing(count), folder, input, transcript);
    const double built = step.seconds();
    for (const char* reply : {"Overkill", "ALL", "", "OK"}) input.add(OdString(reply));
    step.restart();
    const std::clock_t cpu = std::clock();
    host.runCommandLine();
    const double seconds = step.seconds();
    const double processor = double(std::clock() - cpu) / CLOCKS_PER_SEC;
    const std::string text = transcript.text().toUtf8();
    const double perObject = seconds / count * 1e6;
    if (firstPerObject == 0) firstPerObject = perObject;
    lastPerObject = perObject, lastSeconds = seconds, lastProcessor = processor;
    std::printf("%8d objects: built in %6.2f s; Overkill %7.3f s (processor %7.3f s), %6.2f us per object; %s; %s\n",
                count, built, seconds, processor, perObject, lastLineWith(text, "duplicate").c_str(),
                lastLineWith(text, "overlapping").c_str());
    std::fflush(stdout);
  }
  if (sizes.size() > 1) {
    std::printf("time per object grows %.2fx from %d to %d objects (target at most 2x: %s)\n",
                lastPerObject / firstPerObject, sizes.front(), sizes.back(),
                lastPerObject <= 2 * firstPerObject ? "met" : "MISSED");
    // On a shared machine the wall time includes waiting for a processor;
    // the processor time is what the command itself took.
    std::printf("%d objects in %.2f s wall, %.2f s processor (target < %.0f s: %s by wall time, %s by processor time)\n",
                sizes.back(), lastSeconds, lastProcessor, kTarget, lastSeconds < kTarget ? "met" : "missed",
                lastProcessor < kTarget ? "met" : "missed");
  }
  std::printf("peak resident %.1f MB\n", benchPeakResident() / 1e6);
  host.reset();
  std::filesystem::remove_all(folder);
  return 0;
}
