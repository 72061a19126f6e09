// PLOT: pictures checked by their pixels. A drawing made here is plotted on
// a 100 x 100 mm sheet at 1 mm per unit and 254 dpi, so world (x, y) lands
// on pixel (10x, 1000 - 10y): every expected colour below is worked out from
// that by hand. SVG output must parse as XML and PDF output must render in
// pdftoppm.
#include <cairo.h>
#include <gmock/gmock.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "DbCurves.h"
#include "DbHatch.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "DbViewport.h"
#include "DbRasterImage.h"
#include "harness.h"

using ::testing::HasSubstr;

namespace {

struct Pixel {
  int r, g, b;
};

OdDbObjectId addRecord(OdDbDatabase* db, OdDbNameTable table, OdDbSymbolTableRecord* record) {
  OdDbObjectPtr t = db->tableId(table).openObject(OdDb::kForWrite);
  return static_cast<OdDbSymbolTable*>(t.get())->add(record);
}

OdDbObjectId append(OdDbDatabase* db, OdDbEntity* entity) {
  entity->setDatabaseDefaults(db);
  OdDbObjectPtr space = db->getModelSpaceId().openObject(OdDb::kForWrite);
  return static_cast<OdDbBlockTableRecord*>(space.get())->appendOdDbEntity(entity);
}

void line(OdDbDatabase* db, double x0, double y0, double x1, double y1, int color, OdDb::LineWeight weight,
          OdDbObjectId layer = OdDbObjectId(), OdDbObjectId linetype = OdDbObjectId()) {
  OdDbLinePtr l = OdDbLine::createObject();
  l->setStartPoint(OdGePoint3d(x0, y0, 0));
  l->setEndPoint(OdGePoint3d(x1, y1, 0));
  append(db, l.get());
  l->setColorIndex(color);
  l->setLineWeight(weight);
  if (!layer.isNull()) l->setLayer(layer);
  if (!linetype.isNull()) l->setLinetype(linetype);
}

// The test drawing: a thick red circle, a dashed blue line under LTSCALE 2,
// a green solid hatch, a magenta line under a masked text, and a cyan line
// on a frozen layer.
void buildDrawing(OdDbDatabase* db) {
  OdDbCirclePtr circle = OdDbCircle::createObject();
  circle->setCenter(OdGePoint3d(30, 70, 0));
  circle->setRadius(10);
  append(db, circle.get());
  circle->setColorIndex(1);
  circle->setLineWeight(OdDb::kLnWt200);  // 2 mm: 20 pixels

  OdDbLinetypeTableRecordPtr dashed = OdDbLinetypeTableRecord::createObject();
  dashed->setName(L"PLOTDASH");
  dashed->setNumDashes(2);
  dashed->setDashLengthAt(0, 5);
  dashed->setDashLengthAt(1, -5);
  dashed->setPatternLength(10);
  const OdDbObjectId dashId = addRecord(db, OdDbNameTable::kLinetype, dashed.get());
  db->setLTSCALE(2);  // 10 units drawn, 10 left out: 100 pixels each
  line(db, 0, 10, 100, 10, 5, OdDb::kLnWt050, OdDbObjectId(), dashId);

  OdDbHatchPtr hatch = OdDbHatch::createObject();
  append(db, hatch.get());
  hatch->setPattern(OdDbHatch::kPreDefined, L"SOLID");
  OdGePoint2dArray square;
  for (auto [x, y] : {std::pair{60.0, 60.0}, {90.0, 60.0}, {90.0, 90.0}, {60.0, 90.0}}) square.append(OdGePoint2d(x, y));
  OdGeDoubleArray bulges;
  hatch->appendLoop(OdDbHatch::kPolyline | OdDbHatch::kExternal, square, bulges);
  hatch->setColorIndex(3);

  line(db, 0, 41, 100, 41, 6, OdDb::kLnWt100);
  OdDbMTextPtr text = OdDbMText::createObject();
  append(db, text.get());
  text->setLocation(OdGePoint3d(40, 45, 0));
  text->setTextHeight(5);
  text->setWidth(30);
  text->setAttachment(OdDbMText::kTopLeft);
  text->setContents(L"MASK");
  text->setBackgroundFill(true);
  text->setUseBackgroundColor(true);
  text->setBackgroundScaleFactor(1.5);  // the mask reaches 2.5 units past the box: x 37.5 - 72.5

  OdDbLayerTableRecordPtr frozen = OdDbLayerTableRecord::createObject();
  frozen->setName(L"FROZEN");
  frozen->setIsFrozen(true);
  const OdDbObjectId frozenId = addRecord(db, OdDbNameTable::kLayer, frozen.get());
  line(db, 0, 25, 100, 25, 4, OdDb::kLnWt100, frozenId);
}

std::string tempPath(const std::string& name) {
  return (std::filesystem::temp_directory_path() / ("ryad-plot-" + std::to_string(getpid()) + "-" + name)).string();
}

std::vector<std::string> plotReplies(const std::string& device, const std::string& path) {
  return {"PLOT", device, "Window", "0,0", "100,100", "100x100", "Portrait", "1=1", "0,0", "Yes",
          // PNG only: resolution and background.
          "254", "White", path};
}

class Picture {
 public:
  explicit Picture(const std::string& path) : m_surface(cairo_image_surface_create_from_png(path.c_str())) {}
  ~Picture() { cairo_surface_destroy(m_surface); }
  bool ok() const { return cairo_surface_status(m_surface) == CAIRO_STATUS_SUCCESS; }
  int width() const { return cairo_image_surface_get_width(m_surface); }
  int height() const { return cairo_image_surface_get_height(m_surface); }
  // The pixel under world point (x, y).
  Pixel at(double x, double y) const { return pixel(static_cast<int>(x * 10), static_cast<int>(1000 - y * 10)); }
  Pixel pixel(int px, int py) const {
    const unsigned char* data = cairo_image_surface_get_data(m_surface);
    const auto* p = reinterpret_cast<const uint32_t*>(data + py * cairo_image_surface_get_stride(m_surface)) + px;
    return {int((*p >> 16) & 0xFF), int((*p >> 8) & 0xFF), int(*p & 0xFF)};
  }

 private:
  cairo_surface_t* m_surface;
};

bool near(const Pixel& p, int r, int g, int b) {
  return std::abs(p.r - r) < 40 && std::abs(p.g - g) < 40 && std::abs(p.b - b) < 40;
}

// Reads a binary PPM (as pdftoppm writes it); false when it is not one.
bool readPpm(const std::string& path, int& w, int& h, std::vector<unsigned char>& rgb) {
  std::ifstream in(path, std::ios::binary);
  std::string magic;
  int max = 0;
  in >> magic >> w >> h >> max;
  in.get();
  if (magic != "P6" || w <= 0 || h <= 0 || max != 255) return false;
  rgb.resize(size_t(w) * h * 3);
  in.read(reinterpret_cast<char*>(rgb.data()), std::streamsize(rgb.size()));
  return bool(in);
}

}  // namespace

TEST(Plot, PngShowsColoursWeightsDashesHatchesMasksAndLeavesFrozenLayersOut) {
  HostSession session;
  buildDrawing(session.db());
  const std::string png = tempPath("a.png");
  const std::string shown = session.run(plotReplies("Png", png));
  EXPECT_THAT(shown, HasSubstr("Plot written to " + png));
  Picture picture(png);
  ASSERT_TRUE(picture.ok());
  EXPECT_EQ(picture.width(), 1000);
  EXPECT_EQ(picture.height(), 1000);

  // The circle: red on its rim (2 mm wide: 1 unit each side), white inside and out.
  for (auto [x, y] : {std::pair{40.0, 70.0}, {20.0, 70.0}, {30.0, 80.0}, {30.0, 60.0}, {30.0, 80.8}})
    EXPECT_TRUE(near(picture.at(x, y), 255, 0, 0)) << x << "," << y;
  EXPECT_TRUE(near(picture.at(30, 70), 255, 255, 255));
  EXPECT_TRUE(near(picture.at(30, 82), 255, 255, 255));
  EXPECT_TRUE(near(picture.at(30, 77.5), 255, 255, 255));

  // The dashed line: blue from 0 to 10, 20 to 30...; white in the gaps.
  for (double x : {5.0, 25.0, 45.0, 65.0, 85.0}) EXPECT_TRUE(near(picture.at(x, 10), 0, 0, 255)) << x;
  for (double x : {15.0, 35.0, 55.0, 75.0, 95.0}) EXPECT_TRUE(near(picture.at(x, 10), 255, 255, 255)) << x;

  // The hatch: green throughout the square, nothing outside it.
  for (auto [x, y] : {std::pair{61.0, 61.0}, {75.0, 75.0}, {89.0, 89.0}})
    EXPECT_TRUE(near(picture.at(x, y), 0, 255, 0)) << x << "," << y;
  EXPECT_TRUE(near(picture.at(58, 75), 255, 255, 255));

  // The magenta line shows outside the mask and not under it.
  EXPECT_TRUE(near(picture.at(20, 41), 255, 0, 255));
  EXPECT_TRUE(near(picture.at(80, 41), 255, 0, 255));
  int magentaUnderMask = 0, inkInMask = 0;
  for (int px = 390; px < 715; ++px) {
    const Pixel p = picture.pixel(px, 1000 - 410);
    if (near(p, 255, 0, 255)) ++magentaUnderMask;
    for (int py = 555; py < 600; ++py) {
      if (near(picture.pixel(px, py), 0, 0, 0)) ++inkInMask;
    }
  }
  EXPECT_EQ(magentaUnderMask, 0);
  EXPECT_GT(inkInMask, 200);  // the letters themselves are drawn, black on the mask

  // The frozen layer's cyan line is nowhere.
  int cyan = 0;
  for (int px = 0; px < 1000; ++px) cyan += near(picture.pixel(px, 750), 0, 255, 255) ? 1 : 0;
  EXPECT_EQ(cyan, 0);
  std::filesystem::remove(png);
}

TEST(Plot, SvgParsesAsXmlAndPdfRendersInPdftoppm) {
  HostSession session;
  buildDrawing(session.db());
  const std::string svg = tempPath("b.svg"), pdf = tempPath("b.pdf");
  // PDF and SVG are not asked for a resolution or a background.
  std::vector<std::string> replies = plotReplies("Svg", svg);
  replies.erase(replies.end() - 3, replies.end() - 1);
  EXPECT_THAT(session.run(replies), HasSubstr("Plot written to " + svg));
  replies = plotReplies("Pdf", pdf);
  replies.erase(replies.end() - 3, replies.end() - 1);
  EXPECT_THAT(session.run(replies), HasSubstr("Plot written to " + pdf));

  const std::string check = "/usr/bin/python3 -c \"import sys, xml.etree.ElementTree as E; "
                            "r = E.parse(sys.argv[1]).getroot(); sys.exit(0 if r.tag.endswith('svg') and "
                            "r.get('width').startswith('283') else 1)\" " + svg;
  EXPECT_EQ(std::system(check.c_str()), 0);

  // pdftoppm at 25.4 dpi: one pixel per millimetre of the 100 mm sheet.
  const std::string base = tempPath("b-page");
  ASSERT_EQ(std::system(("pdftoppm -r 25.4 -singlefile " + pdf + " " + base).c_str()), 0);
  int w = 0, h = 0;
  std::vector<unsigned char> rgb;
  ASSERT_TRUE(readPpm(base + ".ppm", w, h, rgb));
  // pdftoppm rounds the page up to whole pixels.
  EXPECT_TRUE(w == 100 || w == 101) << w;
  EXPECT_TRUE(h == 100 || h == 101) << h;
  // The hatch's middle (75, 75) is green in the rendered page.
  const unsigned char* p = &rgb[(size_t(100 - 75) * w + 75) * 3];
  EXPECT_LT(p[0], 60);
  EXPECT_GT(p[1], 200);
  EXPECT_LT(p[2], 60);
  for (const std::string& f : {svg, pdf, base + ".ppm"}) std::filesystem::remove(f);
}

TEST(Plot, EscWritesNothingAndAnEmptyDrawingSaysSo) {
  HostSession session;
  const std::string png = tempPath("c.png");
  const std::string shown = session.run({"PLOT", "Png", "", "", "", "", "", "", "", "", png});
  EXPECT_THAT(shown, HasSubstr("Nothing plotted: the drawing has nothing to plot."));
  EXPECT_FALSE(std::filesystem::exists(png));
  buildDrawing(session.db());
  session.run({"PLOT", "Png", "Window", "0,0"});  // the input ends at the second corner: cancelled
  EXPECT_FALSE(std::filesystem::exists(png));
  EXPECT_THAT(session.run({"PLOT", "Pdf", "", "Z9", "", "", "", "", ""}), HasSubstr("Unknown paper size."));
  EXPECT_THAT(session.run({"PLOT", "Pdf", "", "", "", "", "", "", "/nonexistent-folder/x.pdf"}),
              HasSubstr("Nothing plotted: cannot write /nonexistent-folder/x.pdf"));
}

TEST(Plot, LayoutShowsModelSpaceThroughItsViewportOnly) {
  HostSession session;
  OdDbDatabase* db = session.db();
  buildDrawing(db);
  // A 40 x 40 viewport centred on the sheet's (50, 50), looking at the
  // circle's centre (30, 70) at one paper unit per model unit.
  OdDbViewportPtr viewport = OdDbViewport::createObject();
  viewport->setDatabaseDefaults(db);
  viewport->setCenterPoint(OdGePoint3d(50, 50, 0));
  viewport->setWidth(40);
  viewport->setHeight(40);
  viewport->setViewCenter(OdGePoint2d(30, 70));
  viewport->setViewHeight(40);
  viewport->setStatus(2);
  viewport->setNumber(2);
  {
    OdDbObjectPtr paper = db->getPaperSpaceId().openObject(OdDb::kForWrite);
    static_cast<OdDbBlockTableRecord*>(paper.get())->appendOdDbEntity(viewport.get());
  }
  const std::string png = tempPath("d.png");
  // The layout's extents (the viewport, 40 units) fill the 100 mm sheet less
  // 2 mm each side: 2.4 mm per unit, the viewport's middle at the sheet's middle.
  const std::string shown =
      session.run({"PLOT", "Png", "Layout", "", "100x100", "Portrait", "", "", "", "254", "", png});
  ASSERT_THAT(shown, HasSubstr("Plot written to"));
  Picture picture(png);
  ASSERT_TRUE(picture.ok());
  // Circle radius 10 model units = 24 mm = 240 pixels from the middle (500, 500).
  EXPECT_TRUE(near(picture.pixel(740, 500), 255, 0, 0));
  EXPECT_TRUE(near(picture.pixel(260, 500), 255, 0, 0));
  EXPECT_TRUE(near(picture.pixel(500, 500), 255, 255, 255));  // the viewport itself is not filled
  // The dashed line (model y = 10) lies outside the view: no blue anywhere.
  int blue = 0;
  for (int py = 0; py < 1000; py += 2)
    for (int px = 0; px < 1000; px += 2) blue += near(picture.pixel(px, py), 0, 0, 255) ? 1 : 0;
  EXPECT_EQ(blue, 0);
  std::filesystem::remove(png);
}

TEST(Plot, LargeTextsAreFilledAsOutlinesWhereverEarlierTextsFell) {
  HostSession session;
  OdDbDatabase* db = session.db();
  // A text far off the sheet first, then one 50 units high (500 pixels) on it.
  for (auto [x, text] : {std::pair{-400.0, L"FAR"}, {10.0, L"HH"}}) {
    OdDbTextPtr t = OdDbText::createObject();
    t->setPosition(OdGePoint3d(x, 20, 0));
    t->setHeight(50);
    t->setTextString(text);
    append(db, t.get());
  }
  const std::string png = tempPath("e.png");
  ASSERT_THAT(session.run(plotReplies("Png", png)), HasSubstr("Plot written to"));
  Picture picture(png);
  ASSERT_TRUE(picture.ok());
  // The letters stand between y = 20 and 70 (pixel rows 300 - 800) from x = 10 on; nothing below the baseline.
  int inkInLetters = 0, inkBelow = 0;
  for (int py = 300; py < 800; py += 4)
    for (int px = 100; px < 1000; px += 4) inkInLetters += near(picture.pixel(px, py), 0, 0, 0) ? 1 : 0;
  for (int py = 820; py < 1000; py += 4)
    for (int px = 0; px < 1000; px += 4) inkBelow += near(picture.pixel(px, py), 0, 0, 0) ? 1 : 0;
  EXPECT_GT(inkInLetters, 2000);
  EXPECT_EQ(inkBelow, 0);
  std::filesystem::remove(png);
}

TEST(Plot, PatternHatchLinesAndTheirDashesLieWhereThePatternPutsThem) {
  HostSession session;
  OdDbDatabase* db = session.db();
  OdDbHatchPtr hatch = OdDbHatch::createObject();
  append(db, hatch.get());
  hatch->setPattern(OdDbHatch::kUserDefined, L"_USER");
  OdGePoint2dArray square;
  for (auto [x, y] : {std::pair{10.0, 10.0}, {90.0, 10.0}, {90.0, 90.0}, {10.0, 90.0}}) square.append(OdGePoint2d(x, y));
  hatch->appendLoop(OdDbHatch::kPolyline | OdDbHatch::kExternal, square, OdGeDoubleArray());
  // Continuous lines along x every 10 units; dashed lines along y every 10
  // units, starting x = 5, drawn 5 and left out 5 from y = 0.
  OdDbHatchPatternLineArray families;
  OdDbHatchPatternLine across;
  across.offset.set(0, 10);
  families.append(across);
  OdDbHatchPatternLine up;
  up.angle = 3.14159265358979323846 / 2;
  up.basePoint.set(5, 0);
  up.offset.set(-10, 0);
  up.dashes.append(5);
  up.dashes.append(-5);
  families.append(up);
  hatch->setPatternDefinitions(families);
  hatch->setColorIndex(5);
  const std::string png = tempPath("f.png");
  ASSERT_THAT(session.run(plotReplies("Png", png)), HasSubstr("Plot written to"));
  Picture picture(png);
  ASSERT_TRUE(picture.ok());
  for (double y : {20.0, 30.0, 50.0, 80.0}) EXPECT_TRUE(near(picture.at(52, y), 0, 0, 255)) << y;
  EXPECT_TRUE(near(picture.at(52, 34), 255, 255, 255));
  // The dashed family: at x = 45, drawn over y 30 - 35 and 60 - 65, not over 36 - 39 or 66 - 69.
  for (double y : {32.5, 62.5}) EXPECT_TRUE(near(picture.at(45, y), 0, 0, 255)) << y;
  for (double y : {37.5, 67.5}) EXPECT_TRUE(near(picture.at(45, y), 255, 255, 255)) << y;
  // Nothing outside the boundary.
  EXPECT_TRUE(near(picture.at(95, 50), 255, 255, 255));
  EXPECT_TRUE(near(picture.at(45, 5), 255, 255, 255));
  std::filesystem::remove(png);
}

TEST(Plot, AWipeoutHidesWhatWasDrawnBeforeItAndNotWhatComesAfter) {
  HostSession session;
  OdDbDatabase* db = session.db();
  line(db, 0, 50, 100, 50, 1, OdDb::kLnWt100);  // red, under the wipeout
  OdDbWipeoutPtr wipeout = OdDbWipeout::createObject();
  wipeout->setDatabaseDefaults(db);
  OdGePoint3dArray box;
  for (auto [x, y] : {std::pair{30.0, 40.0}, {70.0, 40.0}, {70.0, 60.0}, {30.0, 60.0}}) box.append(OdGePoint3d(x, y, 0));
  ASSERT_EQ(wipeout->setFrom(box, OdGeVector3d::kZAxis), eOk);
  append(db, wipeout.get());
  line(db, 50, 0, 50, 100, 3, OdDb::kLnWt100);  // green, over it
  const std::string png = tempPath("g.png");
  ASSERT_THAT(session.run(plotReplies("Png", png)), HasSubstr("Plot written to"));
  Picture picture(png);
  ASSERT_TRUE(picture.ok());
  EXPECT_TRUE(near(picture.at(20, 50), 255, 0, 0));
  EXPECT_TRUE(near(picture.at(80, 50), 255, 0, 0));
  EXPECT_TRUE(near(picture.at(40, 50), 255, 255, 255));
  EXPECT_TRUE(near(picture.at(60, 50), 255, 255, 255));
  EXPECT_TRUE(near(picture.at(50, 45), 0, 255, 0));
  EXPECT_TRUE(near(picture.at(50, 50), 0, 255, 0));
  std::filesystem::remove(png);
}

// Texts are drawn in the box the drawing measures for them (the box their
// extents, masks and justification come from), whatever the font's own
// advances: a multiline text whose measure fits its width stays on one line,
// its mask hides what lies under all of it, and a centred single-line text
// of wide letters spans its measured length about its alignment point.
TEST(Plot, TextsFillTheBoxTheDrawingMeasuresForThem) {
  HostSession session;
  OdDbDatabase* db = session.db();
  line(db, 0, 37, 100, 37, 1, OdDb::kLnWt100);  // red, under the masked text
  const OdString words = L"Polygon Copy & Rotate";
  const double height = 3;
  OdGePoint3d lo, hi;
  odDbTextBox(words, height, 1.0, lo, hi);
  const double length = hi.x;  // 21 characters: 44.1 units, where the font's advances need more
  OdDbMTextPtr mtext = OdDbMText::createObject();
  append(db, mtext.get());
  mtext->setLocation(OdGePoint3d(20, 30, 0));
  mtext->setTextHeight(height);
  mtext->setWidth(length + 0.5);
  mtext->setAttachment(OdDbMText::kTopLeft);
  mtext->setRotation(0.25);
  mtext->setContents(words);
  mtext->setBackgroundFill(true);
  mtext->setUseBackgroundColor(true);
  mtext->setBackgroundScaleFactor(1.5);  // the mask reaches 1.5 units past the box
  ASSERT_NEAR(mtext->actualHeight(), height, 1e-9);

  OdDbTextPtr centred = OdDbText::createObject();
  append(db, centred.get());
  centred->setHeight(4);
  centred->setTextString(L"WWWW");  // measured 4 x 0.7 x 4 = 11.2 units; the font's W is wider
  centred->setHorizontalMode(OdDb::kTextCenter);
  centred->setAlignmentPoint(OdGePoint3d(50, 80, 0));
  centred->setPosition(OdGePoint3d(50, 80, 0));

  const std::string png = tempPath("h.png");
  ASSERT_THAT(session.run(plotReplies("Png", png)), HasSubstr("Plot written to"));
  Picture picture(png);
  ASSERT_TRUE(picture.ok());
  const double c = std::cos(0.25), s = std::sin(0.25);
  const double margin = 0.4 * height;  // room for descenders below the baseline
  int inkOutside = 0, inkInside = 0, redUnderText = 0, redElsewhere = 0;
  int wideOutside = 0, wideLeft = 0, wideRight = 0;
  for (int py = 0; py < 1000; ++py) {
    for (int px = 0; px < 1000; ++px) {
      const Pixel p = picture.pixel(px, py);
      const bool ink = near(p, 0, 0, 0), red = near(p, 255, 0, 0);
      if (!ink && !red) continue;
      const double x = (px + 0.5) / 10, y = (1000 - py - 0.5) / 10;
      if (y > 70) {  // the centred text's region: its box runs x 44.4 - 55.6, y 80 - 84
        if (!ink) continue;
        const bool inBox = x > 44.4 - 0.3 && x < 55.6 + 0.3 && y > 80 - 0.3 && y < 84 + 1;
        wideOutside += inBox ? 0 : 1;
        wideLeft += inBox && x < 45.5 ? 1 : 0;
        wideRight += inBox && x > 54.5 ? 1 : 0;
        continue;
      }
      // In the multiline text's own axes: u along the baseline, v up the letters, from its top left.
      const double u = (x - 20) * c + (y - 30) * s, v = -(x - 20) * s + (y - 30) * c;
      const bool inBox = u > -margin && u < length + margin && v > -height - margin && v < margin;
      if (ink) (inBox ? inkInside : inkOutside) += 1;
      if (red && u > 0 && u < length && v > -height && v < 0) ++redUnderText;
      if (red && !(u > -2 && u < length + 2 && v > -height - 2 && v < 2)) ++redElsewhere;
    }
  }
  EXPECT_EQ(inkOutside, 0);  // no second line, nothing past the measured length
  EXPECT_GT(inkInside, 1000);
  EXPECT_EQ(redUnderText, 0);
  EXPECT_GT(redElsewhere, 500);  // the line shows outside the mask
  EXPECT_EQ(wideOutside, 0);
  EXPECT_GT(wideLeft, 20);  // the letters reach both ends of the measured length
  EXPECT_GT(wideRight, 20);
  std::filesystem::remove(png);
}
