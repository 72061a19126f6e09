// bcount in the real host with the real module: the table for the whole
// drawing and for a selection, what is not counted, and the counted set
// left selected (gripped) for the user.
#include <gmock/gmock.h>

#include <algorithm>

#include "DbBlockReference.h"
#include "core/SelectionSets.h"
#include "kestrix_support.h"
#include "harness.h"

using testing::EndsWith;
using testing::HasSubstr;

namespace {

// Blocks "Door", "a" and "Window-Frame"; an anonymous block and an external
// reference. Model space meets Door, a, the anonymous block, Window-Frame,
// Door, the external reference, a; paper space holds one more Door.
const char* const kBlocks = R"(
d = ezdxf.new('R2018')
for name in ('Door', 'a', 'Window-Frame'): d.blocks.new(name).add_line((0, 0), (1, 0))
anonymous = d.blocks.new_anonymous_block()
anonymous.add_line((0, 0), (1, 1))
d.add_xref_def('elsewhere.dxf', 'XR')
msp = d.modelspace()
for i, name in enumerate(('Door', 'a', anonymous.name, 'Window-Frame', 'Door', 'XR', 'a')):
    msp.add_blockref(name, (10 * i, 0))
d.layout('Layout1').add_blockref('Door', (0, 50))
d.saveas(sys.argv[1])
)";

std::string dots(int n) { return std::string(static_cast<size_t>(n), '.'); }

std::vector<std::string> blockNamesOf(const std::vector<OdDbObjectId>& ids) {
  std::vector<std::string> names;
  for (const OdDbObjectId& id : ids) {
    OdDbObjectPtr object = id.openObject();
    OdDbObjectPtr block = static_cast<OdDbBlockReference*>(object.get())->blockTableRecord().openObject();
    names.push_back(static_cast<OdDbBlockTableRecord*>(block.get())->getName().toUtf8());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

TEST(BlockCount, EnterCountsTheWholeDrawingAndTheTableLinesUpOnPeriods) {
  const std::string input = dxfcheck::pythonDrawing(kBlocks, "blocks.dxf");
  HostSession session(CorpusDrawing{input});
  ASSERT_TRUE(session.loadModule());

  // Longest name 12 ("Window-Frame"): the counts start in column 18; the
  // block met first (Door) is printed last.
  const std::string table = "\nBlock " + dots(13) + "\nCount " + std::string(23, '-') + "\n" + "Window-Frame" +
                            dots(6) + "1\n" + "a" + dots(17) + "2\n" + "Door" + dots(14) + "3\n";
  const std::string out = session.run({"bcount", ""});
  EXPECT_THAT(out, HasSubstr("Press Enter to count every block or...\nSelect objects: " + table));
  EXPECT_EQ(blockNamesOf(session.host().current()->selections().gripSet()),
            (std::vector<std::string>{"Door", "Door", "Door", "Window-Frame", "a", "a"}));

  // The counted references are the drawing's selection until Esc at the
  // Command prompt drops it; then a selection of the last object only.
  EXPECT_EQ(blockNamesOf(session.host().current()->selections().pickFirst()),
            (std::vector<std::string>{"Door", "Door", "Door", "Window-Frame", "a", "a"}));
  EXPECT_THAT(session.run({"^C", "bcount", "L", ""}),
              HasSubstr("\nBlock ..\nCount " + std::string(12, '-') + "\na" + dots(6) + "1\n"));
  EXPECT_EQ(blockNamesOf(session.host().current()->selections().gripSet()), (std::vector<std::string>{"a"}));
  // The counted set is the drawing's selection: the next command takes it.
  EXPECT_EQ(blockNamesOf(session.host().current()->selections().pickFirst()), (std::vector<std::string>{"a"}));
  const size_t before = session.modelSpace().length();
  session.run({"ERASE"});
  EXPECT_EQ(session.modelSpace().length(), before - 1);
}

TEST(BlockCount, AnonymousBlocksAndExternalReferencesAreNotCounted) {
  const std::string input = dxfcheck::pythonDrawing(R"(
d = ezdxf.new('R2018')
anonymous = d.blocks.new_anonymous_block()
anonymous.add_line((0, 0), (1, 1))
d.add_xref_def('elsewhere.dxf', 'XR')
d.modelspace().add_blockref(anonymous.name, (0, 0))
d.modelspace().add_blockref('XR', (5, 0))
d.saveas(sys.argv[1])
)", "uncounted.dxf");
  HostSession session(CorpusDrawing{input});
  ASSERT_TRUE(session.loadModule());
  EXPECT_THAT(session.run({"bcount", ""}), EndsWith("Select objects: \nNo valid objects selected.\nCommand: "));
  // Esc at the prompt: no output at all.
  EXPECT_THAT(session.run({"bcount", "^C"}), EndsWith("Select objects: ^C\n*Cancel*\nCommand: "));
}

TEST(BlockCount, WithoutTheMessageLibraryTheBuiltInTextsArePrinted) {
  const std::string input = dxfcheck::pythonDrawing(kBlocks, "blocks-builtin.dxf");
  HostSession session(CorpusDrawing{input});
  // The module alone in a folder: no kestrixres.dll beside it.
  const std::string module = dxfcheck::tempPath("alone/kestrix.yrx");
  std::filesystem::create_directories(std::filesystem::path(module).parent_path());
  std::filesystem::copy_file(std::string(KESTRIX_BIN_DIR) + "/kestrix.yrx", module,
                             std::filesystem::copy_options::overwrite_existing);
  ASSERT_TRUE(session.loadModule(module));
  const std::string out = session.run({"bcount", ""});
  EXPECT_THAT(out, HasSubstr("\n回车选择全部块或...\n选择对象: \n块 " + dots(13) + "\n计数 " + std::string(23, '-') +
                             "\nWindow-Frame" + dots(6) + "1\n"));
  session.host().modules().unload(OdString(module));
}
