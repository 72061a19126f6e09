// The pieces of the curve pass and the comparison recorder, against values
// worked out by hand: the relation codes of line segments and arcs (arcs
// across the zero angle and drawn about either normal included), the union
// of merged pieces, and the recorded bytes of the recorder.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "curves/CmpDwgFiler.h"
#include "curves/ExplodeCurves.h"

using namespace kestrix::curves;

namespace {

constexpr double kTol = 1e-6;
constexpr double kPi = 3.14159265358979323846;

CurvePiece line(double x0, double y0, double x1, double y1) { return makeLinePiece({x0, y0, 0}, {x1, y1, 0}); }

// An arc of radius 10 about (0,0) from a to b degrees counter-clockwise about +z (or drawn about -z).
CurvePiece arc(double a, double b, bool aboutMinusZ = false) {
  const double ra = a * kPi / 180, rb = b * kPi / 180;
  const OdGePoint3d pa(10 * std::cos(ra), 10 * std::sin(ra), 0), pb(10 * std::cos(rb), 10 * std::sin(rb), 0);
  double sweep = rb - ra;
  while (sweep <= 0) sweep += 2 * kPi;
  // About -z the same points are run clockwise: from b to a counter-clockwise about -z.
  return aboutMinusZ ? makeArcPiece({0, 0, 0}, 10, {0, 0, -1}, pb, pa, sweep)
                     : makeArcPiece({0, 0, 0}, 10, {0, 0, 1}, pa, pb, sweep);
}

int lines(CurvePiece a, const CurvePiece& b) { return CExplodeLine::classifyLines(a, b, kTol); }
int arcs(CurvePiece a, const CurvePiece& b) { return CExplodeCircArc::classifyArcs(a, b, kTol); }

}  // namespace

TEST(OverkillPieces, LineSegmentsGetTheRelationOfTheirEnds) {
  EXPECT_EQ(lines(line(0, 0, 10, 0), line(0, 0, 10, 0)), kIdentical);
  EXPECT_EQ(lines(line(0, 0, 10, 0), line(10, 0, 0, 0)), kIdentical);
  // Closer than the tolerance counts as the same point.
  EXPECT_EQ(lines(line(0, 0, 10, 0), line(0, 5e-7, 10, 0)), kIdentical);
  EXPECT_EQ(lines(line(0, 0, 10, 0), line(0, 2e-6, 10, 0)), kUnrelated);
  EXPECT_EQ(lines(line(0, 0, 10, 0), line(2, 0, 7, 0)), kContained);
  EXPECT_EQ(lines(line(0, 0, 10, 0), line(5, 0, 15, 0)), kPartialOverlap);
  EXPECT_EQ(lines(line(5, 0, 15, 0), line(12, 0, 0, 0)), kPartialOverlap);
  EXPECT_EQ(lines(line(0, 0, 10, 0), line(10, 0, 20, 0)), kEndToEnd);
  EXPECT_EQ(lines(line(10, 0, 20, 0), line(10, 0, 0, 0)), kEndToEnd);
  // Meeting at a corner, crossing, parallel, apart on one line, degenerate.
  EXPECT_EQ(lines(line(0, 0, 10, 0), line(10, 0, 10, 10)), kUnrelated);
  EXPECT_EQ(lines(line(0, 0, 10, 0), line(5, -5, 5, 5)), kUnrelated);
  EXPECT_EQ(lines(line(0, 0, 10, 0), line(0, 1, 10, 1)), kUnrelated);
  EXPECT_EQ(lines(line(0, 0, 10, 0), line(11, 0, 20, 0)), kUnrelated);
  EXPECT_EQ(lines(line(3, 3, 3, 3), line(3, 3, 3, 3)), kUnrelated);

  // A piece within the other is reset to the other.
  CurvePiece inner = line(2, 0, 7, 0);
  EXPECT_EQ(CExplodeLine::classifyLines(inner, line(0, 0, 10, 0), kTol), kContained);
  EXPECT_EQ(inner.p0, OdGePoint3d(0, 0, 0));
  EXPECT_EQ(inner.p1, OdGePoint3d(10, 0, 0));
}

TEST(OverkillPieces, MergedLinesCoverBothAndKeepTheirSense) {
  CurvePiece a = line(10, 0, 0, 0);
  uniteInto(a, line(5, 0, 15, 0), kPartialOverlap, kTol);
  EXPECT_EQ(a.p0, OdGePoint3d(15, 0, 0));
  EXPECT_EQ(a.p1, OdGePoint3d(0, 0, 0));
  CurvePiece b = line(0, 0, 10, 10);
  uniteInto(b, line(10, 10, 20, 20), kEndToEnd, kTol);
  EXPECT_EQ(b.p0, OdGePoint3d(0, 0, 0));
  EXPECT_EQ(b.p1, OdGePoint3d(20, 20, 0));
}

TEST(OverkillPieces, ArcsGetTheRelationOfTheirAnglesOnOneCircle) {
  EXPECT_EQ(arcs(arc(0, 90), arc(0, 90)), kIdentical);
  EXPECT_EQ(arcs(arc(0, 90), arc(0, 90, true)), kIdentical);
  // The other three quarters meet it at both ends: end to end, and merged they close the circle.
  EXPECT_EQ(arcs(arc(0, 90), arc(90, 0)), kEndToEnd);
  EXPECT_EQ(arcs(arc(0, 90), arc(20, 60)), kContained);
  EXPECT_EQ(arcs(arc(330, 60), arc(350, 10)), kContained);  // across the zero angle
  EXPECT_EQ(arcs(arc(0, 90), arc(45, 180)), kPartialOverlap);
  EXPECT_EQ(arcs(arc(300, 30), arc(0, 100, true)), kPartialOverlap);
  EXPECT_EQ(arcs(arc(0, 90), arc(90, 120)), kEndToEnd);
  EXPECT_EQ(arcs(arc(90, 120), arc(0, 90)), kEndToEnd);
  EXPECT_EQ(arcs(arc(0, 90), arc(100, 120)), kUnrelated);
  CurvePiece other = arc(0, 90);
  other.radius = 10.5;
  EXPECT_EQ(arcs(arc(0, 90), other), kUnrelated);
  CurvePiece circle = arc(0, 90);
  circle.sweep = 2 * kPi;
  EXPECT_EQ(arcs(circle, arc(100, 200)), kContained);
  EXPECT_EQ(arcs(circle, circle), kIdentical);
}

TEST(OverkillPieces, MergedArcsRunFromTheFirstStartToTheLastEnd) {
  CurvePiece a = arc(300, 30);
  uniteInto(a, arc(0, 100), kPartialOverlap, kTol);
  EXPECT_NEAR(a.start, 300 * kPi / 180, 1e-12);
  EXPECT_NEAR(a.sweep, 160 * kPi / 180, 1e-12);
  EXPECT_NEAR(a.p1.x, 10 * std::cos(100 * kPi / 180), 1e-9);
  EXPECT_NEAR(a.p1.y, 10 * std::sin(100 * kPi / 180), 1e-9);
  // Two halves make the whole circle.
  CurvePiece half = arc(0, 180);
  uniteInto(half, arc(180, 0), kEndToEnd, kTol);
  EXPECT_TRUE(half.closed());
}

TEST(OverkillRecorder, StoreGrowsByTheRuleAndMixesUnitsAndBytes) {
  rycpBinaryData store;
  const char bytes[6] = {1, 2, 3, 4, 5, 6};
  store.append(bytes, 4);
  EXPECT_EQ(store.length(), 4u);
  EXPECT_EQ(store.capacity(), 4u + 2048u);
  // The second append lands at byte 2 * 4 = 8, after four zero bytes.
  store.append(bytes + 4, 2);
  EXPECT_EQ(store.length(), 6u);
  const unsigned char expected[12] = {1, 2, 3, 4, 0, 0, 0, 0, 5, 6, 0, 0};
  EXPECT_EQ(std::memcmp(store.data(), expected, sizeof expected), 0);
  // Growing again only when the need reaches the capacity: 2052 + 1 + 2048 + 2052.
  std::vector<char> big(2047, 7);
  store.append(big.data(), 2047);
  EXPECT_EQ(store.capacity(), 2052u + 2048u + 2053u);
  store.resize(3);
  EXPECT_EQ(store.length(), 3u);
}

TEST(OverkillRecorder, RecordsRoundedDoublesHalfStringsAndHandlesAsTwoInts) {
  auto recorded = [](auto file) {
    ryDbCmpDwgFile filer;
    file(filer);
    return std::vector<OdUInt8>(filer.binaryData().data(), filer.binaryData().data() + 2 * filer.binaryData().length());
  };
  // 1.000004 and 1.000001 both print as 1.00000; 1.00001 does not.
  EXPECT_EQ(recorded([](auto& f) { f.wrDouble(1.000004); }), recorded([](auto& f) { f.wrDouble(1.000001); }));
  EXPECT_NE(recorded([](auto& f) { f.wrDouble(1.00001); }), recorded([](auto& f) { f.wrDouble(1.0); }));
  const std::vector<OdUInt8> one = recorded([](auto& f) { f.wrDouble(1.0); });
  double value = 0;
  std::memcpy(&value, one.data(), 8);
  EXPECT_EQ(value, 1.0);
  // Four characters are recorded as four bytes: the first two UTF-16 units.
  const std::vector<OdUInt8> text = recorded([](auto& f) { f.wrString(OdString(L"ABCD")); });
  EXPECT_EQ(text[0], 'A');
  EXPECT_EQ(text[1], 0);
  EXPECT_EQ(text[2], 'B');
  EXPECT_EQ(text[4], 0);
  EXPECT_EQ(text, recorded([](auto& f) { f.wrString(OdString(L"ABXY")); }));
  EXPECT_NE(text, recorded([](auto& f) { f.wrString(OdString(L"AXCD")); }));
  // An int64 as its low then its high 32 bits, each an int32 appended at
  // twice the used count: the high half lands at byte 8.
  const std::vector<OdUInt8> wide = recorded([](auto& f) { f.wrInt64(0x0000000200000001LL); });
  ASSERT_EQ(wide.size(), 16u);
  EXPECT_EQ(wide[0], 1);
  EXPECT_EQ(wide[4], 0);
  EXPECT_EQ(wide[8], 2);
}
