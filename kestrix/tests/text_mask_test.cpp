// textmask and textunmask in the real host with the real module. Mask
// corners are checked as python3-ezdxf reads them from the saved drawing,
// against the text box worked out by hand from the text measure (0.7 x height
// a character, one height tall; a multiline text's lines 5/3 height apart).
#include <dlfcn.h>
#include <gmock/gmock.h>

#include <cmath>
#include <set>

#include "DbDictionary.h"
#include "kestrix_support.h"

using testing::HasSubstr;
using testing::Not;

namespace {

const char* const kMaskReport = R"(
msp = doc.modelspace()
for name, group in doc.groups:
    print('GROUP', name, *[e.dxf.handle + ':' + e.dxftype() for e in group])
for e in msp:
    t = e.dxftype()
    if t == 'WIPEOUT':
        pts = list(e.boundary_path_wcs())[:4]
    elif t == 'SOLID':
        pts = [e.ocs().to_wcs(e.dxf.get(n)) for n in ('vtx0', 'vtx1', 'vtx2', 'vtx3')]
    elif t == '3DFACE':
        pts = [e.dxf.get(n) for n in ('vtx0', 'vtx1', 'vtx2', 'vtx3')]
    else:
        continue
    flags = sum(1 << i for i in range(4) if e.is_invisible_edge(i)) if t == '3DFACE' else 0
    print('MASK', e.dxf.handle, t, e.dxf.color, e.dxf.layer, flags, *['%.9f' % c for p in pts for c in p])
from ezdxf import reorder
order = dict(msp.get_redraw_order())
print('ORDER', *[e.dxf.handle for e in reorder.ascending(msp, order)])
)";

struct Mask {
  std::string type, layer;
  int color = 0, flags = 0;
  std::vector<OdGePoint3d> corners;
};

struct MaskReport {
  int auditErrors = -1;
  std::map<std::string, std::vector<std::string>> groups;  // name -> handle:TYPE
  std::map<std::string, Mask> masks;                      // by handle
  std::vector<std::string> order;
  // The mask grouped with a text (the group's other member).
  std::vector<std::string> masksOf(const std::string& text) const {
    std::vector<std::string> result;
    for (const auto& [name, members] : groups) {
      if (members.size() != 2) continue;
      for (int i = 0; i < 2; ++i) {
        if (members[i].substr(0, members[i].find(':')) == text)
          result.push_back(members[1 - i].substr(0, members[1 - i].find(':')));
      }
    }
    return result;
  }
};

MaskReport readMasks(OdDbDatabase* db, const std::string& name) {
  MaskReport report;
  const std::vector<std::string> lines = txtmask::ezdxfLines(db, name, kMaskReport);
  for (const std::string& line : lines) {
    const std::vector<std::string> w = txtmask::words(line);
    if (w.empty()) continue;
    if (w[0] == "AUDIT") report.auditErrors = std::stoi(w[1]);
    if (w[0] == "GROUP") report.groups[w[1]] = std::vector<std::string>(w.begin() + 2, w.end());
    if (w[0] == "ORDER") report.order = std::vector<std::string>(w.begin() + 1, w.end());
    if (w[0] == "MASK") {
      Mask mask{w[2], w[4], std::stoi(w[3]), std::stoi(w[5]), {}};
      for (size_t i = 6; i + 2 < w.size(); i += 3)
        mask.corners.emplace_back(std::stod(w[i]), std::stod(w[i + 1]), std::stod(w[i + 2]));
      report.masks[w[1]] = mask;
    }
    if (w[0] == "Traceback") ADD_FAILURE() << testing::PrintToString(std::vector<std::string>(&line, lines.data() + lines.size()));
  }
  return report;
}

// The corners lower-left, lower-right, upper-right, upper-left of the box
// [x0, x1] x [y0, y1] around the point at, turned by angle in the x-y plane.
std::vector<OdGePoint3d> turnedBox(const OdGePoint3d& at, double angle, double x0, double y0, double x1, double y1) {
  const double c = std::cos(angle), s = std::sin(angle);
  std::vector<OdGePoint3d> corners;
  for (auto [x, y] : {std::pair{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}})
    corners.emplace_back(at.x + x * c - y * s, at.y + x * s + y * c, at.z);
  return corners;
}

// The mask's corners in the order its kind stores them.
void expectCorners(const Mask& mask, const std::vector<OdGePoint3d>& box, const std::string& what) {
  ASSERT_EQ(mask.corners.size(), 4u) << what;
  std::vector<OdGePoint3d> expected = box;
  if (mask.type == "SOLID") expected = {box[0], box[1], box[3], box[2]};
  if (mask.type == "WIPEOUT") {
    // The boundary may start at any corner: compare as a set.
    for (const OdGePoint3d& corner : box) {
      bool found = false;
      for (const OdGePoint3d& p : mask.corners) found = found || p.distanceTo(corner) < 1e-6;
      EXPECT_TRUE(found) << what << ": corner " << corner.x << "," << corner.y << " missing";
    }
    return;
  }
  for (int i = 0; i < 4; ++i)
    EXPECT_LT(mask.corners[i].distanceTo(expected[i]), 1e-6)
        << what << " corner " << i << ": " << mask.corners[i].x << "," << mask.corners[i].y << " expected "
        << expected[i].x << "," << expected[i].y;
}

struct Expected {
  OdDbObjectId text;
  std::vector<OdGePoint3d> box;  // grown by the offset
  std::string what;
};

// Texts of every justification and multiline texts of every attachment, at
// several rotations, on layer "Notes"; their boxes grown by 0.35 x height.
std::vector<Expected> placeTexts(OdDbDatabase* db) {
  const OdDbObjectId notes = att::layer(db, L"Notes");
  std::vector<Expected> result;
  // "ABCD" at height 2: 5.6 wide, 2 tall; the margin is 0.7.
  const double w = 5.6, h = 2, m = 0.7;
  struct Justification {
    OdDb::TextHorzMode horizontal;
    OdDb::TextVertMode vertical;
    double x0, y0;  // the box's lower left from the placement point
    const char* name;
  };
  const Justification justifications[] = {
      {OdDb::kTextLeft, OdDb::kTextBase, 0, 0, "left"},          {OdDb::kTextCenter, OdDb::kTextBase, -w / 2, 0, "center"},
      {OdDb::kTextRight, OdDb::kTextBase, -w, 0, "right"},       {OdDb::kTextMid, OdDb::kTextBase, -w / 2, -h / 2, "middle"},
      {OdDb::kTextLeft, OdDb::kTextTop, 0, -h, "top left"},      {OdDb::kTextRight, OdDb::kTextVertMid, -w, -h / 2, "middle right"},
      {OdDb::kTextCenter, OdDb::kTextBottom, -w / 2, 0, "bottom center"},
  };
  const double rotations[] = {0, M_PI / 6, M_PI / 2, 3.5};
  int i = 0;
  for (const Justification& j : justifications) {
    for (double rotation : rotations) {
      const OdGePoint3d at(20.0 * i, 7.0 * (i % 3), 0);
      txtmask::TextSpec spec;
      spec.text = L"ABCD", spec.at = at, spec.height = 2, spec.rotation = rotation, spec.layer = notes;
      spec.horizontal = j.horizontal, spec.vertical = j.vertical;
      result.push_back({txtmask::text(db, spec), turnedBox(at, rotation, j.x0 - m, j.y0 - m, j.x0 + w + m, j.y0 + h + m),
                        std::string("text ") + j.name + " at " + std::to_string(rotation)});
      ++i;
    }
  }
  // "AB\PCDEF" at height 1.5: 4.2 wide (the longer line), 1.5 x (1 + 5/3) = 4 tall; margin 0.525.
  const double mw = 4.2, mh = 4, mm = 0.525;
  for (int attachment = 1; attachment <= 9; ++attachment) {
    // The location is at fraction (fx, fy) of the box: columns left, centre,
    // right; rows top, middle, bottom.
    const double fx = ((attachment - 1) % 3) / 2.0, fy = 1.0 - ((attachment - 1) / 3) / 2.0;
    const double rotation = 0.7 * attachment;
    const OdGePoint3d at(15.0 * attachment, -40, 0);
    const OdDbObjectId id = txtmask::mtext(db, L"AB\\PCDEF", at, 1.5, static_cast<OdDbMText::AttachmentPoint>(attachment),
                                       rotation);
    OdDbEntityPtr(OdDbEntity::cast(id.openObject(OdDb::kForWrite).get()))->setLayer(notes);
    result.push_back({id,
                      turnedBox(at, rotation, -fx * mw - mm, -fy * mh - mm, (1 - fx) * mw + mm, (1 - fy) * mh + mm),
                      "mtext attachment " + std::to_string(attachment)});
  }
  return result;
}

class MaskKinds : public testing::TestWithParam<const char*> {};

TEST_P(MaskKinds, EveryTextGetsAMaskOfItsBoxGrownByTheOffsetGroupedAndDrawnBelowIt) {
  const std::string kind = GetParam();
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const std::vector<Expected> texts = placeTexts(session.db());
  std::vector<std::string> replies = {"textmask", "Masktype", kind};
  if (kind == "Solid") replies.push_back("3");
  replies.insert(replies.end(), {"ALL", ""});
  const std::string out = session.run(replies);
  EXPECT_THAT(out, HasSubstr(std::to_string(texts.size()) + " texts masked."));

  const MaskReport report = readMasks(session.db(), "kinds-" + kind);
  EXPECT_EQ(report.auditErrors, 0);
  EXPECT_EQ(report.groups.size(), texts.size());
  const std::string type = kind == "Solid" ? "SOLID" : kind == "3dface" ? "3DFACE" : "WIPEOUT";
  for (const Expected& e : texts) {
    const std::vector<std::string> masks = report.masksOf(txtmask::handleOf(e.text));
    ASSERT_EQ(masks.size(), 1u) << e.what;
    const Mask& mask = report.masks.at(masks[0]);
    EXPECT_EQ(mask.type, type) << e.what;
    EXPECT_EQ(mask.layer, "Notes") << e.what;
    if (type == "SOLID") {
      EXPECT_EQ(mask.color, 3);
    }
    if (type == "3DFACE") {
      EXPECT_EQ(mask.flags, 15) << e.what;
    }
    expectCorners(mask, e.box, e.what);
    // The text is drawn right after its mask.
    const auto at = std::find(report.order.begin(), report.order.end(), masks[0]);
    ASSERT_NE(at, report.order.end());
    ASSERT_NE(at + 1, report.order.end());
    EXPECT_EQ(*(at + 1), txtmask::handleOf(e.text)) << e.what;
  }
  for (const auto& [name, members] : report.groups) EXPECT_EQ(name.substr(0, 2), "*A");
}

INSTANTIATE_TEST_SUITE_P(TextMask, MaskKinds, testing::Values("Wipeout", "Solid", "3dface"));

TEST(TextMask, SettingsAreShownNormalisedKeptAndAZeroOffsetMasksExactlyTheBox) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  txtmask::TextSpec spec;
  spec.text = L"AB", spec.height = 10;
  const OdDbObjectId id = txtmask::text(session.db(), spec);
  // First run: the defaults; a negative offset is refused and the factor
  // stays; Esc at the prompt changes nothing.
  std::string out = session.run({"textmask", "Offset", "-1", "", "^C"});
  EXPECT_THAT(out, HasSubstr("Current settings: Offset factor = 0.3500, Mask type = Wipeout"));
  EXPECT_THAT(out, HasSubstr("The offset factor must be zero or a positive number."));
  EXPECT_THAT(out, HasSubstr("Offset factor <0.3500>: "));
  EXPECT_EQ(session.modelSpace().length(), 1u);

  out = session.run({"textmask", "O", "0", "#" + txtmask::handleOf(id), ""});
  EXPECT_THAT(out, HasSubstr("Texts selected: 1"));
  EXPECT_THAT(out, HasSubstr("1 texts masked."));
  // The factor is remembered: the next run shows it.
  out = session.run({"textmask", "^C"});
  EXPECT_THAT(out, HasSubstr("Offset factor = 0.0000, Mask type = Wipeout"));
  const MaskReport report = readMasks(session.db(), "zero");
  const std::vector<std::string> masks = report.masksOf(txtmask::handleOf(id));
  ASSERT_EQ(masks.size(), 1u);
  expectCorners(report.masks.at(masks[0]), turnedBox({0, 0, 0}, 0, 0, 0, 14, 10), "zero offset");
}

TEST(TextMask, SettingsLastWhileTheModuleIsLoadedAndStartAfreshWhenItIsLoadedAgain) {
  // A second reference keeps the library mapped when the host unloads the
  // module, as the system does for a library that registered thread-local
  // destructors: its memory then outlives the unload.
  const std::string module = std::string(KESTRIX_BIN_DIR) + "/kestrix.yrx";
  void* pinned = dlopen(module.c_str(), RTLD_NOW);
  ASSERT_NE(pinned, nullptr);
  {
    HostSession session;
    ASSERT_TRUE(session.loadModule());
    session.run({"textmask", "O", "0.5", "^C"});
    EXPECT_THAT(session.run({"textmask", "^C"}), HasSubstr("Offset factor = 0.5000, Mask type = Wipeout"));
  }
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  EXPECT_THAT(session.run({"textmask", "^C"}), HasSubstr("Offset factor = 0.3500, Mask type = Wipeout"));
  dlclose(pinned);
}

TEST(TextMask, SnapsAndEchoComeBackOnEveryWayOutAndOneUndoTakesEverythingBack) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  txtmask::TextSpec spec;
  txtmask::text(session.db(), spec);
  spec.at = {10, 0, 0};
  txtmask::text(session.db(), spec);
  for (const std::vector<std::string>& way :
       {std::vector<std::string>{"textmask", "^C"}, {"textmask", "Masktype", "^C"}, {"textmask", ""},
        {"textmask", "ALL", ""}}) {
    session.run({"OSMODE", "4133", "CMDECHO", "1"});
    session.run(way);
    EXPECT_EQ(session.host().sysvars().getInt(L"OSMODE", -1), 4133) << way[1];
    EXPECT_EQ(session.host().sysvars().getInt(L"CMDECHO", -1), 1) << way[1];
  }
  // The run that masked added two masks and two groups; U takes all back.
  EXPECT_EQ(session.modelSpace().length(), 4u);
  session.run({"U"});
  EXPECT_EQ(session.modelSpace().length(), 2u);
  EXPECT_TRUE(readMasks(session.db(), "undone").groups.empty());
  // Running snaps off (16384 added) is a value the variable takes.
  session.run({"OSMODE", "20517"});
  EXPECT_EQ(session.host().sysvars().getInt(L"OSMODE", -1), 20517);
}

TEST(TextMask, ATiltedTextIsMaskedInItsOwnPlaneAndTheUcsStaysAsItWas) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  txtmask::TextSpec spec;
  spec.text = L"AB", spec.height = 1, spec.normal = OdGeVector3d(0, -1, 0);  // standing in the x-z plane
  spec.at = {5, 3, 2};
  const OdDbObjectId id = txtmask::text(session.db(), spec);
  const std::string ucsBefore = session.run({"UCSXDIR"}) + session.run({"UCSYDIR"});
  const std::string out = session.run({"textmask", "ALL", ""});
  EXPECT_THAT(out, HasSubstr("1 texts masked."));
  EXPECT_EQ(session.run({"UCSXDIR"}) + session.run({"UCSYDIR"}), ucsBefore);
  // The text's x axis is the world's (arbitrary axis rule for -y), its y
  // axis the world's z: the box runs 1.4 along x and 1 up in z.
  const MaskReport report = readMasks(session.db(), "tilted");
  const std::vector<std::string> masks = report.masksOf(txtmask::handleOf(id));
  ASSERT_EQ(masks.size(), 1u);
  const OdGePoint3d at = OdDbTextPtr(OdDbText::cast(id.openObject().get()))->position();
  const double m = 0.35;
  const OdGeVector3d x = odgeOcsToWcs(OdGeVector3d(1, 0, 0), spec.normal), y = spec.normal.crossProduct(x);
  EXPECT_TRUE(y.isEqualTo(OdGeVector3d(0, 0, 1)) || y.isEqualTo(OdGeVector3d(0, 0, -1)));
  expectCorners(report.masks.at(masks[0]),
                {at - x * m - y * m, at + x * (1.4 + m) - y * m, at + x * (1.4 + m) + y * (1 + m), at - x * m + y * (1 + m)},
                "tilted");
  // The UCS commands run inside take nothing from the one undo step.
  session.run({"U"});
  EXPECT_EQ(session.modelSpace().length(), 1u);
}

TEST(TextMask, LockedLayersOtherObjectsAndRemovalAreRespected) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  const OdDbObjectId locked = att::layer(session.db(), L"Locked", 4);
  txtmask::TextSpec spec;
  const OdDbObjectId kept = txtmask::text(session.db(), spec);
  spec.at = {10, 0, 0};
  const OdDbObjectId removed = txtmask::text(session.db(), spec);
  spec.at = {20, 0, 0}, spec.layer = locked;
  const OdDbObjectId onLocked = txtmask::text(session.db(), spec);
  OdDbLinePtr line = OdDbLine::createObject();
  line->setEndPoint({0, -5, 0});
  const OdDbObjectId lineId = txtmask::append(session.db(), line.get());
  const std::string out = session.run({"textmask", "#" + txtmask::handleOf(lineId), "#" + txtmask::handleOf(onLocked),
                                       "ALL", "Remove", "#" + txtmask::handleOf(removed), ""});
  EXPECT_THAT(out, HasSubstr("The object picked is not a text or multiline text."));
  EXPECT_THAT(out, HasSubstr("The text is on a locked layer and is skipped."));
  EXPECT_THAT(out, HasSubstr("1 on locked layers, left out."));
  EXPECT_THAT(out, HasSubstr("1 texts masked."));
  const MaskReport report = readMasks(session.db(), "locked");
  EXPECT_EQ(report.masksOf(txtmask::handleOf(kept)).size(), 1u);
  EXPECT_TRUE(report.masksOf(txtmask::handleOf(removed)).empty());
  EXPECT_TRUE(report.masksOf(txtmask::handleOf(onLocked)).empty());
  // Undo takes back the last step of the selection: nothing is left chosen.
  EXPECT_THAT(session.run({"textmask", "#" + txtmask::handleOf(removed), "Undo", ""}), HasSubstr("Nothing selected."));
}

// ---------------------------------------------------------------- textunmask

OdDbObjectId groupOf(OdDbDatabase* db, const wchar_t* name, const std::vector<OdDbObjectId>& members) {
  OdDbDictionaryPtr dictionary = OdDbDictionary::cast(db->getGroupDictionaryId(true).openObject(OdDb::kForWrite).get());
  OdDbGroupPtr group = OdDbGroup::createObject();
  dictionary->setAt(name, group.get());
  for (const OdDbObjectId& id : members) group->append(id);
  return group->objectId();
}

TEST(TextUnmask, TwoMasksOfOneTextGoAtOnceAndOtherGroupsStay) {
  HostSession session;
  ASSERT_TRUE(session.loadModule());
  txtmask::TextSpec spec;
  const OdDbObjectId twice = txtmask::text(session.db(), spec);
  session.run({"textmask", "#" + txtmask::handleOf(twice), ""});
  session.run({"textmask", "Masktype", "3dface", "#" + txtmask::handleOf(twice), ""});
  ASSERT_EQ(readMasks(session.db(), "twice").masksOf(txtmask::handleOf(twice)).size(), 2u);

  // A text in a group of three (text, mask, line) and a text grouped with a line.
  spec.at = {10, 0, 0};
  const OdDbObjectId inThree = txtmask::text(session.db(), spec);
  session.run({"textmask", "Masktype", "Solid", "", "#" + txtmask::handleOf(inThree), ""});
  OdDbLinePtr line = OdDbLine::createObject();
  const OdDbObjectId lineId = txtmask::append(session.db(), line.get());
  {
    MaskReport report = readMasks(session.db(), "three");
    for (auto& [name, members] : report.groups) {
      if (std::find(members.begin(), members.end(), txtmask::handleOf(inThree) + ":TEXT") == members.end()) continue;
      OdDbDictionaryPtr dictionary = OdDbDictionary::cast(session.db()->getGroupDictionaryId().openObject().get());
      OdDbGroupPtr(OdDbGroup::cast(dictionary->getAt(OdString(name.c_str()), OdDb::kForWrite).get()))->append(lineId);
    }
  }
  spec.at = {20, 0, 0};
  const OdDbObjectId withLine = txtmask::text(session.db(), spec);
  OdDbLinePtr other = OdDbLine::createObject();
  groupOf(session.db(), L"PAIR", {withLine, txtmask::append(session.db(), other.get())});
  const size_t before = session.modelSpace().length();

  std::string out = session.run({"textunmask", "#" + txtmask::handleOf(inThree), "#" + txtmask::handleOf(withLine), ""});
  EXPECT_THAT(out, HasSubstr("No text mask found."));
  EXPECT_EQ(session.modelSpace().length(), before);
  EXPECT_EQ(session.host().sysvars().getInt(L"PICKSTYLE", -1), 1);

  out = session.run({"textunmask", "#" + txtmask::handleOf(twice), ""});
  EXPECT_THAT(out, HasSubstr("Looking for text masks..."));
  EXPECT_THAT(out, HasSubstr("2 text masks removed."));
  const MaskReport after = readMasks(session.db(), "unmasked");
  EXPECT_EQ(after.auditErrors, 0);
  EXPECT_TRUE(after.masksOf(txtmask::handleOf(twice)).empty());
  EXPECT_EQ(session.modelSpace().length(), before - 2);
  // The text stays, and so do the group of three and the text with its line.
  EXPECT_TRUE(session.modelSpace().contains(twice));
  EXPECT_EQ(after.groups.count("PAIR"), 1u);
  EXPECT_EQ(session.run({"textunmask", "^C"}).find("*Cancel*") != std::string::npos, true);
}

}  // namespace
