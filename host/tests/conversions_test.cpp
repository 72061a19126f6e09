// Conversions between numbers and text in every unit, wildcard matching,
// character classes, coordinate system conversion and the text box.
#include <cmath>
#include <string>

#include "DbCurves.h"
#include "DbText.h"
#include "harness.h"
#include "host_test_support.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

using namespace hosttest;

namespace {

double degrees(double d) { return d * kPi / 180.0; }

std::wstring rtos(double value, int unit, int precision) {
  ACHAR text[64];
  EXPECT_EQ(rydbRToS(value, unit, precision, text, 64), RTNORM);
  return text;
}

std::wstring angtos(double value, int unit, int precision) {
  ACHAR text[64];
  EXPECT_EQ(rydbAngToS(value, unit, precision, text, 64), RTNORM);
  return text;
}

bool distof(const wchar_t* text, int unit, double& value) { return rydbDisToF(text, unit, &value) == RTNORM; }
bool angtof(const wchar_t* text, int unit, double& value) { return rydbAngToF(text, unit, &value) == RTNORM; }

}  // namespace

// ---------------------------------------------------------------- linear units

TEST(Conversions, LinearValuesShowInTheClassicFormOfEachUnit) {
  HostSession session;  // DIMZIN is 8 here: the forms must not drop zeros
  struct Case { double value; int unit, precision; const wchar_t* expected; } cases[] = {
      {12.5, 1, 4, L"1.2500E+01"},     {-0.00125, 1, 2, L"-1.25E-03"},  {12.5, 2, 4, L"12.5000"},
      {-0.00001, 2, 4, L"0.0000"},     {-3.26, 2, 1, L"-3.3"},          {12.5, 3, 4, L"1'-0.5000\""},
      {6, 3, 2, L"0'-6.00\""},         {143.999, 3, 2, L"12'-0.00\""},  {14.5, 4, 4, L"1'-2 1/2\""},
      {12, 4, 4, L"1'-0\""},           {0.5, 4, 4, L"0'-0 1/2\""},      {-14.5, 4, 4, L"-1'-2 1/2\""},
      {11.999, 4, 4, L"1'-0\""},       {26.3125, 4, 4, L"2'-2 5/16\""}, {3.5, 5, 4, L"3 1/2"},
      {0.25, 5, 4, L"1/4"},            {3, 5, 4, L"3"},                 {-3.5, 5, 4, L"-3 1/2"},
      {3.3, 5, 2, L"3 1/4"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(rtos(c.value, c.unit, c.precision), c.expected) << c.value << " unit " << c.unit;
  }
  // -1 takes LUNITS and LUPREC.
  setShort(L"LUNITS", 4);
  setShort(L"LUPREC", 3);
  EXPECT_EQ(rtos(14.25, -1, -1), L"1'-2 1/4\"");
  ACHAR small[4];
  EXPECT_EQ(rydbRToS(12.5, 2, 4, small, 4), RTERROR);
  EXPECT_EQ(rydbRToS(1.0, 6, 2, small, 4), RTERROR);
}

TEST(Conversions, DistancesReadBackWhatEveryUnitWrites) {
  HostSession session;
  const double values[] = {0, 0.0625, 3.5, 14.5, 143.75, -27.125, 1000.25};
  for (int unit = 1; unit <= 5; ++unit) {
    for (double value : values) {
      const std::wstring text = rtos(value, unit, 8);
      double back = 0;
      ASSERT_TRUE(distof(text.c_str(), unit, back)) << text << " unit " << unit;
      EXPECT_NEAR(back, value, 1e-9) << text << " unit " << unit;
    }
  }
}

TEST(Conversions, DistanceFormsAcceptedAndRefused) {
  HostSession session;
  struct Case { const wchar_t* text; int unit; double expected; } accepted[] = {
      {L"12.5", 2, 12.5},       {L"1.25E+01", 2, 12.5},     {L"-.5", 2, -0.5},     {L"3 1/2", 5, 3.5},
      {L"3-1/2", 5, 3.5},       {L"7/8", 2, 0.875},         {L"1'2\"", 4, 14},     {L"1'-2 1/2\"", 4, 14.5},
      {L"1'2-1/2\"", 4, 14.5},  {L"1'", 3, 12},             {L"2.5\"", 3, 2.5},    {L"1'-0.5000\"", 3, 12.5},
      {L"-1'-6\"", 4, -18},     {L"  18 ", 4, 18},          {L"1.5'", 4, 18},
  };
  for (const Case& c : accepted) {
    double value = 0;
    ASSERT_TRUE(distof(c.text, c.unit, value)) << c.text;
    EXPECT_NEAR(value, c.expected, 1e-12) << c.text;
  }
  const struct { const wchar_t* text; int unit; } refused[] = {
      {L"1'", 2}, {L"1'2\"", 5}, {L"abc", 2}, {L"1/0", 5},  {L"", 2},
      {L"12.5.3", 2}, {L"inf", 2}, {L"1'-", 4}, {L"3 1/", 5}, {L"12", 7}};
  for (const auto& r : refused) {
    double value = 0;
    EXPECT_FALSE(distof(r.text, r.unit, value)) << r.text;
  }
  // -1: the current LUNITS decides whether feet are understood.
  double value = 0;
  EXPECT_FALSE(distof(L"1'6\"", -1, value));
  setShort(L"LUNITS", 4);
  ASSERT_TRUE(distof(L"1'6\"", -1, value));
  EXPECT_DOUBLE_EQ(value, 18);
}

// ---------------------------------------------------------------- angular units

TEST(Conversions, AnglesReadInEveryFormWithoutAngbase) {
  HostSession session;
  // angtof reads absolute angles: ANGBASE and ANGDIR play no part.
  setReal(L"ANGBASE", 1.0);
  setShort(L"ANGDIR", 1);
  struct Case { const wchar_t* text; int unit; double expected; } cases[] = {
      {L"45", 0, degrees(45)},          {L"45d30'15\"", 1, degrees(45 + 30 / 60.0 + 15 / 3600.0)},
      {L"45d30", 1, degrees(45.5)},     {L"30'", 1, degrees(0.5)},   {L"50", 2, degrees(45)},
      {L"50g", 0, degrees(45)},         {L"0.5r", 0, 0.5},           {L"0.5", 3, 0.5},
      {L"N 45d E", 4, degrees(45)},     {L"S30dW", 4, degrees(240)}, {L"N 10d30' W", 4, degrees(100.5)},
      {L"E", 4, 0},                     {L"N", 0, degrees(90)},      {L"-90", 0, degrees(270)},
      {L"450", 0, degrees(90)},
  };
  for (const Case& c : cases) {
    double value = -1;
    ASSERT_TRUE(angtof(c.text, c.unit, value)) << c.text;
    EXPECT_NEAR(value, c.expected, 1e-12) << c.text;
  }
  for (const wchar_t* bad : {L"", L"abc", L"45d30'15\"x", L"N 95d E", L"45'30d", L"N 45d"}) {
    double value = 0;
    EXPECT_FALSE(angtof(bad, 0, value)) << bad;
  }
}

TEST(Conversions, AnglesShowInEveryUnitAndReadBack) {
  HostSession session;
  struct Case { double radians; int unit, precision; const wchar_t* expected; } cases[] = {
      {degrees(45), 0, 0, L"45"},             {degrees(45), 0, 4, L"45.0000"},
      {degrees(-90), 0, 0, L"270"},           {degrees(359.9999), 0, 2, L"0.00"},
      {degrees(45.5), 1, 2, L"45d30'"},       {degrees(45 + 30 / 60.0 + 15 / 3600.0), 1, 4, L"45d30'15\""},
      {degrees(45.75), 1, 0, L"46d"},         {degrees(10 + 1 / 3600.0 + 0.5 / 3600.0), 1, 6, L"10d0'1.50\""},
      {degrees(45), 2, 4, L"50.0000g"},       {0.7853981634, 3, 4, L"0.7854r"},
      {degrees(45), 4, 0, L"N 45d E"},        {degrees(240), 4, 2, L"S 30d0' W"},
      {degrees(100.5), 4, 2, L"N 10d30' W"},  {degrees(300), 4, 0, L"S 30d E"},
      {0, 4, 4, L"E"},                        {degrees(270), 4, 4, L"S"},
  };
  for (const Case& c : cases) EXPECT_EQ(angtos(c.radians, c.unit, c.precision), c.expected) << c.radians;
  for (int unit = 0; unit <= 4; ++unit) {
    for (double d : {0.0, 30.0, 135.25, 200.5, 315.75}) {
      const std::wstring text = angtos(degrees(d), unit, 8);
      double back = -1;
      ASSERT_TRUE(angtof(text.c_str(), unit, back)) << text;
      EXPECT_NEAR(back, degrees(d), 1e-7) << text;
    }
  }
  setShort(L"AUNITS", 2);
  setShort(L"AUPREC", 1);
  EXPECT_EQ(angtos(degrees(90), -1, -1), L"100.0g");
}

// ---------------------------------------------------------------- wildcards and characters

TEST(Conversions, WildcardPatterns) {
  struct Case { const wchar_t* text; const wchar_t* pattern; bool matches; } cases[] = {
      {L"ABC", L"ABC", true},       {L"abc", L"ABC", true},        {L"ABD", L"ABC", false},
      {L"A1", L"A#", true},         {L"AB", L"A#", false},         {L"AB", L"A@", true},
      {L"A\u00FC", L"A@", true},    {L"A-", L"A.", true},          {L"AB", L"A.", false},
      {L"A7", L"A.", false},        {L"ABCD", L"A*D", true},       {L"AD", L"A*D", true},
      {L"ADX", L"A*D", false},      {L"ABC", L"A?C", true},        {L"AC", L"A?C", false},
      {L"ABC", L"~A*", false},      {L"XBC", L"~A*", true},        {L"B", L"[ABC]", true},
      {L"D", L"[ABC]", false},      {L"D", L"[~ABC]", true},       {L"a", L"[~ABC]", false},
      {L"m", L"[A-Z]", true},       {L"5", L"[A-Z]", false},       {L"5", L"[0-4]", false},
      {L"-", L"[A-]", true},        {L"]", L"[]]", true},          {L"A*", L"A`*", true},
      {L"AB", L"A`*", false},       {L"A,B", L"A`,B", true},       {L"B", L"A,B", true},
      {L"C", L"A,B", false},        {L"#", L"`#", true},           {L"1", L"`#", false},
      {L"", L"*", true},            {L"", L"", true},              {L"x", L"", false},
      {L"\u00E9t\u00E9", L"\u00C9T\u00C9", true},                  {L"Layer1", L"~*1,Layer*", true},
      {L"Wall1", L"~*1,Layer*", false},                            {L"[", L"[", true},
      {L",", L"[,]", true},         {L"x", L"[,]", false},         {L"AB", L"[~`]]B", true},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ryutWcMatch(c.text, c.pattern), c.matches ? RTNORM : RTERROR)
        << OdString(c.text).toUtf8() << " ~ " << OdString(c.pattern).toUtf8();
  }
  EXPECT_EQ(ryutWcMatch(nullptr, L"*"), RTERROR);
}

TEST(Conversions, CharacterClassesCoverEveryScript) {
  // é, a CJK ideograph, Greek capital and small alpha, an ideographic space.
  EXPECT_TRUE(ryutIsAlpha(0xE9) && ryutIsAlpha(0x4E2D) && !ryutIsAlpha('5') && !ryutIsAlpha(0x110000));
  EXPECT_TRUE(ryutIsUpper(0x391) && !ryutIsUpper(0x3B1) && ryutIsLower(0x3B1) && !ryutIsLower('A'));
  EXPECT_EQ(ryutToUpper(0xE9), 0xC9);
  EXPECT_EQ(ryutToLower(0x3A3), 0x3C3);
  EXPECT_EQ(ryutToUpper('a'), 'A');
  EXPECT_EQ(ryutToUpper('1'), '1');
  EXPECT_EQ(ryutToUpper(-1), -1);
  EXPECT_TRUE(ryutIsDigit('7') && !ryutIsDigit('x'));
  EXPECT_TRUE(ryutIsSpace(0x3000) && ryutIsSpace('\t') && !ryutIsSpace('_'));
}

TEST(Conversions, AngleDistanceAndPolar) {
  const ads_point a = {1, 1, 0}, b = {0, 0, 0}, c = {4, 5, 12}, from = {1, 2, 3};
  EXPECT_NEAR(ryutAngle(a, b), degrees(225), 1e-12);
  EXPECT_NEAR(ryutAngle(b, a), degrees(45), 1e-12);
  EXPECT_NEAR(ryutDistance(a, c), 13, 1e-12);
  ads_point p;
  ryutPolar(from, degrees(90), 5, p);
  EXPECT_NEAR(std::hypot(p[0] - 1, p[1] - 7), 0, 1e-12);
  EXPECT_EQ(p[2], 3);
}

// ---------------------------------------------------------------- coordinate systems

namespace {

// A coordinate system as ryedTrans takes it: a code, an entity or an extrusion.
resbuf systemCode(short code) {
  resbuf rb{};
  rb.restype = RTSHORT;
  rb.resval.rint = code;
  return rb;
}

resbuf systemOf(const OdDbObjectId& id) {
  resbuf rb{};
  rb.restype = RTENAME;
  rydbGetAdsName(rb.resval.rlname, id);
  return rb;
}

void expectTrans(ads_point p, const resbuf& from, const resbuf& to, int displacement, double x, double y,
                 double z) {
  ads_point r;
  ASSERT_EQ(ryedTrans(p, &from, &to, displacement, r), RTNORM);
  EXPECT_NEAR(r[0], x, 1e-12);
  EXPECT_NEAR(r[1], y, 1e-12);
  EXPECT_NEAR(r[2], z, 1e-12);
}

}  // namespace

TEST(Conversions, TransBetweenWorldUserAndObjectSystems) {
  HostSession session;
  // The user system: origin (10,5,0), x along world y.
  OdGeMatrix3d ucs;
  ucs.setCoordSystem(OdGePoint3d(10, 5, 0), OdGeVector3d::kYAxis, -OdGeVector3d::kXAxis,
                     OdGeVector3d::kZAxis);
  session.host().current()->setUcs(ucs);
  const resbuf world = systemCode(0), user = systemCode(1), display = systemCode(2);
  ads_point p = {10, 8, 2}, v = {8, -10, 2};
  expectTrans(p, world, user, 0, 3, 0, 2);
  expectTrans(p, world, user, 1, 8, -10, 2);  // a displacement does not move with the origin
  expectTrans(v, display, world, 1, 10, 8, 2);

  // A circle facing down: its own x runs along -X, its y along Y.
  OdSmartPtr<OdDbCircle> circle = OdDbCircle::createObject();
  circle->setRadius(1);
  circle->setNormal(OdGeVector3d(0, 0, -1));
  const resbuf circleSystem = systemOf(place(session.db(), circle.get()));
  ads_point q = {3, 4, 5}, ocs = {-3, 4, -5};
  expectTrans(q, world, circleSystem, 0, -3, 4, -5);
  // The same system named by its extrusion direction; a line keeps world coordinates.
  resbuf extrusion{};
  extrusion.restype = RT3DPOINT;
  extrusion.resval.rpoint[2] = -2;
  expectTrans(ocs, extrusion, world, 0, 3, 4, 5);
  OdDbLinePtr line = OdDbLine::createObject();
  line->setNormal(OdGeVector3d(0, 0, -1));
  expectTrans(q, systemOf(place(session.db(), line.get())), world, 0, 3, 4, 5);
  const resbuf bad = systemCode(7);
  ads_point r;
  EXPECT_EQ(ryedTrans(q, &bad, &world, 0, r), RTERROR);
}

// ---------------------------------------------------------------- text box

namespace {

// The box of a text's list (freed here); false when there is none.
bool boxOf(resbuf* list, ads_point low, ads_point high) {
  const int status = ryedTextBox(list, low, high);
  ryutRelRb(list);
  return status == RTNORM;
}

}  // namespace

TEST(Conversions, TextBoxFromAnEntityList) {
  HostSession session;
  ads_point low, high;
  ASSERT_TRUE(boxOf(ryutBuildList(RTDXF0, L"TEXT", 1, L"ABC", 40, 2.0, RTNONE), low, high));
  EXPECT_NEAR(std::hypot(low[0], low[1]), 0, 1e-12);
  EXPECT_NEAR(high[0], 3 * 0.7 * 2.0, 1e-12);
  EXPECT_NEAR(high[1], 2.0, 1e-12);
  // The width factor narrows it; "%%d" draws one character; TEXTSIZE is the
  // height a list leaves out.
  ASSERT_TRUE(boxOf(ryutBuildList(1, L"45%%d", 41, 0.5, RTNONE), low, high));
  EXPECT_NEAR(high[0], 3 * 0.7 * 2.5 * 0.5, 1e-12);
  EXPECT_NEAR(high[1], 2.5, 1e-12);
  // An entity named by -1 gives its own values (rotation plays no part); the list's groups override them.
  OdSmartPtr<OdDbText> text = OdDbText::createObject();
  text->setTextString(L"ABCD");
  text->setHeight(1.0);
  text->setRotation(1.0);
  ads_name name;
  rydbGetAdsName(name, place(session.db(), text.get()));
  ASSERT_TRUE(boxOf(ryutBuildList(-1, name, RTNONE), low, high));
  EXPECT_NEAR(high[0], 4 * 0.7, 1e-12);
  EXPECT_NEAR(high[1], 1.0, 1e-12);
  ASSERT_TRUE(boxOf(ryutBuildList(-1, name, 40, 3.0, RTNONE), low, high));
  EXPECT_NEAR(high[1], 3.0, 1e-12);
  EXPECT_FALSE(boxOf(ryutBuildList(RTDXF0, L"LINE", 1, L"A", RTNONE), low, high));
}
