// blockreplace in the real host with the real module, driven through the
// dialog's replies and the pick path: nested references switched with their
// attributes, the purge as answered (checked by an independent reader on the
// saved drawing), one U, and the refusals of both paths.
#include <gmock/gmock.h>

#include <cstdio>

#include "kestrix_support.h"

using testing::HasSubstr;
using testing::Not;

namespace {

// A reference of inner appended to the definition of container.
void nest(OdDbDatabase* db, const wchar_t* container, const wchar_t* inner) {
  OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::cast(att::block(db, container).safeOpenObject(OdDb::kForWrite));
  OdDbBlockReferencePtr ref = OdDbBlockReference::createObject();
  ref->setBlockTableRecord(att::block(db, inner));
  block->appendOdDbEntity(ref.get());
}

// The block names of the references in a block's definition (or model space), in order.
std::vector<std::string> referencesIn(OdDbDatabase* db, const wchar_t* container) {
  std::vector<std::string> names;
  const OdDbObjectId id = container ? db->findRecord(OdDbNameTable::kBlock, container) : db->getModelSpaceId();
  OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::cast(id.openObject().get());
  if (block.isNull()) return names;
  for (const OdDbObjectId& entityId : block->entityIds()) {
    OdDbBlockReferencePtr ref = OdDbBlockReference::cast(entityId.openObject().get());
    if (ref.isNull() || entityId.isErased()) continue;
    OdDbBlockTableRecordPtr referenced = OdDbBlockTableRecord::cast(ref->blockTableRecord().openObject().get());
    names.push_back(referenced.isNull() ? "?" : referenced->getName().toUtf8());
  }
  return names;
}

bool hasBlock(OdDbDatabase* db, const wchar_t* name) { return !db->findRecord(OdDbNameTable::kBlock, name).isNull(); }

// What python3-ezdxf reads in a saved drawing: per block, the names of its
// references (attribute values after "="), then the audit's error count.
std::string readIndependently(OdDbDatabase* db, const std::string& name) {
  const std::string path = att::tempPath(name);
  odDxfWriteFile(db, OdString(path));
  const std::string script =
      "import ezdxf,sys\n"
      "d=ezdxf.readfile(sys.argv[1])\n"
      "for b in d.blocks:\n"
      "  r=[e.dxf.name+''.join('='+a.dxf.text for a in e.attribs) for e in b if e.dxftype()=='INSERT']\n"
      "  print(b.name+':'+','.join(r))\n"
      "print('audit errors', len(d.audit().errors))\n";
  att::writeBytes(att::tempPath("read.py"), script);
  return dxfcheck::commandOutput("/usr/bin/python3 " + att::tempPath("read.py") + " " + path);
}

}  // namespace

TEST(BlockReplace, DialogSwitchesNestedReferencesKeepsAttributesAndPurges) {
  HostSession session(CorpusDrawing{"examples_dxf_multi_insert_with_attribs.dxf"});
  ASSERT_TRUE(session.loadModule());
  OdDbDatabase* db = session.db();
  // FLAG is referenced in model space (with its attributes) and nested in OUTER.
  nest(db, L"OUTER", L"FLAG");
  att::block(db, L"POLE");
  for (const wchar_t* hidden : {L"$HIDDEN", L"{BRACED}"}) att::block(db, hidden);
  const auto values = att::attributeValues(db);

  session.run({"CMDECHO", "1"});
  const std::string out = session.run({"blockreplace", "3097=FLAG", "3098", "3097=POLE", "3098", "Yes"});
  // Only the ordinary blocks are listed, in table order.
  EXPECT_THAT(out, HasSubstr("3092  list     Blocks:\n        *   0  FLAG\n            1  OUTER\n"
                             "            2  POLE\n  3097  edit     Name:  [FLAG]"));
  EXPECT_THAT(out, HasSubstr("3103  text     Replacement for block FLAG\n"));
  EXPECT_THAT(out, HasSubstr("Purge the block that is no longer used? [Yes/No] <Yes>: Yes\n"
                             "2 block references switched.\nBlock replacement finished."));
  EXPECT_EQ(session.host().sysvars().getInt(L"CMDECHO"), 1);
  EXPECT_EQ(referencesIn(db, nullptr), std::vector<std::string>{"POLE"});
  EXPECT_EQ(referencesIn(db, L"OUTER"), std::vector<std::string>{"POLE"});
  EXPECT_EQ(att::attributeValues(db), values);
  EXPECT_FALSE(hasBlock(db, L"FLAG"));
  const std::string read = readIndependently(db, "replaced.dxf");
  EXPECT_THAT(read, HasSubstr("*Model_Space:POLE=Flag=x = 0.000=y = 0.000\n"));
  EXPECT_THAT(read, HasSubstr("OUTER:POLE\n"));
  EXPECT_THAT(read, Not(HasSubstr("FLAG:")));
  EXPECT_THAT(read, HasSubstr("audit errors 0"));

  session.run({"U"});
  EXPECT_TRUE(hasBlock(db, L"FLAG"));
  EXPECT_EQ(referencesIn(db, nullptr), std::vector<std::string>{"FLAG"});
  EXPECT_EQ(referencesIn(db, L"OUTER"), std::vector<std::string>{"FLAG"});
  EXPECT_EQ(att::attributeValues(db), values);
}

TEST(BlockReplace, BlockNestedOnlyInAnotherDefinitionIsSwitchedAndKeptOnNo) {
  HostSession session(CorpusDrawing{"examples_dxf_acad_table_with_blk_ref.dxf"});
  ASSERT_TRUE(session.loadModule());
  OdDbDatabase* db = session.db();
  // B1 is referenced only inside the table's anonymous block *T2.
  ASSERT_EQ(referencesIn(db, L"*T2"), std::vector<std::string>{"B1"});
  att::block(db, L"B#2");  // a name that purge would read as a pattern...
  att::block(db, L"B32");  // ...matching this unused block
  att::block(db, L"B52");
  // Enter accepts each step; "No" keeps the old definition.
  std::string out = session.run({"blockreplace", "3097=B1", "", "3097=B#2", "", "No"});
  EXPECT_THAT(out, HasSubstr("\n1 block references switched."));
  EXPECT_EQ(referencesIn(db, L"*T2"), std::vector<std::string>{"B#2"});
  EXPECT_TRUE(hasBlock(db, L"B1"));
  const std::string read = readIndependently(db, "kept.dxf");
  EXPECT_THAT(read, HasSubstr("*T2:B#2\n"));
  EXPECT_THAT(read, HasSubstr("\nB1:\n"));
  EXPECT_THAT(read, HasSubstr("audit errors 0"));
  // Enter at the question purges, by name: B#2 goes, B32 stays.
  session.run({"blockreplace", "3097=B#2", "", "3097=B52", "", ""});
  EXPECT_EQ(referencesIn(db, L"*T2"), std::vector<std::string>{"B52"});
  EXPECT_FALSE(hasBlock(db, L"B#2"));
  EXPECT_TRUE(hasBlock(db, L"B32"));

  session.run({"U"});
  EXPECT_TRUE(hasBlock(db, L"B#2"));
  EXPECT_EQ(referencesIn(db, L"*T2"), std::vector<std::string>{"B#2"});
  session.run({"U"});
  EXPECT_EQ(referencesIn(db, L"*T2"), std::vector<std::string>{"B1"});
}

TEST(BlockReplace, DialogRefusalsChangeNothing) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  OdDbDatabase* db = session.db();
  att::reference(db, L"A", 0, {});
  nest(db, L"B", L"A");
  // The same block twice: the alert, then the dialog again at the first step.
  std::string out = session.run({"blockreplace", "3097=A", "3098", "3097=A", "3098", "Cancel"});
  EXPECT_THAT(out, HasSubstr("[Alert] A block cannot be replaced by itself.\n[Replace block] closed: 4\n"
                             "Dialog 225 \"Replace block\"\n  -     text     401\n"
                             "  3103  text     Block to be replaced\n"));
  // A name that is no block shows the error line; choosing in the list hides it.
  out = session.run({"blockreplace", "3097=NONE", "3098", "3092:1", "Cancel"});
  EXPECT_THAT(out, HasSubstr("3101  text     No block of that name: NONE\n"));
  EXPECT_THAT(out, HasSubstr("3092  list     Blocks:\n            0  A\n        *   1  B\n"
                             "  3097  edit     Name:  [B]\n  3101  text     (hidden)"));
  // B holds a reference to A: A cannot be replaced by B.
  out = session.run({"blockreplace", "3097=A", "3098", "3097=B", "3098"});
  EXPECT_THAT(out, HasSubstr("[Alert] The block A can not be replaced by B"));
  // Nor when B holds A deeper down (B -> D -> A): D would come to hold B.
  nest(db, L"D", L"A");
  nest(db, L"E", L"D");
  out = session.run({"blockreplace", "3097=A", "3098", "3097=E", "3098"});
  EXPECT_THAT(out, HasSubstr("[Alert] The block A can not be replaced by E"));
  EXPECT_THAT(out, Not(HasSubstr("Purge")));
  EXPECT_EQ(referencesIn(db, L"D"), std::vector<std::string>{"A"});
  // Esc at the purge question switches nothing.
  nest(db, L"C", L"A");
  const std::string onLocked = att::reference(db, L"B", 50, {});
  {
    OdDbEntityPtr reference = OdDbEntity::cast(db->getOdDbObjectId(OdDbHandle(onLocked.c_str())).openObject(OdDb::kForWrite).get());
    reference->setLayer(att::layer(db, L"LOCKED"));
  }
  att::layer(db, L"LOCKED", 4);
  session.run({"blockreplace", "3097=B", "3098", "3097=C", "3098", "^C"});
  EXPECT_EQ(referencesIn(db, nullptr), (std::vector<std::string>{"A", "B"}));
  EXPECT_EQ(referencesIn(db, L"B"), std::vector<std::string>{"A"});
  EXPECT_FALSE(db->isUndoBlockStarted());
  // A reference on a locked layer is passed over and not counted.
  att::block(db, L"F");
  out = session.run({"blockreplace", "3097=B", "3098", "3097=F", "3098", "No"});
  EXPECT_THAT(out, HasSubstr("\n0 block references switched."));
  EXPECT_EQ(referencesIn(db, nullptr), (std::vector<std::string>{"A", "B"}));
}

TEST(BlockReplace, PickPathWithItsRefusalsAndCrossingWindow) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  OdDbDatabase* db = session.db();
  const std::string a = "#" + att::reference(db, L"DOOR", 0, {});
  att::reference(db, L"WIN", 100, {});
  nest(db, L"DOOR", L"SINK");
  const std::string c = "#" + att::reference(db, L"SINK", 200, {});
  OdDbObjectId anonymous;
  {
    OdSmartPtr<OdDbSymbolTable> table = OdDbSymbolTable::cast(db->getBlockTableId().safeOpenObject(OdDb::kForWrite));
    OdDbBlockTableRecordPtr record = OdDbBlockTableRecord::createObject();
    record->setName(L"*U7");
    anonymous = table->add(record.get());
  }
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
  OdDbBlockReferencePtr anonymousRef = OdDbBlockReference::createObject();
  anonymousRef->setBlockTableRecord(anonymous);
  space->appendOdDbEntity(anonymousRef.get());
  anonymousRef->setPosition({300, 0, 0});
  const std::string anon = "#" + anonymousRef->objectId().handle().ascii().toUtf8();
  OdDbLinePtr line = OdDbLine::createObject();
  line->setStartPoint({100, 50, 0});
  line->setEndPoint({101, 50, 0});
  space->appendOdDbEntity(line.get());
  const std::string lineHandle = "#" + line->objectId().handle().ascii().toUtf8();
  anonymousRef.release();
  line.release();
  space.release();

  // First pick: a line, an anonymous block, then DOOR (the block to be
  // replaced); the dialog opens at its second step. Second pick: a missed
  // point and a crossing window around WIN's reference and the line.
  std::string out = session.run({"blockreplace", "3095", lineHandle, anon, a, "3095", "95,60", "102,-5", "N"});
  EXPECT_THAT(out, HasSubstr("Pick a block reference in the drawing.\nSelect a block reference: " + lineHandle +
                             "\nThe object is not a block reference."));
  EXPECT_THAT(out, HasSubstr("The block's name cannot be used; pick another block reference."));
  EXPECT_THAT(out, HasSubstr("Block DOOR picked."));
  EXPECT_THAT(out, HasSubstr("3103  text     Replacement for block DOOR\n"));
  EXPECT_THAT(out, HasSubstr("Block WIN found."));
  EXPECT_THAT(out, HasSubstr("1 block references switched."));
  EXPECT_EQ(referencesIn(db, nullptr), (std::vector<std::string>{"WIN", "WIN", "SINK", "*U7"}));
  EXPECT_TRUE(hasBlock(db, L"DOOR"));
  session.run({"U"});
  EXPECT_EQ(referencesIn(db, nullptr), (std::vector<std::string>{"DOOR", "WIN", "SINK", "*U7"}));

  // Reversed test on this path: DOOR's definition holds SINK, so DOOR cannot be replaced by SINK.
  out = session.run({"blockreplace", "3097=DOOR", "3098", "3095", c});
  EXPECT_THAT(out, HasSubstr("[Alert] The block SINK can not be replaced by DOOR"));
  // Picking the same block: the alert and the dialog again; Esc at a pick cancels.
  out = session.run({"blockreplace", "3095", a, "3095", a, "3095", "^C"});
  EXPECT_THAT(out, HasSubstr("[Alert] A block cannot be replaced by itself."));
  EXPECT_THAT(out, HasSubstr("*Cancel*"));
  // A block from an external reference is refused with its message.
  {
    OdDbBlockTableRecordPtr block =
        OdDbBlockTableRecord::cast(db->findRecord(OdDbNameTable::kBlock, L"SINK").safeOpenObject(OdDb::kForWrite));
    block->setBlockFlags(static_cast<OdInt16>(block->blockFlags() | OdDbBlockTableRecord::kExternalReference));
  }
  out = session.run({"blockreplace", "3095", c, "Cancel"});
  EXPECT_THAT(out, HasSubstr("\nThe Block is a xref! can not be used."));
  EXPECT_THAT(out, Not(HasSubstr("SINK\n")));  // nor is it listed
  EXPECT_EQ(referencesIn(db, nullptr), (std::vector<std::string>{"DOOR", "WIN", "SINK", "*U7"}));
  EXPECT_FALSE(db->isUndoBlockStarted());
}
