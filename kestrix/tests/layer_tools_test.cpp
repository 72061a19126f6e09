// The layer tools in the real host with the real module, on a drawing made
// by ezdxf; layer states and their "_LayerManage" records read back by ezdxf.
#include <gmock/gmock.h>

#include "kestrix_support.h"
#include "harness.h"

using testing::HasSubstr;

namespace {

// Layers 0, A, B (off), C (locked), F (frozen) and CUR (current, empty); a
// line in colour 6 on each of A, B and C, the one on C drawn last.
const char* const kLayers = R"(
d = ezdxf.new('R2018')
d.layers.add('A'); d.layers.add('B').off(); d.layers.add('C').lock(); d.layers.add('F').freeze(); d.layers.add('CUR')
for i, l in enumerate('ABC'): d.modelspace().add_line((i, 0), (i, 1), dxfattribs={'layer': l, 'color': 6})
d.header['$CLAYER'] = 'CUR'
d.saveas(sys.argv[1])
)";

// Each layer as name:[off frozen locked] and its record, if any, as /off,frozen,locked.
const char* const kLayerStates = R"(
d = ezdxf.readfile(sys.argv[1])
out = []
for l in sorted(d.layers, key=lambda l: l.dxf.name):
    if l.dxf.name == 'Defpoints': continue
    s = l.dxf.name + ':' + ''.join('x' if f else '-' for f in (l.is_off(), l.is_frozen(), l.is_locked()))
    if l.has_xdata('_LayerManage'):
        tags = l.get_xdata('_LayerManage')
        s += '/' + ','.join(str(t.value) for t in tags if t.code == 1070)
    out.append(s)
print(' '.join(out) + (' AUDIT' if d.audit().has_errors else ''))
)";

// Each line as layer:colour, left to right.
const char* const kLines = R"(
d = ezdxf.readfile(sys.argv[1])
print(' '.join('%s:%d' % (e.dxf.layer, e.dxf.color) for e in sorted(d.modelspace().query('LINE'), key=lambda e: e.dxf.start[0])))
)";

struct LayerDrawing {
  std::string input = dxfcheck::tempPath("layers.dxf");
  LayerDrawing() { EXPECT_EQ(dxfcheck::python(kLayers, input), ""); }
};

std::string check(HostSession& session, const char* script) {
  return dxfcheck::python(script, dxfcheck::saved(session.db(), "layers-out.dxf"));
}

const char* const kOriginal = "0:--- A:--- B:x-- C:--x CUR:--- F:-x-";

}  // namespace

TEST(LayerIsolation, FirstStatesAreKeptAndRestoreOrUndoPutsThemBack) {
  LayerDrawing drawing;
  HostSession session(CorpusDrawing{drawing.input});
  ASSERT_TRUE(session.loadModule());
  ASSERT_EQ(check(session, kLayerStates), kOriginal);

  // Objects on A only: every other layer frozen but the current one.
  EXPECT_THAT(session.run({"LAYFRZOTHER", "", "W", "-0.5,-1", "0.5,2", ""}),
              HasSubstr("Layers to keep [Select objects/Restore saved layer states] <Select objects>: "));
  const std::string frozen = "0:-x-/0,0,0 A:--- B:xx-/1,0,0 C:-xx/0,0,1 CUR:--- F:-x-/0,1,0";
  EXPECT_EQ(check(session, kLayerStates), frozen);

  // The line on the locked layer C chosen: C ends unlocked with its first
  // record; A and CUR get theirs now; B keeps the state from before the first change.
  session.run({"RY_laylckother", "", "L", ""});
  EXPECT_EQ(check(session, kLayerStates),
            "0:-xx/0,0,0 A:--x/0,0,0 B:xxx/1,0,0 C:-x-/0,0,1 CUR:--x/0,0,0 F:-xx/0,1,0");

  session.run({"U"});
  EXPECT_EQ(check(session, kLayerStates), frozen);

  // Esc at either prompt changes nothing.
  session.run({"LAYOFFOTHER", "^C"});
  session.run({"LAYOFFOTHER", "", "^C"});
  EXPECT_EQ(check(session, kLayerStates), frozen);

  EXPECT_THAT(session.run({"LAYOFFOTHER", "R"}), HasSubstr("\n5 layers restored."));
  EXPECT_EQ(check(session, kLayerStates), kOriginal);
  session.run({"U"});
  EXPECT_EQ(check(session, kLayerStates), frozen);
}

TEST(LayerIsolation, OffKeepsTheCurrentLayerInTheListAndLeavesChosenLayersAlone) {
  LayerDrawing drawing;
  HostSession session(CorpusDrawing{drawing.input});
  ASSERT_TRUE(session.loadModule());
  // Every object chosen (A, the off layer B, the locked layer C): B stays
  // off and C locked, both without a record; CUR is turned off.
  session.run({"LAYOFFOTHER", "", "ALL", ""});
  EXPECT_EQ(check(session, kLayerStates), "0:x--/0,0,0 A:--- B:x-- C:--x CUR:x--/0,0,0 F:xx-/0,1,0");
}

TEST(LayerMove, SelectedObjectsGoToTheLayerNamedOrPickedAndKeepTheirColour) {
  LayerDrawing drawing;
  HostSession session(CorpusDrawing{drawing.input});
  ASSERT_TRUE(session.loadModule());
  // The line on the locked layer C is refused by the selection; "cur" names CUR.
  const std::string out = session.run({"tcyd", "ALL", "", "NOSUCH", "cur"});
  EXPECT_THAT(out, HasSubstr("\nLayer \"NOSUCH\" not found."));
  EXPECT_THAT(out, HasSubstr("\n2 objects moved to layer \"CUR\"."));
  EXPECT_EQ(check(session, kLines), "CUR:6 CUR:6 C:6");
  session.run({"U"});
  EXPECT_EQ(check(session, kLines), "A:6 B:6 C:6");

  // The target taken from a picked object: the line on C.
  EXPECT_THAT(session.run({"LAYMOVE", "W", "-0.5,-1", "0.5,2", "", "", "2,0.5"}),
              HasSubstr("\n1 objects moved to layer \"C\"."));
  EXPECT_EQ(check(session, kLines), "C:6 B:6 C:6");
}

TEST(LayerColor, LayersOfTheSelectedObjectsChangeColourAndTheObjectsDoNot) {
  LayerDrawing drawing;
  HostSession session(CorpusDrawing{drawing.input});
  ASSERT_TRUE(session.loadModule());
  const std::string out = session.run({"pchc", "ALL", "", "300", "5"});
  EXPECT_THAT(out, HasSubstr("\nThe color number must be from 1 to 255."));
  EXPECT_THAT(out, HasSubstr("\n3 layers changed to color 5."));
  EXPECT_EQ(dxfcheck::python(R"(
d = ezdxf.readfile(sys.argv[1])
print(' '.join('%s:%d%s' % (l.dxf.name, l.color, '-off' if l.is_off() else '') for l in d.layers if l.dxf.name in 'ABC'))
)",
                             dxfcheck::saved(session.db(), "colors.dxf")),
            "A:5 B:5-off C:5");
  EXPECT_EQ(check(session, kLines), "A:6 B:6 C:6");
}

TEST(LayerDrawOrder, EntitiesAreDrawnLayerByLayerTheTopOfTheListLast) {
  LayerDrawing drawing;
  HostSession session(CorpusDrawing{drawing.input});
  ASSERT_TRUE(session.loadModule());
  const char* const drawOrder = R"(
from ezdxf import reorder
d = ezdxf.readfile(sys.argv[1])
msp = d.modelspace()
print(' '.join(e.dxf.layer for e in reorder.ascending(msp, msp.get_redraw_order())) + (' AUDIT' if d.audit().has_errors else ''))
)";
  // The list starts in table order: 0, Defpoints, A, B, C, F, CUR. C goes to
  // the top, B to the bottom.
  const std::string out =
      session.run({"LAYDRAWORDER", "1001:4", "1002", "1002", "1002", "1002", "1001:4", "1003", "1003", "OK"});
  EXPECT_THAT(out, HasSubstr("\nDraw order by layer set for 3 objects."));
  EXPECT_EQ(check(session, drawOrder), "B A C");

  session.run({"U"});
  EXPECT_EQ(check(session, drawOrder), "A B C");
  session.run({"LAYDRAWORDER", "1001:0", "1003", "Cancel"});
  EXPECT_EQ(check(session, drawOrder), "A B C");
}
