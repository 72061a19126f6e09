// What a user does after opening a drawing made to break things (blocks that
// contain themselves), and numbers typed at prompts that are no numbers:
// every command ends, and no value that cannot stand gets into the drawing.
#include <cmath>

#include "DbBlockReference.h"
#include "harness.h"
#include "rydb.h"

namespace {

// Block A holds a line from (0,0) to (10,5) and a reference to B at x 100;
// B holds a reference to A at x 1000; C holds a reference to itself at x 7.
// Model space holds A at the origin and C at the origin.
std::string cyclicDrawing() {
  const char* const lines[] = {
      "0", "SECTION", "2", "BLOCKS",
      "0", "BLOCK", "8", "0", "2", "A", "70", "0", "10", "0", "20", "0", "30", "0",
      "0", "LINE", "8", "0", "10", "0", "20", "0", "30", "0", "11", "10", "21", "5", "31", "0",
      "0", "INSERT", "8", "0", "2", "B", "10", "100", "20", "0", "30", "0",
      "0", "ENDBLK", "8", "0",
      "0", "BLOCK", "8", "0", "2", "B", "70", "0", "10", "0", "20", "0", "30", "0",
      "0", "INSERT", "8", "0", "2", "A", "10", "1000", "20", "0", "30", "0",
      "0", "ENDBLK", "8", "0",
      "0", "BLOCK", "8", "0", "2", "C", "70", "0", "10", "0", "20", "0", "30", "0",
      "0", "INSERT", "8", "0", "2", "C", "10", "7", "20", "0", "30", "0",
      "0", "ENDBLK", "8", "0",
      "0", "ENDSEC",
      "0", "SECTION", "2", "ENTITIES",
      "0", "INSERT", "8", "0", "2", "A", "10", "0", "20", "0", "30", "0",
      "0", "INSERT", "8", "0", "2", "C", "10", "0", "20", "0", "30", "0",
      "0", "ENDSEC", "0", "EOF"};
  std::string text;
  for (const char* line : lines) text += std::string(line) + "\n";
  return text;
}

OdString blockNameOf(const OdDbObjectId& id) {
  OdDbBlockReferencePtr reference = OdDbBlockReference::cast(id.safeOpenObject());
  OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::cast(reference->blockTableRecord().safeOpenObject());
  return block->getName();
}

}  // namespace

TEST(BadInputSession, ADrawingWithBlocksThatContainThemselvesCanBeWorkedOn) {
  {
    // A pick at the end of A's line takes A (C spans only its own insertion
    // point, 7,0).
    HostSession picking(DxfText{cyclicDrawing()});
    picking.run({"ERASE", "10,5", ""});
    OdDbObjectIdArray left = picking.modelSpace();
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(blockNameOf(left[0]), OdString(L"C"));
  }
  {
    // A window around both takes both; one just short of x 1100 takes only C.
    HostSession window(DxfText{cyclicDrawing()});
    window.run({"ERASE", "W", "-5,-5", "1099,20", ""});
    EXPECT_EQ(window.modelSpace().size(), 1u);
    window.run({"ERASE", "W", "-5,-5", "2000,20", ""});
    EXPECT_EQ(window.modelSpace().size(), 0u);
  }
  HostSession session(DxfText{cyclicDrawing()});
  session.run({"REGEN"});
  const std::string listed = session.run({"LIST", "ALL", ""});
  EXPECT_NE(listed.find("INSERT"), std::string::npos) << listed;

  // Exploding opens one level: A gives its line and B, C gives C again.
  session.run({"EXPLODE", "ALL", ""});
  OdDbObjectIdArray left = session.modelSpace();
  ASSERT_EQ(left.size(), 3u);
  int references = 0;
  for (const OdDbObjectId& id : left) references += id.safeOpenObject()->isKindOf(OdDbBlockReference::desc()) ? 1 : 0;
  EXPECT_EQ(references, 2);

  // And it saves: the independent structure of the blocks is still there.
  const std::string written = odDxfWriteBuffer(session.db(), OdDb::vAC15);
  OdDxfReadReport report;
  odDxfReadBuffer(written, &report);
  int cycles = 0;
  for (const OdString& repair : report.repairs) cycles += repair.find(L"reference to itself") >= 0 ? 1 : 0;
  EXPECT_EQ(cycles, 2);
}

TEST(BadInputSession, NumbersThatAreNoNumbersAreRefusedAtPromptsAndForVariables) {
  HostSession session;
  auto& vars = session.host().sysvars();
  const double textSize = vars.getReal(L"TEXTSIZE");
  const double ltscale = vars.getReal(L"LTSCALE");
  for (const char* name : {"TEXTSIZE", "PLINEWID", "LTSCALE", "DIMSCALE", "CELTSCALE", "FILLETRAD", "ANGBASE", "PDSIZE"}) {
    for (const char* value : {"nan", "inf", "-inf", "1e400"}) {
      const double before = vars.getReal(OdString(name));
      session.run({name, value, ""});
      EXPECT_EQ(vars.getReal(OdString(name)), before) << name << " took " << value;
    }
  }
  session.run({"LTSCALE", "-1", ""});
  session.run({"TEXTSIZE", "0", ""});
  EXPECT_EQ(vars.getReal(L"LTSCALE"), ltscale);
  EXPECT_EQ(vars.getReal(L"TEXTSIZE"), textSize);
  session.run({"LTSCALE", "0.5"});
  EXPECT_EQ(vars.getReal(L"LTSCALE"), 0.5);  // a good value still goes in

  double value = 0;
  for (const wchar_t* text : {L"nan", L"inf", L"1e400", L"-inf"}) {
    EXPECT_NE(rydbDisToF(text, -1, &value), RTNORM) << OdString(text).toUtf8();
    EXPECT_NE(rydbAngToF(text, -1, &value), RTNORM) << OdString(text).toUtf8();
  }
}
