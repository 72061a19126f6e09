// A name that holds wildcard characters, escaped, matches itself and no
// other name under the host's wildcard matcher.
#include <gtest/gtest.h>

#include "frame/Names.h"
#include "ryut.h"

namespace {

bool matches(const wchar_t* text, const OdString& pattern) { return ryutWcMatch(text, pattern.c_str()) == RTNORM; }

TEST(WildcardEscaped, EverySpecialCharacterMatchesOnlyItself) {
  // Each name holds one special character; its neighbour differs only there.
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"L#1", L"L51"}, {L"B@X", L"BAX"}, {L"A.B", L"A-B"}, {L"*U1", L"XU1"}, {L"P?Q", L"PZQ"},
      {L"~A", L"B"},    {L"[AB]", L"A"},  {L"A-B", L"A.B"}, {L"A,B", L"A"},   {L"A`B", L"AB"},
  };
  for (const auto& [name, other] : cases) {
    const OdString pattern = kestrix::wildcardEscaped(name);
    EXPECT_TRUE(matches(name, pattern)) << "name " << OdString(name).toUtf8() << " pattern " << pattern.toUtf8();
    EXPECT_FALSE(matches(other, pattern)) << "other " << OdString(other).toUtf8() << " pattern " << pattern.toUtf8();
  }
}

TEST(WildcardEscaped, PlainNamesAreLeftAsTheyAre) {
  EXPECT_EQ(kestrix::wildcardEscaped(L"Walls 2"), OdString(L"Walls 2"));
  EXPECT_EQ(kestrix::wildcardEscaped(L"#"), OdString(L"`#"));
}

}  // namespace
