// BURST in the real host with the real module, on drawings made by ezdxf
// and on corpus drawings; what it leaves is read back by ezdxf.
#include <gmock/gmock.h>

#include "DbBlockReference.h"
#include "core/SelectionSets.h"
#include "kestrix_support.h"
#include "harness.h"

using testing::HasSubstr;

namespace {

// Nested and attributed blocks. "Outer" draws a circle on layer 0 in
// linetype BYBLOCK, a line on WALLS in colour BYBLOCK and a reference of
// "Inner" on layer 0 whose attribute lies on layer 0. The first reference
// (WALLS, colour 3, DASHED) has an attribute edited on it on layer 0 in
// colour BYBLOCK, a justified one on ATTL and an invisible one; the second
// (layer 0, colour BYBLOCK, no linetype) one attribute; the third lies on a
// locked layer.
const char* const kNestedDrawing = R"(
from ezdxf.enums import TextEntityAlignment
d = ezdxf.new('R2018')
d.layers.add('WALLS', color=5); d.layers.add('LOCKED').lock(); d.layers.add('ATTL')
d.linetypes.add('DASHED', pattern=[0.5, 0.25, -0.25])
inner = d.blocks.new('Inner')
inner.add_line((0, 0), (1, 0), dxfattribs={'layer': '0', 'color': 0})
inner.add_attdef('IN', (0, 0.2), dxfattribs={'height': 0.1})
outer = d.blocks.new('Outer')
outer.add_circle((0, 0), 1, dxfattribs={'layer': '0', 'linetype': 'BYBLOCK'})
outer.add_line((0, 0), (2, 2), dxfattribs={'layer': 'WALLS', 'color': 0})
outer.add_blockref('Inner', (3, 0), dxfattribs={'layer': '0'}).add_attrib('IN', 'nested value', (3, 0.2))
outer.add_attdef('TAG', (0, -1), dxfattribs={'height': 0.25})
outer.add_attdef('J', (0, -2), dxfattribs={'height': 0.25})
msp = d.modelspace()
r = msp.add_blockref('Outer', (10, 10), dxfattribs={'layer': 'WALLS', 'color': 3, 'linetype': 'DASHED', 'rotation': 30})
r.add_attrib('TAG', 'edited value', (10, 9), dxfattribs={'layer': '0', 'color': 0, 'height': 0.25, 'rotation': 30})
r.add_attrib('J', 'justified', (10, 8), dxfattribs={'layer': 'ATTL', 'height': 0.25}).set_placement(
    (11, 8), align=TextEntityAlignment.TOP_CENTER)
r.add_attrib('H', 'hidden', (10, 7), dxfattribs={'flags': 1})
r2 = msp.add_blockref('Outer', (30, 10), dxfattribs={'color': 0})
r2.add_attrib('TAG', 'second', (30, 9), dxfattribs={'color': 0, 'height': 0.25})
msp.add_blockref('Outer', (50, 10), dxfattribs={'layer': 'LOCKED'})
d.saveas(sys.argv[1])
)";

// What the nested drawing must look like after BURST of every reference.
const char* const kNestedExpected = R"(
d = ezdxf.readfile(sys.argv[1])
problems = []
if d.audit().has_errors: problems.append('audit')
msp = d.modelspace()
def one(query, test, what):
    found = [e for e in msp.query(query) if test(e)]
    if len(found) != 1: problems.append(what + ': %d found' % len(found))
    return found[0] if found else None
def near(p, q): return abs(p[0] - q[0]) < 1e-9 and abs(p[1] - q[1]) < 1e-9
t = one('TEXT', lambda e: e.dxf.text == 'edited value', 'edited text')
if t and (t.dxf.layer != 'WALLS' or t.dxf.color != 3 or not near(t.dxf.insert, (10, 9)) or abs(t.dxf.rotation - 30) > 1e-9):
    problems.append('edited text %s %s %s' % (t.dxf.layer, t.dxf.color, t.dxf.insert))
t = one('TEXT', lambda e: e.dxf.text == 'justified', 'justified text')
if t and (t.dxf.layer != 'ATTL' or t.dxf.halign != 1 or t.dxf.valign != 3 or not near(t.dxf.align_point, (11, 8))):
    problems.append('justified text %s %s %s' % (t.dxf.layer, t.dxf.halign, t.dxf.valign))
t = one('TEXT', lambda e: e.dxf.text == 'hidden', 'invisible attribute')
if t and t.dxf.layer != 'WALLS': problems.append('hidden text on ' + t.dxf.layer)
t = one('TEXT', lambda e: e.dxf.text == 'second', 'second text')
if t and (t.dxf.layer != '0' or t.dxf.color != 0): problems.append('second text %s %s' % (t.dxf.layer, t.dxf.color))
c = one('CIRCLE', lambda e: near(e.dxf.center, (10, 10)), 'first circle')
if c and (c.dxf.layer != 'WALLS' or c.dxf.linetype.upper() != 'DASHED'): problems.append('first circle %s %s' % (c.dxf.layer, c.dxf.linetype))
c = one('CIRCLE', lambda e: near(e.dxf.center, (30, 10)), 'second circle')
if c and (c.dxf.layer != '0' or c.dxf.linetype.upper() != 'BYLAYER'): problems.append('second circle ' + c.dxf.linetype)
l = one('LINE', lambda e: near(e.dxf.start, (10, 10)), 'first line')
if l and l.dxf.color != 3: problems.append('first line colour %d' % l.dxf.color)
l = one('LINE', lambda e: near(e.dxf.start, (30, 10)), 'second line')
if l and l.dxf.color != 0: problems.append('second line colour %d' % l.dxf.color)
i = one('INSERT', lambda e: e.dxf.name == 'Inner' and near(e.dxf.insert, (33, 10)), 'inner of the second')
if i and (i.dxf.layer != '0' or [a.dxf.layer for a in i.attribs] != ['0']): problems.append('inner of the second moved')
one('INSERT', lambda e: e.dxf.name == 'Inner' and e.dxf.layer == 'WALLS', 'inner of the first')
one('INSERT', lambda e: e.dxf.name == 'Outer' and e.dxf.layer == 'LOCKED', 'locked reference')
if len(msp.query('INSERT[name=="Outer"]')) != 1: problems.append('references left')
if len(msp.query('ATTDEF')): problems.append('definitions left')
print('\n'.join(problems) or 'ok')
)";

// Every attribute of every reference of the first drawing is a text of the
// second at its place, with its value, height, rotation, style and
// extrusion; layer 0 became the reference's layer and colour BYBLOCK its colour.
const char* const kAttributesKept = R"(
before, after = ezdxf.readfile(sys.argv[1]), ezdxf.readfile(sys.argv[2])
problems = []
if after.audit().has_errors: problems.append('audit')
texts = list(after.modelspace().query('TEXT'))
def same(a, b): return all(abs(x - y) < 1e-9 for x, y in zip(a, b))
count, added = 0, {}
for ref in before.modelspace().query('INSERT'):
    for a in ref.attribs:
        count += 1
        layer = ref.dxf.layer if a.dxf.layer == '0' else a.dxf.layer
        color = a.dxf.get('color', 256)
        if color == 0: color = ref.dxf.get('color', 256)
        match = [t for t in texts if t.dxf.text == a.dxf.text and same(t.dxf.insert, a.dxf.insert)
                 and abs(t.dxf.height - a.dxf.height) < 1e-9 and abs(t.dxf.rotation - a.dxf.rotation) < 1e-9
                 and t.dxf.style == a.dxf.style and same(t.dxf.extrusion, a.dxf.extrusion)
                 and t.dxf.layer == layer and t.dxf.get('color', 256) == color]
        if len(match) != 1: problems.append('%s: %d texts' % (a.dxf.text, len(match)))
    cells = ref.dxf.get('row_count', 1) * ref.dxf.get('column_count', 1)
    for e in before.blocks[ref.dxf.name]:
        if e.dxftype() != 'ATTDEF': added[e.dxftype()] = added.get(e.dxftype(), 0) + cells
added['TEXT'] = added.get('TEXT', 0) + count
added['INSERT'] = added.get('INSERT', 0) - len(before.modelspace().query('INSERT'))
for kind in set(added) | {'ATTDEF'}:
    n = len(after.modelspace().query(kind)) - len(before.modelspace().query(kind))
    if n != added.get(kind, 0): problems.append('%s: %d more, %d expected' % (kind, n, added.get(kind, 0)))
if count == 0: problems.append('no attributes in the drawing')
print('\n'.join(problems) or 'ok')
)";

using dxfcheck::sameEntities;

int highlight(HostSession& session) {
  return session.host().sysvars().getInt(L"HIGHLIGHT", -1);
}

}  // namespace

TEST(BurstCommand, AttributesBecomeTextsAndByBlockPiecesTakeTheReferenceProperties) {
  const std::string input = dxfcheck::pythonDrawing(kNestedDrawing, "nested.dxf");
  HostSession session(CorpusDrawing{input});
  ASSERT_TRUE(session.loadModule());
  const std::string before = dxfcheck::saved(session.db(), "nested-before.dxf");

  const std::string out = session.run({"BURST", "ALL", ""});
  EXPECT_THAT(out, HasSubstr("1 was on a locked layer."));
  EXPECT_EQ(dxfcheck::python(kNestedExpected, dxfcheck::saved(session.db(), "nested-after.dxf")), "ok");

  session.run({"U"});
  EXPECT_EQ(sameEntities(before, dxfcheck::saved(session.db(), "nested-undone.dxf")), "same");
}

class BurstCorpus : public testing::TestWithParam<const char*> {};

TEST_P(BurstCorpus, EveryAttributeValueStaysAsTextAtItsPlace) {
  HostSession session(CorpusDrawing{GetParam()});
  ASSERT_TRUE(session.loadModule());
  const std::string before = dxfcheck::saved(session.db(), "corpus-before.dxf");
  session.run({"BURST", "ALL", ""});
  const std::string after = dxfcheck::saved(session.db(), "corpus-after.dxf");
  EXPECT_EQ(dxfcheck::python(kAttributesKept, "'" + before + "' '" + after + "'"), "ok");
}

INSTANTIATE_TEST_SUITE_P(Drawings, BurstCorpus,
                         testing::Values("examples_dxf_multi_insert_with_attribs.dxf",
                                         "examples_dxf_text_negative_extrusion.dxf"));

TEST(BurstCommand, PickFirstReferencesAndTheOnesThatCannotBeBurst) {
  // In model space: a plain reference, one of an external reference, one of
  // a block that may not be exploded, one on a locked layer; one in paper space.
  const std::string input = dxfcheck::pythonDrawing(R"(
d = ezdxf.new('R2018')
d.layers.add('LOCKED').lock()
d.blocks.new('Plain').add_line((0, 0), (1, 0))
d.blocks.new('Fixed').add_line((0, 0), (1, 0))
d.block_records.get('Fixed').dxf.explode = 0
d.add_xref_def('elsewhere.dxf', 'XR')
msp = d.modelspace()
for name, x in (('Plain', 0), ('XR', 10), ('Fixed', 20)): msp.add_blockref(name, (x, 0))
msp.add_blockref('Plain', (30, 0), dxfattribs={'layer': 'LOCKED'})
d.layout('Layout1').add_blockref('Plain', (40, 0))
d.saveas(sys.argv[1])
)", "refused.dxf");
  HostSession session(CorpusDrawing{input});
  ASSERT_TRUE(session.loadModule());
  session.run({"HIGHLIGHT", "0"});
  std::vector<OdDbObjectId> all;
  for (OdDbObjectId space : {session.db()->getModelSpaceId(), session.db()->getPaperSpaceId()}) {
    OdDbObjectPtr block = space.openObject();
    for (const OdDbObjectId& id : static_cast<OdDbBlockTableRecord*>(block.get())->entityIds()) all.push_back(id);
  }
  ASSERT_EQ(all.size(), 5u);
  session.host().current()->selections().pickFirst() = all;

  const std::string out = session.run({"BURST"});
  EXPECT_THAT(out, HasSubstr("\n4 found.\n4 selected, 1 not in the current space."));
  // From the last reference to the first: the unexplodable block, then the external reference.
  EXPECT_THAT(out, HasSubstr("\nThe block cannot be exploded.\nThe object is an external reference.\nNo object found."));
  EXPECT_EQ(out.find("Select objects"), std::string::npos);
  EXPECT_EQ(highlight(session), 0);
  const std::string after = dxfcheck::saved(session.db(), "refused-after.dxf");
  EXPECT_EQ(dxfcheck::python(R"(
d = ezdxf.readfile(sys.argv[1])
print(sorted(e.dxf.name for e in d.modelspace().query('INSERT')), len(d.modelspace().query('LINE')),
      len(d.layout('Layout1').query('INSERT')))
)",
                             after),
            "['Fixed', 'Plain', 'XR'] 1 1");

  // Esc at the prompt changes nothing and puts HIGHLIGHT back.
  session.run({"BURST", "^C"});
  EXPECT_EQ(highlight(session), 0);
  EXPECT_EQ(sameEntities(after, dxfcheck::saved(session.db(), "refused-esc.dxf")), "same");
}

TEST(BurstCommand, MultilineAttributeBecomesMultilineTextWithItsContents) {
  const std::string input = dxfcheck::pythonDrawing(R"(
d = ezdxf.new('R2018')
d.blocks.new('M').add_line((0, 0), (1, 0))
d.layers.add('WALLS')
r = d.modelspace().add_blockref('M', (5, 5), dxfattribs={'layer': 'WALLS', 'color': 2})
a = r.add_attrib('NOTE', 'x', (5, 4), dxfattribs={'color': 0, 'layer': '0'})
m = d.modelspace().add_mtext('first line\\Psecond line', dxfattribs={'insert': (5, 4), 'char_height': 0.3, 'color': 0})
a.embed_mtext(m)
d.modelspace().delete_entity(m)
d.saveas(sys.argv[1])
)", "multiline.dxf");
  HostSession session(CorpusDrawing{input});
  ASSERT_TRUE(session.loadModule());
  session.run({"BURST", "ALL", ""});
  // Colour BYBLOCK became the reference's 2, layer 0 the reference's layer.
  EXPECT_EQ(dxfcheck::python(R"(
d = ezdxf.readfile(sys.argv[1])
print(' '.join('%s %s %d %s %s' % (e.dxftype(), e.dxf.layer, e.dxf.color, e.text, tuple(e.dxf.insert))
               for e in d.modelspace().query('MTEXT TEXT ATTRIB INSERT')), d.audit().has_errors)
)",
                             dxfcheck::saved(session.db(), "multiline-after.dxf")),
            "MTEXT WALLS 2 first line\\Psecond line (5.0, 4.0, 0.0) False");
}
