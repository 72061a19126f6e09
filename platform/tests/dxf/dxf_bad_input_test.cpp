// Files made to break the reader and what comes after it: blocks that contain
// themselves, angles of astronomic size, numbers that are not numbers, and
// paths that are not plain files. Each is read (repaired and reported) or
// refused; nothing hangs, crashes or writes through to the wrong place.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include <sys/stat.h>
#include <unistd.h>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbHatch.h"
#include "DbDatabase.h"
#include "DbPolyline.h"
#include "DbSymbolTable.h"
#include "DxfFile.h"
#include "Ge/GeCircArc3d.h"
#include "Ge/GeEllipArc3d.h"
#include "ge/GeInternal.h"

namespace {

// A DXF text from "code value" lines, one group a line.
std::string groups(const std::string& lines) {
  std::istringstream in(lines);
  std::string out, line;
  while (std::getline(in, line)) {
    const size_t start = line.find_first_not_of(' ');
    if (start == std::string::npos) continue;
    const size_t space = line.find(' ', start);
    out += line.substr(start, space - start) + "\n" + (space == std::string::npos ? "" : line.substr(space + 1)) + "\n";
  }
  return out;
}

std::string blocksAndEntities(const std::string& blocks, const std::string& entities) {
  return groups("0 SECTION\n2 BLOCKS\n" + blocks + "0 ENDSEC\n0 SECTION\n2 ENTITIES\n" + entities +
                "0 ENDSEC\n0 EOF\n");
}

std::string block(const std::string& name, const std::string& body) {
  return "0 BLOCK\n8 0\n2 " + name + "\n70 0\n10 0\n20 0\n30 0\n" + body + "0 ENDBLK\n8 0\n";
}

std::string insert(const std::string& name, double x = 0) {
  return "0 INSERT\n8 0\n2 " + name + "\n10 " + std::to_string(x) + "\n20 0\n30 0\n";
}

std::string line(double x0, double y0, double x1, double y1) {
  return "0 LINE\n8 0\n10 " + std::to_string(x0) + "\n20 " + std::to_string(y0) + "\n30 0\n11 " + std::to_string(x1) +
         "\n21 " + std::to_string(y1) + "\n31 0\n";
}

std::vector<OdString> repairsWith(const OdDxfReadReport& report, const wchar_t* text) {
  std::vector<OdString> found;
  for (const auto& repair : report.repairs) {
    if (repair.find(text) >= 0) found.push_back(repair);
  }
  return found;
}

OdDbEntityPtr firstInModelSpace(OdDbDatabase* db) {
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject());
  return OdDbEntity::cast(space->entityIds().at(0).safeOpenObject());
}

}  // namespace

TEST(BadInput, BlocksThatContainThemselvesAreReportedAndMeasuredOnce) {
  // A -> B -> A, and C -> C; A also holds a line from (0,0) to (10,5).
  const std::string text = blocksAndEntities(
      block("A", line(0, 0, 10, 5) + insert("B", 100)) + block("B", insert("A", 1000)) + block("C", insert("C", 7)),
      insert("A") + insert("C"));
  OdDxfReadReport report;
  OdDbDatabasePtr db = odDxfReadBuffer(text, &report);
  const auto cycles = repairsWith(report, L"contains a reference to itself");
  ASSERT_EQ(cycles.size(), 2u);
  EXPECT_TRUE(cycles[0].find(L"A -> B -> A") >= 0 || cycles[1].find(L"A -> B -> A") >= 0);
  EXPECT_TRUE(cycles[0].find(L"C -> C") >= 0 || cycles[1].find(L"C -> C") >= 0);

  // Extents walk A, then B at 100, then stop at A: the line and the two insertion points.
  OdDbEntityPtr reference = firstInModelSpace(db.get());
  OdGeExtents3d extents;
  ASSERT_EQ(reference->getGeomExtents(extents), eOk);
  EXPECT_DOUBLE_EQ(extents.minPoint().x, 0.0);
  EXPECT_DOUBLE_EQ(extents.maxPoint().x, 1100.0);
  EXPECT_DOUBLE_EQ(extents.maxPoint().y, 5.0);
  // Distance to the line's end, through the same guard.
  EXPECT_NEAR(reference->distanceTo(OdGePoint3d(10, 8, 0)), 3.0, 1e-9);

  // A chain deeper than the walk allows ends without exhausting the stack.
  std::string deep;
  const int depth = OdDbBlockWalk::kMaxDepth * 4;
  for (int i = 0; i < depth; ++i) deep += block("D" + std::to_string(i), insert("D" + std::to_string(i + 1), 1));
  deep += block("D" + std::to_string(depth), line(0, 0, 1, 1));
  db = odDxfReadBuffer(blocksAndEntities(deep, insert("D0")));
  ASSERT_EQ(firstInModelSpace(db.get())->getGeomExtents(extents), eOk);
  EXPECT_DOUBLE_EQ(extents.maxPoint().x, OdDbBlockWalk::kMaxDepth);  // one unit further per level entered
}

TEST(BadInput, AnglesOfManyTurnsAreBroughtIntoTheFirstTurnAndNeverStall) {
  // 1e20 degrees: far beyond where adding a turn changes the number.
  const std::string text =
      blocksAndEntities("", "0 ARC\n8 0\n10 0\n20 0\n30 0\n40 2\n50 1e20\n51 1.00000000000001e20\n"
                            "0 ARC\n8 0\n10 0\n20 0\n30 0\n40 1\n50 1530\n51 -1710\n");
  OdDxfReadReport report;
  OdDbDatabasePtr db = odDxfReadBuffer(text, &report);
  EXPECT_EQ(repairsWith(report, L"startAngle").size(), 2u);
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject());
  OdDbArcPtr huge = OdDbArc::cast(space->entityIds()[0].safeOpenObject());
  EXPECT_GE(huge->startAngle(), 0.0);
  EXPECT_LT(huge->startAngle(), 2 * M_PI);
  OdGeExtents3d extents;
  EXPECT_EQ(huge->getGeomExtents(extents), eOk);
  // 1530 degrees is four turns and 90; -1710 is five turns less than 90.
  OdDbArcPtr turned = OdDbArc::cast(space->entityIds()[1].safeOpenObject());
  EXPECT_NEAR(turned->startAngle(), M_PI / 2, 1e-12);
  EXPECT_NEAR(turned->endAngle(), M_PI / 2, 1e-12);

  // The curves themselves stop stepping at such parameters too: x = 3 cos t
  // over a span of many turns reaches both -3 and 3.
  double lo = 0, hi = 0;
  OdGeInternal::trigComponentRange(0.0, 3.0, 0.0, 1e20, 1e20 + 1e6, lo, hi);
  EXPECT_DOUBLE_EQ(lo, -3.0);
  EXPECT_DOUBLE_EQ(hi, 3.0);
  OdGeInternal::trigComponentRange(0.0, 3.0, 0.0, 1e20, 1e20, lo, hi);
  EXPECT_LE(hi, 3.0);
  OdGeCircArc3d arc(OdGePoint3d(), OdGeVector3d::kZAxis, OdGeVector3d::kXAxis, 3.0, 1e20, 1e20 + 1e6);
  EXPECT_LE(arc.geomExtents().maxPoint().x, 3.0 + 1e-9);
  OdGeEllipArc3d ellipse(OdGePoint3d(), OdGeVector3d::kXAxis, OdGeVector3d::kYAxis, 2.0, 1.0, 1e20, 1e20 + 1.0);
  EXPECT_TRUE(std::isfinite(ellipse.length(1e20, 1e20 + 4 * M_PI)));
  // Two whole turns of an ellipse are twice one.
  EXPECT_NEAR(ellipse.length(0.5, 0.5 + 4 * M_PI), 2 * ellipse.length(0.0, 2 * M_PI), 1e-9);
}

TEST(BadInput, NumbersThatAreNotFiniteOrFieldsOutOfRangeAreRepairedOncePerObject) {
  const std::string text = blocksAndEntities(
      "", "0 CIRCLE\n8 0\n10 nan\n20 1\n30 0\n40 inf\n210 0\n220 0\n230 0\n"
          "0 CIRCLE\n8 0\n10 1\n20 1\n30 0\n40 -4\n"
          "0 LINE\n8 0\n10 1e400\n20 0\n30 0\n11 1\n21 1\n31 0\n");
  OdDxfReadReport report;
  OdDbDatabasePtr db = odDxfReadBuffer(text, &report);
  const auto circles = repairsWith(report, L"CIRCLE had invalid values");
  ASSERT_EQ(circles.size(), 2u);
  EXPECT_GE(circles[0].find(L"center"), 0);
  EXPECT_GE(circles[0].find(L"radius"), 0);
  EXPECT_GE(circles[0].find(L"normal"), 0);
  EXPECT_GE(circles[1].find(L"radius"), 0);
  EXPECT_EQ(repairsWith(report, L"LINE had invalid values").size(), 1u);

  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject());
  OdDbCirclePtr first = OdDbCircle::cast(space->entityIds()[0].safeOpenObject());
  EXPECT_EQ(first->normal(), OdGeVector3d::kZAxis);
  EXPECT_TRUE(std::isfinite(first->radius()));
  EXPECT_TRUE(std::isfinite(first->center().x));
  OdDbLinePtr segment = OdDbLine::cast(space->entityIds()[2].safeOpenObject());
  EXPECT_EQ(segment->startPoint(), OdGePoint3d(0, 0, 0));
  // A zero vector that is no normal (a leader's offsets) is a value, not damage.
  OdDxfReadReport leaderReport;
  odDxfReadBuffer(blocksAndEntities("", "0 LEADER\n8 0\n100 AcDbEntity\n100 AcDbLeader\n71 1\n72 0\n76 2\n"
                                        "10 0\n20 0\n30 0\n10 1\n20 1\n30 0\n212 0\n222 0\n232 0\n"
                                        "213 0\n223 0\n233 0\n"),
                  &leaderReport);
  EXPECT_TRUE(repairsWith(leaderReport, L"had invalid values").empty()) << leaderReport.repairs.size();
  // What is written holds only numbers.
  const std::string written = odDxfWriteBuffer(db.get(), OdDb::vAC15);
  for (const char* word : {"nan", "inf", "NAN", "INF"}) EXPECT_EQ(written.find(word), std::string::npos) << word;
}

TEST(BadInput, EnumerationsOutOfTheirSetAreRepairedToTheDefaultOncePerObject) {
  // A paragraph text attached at 12 (of 1 to 9) running in direction 9, a
  // text aligned 9 / 7 (of 0-5 / 0-3) with generation 3, a line 17/100 mm
  // wide (no such weight), and a line with a valid weight.
  const std::string text = blocksAndEntities(
      "", "0 MTEXT\n8 0\n100 AcDbEntity\n100 AcDbMText\n10 1\n20 2\n30 0\n40 2.5\n71 12\n72 9\n1 note\n"
          "0 TEXT\n8 0\n100 AcDbEntity\n100 AcDbText\n10 0\n20 0\n30 0\n40 1\n1 label\n71 3\n72 9\n"
          "11 5\n21 0\n31 0\n100 AcDbText\n73 7\n"
          "0 LINE\n8 0\n100 AcDbEntity\n370 17\n100 AcDbLine\n10 0\n20 0\n30 0\n11 1\n21 1\n31 0\n"
          "0 LINE\n8 0\n100 AcDbEntity\n370 35\n100 AcDbLine\n10 0\n20 0\n30 0\n11 1\n21 1\n31 0\n");
  OdDxfReadReport report;
  OdDbDatabasePtr db = odDxfReadBuffer(text, &report);
  const auto mtexts = repairsWith(report, L"MTEXT had invalid values");
  ASSERT_EQ(mtexts.size(), 1u);
  EXPECT_GE(mtexts[0].find(L"attachment"), 0);
  EXPECT_GE(mtexts[0].find(L"flowDirection"), 0);
  const auto texts = repairsWith(report, L"TEXT had invalid values");
  ASSERT_EQ(texts.size(), 2u);  // the paragraph text's line, and the text's
  const OdString& textRepair = texts[0].find(L"MTEXT") >= 0 ? texts[1] : texts[0];
  for (const wchar_t* field : {L"horizontalMode", L"verticalMode", L"generation"}) {
    EXPECT_GE(textRepair.find(field), 0) << OdString(field).toUtf8();
  }
  ASSERT_EQ(repairsWith(report, L"LINE had invalid values").size(), 1u);
  EXPECT_GE(repairsWith(report, L"LINE had invalid values")[0].find(L"lineWeight"), 0);

  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject());
  OdDbEntityPtr wide = OdDbEntity::cast(space->entityIds()[2].safeOpenObject());
  EXPECT_EQ(wide->lineWeight(), OdDb::kLnWtByLayer);
  OdDbEntityPtr kept = OdDbEntity::cast(space->entityIds()[3].safeOpenObject());
  EXPECT_EQ(kept->lineWeight(), OdDb::kLnWt035);

  // An independent reader sees the defaults and finds nothing to fix.
  const auto dir = std::filesystem::temp_directory_path() / ("kestrix-enums-" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  const std::string path = (dir / "enums.dxf").string();
  odDxfWriteFile(db.get(), OdString(path));
  const std::string script =
      "import ezdxf, sys\n"
      "doc = ezdxf.readfile(sys.argv[1])\n"
      "auditor = doc.audit()\n"
      "e = list(doc.modelspace())\n"
      "print(len(auditor.errors), len(auditor.fixes), e[0].dxf.attachment_point, e[0].dxf.flow_direction,\n"
      "      e[1].dxf.halign, e[1].dxf.valign, e[1].dxf.text_generation_flag, e[2].dxf.lineweight, e[3].dxf.lineweight)\n";
  std::ofstream(dir / "check.py") << script;
  const std::string command = "/usr/bin/python3 '" + (dir / "check.py").string() + "' '" + path + "' 2>&1";
  std::string output;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    char buffer[512];
    while (size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, n);
    pclose(pipe);
  }
  std::filesystem::remove_all(dir);
  EXPECT_EQ(output, "0 0 1 1 0 0 0 -1 35\n");
}

namespace {

// A solid hatch over the unit square, one loop of four line edges, the
// second of the given edge type; the style and pattern type as given.
std::string squareHatch(int secondEdgeType, int style, int patternType) {
  std::string text = "0 HATCH\n5 " + std::to_string(0x100 + style) +
                     "\n8 0\n100 AcDbEntity\n100 AcDbHatch\n10 0\n20 0\n30 0\n210 0\n220 0\n230 1\n"
                     "2 SOLID\n70 1\n71 0\n91 1\n92 1\n93 4\n";
  const double corners[5][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}};
  for (int i = 0; i < 4; ++i) {
    text += "72 " + std::to_string(i == 1 ? secondEdgeType : 1) + "\n10 " + std::to_string(corners[i][0]) + "\n20 " +
            std::to_string(corners[i][1]) + "\n11 " + std::to_string(corners[i + 1][0]) + "\n21 " +
            std::to_string(corners[i + 1][1]) + "\n";
  }
  return text + "97 0\n75 " + std::to_string(style) + "\n76 " + std::to_string(patternType) + "\n98 0\n";
}

}  // namespace

TEST(BadInput, EnumerationsInsideRecordsAreRepairedToo) {
  // A hatch whose second edge is of kind 9 (of 1-4), style 5 (of 0-2) and
  // pattern type 7 (of 0-2); and a hatch whose values are all valid.
  OdDxfReadReport report;
  OdDbDatabasePtr db = odDxfReadBuffer(blocksAndEntities("", squareHatch(9, 5, 7) + squareHatch(1, 1, 0)), &report);
  const auto hatches = repairsWith(report, L"HATCH had invalid values");
  ASSERT_EQ(hatches.size(), 1u);
  for (const wchar_t* field : {L"edgeType", L"hatchStyle", L"patternType"}) {
    EXPECT_GE(hatches[0].find(field), 0) << OdString(field).toUtf8();
  }
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject());
  ASSERT_EQ(space->entityIds().size(), 2u);
  OdDbHatchPtr repaired = OdDbHatch::cast(space->entityIds()[0].safeOpenObject());
  EXPECT_EQ(repaired->hatchStyle(), OdDbHatch::kNormal);
  EXPECT_EQ(repaired->patternType(), OdDbHatch::kPreDefined);
  OdInt32 loopType = 0;
  OdDbHatchEdgeArray edges;
  ASSERT_EQ(repaired->getLoopAt(0, loopType, edges), eOk);
  ASSERT_EQ(edges.size(), 4u);
  for (const OdDbHatchEdge& edge : edges) EXPECT_EQ(edge.type, OdDbHatchEdge::kLine);
  // The edge of an unknown kind keeps its points as a line.
  EXPECT_EQ(edges[1].start, OdGePoint2d(1, 0));
  EXPECT_EQ(edges[1].end, OdGePoint2d(1, 1));
  EXPECT_EQ(edges[2].start, OdGePoint2d(1, 1));
  OdDbHatchPtr kept = OdDbHatch::cast(space->entityIds()[1].safeOpenObject());
  EXPECT_EQ(kept->hatchStyle(), OdDbHatch::kOuter);
  EXPECT_EQ(kept->patternType(), OdDbHatch::kUserDefined);
}

TEST(Saving, FollowsLinksRefusesWhatIsNoFileAndKeepsTheMode) {
  const auto dir = std::filesystem::temp_directory_path() / ("kestrix-paths-" + std::to_string(getpid()));
  std::filesystem::remove_all(dir);
  std::filesystem::create_directories(dir / "real");
  OdDbDatabasePtr db = odDxfReadBuffer(blocksAndEntities("", line(0, 0, 1, 1)));
  auto modelCount = [](const std::filesystem::path& path) {
    OdDbDatabasePtr read = odDxfReadFile(OdString(path.string()));
    OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(read->getModelSpaceId().safeOpenObject());
    return space->entityIds().size();
  };

  // Through a chain of two relative links: the target changes, the links stay links.
  const auto target = dir / "real" / "plan.dxf";
  { std::ofstream(target) << "old contents"; }
  chmod(target.c_str(), 0600);
  std::filesystem::create_symlink("real/plan.dxf", dir / "first.dxf");
  std::filesystem::create_symlink("first.dxf", dir / "second.dxf");
  odDxfWriteFile(db.get(), OdString((dir / "second.dxf").string()));
  EXPECT_TRUE(std::filesystem::is_symlink(dir / "second.dxf"));
  EXPECT_TRUE(std::filesystem::is_symlink(dir / "first.dxf"));
  EXPECT_EQ(modelCount(target), 1u);
  struct stat st {};
  ASSERT_EQ(stat(target.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0600u);

  // A new file follows the umask.
  const mode_t old = umask(027);
  odDxfWriteFile(db.get(), OdString((dir / "new.dxf").string()));
  umask(old);
  ASSERT_EQ(stat((dir / "new.dxf").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0640u);

  // A pipe is no file: refused with a message, left a pipe.
  const auto pipe = dir / "pipe.dxf";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  try {
    odDxfWriteFile(db.get(), OdString(pipe.string()));
    ADD_FAILURE() << "saved over a pipe";
  } catch (const OdError_FileException& error) {
    EXPECT_GE(error.description().find(L"not a regular file"), 0) << error.what();
  }
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));
  EXPECT_THROW(odDxfWriteFile(db.get(), OdString()), OdError_FileException);

  // A temporary file a killed save left beside the drawing goes with the next save.
  const auto stale = dir / "new.dxf.ryad-save-Ab12Cd";
  { std::ofstream(stale) << "half a drawing"; }
  const auto other = dir / "other.dxf.ryad-save-Ab12Cd";
  { std::ofstream(other) << "someone else's"; }
  odDxfWriteFile(db.get(), OdString((dir / "new.dxf").string()));
  EXPECT_FALSE(std::filesystem::exists(stale));
  EXPECT_TRUE(std::filesystem::exists(other));
  std::filesystem::remove_all(dir);
}

TEST(BadInput, HandlesAreFinalWhenReadingEnds) {
  // Handle A0 once, 50 twice, one handle in the placeholder range, and
  // entities of blocks without handles (an R12 habit).
  const std::string text = blocksAndEntities(
      block("B", line(0, 0, 1, 1) + line(1, 1, 2, 2)),
      "0 LINE\n5 A0\n8 0\n10 0\n20 0\n30 0\n11 1\n21 0\n31 0\n"
      "0 LINE\n5 50\n8 0\n10 0\n20 0\n30 0\n11 2\n21 0\n31 0\n"
      "0 LINE\n5 50\n8 0\n10 0\n20 0\n30 0\n11 3\n21 0\n31 0\n"
      "0 LINE\n5 7FFFFFFF00000002\n8 0\n10 0\n20 0\n30 0\n11 4\n21 0\n31 0\n" +
          insert("B"));
  OdDxfReadReport report;
  OdDbDatabasePtr db = odDxfReadBuffer(text, &report);
  EXPECT_EQ(repairsWith(report, L"beyond the handles").size(), 1u);
  EXPECT_EQ(repairsWith(report, L"of another object").size(), 1u);

  std::set<OdUInt64> handles;
  OdUInt64 highest = 0;
  db->forEachObjectId([&](const OdDbObjectId& id) {
    const OdUInt64 handle = id.handle().value();
    EXPECT_LT(handle, kOdDxfPlaceholderHandles) << id.handle().ascii().toUtf8();
    EXPECT_TRUE(handles.insert(handle).second) << "handle given twice: " << id.handle().ascii().toUtf8();
    highest = std::max(highest, handle);
  });
  EXPECT_EQ(db->handseed().value(), highest + 1);
  // The unique handles of the file stay; the first of the repeated pair keeps its own.
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject());
  ASSERT_EQ(space->entityIds().size(), 5u);
  EXPECT_EQ(space->entityIds()[0].handle().value(), 0xA0u);
  EXPECT_EQ(space->entityIds()[1].handle().value(), 0x50u);
  // The others, and everything the file did not number, come above A0.
  for (int i : {2, 3, 4}) EXPECT_GT(space->entityIds()[i].handle().value(), 0xA0u);
  // A new object takes the next free handle.
  OdDbLinePtr added = OdDbLine::createObject();
  OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite))->appendOdDbEntity(added.get());
  EXPECT_EQ(added->objectId().handle().value(), highest + 1);
}

TEST(BadInput, GroupsAreReadAsFieldsWhereverTheyStandAndMarkersWrittenOnce) {
  const std::string text = blocksAndEntities(
      "", "0 LINE\n5 A0\n8 WALLS\n62 3\n100 AcDbEntity\n100 AcDbLine\n10 1\n20 2\n30 0\n11 3\n21 4\n31 0\n"
          "0 LINE\n5 A1\n100 AcDbEntity\n8 0\n100 AcDbLin3\n10 5\n20 6\n30 0\n11 7\n21 8\n31 0\n");
  OdDxfReadReport report;
  OdDbDatabasePtr db = odDxfReadBuffer(text, &report);
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject());
  OdDbLinePtr first = OdDbLine::cast(space->entityIds()[0].safeOpenObject());
  EXPECT_EQ(first->layer(), OdString(L"WALLS"));
  EXPECT_EQ(first->colorIndex(), 3);
  OdDbLinePtr second = OdDbLine::cast(space->entityIds()[1].safeOpenObject());
  EXPECT_EQ(second->endPoint(), OdGePoint3d(7, 8, 0));
  EXPECT_EQ(repairsWith(report, L"subclass marker").size(), 1u);

  // In the written text every line has each marker once, and the damaged one is gone.
  const std::string written = odDxfWriteBuffer(db.get(), OdDb::vAC15);
  const size_t entities = written.find("ENTITIES");
  const std::string lines = written.substr(entities, written.find("ENDSEC", entities) - entities);
  auto count = [&](const std::string& what) {
    int n = 0;
    for (size_t at = lines.find(what); at != std::string::npos; at = lines.find(what, at + 1)) ++n;
    return n;
  };
  EXPECT_EQ(count("AcDbEntity\r\n"), 2);
  EXPECT_EQ(count("AcDbLine\r\n"), 2);
  EXPECT_EQ(count("AcDbLin3"), 0);
}

TEST(BadInput, LostDictionaryEntriesAndUnknownVersionsAreReportedNotWritten) {
  const std::string text = groups(
      "0 SECTION\n2 HEADER\n9 $ACADVER\n1 AC9999\n9 $DWGCODEPAGE\n3 garbage\n0 ENDSEC\n"
      "0 SECTION\n2 OBJECTS\n"
      "0 DICTIONARY\n5 C\n330 0\n100 AcDbDictionary\n3 ACAD_GROUP\n350 D\n3 LOST_ENTRY\n350 0\n"
      "0 DICTIONARY\n5 D\n330 C\n100 AcDbDictionary\n"
      "0 ENDSEC\n0 EOF\n");
  OdDxfReadReport report;
  OdDbDatabasePtr db = odDxfReadBuffer(text, &report);
  EXPECT_EQ(repairsWith(report, L"unknown drawing version 'AC9999'").size(), 1u);
  EXPECT_EQ(repairsWith(report, L"unknown code page 'garbage'").size(), 1u);
  EXPECT_EQ(repairsWith(report, L"entry without an object").size(), 1u);
  const std::string written = odDxfWriteBuffer(db.get(), odDxfSaveVersion(db.get()));
  EXPECT_EQ(written.find("LOST_ENTRY"), std::string::npos);
  EXPECT_EQ(written.find("garbage"), std::string::npos);
  EXPECT_EQ(written.find("\n350\r\n0\r\n"), std::string::npos);
}

TEST(BadInput, ResultCodesKeepTheirOwnMessages) {
  try {
    odDxfReadFile(OdString(L"/no/such/folder/plan.dxf"));
    ADD_FAILURE() << "a missing file was read";
  } catch (const OdError& error) {
    EXPECT_EQ(error.code(), eCantOpenFile);
    EXPECT_EQ(error.description().find(L"block"), -1) << error.what();
  }
  EXPECT_EQ(odResultDescription(eFileWriteError), OdString(L"The file could not be written"));
  EXPECT_NE(static_cast<int>(eCantOpenFile), static_cast<int>(eInvalidBlockName));
}

TEST(BadInput, PolylineFlagsChooseTheSameKindAsEntityLists) {
  // 72 is 64 and 8: a polyface mesh (64 decides), with a vertex and a face.
  const std::string text = blocksAndEntities(
      "", "0 POLYLINE\n8 0\n66 1\n10 0\n20 0\n30 0\n70 72\n71 3\n72 1\n"
          "0 VERTEX\n8 0\n10 0\n20 0\n30 0\n70 192\n0 VERTEX\n8 0\n10 1\n20 0\n30 0\n70 192\n"
          "0 VERTEX\n8 0\n10 0\n20 1\n30 0\n70 192\n0 VERTEX\n8 0\n10 0\n20 0\n30 0\n70 128\n71 1\n72 2\n73 3\n"
          "0 SEQEND\n8 0\n");
  OdDbDatabasePtr db = odDxfReadBuffer(text);
  OdDbEntityPtr mesh = firstInModelSpace(db.get());
  EXPECT_TRUE(mesh->isKindOf(OdDbPolyFaceMesh::desc())) << mesh->isA()->name().toUtf8();
  EXPECT_EQ(odDbPolylineClassForFlags(72), mesh->isA());
}

TEST(BadInput, WhatStandsOutsideASectionIsReadAndReported) {
  // Header pairs after the header's ENDSEC, then entities with no section at all.
  const std::string text = groups(
      "0 SECTION\n2 HEADER\n9 $ACADVER\n1 AC1009\n0 ENDSEC\n9 $DIMASZ\n40 0.75\n9 $LTSCALE\n40 2.5\n" +
      line(0, 0, 4, 3) + "0 CIRCLE\n8 0\n10 1\n20 1\n30 0\n40 2\n" +
      "0 SECTION\n2 ENTITIES\n" + line(1, 1, 2, 2) + "0 ENDSEC\n0 EOF\n");
  OdDxfReadReport report;
  OdDbDatabasePtr db = odDxfReadBuffer(text, &report);
  EXPECT_EQ(repairsWith(report, L"header variables outside a section").size(), 1u);
  EXPECT_EQ(repairsWith(report, L"entities outside a section").size(), 1u);
  EXPECT_DOUBLE_EQ(db->headerReal(L"$DIMASZ", 0.0), 0.75);
  EXPECT_DOUBLE_EQ(db->headerReal(L"$LTSCALE", 0.0), 2.5);
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject());
  ASSERT_EQ(space->entityIds().size(), 3u);
  EXPECT_EQ(OdDbLine::cast(space->entityIds()[0].safeOpenObject())->endPoint(), OdGePoint3d(4, 3, 0));
  EXPECT_DOUBLE_EQ(OdDbCircle::cast(space->entityIds()[1].safeOpenObject())->radius(), 2.0);

  // A file of nothing says so.
  for (const char* empty : {"", "\n\r\n  \n"}) {
    try {
      odDxfReadBuffer(empty);
      ADD_FAILURE() << "an empty file was read";
    } catch (const OdError& error) {
      EXPECT_GE(error.description().find(L"empty"), 0) << error.what();
    }
  }
}

// Text styles that stand for shape files have no name, and a file may hold
// several: each is kept with its own handle, and so written that an
// independent reader finds it.
TEST(BadInput, NamelessShapeFileStylesKeepTheirHandles) {
  const std::string text = groups(
      "0 SECTION\n2 HEADER\n9 $ACADVER\n1 AC1014\n9 $HANDSEED\n5 40\n0 ENDSEC\n"
      "0 SECTION\n2 TABLES\n0 TABLE\n2 STYLE\n5 3\n100 AcDbSymbolTable\n70 3\n"
      "0 STYLE\n5 11\n100 AcDbSymbolTableRecord\n100 AcDbTextStyleTableRecord\n2 Standard\n70 0\n3 txt\n"
      "0 STYLE\n5 2A\n100 AcDbSymbolTableRecord\n100 AcDbTextStyleTableRecord\n2 \n70 1\n3 ltypeshp.shx\n"
      "0 STYLE\n5 2B\n100 AcDbSymbolTableRecord\n100 AcDbTextStyleTableRecord\n2 \n70 1\n3 other.shx\n"
      "0 STYLE\n5 2C\n100 AcDbSymbolTableRecord\n100 AcDbTextStyleTableRecord\n2 \n70 0\n3 lost.shx\n"
      "0 ENDTAB\n0 ENDSEC\n0 EOF\n");
  OdDxfReadReport report;
  OdDbDatabasePtr db = odDxfReadBuffer(text, &report);
  // Only the style that has neither a name nor the shape-file flag is dropped.
  ASSERT_EQ(repairsWith(report, L"without a name").size(), 1u);
  EXPECT_NE(repairsWith(report, L"without a name")[0].find(L"STYLE"), -1);
  for (const auto& [handle, font] : {std::pair{0x2Au, L"ltypeshp.shx"}, std::pair{0x2Bu, L"other.shx"}}) {
    OdDbObjectId id = db->getOdDbObjectId(OdDbHandle(handle));
    ASSERT_FALSE(id.isNull()) << handle;
    OdSmartPtr<OdDbTextStyleTableRecord> style = OdDbTextStyleTableRecord::cast(id.safeOpenObject());
    ASSERT_FALSE(style.isNull());
    EXPECT_TRUE(style->isShapeFile());
    EXPECT_EQ(style->getName(), OdString());
    EXPECT_EQ(style->fileName(), OdString(font));
  }
  EXPECT_TRUE(db->getOdDbObjectId(OdDbHandle(0x2Cu)).isNull() || db->getOdDbObjectId(OdDbHandle(0x2Cu)).isErased());

  const auto path = std::filesystem::temp_directory_path() / ("kestrix-shapes-" + std::to_string(getpid()) + ".dxf");
  odDxfWriteFile(db.get(), OdString(path.string().c_str()));
  const std::string command =
      "/usr/bin/python3 -c \"import ezdxf, sys; d = ezdxf.readfile(sys.argv[1]); "
      "print(sorted((e.dxf.handle, e.dxf.font) for e in d.entitydb.values() "
      "if e.dxftype() == 'STYLE' and e.dxf.name == ''))\" '" + path.string() + "'";
  FILE* pipe = popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  char buffer[512] = {};
  const size_t size = fread(buffer, 1, sizeof buffer - 1, pipe);
  pclose(pipe);
  std::filesystem::remove(path);
  EXPECT_EQ(std::string(buffer, size), "[('2A', 'ltypeshp.shx'), ('2B', 'other.shx')]\n");
}
