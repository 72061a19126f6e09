// Conversions between numbers and text in the drawing's units (linear:
// scientific, decimal, engineering, architectural, fractional; angular:
// degrees, deg/min/sec, grads, radians, surveyor's bearings), wildcard
// matching, character classes, small geometry helpers, coordinate system
// conversion and the box of a text.
//
// Formatting does not depend on DIMZIN: every unit shows its full form
// ("12.5000", "1'-0\"", "0'-6 1/2\""). Reading accepts, in every unit, the
// decimal, scientific and fractional forms; feet and inches are read in the
// engineering and architectural units.
#include <locale.h>

#include <charconv>
#include <cmath>
#include <cwchar>
#include <cwctype>
#include <numeric>
#include <string>
#include <vector>

#include "DbSymbolTable.h"
#include "DbText.h"
#include "Ge/GeOcs.h"
#include "core/Host.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"
#include "sdk/EntityLists.h"
#include "sdk/Input.h"

using ryhost::Host;

namespace {

constexpr double kTwoPi = 6.283185307179586476925286766559;
constexpr int kMaxPrecision = 8;

// ---------------------------------------------------------------- reading numbers

// A cursor over the text being read.
struct Scanner {
  const std::wstring& text;
  size_t pos = 0;
  wchar_t peek(size_t ahead = 0) const { return pos + ahead < text.size() ? text[pos + ahead] : L'\0'; }
  bool atEnd() const { return pos >= text.size(); }
  bool take(wchar_t ch) {
    if (peek() != ch) return false;
    ++pos;
    return true;
  }
  bool takeNoCase(wchar_t ch) {
    if (std::towupper(static_cast<wint_t>(peek())) != static_cast<wint_t>(ch)) return false;
    ++pos;
    return true;
  }
  void skipSpaces() {
    while (peek() == L' ' || peek() == L'\t') ++pos;
  }
  // An optional leading sign: -1 after a minus, else 1.
  double takeSign() {
    if (take(L'-')) return -1;
    take(L'+');
    return 1;
  }
};

bool isAsciiDigit(wchar_t ch) { return ch >= L'0' && ch <= L'9'; }

// An unsigned decimal number, optionally with an exponent: "12", "12.5",
// ".5", "12.", "1.25E+01". Nothing is consumed when there is none.
bool readUnsigned(Scanner& in, double& value) {
  const size_t start = in.pos;
  size_t digits = 0;
  while (isAsciiDigit(in.peek())) ++in.pos, ++digits;
  if (in.take(L'.')) {
    while (isAsciiDigit(in.peek())) ++in.pos, ++digits;
  }
  if (digits == 0) {
    in.pos = start;
    return false;
  }
  if (in.peek() == L'e' || in.peek() == L'E') {
    size_t ahead = 1;
    if (in.peek(1) == L'+' || in.peek(1) == L'-') ahead = 2;
    if (isAsciiDigit(in.peek(ahead))) {
      in.pos += ahead;
      while (isAsciiDigit(in.peek())) ++in.pos;
    }
  }
  std::string narrow(in.text.begin() + static_cast<std::ptrdiff_t>(start),
                     in.text.begin() + static_cast<std::ptrdiff_t>(in.pos));
  auto [end, error] = std::from_chars(narrow.data(), narrow.data() + narrow.size(), value);
  if (error != std::errc() || end != narrow.data() + narrow.size() || !std::isfinite(value)) {
    in.pos = start;
    return false;
  }
  return true;
}

bool readInteger(Scanner& in, long long& value) {
  const size_t start = in.pos;
  value = 0;
  while (isAsciiDigit(in.peek())) {
    if (value > 1'000'000'000'000LL) {
      in.pos = start;
      return false;
    }
    value = value * 10 + (in.peek() - L'0');
    ++in.pos;
  }
  return in.pos > start;
}

// An unsigned magnitude with fractions: "3 1/2", "3-1/2", "7/8", or a decimal number.
bool readMagnitude(Scanner& in, double& value) {
  const size_t start = in.pos;
  long long whole = 0, numerator = 0, denominator = 0;
  if (readInteger(in, whole)) {
    if (in.take(L'/')) {
      if (readInteger(in, denominator) && denominator > 0) {
        value = static_cast<double>(whole) / static_cast<double>(denominator);
        return true;
      }
      in.pos = start;
      return false;
    }
    if (in.take(L' ') || in.take(L'-')) {
      in.skipSpaces();
      if (readInteger(in, numerator) && in.take(L'/') && readInteger(in, denominator) && denominator > 0) {
        value =
            static_cast<double>(whole) + static_cast<double>(numerator) / static_cast<double>(denominator);
        return true;
      }
    }
    in.pos = start;
  }
  return readUnsigned(in, value);
}

// Feet and inches, in inches: "1'-2 1/2\"", "1'2-1/2\"", "1'", "2.5\"", "14".
bool readFeetInches(Scanner& in, double& inches) {
  double first = 0;
  if (!readMagnitude(in, first)) return false;
  if (in.take(L'\'')) {
    inches = first * 12.0;
    if (in.atEnd()) return true;
    in.take(L'-');
    in.skipSpaces();
    double rest = 0;
    if (!readMagnitude(in, rest)) return false;
    in.take(L'"');
    inches += rest;
    return true;
  }
  in.take(L'"');
  inches = first;
  return true;
}

OdString trimmed(const ACHAR* text) {
  OdString s(text ? text : L"");
  s.trimLeft().trimRight();
  return s;
}

int currentLinearUnit() { return static_cast<int>(Host::instance().sysvars().getInt(L"LUNITS", 2)); }
int currentAngularUnit() { return static_cast<int>(Host::instance().sysvars().getInt(L"AUNITS", 0)); }

bool parseLinear(const OdString& text, int unit, double& result) {
  if (unit == -1) unit = currentLinearUnit();
  if (unit < 1 || unit > 5 || text.isEmpty()) return false;
  Scanner in{text.str()};
  const double sign = in.takeSign();
  double value = 0;
  const bool feetAndInches = unit == 3 || unit == 4;
  if (!(feetAndInches ? readFeetInches(in, value) : readMagnitude(in, value)) || !in.atEnd()) return false;
  result = sign * value;
  return true;
}

// ---------------------------------------------------------------- reading angles

double normalizedAngle(double radians) {
  double a = std::fmod(radians, kTwoPi);
  if (a < 0) a += kTwoPi;
  if (a >= kTwoPi) a = 0;
  return a;
}

double degreesToRadians(double degrees) { return degrees * kTwoPi / 360.0; }

// Degrees, minutes and seconds with their marks, in that order: "45d30'15\"",
// "45d", "30'", "45d30" (the last number may leave out its mark); a plain
// number is degrees.
bool readDegrees(Scanner& in, double& degrees) {
  static const double weights[] = {1.0, 1.0 / 60.0, 1.0 / 3600.0};
  double value = 0;
  if (!readUnsigned(in, value)) return false;
  degrees = 0;
  int next = 0;  // the first unit still allowed: 0 degrees, 1 minutes, 2 seconds
  for (;;) {
    int mark = -1;
    if (in.takeNoCase(L'D') || in.take(L'\u00B0'))
      mark = 0;
    else if (in.take(L'\''))
      mark = 1;
    else if (in.take(L'"'))
      mark = 2;
    if (mark < 0) {
      if (!in.atEnd() || next > 2) return false;
      degrees += value * weights[next];
      return true;
    }
    if (mark < next) return false;
    degrees += value * weights[mark];
    next = mark + 1;
    if (in.atEnd()) return true;
    if (!readUnsigned(in, value)) return false;
  }
}

// A surveyor's bearing: "N 45d30' E", "S45W", or a bare "N", "S", "E", "W".
bool parseBearing(const OdString& text, double& radians) {
  const OdString up = text.upper();
  static const struct {
    const wchar_t* point;
    double degrees;
  } kCardinal[] = {{L"E", 0}, {L"N", 90}, {L"W", 180}, {L"S", 270}};
  for (const auto& cardinal : kCardinal) {
    if (up == cardinal.point) {
      radians = degreesToRadians(cardinal.degrees);
      return true;
    }
  }
  if (up.getLength() < 3) return false;
  const wchar_t from = up[0], toward = up[up.getLength() - 1];
  if ((from != L'N' && from != L'S') || (toward != L'E' && toward != L'W')) return false;
  OdString middle = text.mid(1, text.getLength() - 2);
  middle.trimLeft().trimRight();
  Scanner in{middle.str()};
  double bearing = 0;
  if (!readDegrees(in, bearing) || !in.atEnd() || bearing > 90.0) return false;
  double degrees = 0;
  if (from == L'N')
    degrees = toward == L'E' ? 90.0 - bearing : 90.0 + bearing;
  else
    degrees = toward == L'E' ? 270.0 + bearing : 270.0 - bearing;
  radians = normalizedAngle(degreesToRadians(degrees));
  return true;
}

// An angle in any unit: the unit's plain numbers, and the marked forms of
// the others ("45d30'", "50g", "0.785r", bearings).
bool parseAngular(const OdString& text, int unit, double& result) {
  if (unit == -1) unit = currentAngularUnit();
  if (unit < 0 || unit > 4 || text.isEmpty()) return false;
  if (parseBearing(text, result)) return true;
  Scanner in{text.str()};
  const double sign = in.takeSign();
  const size_t start = in.pos;
  double value = 0;
  if (!readUnsigned(in, value)) return false;
  double radians = 0;
  if (in.atEnd()) {
    switch (unit) {
      case 2: radians = value * kTwoPi / 400.0; break;
      case 3: radians = value; break;
      default: radians = degreesToRadians(value); break;
    }
  } else if ((in.peek() == L'g' || in.peek() == L'G') && in.pos + 1 == in.text.size()) {
    radians = value * kTwoPi / 400.0;
  } else if ((in.peek() == L'r' || in.peek() == L'R') && in.pos + 1 == in.text.size()) {
    radians = value;
  } else {
    in.pos = start;
    double degrees = 0;
    if (!readDegrees(in, degrees) || !in.atEnd()) return false;
    radians = degreesToRadians(degrees);
  }
  result = normalizedAngle(sign * radians);
  return true;
}

// ---------------------------------------------------------------- formatting

// Copies a result into the caller's buffer; RTERROR when it does not fit.
int copyOut(const OdString& text, ACHAR* result, size_t size) {
  if (!result || size == 0) return RTERROR;
  const size_t n = static_cast<size_t>(text.getLength());
  const size_t copied = std::min(n, size - 1);
  std::wmemcpy(result, text.c_str(), copied);
  result[copied] = 0;
  return copied == n ? RTNORM : RTERROR;
}

long long powerOf(long long base, int exponent) {
  long long p = 1;
  while (exponent-- > 0) p *= base;
  return p;
}

OdString fixed(double value, int decimals) { return OdString().format(L"%.*f", decimals, value); }

// "W N/D", "N/D" or "W" for a count of 1/denominator steps.
OdString fraction(long long steps, long long denominator, bool keepZeroWhole) {
  const long long whole = steps / denominator;
  long long numerator = steps % denominator, d = denominator;
  const long long divisor = std::gcd(numerator, d);
  if (divisor > 1) numerator /= divisor, d /= divisor;
  if (numerator == 0) return OdString().format(L"%lld", whole);
  if (whole == 0 && !keepZeroWhole) return OdString().format(L"%lld/%lld", numerator, d);
  return OdString().format(L"%lld %lld/%lld", whole, numerator, d);
}

OdString formatLinear(double value, int unit, int precision) {
  const double magnitude = std::fabs(value);
  switch (unit) {
    case 1: return OdString().format(L"%.*E", precision, value == 0 ? 0.0 : value);
    case 2: {
      OdString text = fixed(magnitude, precision);
      return value < 0 && text.str().find_first_not_of(L"0.") != std::wstring::npos ? L"-" + text : text;
    }
    case 3: {
      const long long scale = powerOf(10, precision);
      const long long steps = std::llround(magnitude * static_cast<double>(scale));
      const long long feet = steps / (12 * scale);
      const double inches = static_cast<double>(steps % (12 * scale)) / static_cast<double>(scale);
      OdString text = OdString().format(L"%lld'-", feet) + fixed(inches, precision) + L"\"";
      return value < 0 && steps != 0 ? L"-" + text : text;
    }
    case 4: {
      const long long denominator = powerOf(2, precision);
      const long long steps = std::llround(magnitude * static_cast<double>(denominator));
      const long long feet = steps / (12 * denominator);
      OdString text = OdString().format(L"%lld'-", feet) +
                      fraction(steps % (12 * denominator), denominator, true) + L"\"";
      return value < 0 && steps != 0 ? L"-" + text : text;
    }
    default: {
      const long long denominator = powerOf(2, precision);
      const long long steps = std::llround(magnitude * static_cast<double>(denominator));
      OdString text = fraction(steps, denominator, false);
      return value < 0 && steps != 0 ? L"-" + text : text;
    }
  }
}

// Degrees, minutes and seconds of a count of steps; the precision says how
// far the form goes (0 degrees, 1-2 minutes, 3-4 seconds, more: decimals of seconds).
OdString formatDms(long long steps, int precision) {
  if (precision == 0) return OdString().format(L"%lldd", steps);
  if (precision <= 2) return OdString().format(L"%lldd%lld'", steps / 60, steps % 60);
  if (precision <= 4)
    return OdString().format(L"%lldd%lld'%lld\"", steps / 3600, steps / 60 % 60, steps % 60);
  const int decimals = precision - 4;
  const long long scale = powerOf(10, decimals);
  const long long seconds = steps / scale;
  return OdString().format(L"%lldd%lld'%lld.%0*lld\"", seconds / 3600, seconds / 60 % 60, seconds % 60,
                           decimals, steps % scale);
}

// Steps of one degree for the deg/min/sec forms at a precision.
long long dmsStepsPerDegree(int precision) {
  if (precision == 0) return 1;
  if (precision <= 2) return 60;
  if (precision <= 4) return 3600;
  return 3600 * powerOf(10, precision - 4);
}

OdString formatAngular(double radians, int unit, int precision) {
  const double degrees = normalizedAngle(radians) * 360.0 / kTwoPi;
  // A count of displayed steps, wrapped so that 359.99999 shows as 0.
  auto wrappedSteps = [](double units, long long perUnit, long long fullTurn) {
    long long steps = std::llround(units * static_cast<double>(perUnit));
    return steps >= fullTurn * perUnit ? steps - fullTurn * perUnit : steps;
  };
  switch (unit) {
    case 0: {
      const long long scale = powerOf(10, precision);
      return fixed(static_cast<double>(wrappedSteps(degrees, scale, 360)) / static_cast<double>(scale),
                   precision);
    }
    case 1: return formatDms(wrappedSteps(degrees, dmsStepsPerDegree(precision), 360), precision);
    case 2: {
      const long long scale = powerOf(10, precision);
      const double grads =
          static_cast<double>(wrappedSteps(degrees * 400.0 / 360.0, scale, 400)) / static_cast<double>(scale);
      return fixed(grads, precision) + L"g";
    }
    case 3: return fixed(normalizedAngle(radians), precision) + L"r";
    default: {
      const long long perDegree = dmsStepsPerDegree(precision);
      const long long steps = wrappedSteps(degrees, perDegree, 360);
      const long long quarter = 90 * perDegree;
      if (steps == 0) return L"E";
      if (steps == quarter) return L"N";
      if (steps == 2 * quarter) return L"W";
      if (steps == 3 * quarter) return L"S";
      if (steps < quarter) return L"N " + formatDms(quarter - steps, precision) + L" E";
      if (steps < 2 * quarter) return L"N " + formatDms(steps - quarter, precision) + L" W";
      if (steps < 3 * quarter) return L"S " + formatDms(3 * quarter - steps, precision) + L" W";
      return L"S " + formatDms(steps - 3 * quarter, precision) + L" E";
    }
  }
}

// Distances and angles: how they are read and written, their units and
// where the current unit and precision are kept.
struct Measure {
  int (*currentUnit)();
  const wchar_t* precisionVariable;
  int defaultPrecision;
  int firstUnit, lastUnit;
  bool (*parse)(const OdString& text, int unit, double& result);
  OdString (*format)(double value, int unit, int precision);
};
const Measure kDistance{currentLinearUnit, L"LUPREC", 4, 1, 5, parseLinear, formatLinear};
const Measure kAngle{currentAngularUnit, L"AUPREC", 0, 0, 4, parseAngular, formatAngular};

int measureFromText(const Measure& measure, const ACHAR* text, int unit, ads_real* result) {
  if (!text || !result) return RTERROR;
  double value = 0;
  if (!measure.parse(trimmed(text), unit, value)) return RTERROR;
  *result = value;
  return RTNORM;
}

// A unit or precision of -1 stands for the current one.
int measureToText(const Measure& measure, ads_real value, int unit, int precision, ACHAR* result, size_t size) {
  if (unit == -1) unit = measure.currentUnit();
  if (precision == -1)
    precision = static_cast<int>(
        Host::instance().sysvars().getInt(measure.precisionVariable, measure.defaultPrecision));
  if (unit < measure.firstUnit || unit > measure.lastUnit || precision < 0 || precision > kMaxPrecision ||
      !std::isfinite(value))
    return RTERROR;
  return copyOut(measure.format(value, unit, precision), result, size);
}

}  // namespace

// ---------------------------------------------------------------- numbers and text

int rydbDisToF(const ACHAR* text, int unit, ads_real* result) { return measureFromText(kDistance, text, unit, result); }

int rydbRToS(ads_real value, int unit, int precision, ACHAR* result, size_t size) {
  return measureToText(kDistance, value, unit, precision, result, size);
}

int rydbAngToF(const ACHAR* text, int unit, ads_real* result) { return measureFromText(kAngle, text, unit, result); }

int rydbAngToS(ads_real value, int unit, int precision, ACHAR* result, size_t size) {
  return measureToText(kAngle, value, unit, precision, result, size);
}

// ---------------------------------------------------------------- characters

namespace {

// Character classes and case for every script, whatever the process locale.
locale_t unicodeLocale() {
  static locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
  return locale;
}

bool isCharacter(int c) { return c >= 0 && c <= 0x10FFFF; }

// Whether a character is of a class, by the Unicode locale's test (the
// process locale's when that locale is missing).
int isOfClass(int c, int (*inLocale)(wint_t, locale_t), int (*inProcessLocale)(wint_t)) {
  if (!isCharacter(c)) return 0;
  const locale_t locale = unicodeLocale();
  const wint_t w = static_cast<wint_t>(c);
  return (locale ? inLocale(w, locale) : inProcessLocale(w)) != 0;
}

// A character in the other case, by the Unicode locale's mapping (the
// process locale's when that locale is missing).
int inCase(int c, wint_t (*inLocale)(wint_t, locale_t), wint_t (*inProcessLocale)(wint_t)) {
  if (!isCharacter(c)) return c;
  const locale_t locale = unicodeLocale();
  const wint_t w = static_cast<wint_t>(c);
  return static_cast<int>(locale ? inLocale(w, locale) : inProcessLocale(w));
}

}  // namespace

int ryutIsAlpha(int c) { return isOfClass(c, iswalpha_l, iswalpha); }

int ryutIsUpper(int c) { return isOfClass(c, iswupper_l, iswupper); }

int ryutIsLower(int c) { return isOfClass(c, iswlower_l, iswlower); }

int ryutIsDigit(int c) { return c >= '0' && c <= '9'; }

int ryutIsSpace(int c) { return isOfClass(c, iswspace_l, iswspace); }

int ryutToUpper(int c) { return inCase(c, towupper_l, towupper); }

int ryutToLower(int c) { return inCase(c, towlower_l, towlower); }

// ---------------------------------------------------------------- wildcards

namespace {

// One element of a wildcard pattern.
struct WildToken {
  enum Kind { kLiteral, kDigit, kAlpha, kNonAlphanumeric, kAnyOne, kAnySequence, kClass };
  Kind kind = kLiteral;
  wchar_t ch = 0;
  bool negated = false;  // [~...]
  std::vector<std::pair<wchar_t, wchar_t>> ranges;
};

bool sameLetter(wchar_t a, wchar_t b) {
  return a == b || ryutToUpper(a) == ryutToUpper(b) || ryutToLower(a) == ryutToLower(b);
}

bool inRanges(const WildToken& token, wchar_t c) {
  const wchar_t variants[] = {c, static_cast<wchar_t>(ryutToUpper(c)), static_cast<wchar_t>(ryutToLower(c))};
  for (const auto& [low, high] : token.ranges) {
    for (wchar_t v : variants) {
      if (v >= low && v <= high) return true;
    }
  }
  return false;
}

bool matchesOne(const WildToken& token, wchar_t c) {
  switch (token.kind) {
    case WildToken::kLiteral: return sameLetter(token.ch, c);
    case WildToken::kDigit: return ryutIsDigit(c) != 0;
    case WildToken::kAlpha: return ryutIsAlpha(c) != 0;
    case WildToken::kNonAlphanumeric: return !ryutIsAlpha(c) && !ryutIsDigit(c);
    case WildToken::kAnyOne: return true;
    case WildToken::kClass: return inRanges(token, c) != token.negated;
    case WildToken::kAnySequence: return false;
  }
  return false;
}

// Reads "[...]" from just after the "[": false when it is not closed (the
// "[" is then an ordinary character).
bool readClass(const std::wstring& pattern, size_t& pos, WildToken& token) {
  size_t i = pos;
  token.kind = WildToken::kClass;
  if (i < pattern.size() && pattern[i] == L'~') token.negated = true, ++i;
  std::vector<wchar_t> chars;
  std::vector<bool> escaped;
  bool first = true;
  for (;; first = false) {
    if (i >= pattern.size()) return false;
    wchar_t c = pattern[i];
    if (c == L']' && !first) break;
    bool isEscaped = false;
    if (c == L'`' && i + 1 < pattern.size()) c = pattern[++i], isEscaped = true;
    chars.push_back(c);
    escaped.push_back(isEscaped);
    ++i;
  }
  for (size_t k = 0; k < chars.size(); ++k) {
    // "a-z" is a range; a "-" at either end stands for itself.
    if (k + 2 < chars.size() && chars[k + 1] == L'-' && !escaped[k + 1]) {
      token.ranges.emplace_back(std::min(chars[k], chars[k + 2]), std::max(chars[k], chars[k + 2]));
      k += 2;
    } else {
      token.ranges.emplace_back(chars[k], chars[k]);
    }
  }
  pos = i + 1;
  return true;
}

// Splits a pattern at the commas that are neither escaped nor in brackets.
std::vector<std::wstring> alternatives(const std::wstring& pattern) {
  std::vector<std::wstring> result(1);
  for (size_t i = 0; i < pattern.size(); ++i) {
    const wchar_t c = pattern[i];
    if (c == L'`' && i + 1 < pattern.size()) {
      result.back() += c;
      result.back() += pattern[++i];
      continue;
    }
    size_t end = i + 1;
    WildToken bracket;
    if (c == L'[' && readClass(pattern, end, bracket)) {
      result.back().append(pattern, i, end - i);
      i = end - 1;
      continue;
    }
    if (c == L',')
      result.emplace_back();
    else
      result.back() += c;
  }
  return result;
}

std::vector<WildToken> compile(const std::wstring& pattern, size_t start) {
  std::vector<WildToken> tokens;
  for (size_t i = start; i < pattern.size();) {
    WildToken token;
    const wchar_t c = pattern[i++];
    switch (c) {
      case L'#': token.kind = WildToken::kDigit; break;
      case L'@': token.kind = WildToken::kAlpha; break;
      case L'.': token.kind = WildToken::kNonAlphanumeric; break;
      case L'?': token.kind = WildToken::kAnyOne; break;
      case L'*': token.kind = WildToken::kAnySequence; break;
      case L'`': token.ch = i < pattern.size() ? pattern[i++] : L'`'; break;
      case L'[': {
        size_t pos = i;
        WildToken cls;
        if (readClass(pattern, pos, cls)) {
          token = cls;
          i = pos;
        } else {
          token.ch = L'[';
        }
        break;
      }
      default: token.ch = c; break;
    }
    tokens.push_back(token);
  }
  return tokens;
}

// Whether the tokens match the whole text (positions reachable token by token).
bool matchTokens(const std::vector<WildToken>& tokens, const std::wstring& text) {
  const size_t n = text.size();
  std::vector<char> reachable(n + 1, 0), next(n + 1, 0);
  reachable[0] = 1;
  for (const WildToken& token : tokens) {
    std::fill(next.begin(), next.end(), 0);
    if (token.kind == WildToken::kAnySequence) {
      char any = 0;
      for (size_t j = 0; j <= n; ++j) next[j] = any = static_cast<char>(any || reachable[j]);
    } else {
      for (size_t j = 0; j < n; ++j) {
        if (reachable[j] && matchesOne(token, text[j])) next[j + 1] = 1;
      }
    }
    reachable.swap(next);
  }
  return reachable[n] != 0;
}

}  // namespace

int ryutWcMatch(const ACHAR* string, const ACHAR* pattern) {
  if (!string || !pattern) return RTERROR;
  const std::wstring text(string);
  for (const std::wstring& alternative : alternatives(pattern)) {
    // A leading "~" makes the alternative match what the rest does not.
    const bool negated = !alternative.empty() && alternative[0] == L'~';
    if (matchTokens(compile(alternative, negated ? 1 : 0), text) != negated) return RTNORM;
  }
  return RTERROR;
}

// ---------------------------------------------------------------- geometry helpers

ads_real ryutAngle(const ads_point from, const ads_point to) {
  return normalizedAngle(std::atan2(to[1] - from[1], to[0] - from[0]));
}

ads_real ryutDistance(const ads_point from, const ads_point to) {
  return std::sqrt((to[0] - from[0]) * (to[0] - from[0]) + (to[1] - from[1]) * (to[1] - from[1]) +
                   (to[2] - from[2]) * (to[2] - from[2]));
}

void ryutPolar(const ads_point from, ads_real angle, ads_real distance, ads_point result) {
  const double x = from[0] + distance * std::cos(angle), y = from[1] + distance * std::sin(angle);
  result[0] = x;
  result[1] = y;
  result[2] = from[2];
}

// ---------------------------------------------------------------- coordinate systems

namespace {

// The mapping of a coordinate system given as ryedTrans takes it, to world.
bool systemToWorld(const resbuf* system, OdGeMatrix3d& toWorld) {
  if (!system) return false;
  switch (system->restype) {
    case RTSHORT:
    case RTLONG: {
      const int code = system->restype == RTSHORT ? system->resval.rint : system->resval.rlong;
      if (code == RTWCS) {
        toWorld = OdGeMatrix3d::kIdentity;
        return true;
      }
      // The console shows the drawing in the user system, untwisted: display = user.
      if (code != RTUCS && code != RTDCS && code != RTPSDCS) return false;
      toWorld = ryhost::ucsToWorld();
      return true;
    }
    case RTENAME: {
      OdDbObjectId id;
      if (rydbGetObjectId(id, system->resval.rlname) != RTNORM) return false;
      OdDbObjectPtr object = id.openObject(OdDb::kForRead, true);
      auto* entity = dynamic_cast<OdDbEntity*>(object.get());
      if (!entity) return false;
      OdGeVector3d normal;
      toWorld = ryhost::entityOcsNormal(entity, normal) ? OdGeMatrix3d::planeToWorld(normal)
                                                        : OdGeMatrix3d::kIdentity;
      return true;
    }
    case RTPOINT:
    case RT3DPOINT: {
      // An extrusion direction stands for its object coordinate system.
      const OdGeVector3d normal(system->resval.rpoint[0], system->resval.rpoint[1],
                                system->restype == RTPOINT ? 0.0 : system->resval.rpoint[2]);
      if (normal.isZeroLength()) return false;
      toWorld = OdGeMatrix3d::planeToWorld(normal);
      return true;
    }
    default: return false;
  }
}

}  // namespace

int ryedTrans(const ads_point point, const resbuf* from, const resbuf* to, int displacement,
              ads_point result) {
  if (!point || !result) return RTERROR;
  OdGeMatrix3d fromWorld, toWorld;
  if (!systemToWorld(from, fromWorld) || !systemToWorld(to, toWorld)) return RTERROR;
  OdGeMatrix3d worldToTarget;
  if (!toWorld.inverse(worldToTarget)) return RTERROR;
  const OdGeMatrix3d xform = worldToTarget * fromWorld;
  if (displacement) {
    const OdGeVector3d v = xform * OdGeVector3d(point[0], point[1], point[2]);
    result[0] = v.x, result[1] = v.y, result[2] = v.z;
  } else {
    const OdGePoint3d p = xform * OdGePoint3d(point[0], point[1], point[2]);
    result[0] = p.x, result[1] = p.y, result[2] = p.z;
  }
  return RTNORM;
}

// ---------------------------------------------------------------- object coordinate systems

namespace {

int convertOcs(const ads_point point, const ads_point normal, bool vector, ads_point result, bool toOcs) {
  if (!point || !normal || !result) {
    ryhost::setErrno(kErrnoBadTransform);
    return RTERROR;
  }
  const OdGeVector3d n(normal[0], normal[1], normal[2]);
  if (vector) {
    const OdGeVector3d v(point[0], point[1], point[2]);
    const OdGeVector3d out = toOcs ? odgeWcsToOcs(v, n) : odgeOcsToWcs(v, n);
    result[0] = out.x;
    result[1] = out.y;
    result[2] = out.z;
  } else {
    const OdGePoint3d p(point[0], point[1], point[2]);
    const OdGePoint3d out = toOcs ? odgeWcsToOcs(p, n) : odgeOcsToWcs(p, n);
    result[0] = out.x;
    result[1] = out.y;
    result[2] = out.z;
  }
  return RTNORM;
}

}  // namespace

int rydbWcs2Ecs(const ads_point point, const ads_point normal, bool vector, ads_point result) {
  return convertOcs(point, normal, vector, result, true);
}

int rydbEcs2Wcs(const ads_point point, const ads_point normal, bool vector, ads_point result) {
  return convertOcs(point, normal, vector, result, false);
}

// ---------------------------------------------------------------- text box

namespace {

// The text as drawn: "%%d", "%%p", "%%c" and "%%nnn" are one character each,
// "%%%" a percent sign, and the over/underline switches "%%o"/"%%u" none.
OdString drawnText(const OdString& text) {
  const std::wstring& s = text.str();
  std::wstring out;
  for (size_t i = 0; i < s.size(); ++i) {
    if (s.compare(i, 2, L"%%") != 0 || i + 2 >= s.size()) {
      out += s[i];
      continue;
    }
    const wchar_t code = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(s[i + 2])));
    if (code == L'd')
      out += L'\u00B0';
    else if (code == L'p')
      out += L'\u00B1';
    else if (code == L'c')
      out += L'\u2205';
    else if (code == L'%')
      out += L'%';
    else if (code == L'o' || code == L'u') {
    } else if (isAsciiDigit(code)) {
      size_t j = i + 2;
      int value = 0;
      while (j < s.size() && j < i + 5 && isAsciiDigit(s[j])) value = value * 10 + (s[j++] - L'0');
      out += static_cast<wchar_t>(value);
      i = j - 1;
      continue;
    } else {
      out += s[i];
      continue;
    }
    i += 2;
  }
  return OdString(out);
}

}  // namespace

int ryedTextBox(const resbuf* list, ads_point lowerLeft, ads_point upperRight) {
  if (!list || !lowerLeft || !upperRight) return RTERROR;
  OdDbDatabase* db = Host::instance().workingDatabase();
  OdString text, styleName;
  bool hasText = false;
  double height = 0, widthFactor = 0;
  bool hasHeight = false, hasWidth = false;
  // An entity named in the list gives its values; the groups given override them.
  for (const resbuf* rb = list; rb; rb = rb->rbnext) {
    if (rb->restype != -1) continue;
    OdDbObjectId id;
    if (rydbGetObjectId(id, rb->resval.rlname) != RTNORM) return RTERROR;
    OdDbObjectPtr object = id.openObject(OdDb::kForRead, true);
    auto* entity = dynamic_cast<OdDbText*>(object.get());
    if (!entity) return RTERROR;
    text = entity->textString(), hasText = true;
    height = entity->height(), hasHeight = true;
    widthFactor = entity->widthFactor(), hasWidth = true;
  }
  for (const resbuf* rb = list; rb; rb = rb->rbnext) {
    switch (rb->restype) {
      case 0:
      case RTDXF0: {
        const OdString type = rb->resval.rstring ? rb->resval.rstring : L"";
        if (type.iCompare(L"TEXT") != 0 && type.iCompare(L"ATTRIB") != 0 && type.iCompare(L"ATTDEF") != 0)
          return RTERROR;
        break;
      }
      case 1: text = rb->resval.rstring ? rb->resval.rstring : L"", hasText = true; break;
      case 7: styleName = rb->resval.rstring ? rb->resval.rstring : L""; break;
      case 40: height = rb->resval.rreal, hasHeight = true; break;
      case 41: widthFactor = rb->resval.rreal, hasWidth = true; break;
      default: break;
    }
  }
  if (!hasText) return RTERROR;
  if (!hasHeight || !hasWidth) {
    // What the list leaves out comes from its style (or the current one) and TEXTSIZE.
    OdDbObjectId styleId;
    if (db)
      styleId =
          styleName.isEmpty() ? db->getTEXTSTYLE() : db->findRecord(OdDbNameTable::kTextStyle, styleName);
    OdDbObjectPtr object = styleId.isNull() ? OdDbObjectPtr() : styleId.openObject();
    auto* style = dynamic_cast<OdDbTextStyleTableRecord*>(object.get());
    if (!hasHeight)
      height = style && style->textSize() > 0 ? style->textSize()
                                              : Host::instance().sysvars().getReal(L"TEXTSIZE", 2.5);
    if (!hasWidth) widthFactor = style ? style->xScale() : 1.0;
  }
  OdGePoint3d low, high;
  odDbTextBox(drawnText(text), height, widthFactor, low, high);
  lowerLeft[0] = low.x, lowerLeft[1] = low.y, lowerLeft[2] = low.z;
  upperRight[0] = high.x, upperRight[1] = high.y, upperRight[2] = high.z;
  return RTNORM;
}
