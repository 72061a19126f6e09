#include "blocks/RyCStdioFile.h"

#include <cstring>
#include <cwchar>

#include "ryed.h"

namespace {

constexpr int kDefaultAnsiCodePage = 1252;
constexpr char16_t kLineFeed = 10, kCarriageReturn = 13;

// The host's ANSI code page, when this system can convert it.
int hostAnsiCodePage() {
  resbuf value{};
  if (ryedGetVar(L"ANSICODEPAGE", &value) != RTNORM) return kDefaultAnsiCodePage;
  int codePage = kDefaultAnsiCodePage;
  if (value.restype == RTSHORT)
    codePage = static_cast<unsigned short>(value.resval.rint);
  else if (value.restype == RTLONG)
    codePage = value.resval.rlong;
  return odIsCodePageSupported(codePage) ? codePage : kDefaultAnsiCodePage;
}

int hexDigit(wchar_t ch) {
  if (ch >= L'0' && ch <= L'9') return ch - L'0';
  if (ch >= L'A' && ch <= L'F') return ch - L'A' + 10;
  if (ch >= L'a' && ch <= L'f') return ch - L'a' + 10;
  return -1;
}

// The code unit of a "\U+xxxx" escape (U of either case) at text[at]; -1 when there is none.
int unitEscapeAt(const std::wstring& text, size_t at) {
  if (text.size() - at < 7 || text[at] != L'\\' || (text[at + 1] != L'U' && text[at + 1] != L'u') ||
      text[at + 2] != L'+') {
    return -1;
  }
  int unit = 0;
  for (size_t k = at + 3; k < at + 7; ++k) {
    const int digit = hexDigit(text[k]);
    if (digit < 0) return -1;
    unit = unit << 4 | digit;
  }
  return unit;
}

// The character of a "\M+Nxxxx" escape (M of either case) at text[at]; 0 when there is none.
wchar_t doubleByteEscapeAt(const std::wstring& text, size_t at) {
  if (text.size() - at < 8 || (text[at + 1] != L'M' && text[at + 1] != L'm') || text[at + 2] != L'+')
    return 0;
  std::wstring escape = L"\\M+" + text.substr(at + 3, 5);
  return odDecodeUnicodeEscapes(escape) && escape.size() == 1 ? escape[0] : 0;
}

bool isHighSurrogate(int unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(int unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

wchar_t combineSurrogates(int high, int low) {
  return static_cast<wchar_t>(0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00));
}

void appendUnits(std::u16string& units, wchar_t ch) {
  const auto code = static_cast<char32_t>(ch);
  if (code >= 0x10000 && code <= 0x10FFFF) {
    units += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
    units += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
  } else {
    units += static_cast<char16_t>(code > 0x10FFFF ? u'?' : code);
  }
}

}  // namespace

RyCStdioFile::RyCStdioFile(int encoding, bool escape, bool lineEnds)
    : m_encoding(kAnsi), m_escape(escape), m_lineEnds(lineEnds), m_ansi(hostAnsiCodePage()) {
  setEncoding(encoding);
}

void RyCStdioFile::setEncoding(int encoding) {
  m_encoding = encoding >= kAnsi && encoding <= kUtf16BigEndian ? encoding : kAnsi;
}

BOOL RyCStdioFile::Open(LPCWSTR fileName, UINT openFlags) {
  m_peekedUnit = -1;
  return CStdioFile::Open(fileName, openFlags);
}

// ---------------------------------------------------------------- writing

std::string RyCStdioFile::encode(const wchar_t* text, size_t length) const {
  std::string bytes;
  bytes.reserve(length + 16);
  std::wstring_view view(text, length);
  std::wstring guarded;
  if (m_encoding == kAnsi && m_escape) {
    // A backslash that the reader would take for the start of an escape is
    // itself written as one.
    for (size_t i = 0; i < length; ++i) {
      const bool startsEscape = text[i] == L'\\' && i + 2 < length && text[i + 1] != 0 &&
                                std::wcschr(L"UuMm", text[i + 1]) && text[i + 2] == L'+';
      if (startsEscape) {
        if (guarded.empty()) guarded.assign(text, i);
        guarded += L"\\U+005C";
      } else if (!guarded.empty()) {
        guarded += text[i];
      }
    }
    if (!guarded.empty()) view = guarded;
  }
  if (m_encoding == kUtf8) {
    static const OdCodePageConverter utf8(kOdCodePageUtf8);
    utf8.encode(view, bytes, OdCodePageConverter::Escaping::kNone);
  } else {
    m_ansi.encode(
        view, bytes,
        m_escape ? OdCodePageConverter::Escaping::kUnmappable : OdCodePageConverter::Escaping::kNone);
  }
  return bytes;
}

void RyCStdioFile::WriteString(LPCWSTR text) {
  if (!text || !IsOpen()) return;
  const size_t length = std::wcslen(text);
  if (m_encoding == kUtf16LittleEndian || m_encoding == kUtf16BigEndian) {
    writeUtf16(text, length);
    return;
  }
  std::string bytes = encode(text, length);
  if (m_lineEnds) {
    std::string withReturns;
    withReturns.reserve(bytes.size() + 8);
    for (char c : bytes) {
      if (c == '\n') withReturns += '\r';
      withReturns += c;
    }
    bytes.swap(withReturns);
  }
  writeBytes(bytes.data(), bytes.size());
}

void RyCStdioFile::writeUtf16(const wchar_t* text, size_t length) {
  std::u16string units;
  units.reserve(length + 8);
  for (size_t i = 0; i < length; ++i) {
    if (text[i] == L'\n') {
      // The line-end flag adds its return; text mode then writes the feed as CR LF.
      if (m_lineEnds) units += kCarriageReturn;
      if (IsTextMode()) units += kCarriageReturn;
      units += kLineFeed;
      continue;
    }
    appendUnits(units, text[i]);
  }
  const bool little = m_encoding == kUtf16LittleEndian;
  std::string bytes;
  bytes.reserve(units.size() * 2);
  for (char16_t unit : units) {
    const char low = static_cast<char>(unit & 0xFF), high = static_cast<char>(unit >> 8);
    bytes += little ? low : high;
    bytes += little ? high : low;
  }
  std::fwrite(bytes.data(), 1, bytes.size(), m_pStream);
}

// ---------------------------------------------------------------- reading

BOOL RyCStdioFile::ReadString(OdString& line) {
  if (!IsOpen()) return FALSE;
  std::wstring text;
  if (m_encoding == kUtf16LittleEndian || m_encoding == kUtf16BigEndian) {
    std::u16string units;
    if (!readUtf16Line(units)) return FALSE;
    text.reserve(units.size());
    for (size_t i = 0; i < units.size(); ++i) {
      const int unit = units[i];
      if (isHighSurrogate(unit) && i + 1 < units.size() && isLowSurrogate(units[i + 1])) {
        text += combineSurrogates(unit, units[++i]);
      } else {
        text += static_cast<wchar_t>(unit);
      }
    }
  } else {
    std::string bytes;
    if (!readLineBytes(bytes)) return FALSE;
    if (!bytes.empty() && bytes.back() == '\n') {
      bytes.pop_back();
      if (m_lineEnds && !bytes.empty() && bytes.back() == '\r') bytes.pop_back();
    }
    if (m_encoding == kUtf8) {
      static const OdCodePageConverter utf8(kOdCodePageUtf8);
      utf8.decode(bytes, text, false);
    } else {
      m_ansi.decode(bytes, text, false);
      if (m_escape) decodeEscapes(text);
    }
  }
  line = OdString(std::move(text));
  return TRUE;
}

int RyCStdioFile::readUtf16Unit() {
  if (m_peekedUnit >= 0) {
    const int unit = m_peekedUnit;
    m_peekedUnit = -1;
    return unit;
  }
  const int first = getc_unlocked(m_pStream);
  const int second = first == EOF ? EOF : getc_unlocked(m_pStream);
  if (second == EOF) return -1;  // an odd last byte is no code unit
  return m_encoding == kUtf16LittleEndian ? (second << 8 | first) : (first << 8 | second);
}

bool RyCStdioFile::readUtf16Line(std::u16string& units) {
  units.clear();
  for (;;) {
    int unit = readUtf16Unit();
    if (unit < 0) return !units.empty();
    if (unit == kCarriageReturn && IsTextMode()) {
      const int next = readUtf16Unit();
      if (next == kLineFeed)
        unit = kLineFeed;
      else
        m_peekedUnit = next;
    }
    if (unit == kLineFeed) {
      if (m_lineEnds && !units.empty() && units.back() == kCarriageReturn) units.pop_back();
      return true;
    }
    units += static_cast<char16_t>(unit);
  }
}

void RyCStdioFile::decodeEscapes(std::wstring& text) const {
  size_t from = text.find(L'\\');
  if (from == std::wstring::npos) return;
  size_t to = from;
  while (from < text.size()) {
    if (text[from] == L'\\') {
      const int unit = unitEscapeAt(text, from);
      if (unit > 0) {
        const int low = isHighSurrogate(unit) ? unitEscapeAt(text, from + 7) : -1;
        if (isLowSurrogate(low)) {
          text[to++] = combineSurrogates(unit, low);
          from += 14;
        } else {
          text[to++] = static_cast<wchar_t>(unit);
          from += 7;
        }
        continue;
      }
      if (const wchar_t ch = doubleByteEscapeAt(text, from)) {
        text[to++] = ch;
        from += 8;
        continue;
      }
    }
    text[to++] = text[from++];
  }
  text.resize(to);
}

int RyCStdioFile::detectEncoding() {
  if (!IsOpen()) return m_encoding;
  m_peekedUnit = -1;
  SeekToBegin();
  unsigned char head[3] = {};
  const size_t n = std::fread(head, 1, 3, m_pStream);
  if (n == 3 && head[0] == 0xEF && head[1] == 0xBB && head[2] == 0xBF) {
    std::fseek(m_pStream, 3, SEEK_SET);
    m_encoding = kUtf8;
    return m_encoding;
  }
  if (n >= 2 && ((head[0] == 0xFF && head[1] == 0xFE) || (head[0] == 0xFE && head[1] == 0xFF))) {
    std::fseek(m_pStream, 2, SEEK_SET);
    m_encoding = head[0] == 0xFF ? kUtf16LittleEndian : kUtf16BigEndian;
    return m_encoding;
  }
  SeekToBegin();
  return m_encoding;
}

bool RyCStdioFile::looksBinary() {
  if (!IsOpen()) return false;
  const long position = std::ftell(m_pStream);
  char chunk[1 << 16];
  const size_t got = std::fread(chunk, 1, sizeof chunk, m_pStream);
  std::fseek(m_pStream, position, SEEK_SET);
  if (m_encoding == kUtf16LittleEndian || m_encoding == kUtf16BigEndian) {
    for (size_t i = 0; i + 1 < got; i += 2) {
      if (chunk[i] == 0 && chunk[i + 1] == 0) return true;
    }
    return false;
  }
  return std::memchr(chunk, 0, got) != nullptr;
}
