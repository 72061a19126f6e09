// Code-page tables built through iconv, and the escape-aware conversions.
#include "OdCodePage.h"

#include <iconv.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

static_assert(sizeof(wchar_t) == 4, "wide text is expected to hold whole code points");

namespace {

constexpr char32_t kInvalid = 0xFFFFFFFF;
constexpr wchar_t kReplacement = 0xFFFD;

}  // namespace

struct OdCodePageTable {
  int codePage = 0;
  bool supported = false;
  bool asciiCompatible = false;  // bytes 0..0x7F are the ASCII characters
  std::array<char32_t, 256> single;  // character of a lone byte, or kInvalid
  std::array<OdInt16, 256> leadRow;  // index into rows for lead bytes, else -1
  std::vector<std::array<char32_t, 256>> rows;  // characters by trail byte
  // Character -> byte (< 0x100) or lead << 8 | trail.
  std::unordered_map<char32_t, OdUInt16> encoding;

  char32_t pair(unsigned lead, unsigned trail) const {
    const int row = leadRow[lead];
    return row < 0 ? kInvalid : rows[static_cast<size_t>(row)][trail];
  }
};

namespace {

// ---------------------------------------------------------------------------
// Names

struct NamedCodePage {
  const wchar_t* dxfName;
  int codePage;
};

// Names that do not follow the ANSI_n / DOSn / ISO8859-n patterns.
constexpr NamedCodePage kSpecialNames[] = {
    {L"ASCII", 1252},      {L"BIG5", 950},        {L"GB2312", 936},  {L"KSC5601", 949},
    {L"JOHAB", 1361},      {L"MACINTOSH", 10000}, {L"UTF8", 65001},  {L"UTF-8", 65001},
};

bool equalsNoCase(std::wstring_view a, std::wstring_view b) {
  if (a.size() != b.size()) return false;
  for (size_t k = 0; k < a.size(); ++k) {
    if (odToUpper(a[k]) != odToUpper(b[k])) return false;
  }
  return true;
}

bool startsWithNoCase(std::wstring_view text, std::wstring_view prefix) {
  return text.size() >= prefix.size() && equalsNoCase(text.substr(0, prefix.size()), prefix);
}

// Decimal digits only, at most 5 of them; -1 otherwise.
int parseSmallNumber(std::wstring_view digits) {
  if (digits.empty() || digits.size() > 5) return -1;
  int value = 0;
  for (wchar_t ch : digits) {
    if (ch < L'0' || ch > L'9') return -1;
    value = value * 10 + (ch - L'0');
  }
  return value;
}

int isoPartToCodePage(int part) {
  if (part >= 1 && part <= 9) return 28590 + part;
  if (part == 13) return 28603;
  if (part == 15) return 28605;
  return kOdCodePageNone;
}

int codePageToIsoPart(int codePage) {
  if (codePage >= 28591 && codePage <= 28599) return codePage - 28590;
  if (codePage == 28603) return 13;
  if (codePage == 28605) return 15;
  return 0;
}

bool isDosCodePage(int codePage) {
  switch (codePage) {
    case 437: case 737: case 775: case 850: case 852: case 855: case 857: case 860:
    case 861: case 862: case 863: case 864: case 865: case 866: case 869:
      return true;
    default:
      return false;
  }
}

// The iconv name of a code page, or an empty string.
std::string iconvNameOf(int codePage) {
  if (codePage == 874) return "WINDOWS-874";
  if (codePage == 1361) return "JOHAB";
  if (codePage == 10000) return "MACINTOSH";
  if (const int part = codePageToIsoPart(codePage)) return "ISO-8859-" + std::to_string(part);
  if (isDosCodePage(codePage) || (codePage >= 1250 && codePage <= 1258) || codePage == 932 ||
      codePage == 936 || codePage == 949 || codePage == 950) {
    return "CP" + std::to_string(codePage);
  }
  return {};
}

// ---------------------------------------------------------------------------
// Table building

const char* utf32Name() { return std::endian::native == std::endian::little ? "UTF-32LE" : "UTF-32BE"; }

enum class OneChar { kOk, kIncomplete, kInvalid };

// Converts exactly the given bytes to exactly one character.
OneChar convertOne(iconv_t cd, const unsigned char* bytes, size_t count, char32_t& result) {
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  char input[2];
  std::memcpy(input, bytes, count);
  char32_t output[4];
  char* in = input;
  size_t inLeft = count;
  char* out = reinterpret_cast<char*>(output);
  size_t outLeft = sizeof(output);
  const size_t status = iconv(cd, &in, &inLeft, &out, &outLeft);
  if (status == static_cast<size_t>(-1)) return errno == EINVAL ? OneChar::kIncomplete : OneChar::kInvalid;
  // A stateful converter may hold back its output until flushed.
  iconv(cd, nullptr, nullptr, &out, &outLeft);
  if (inLeft != 0 || sizeof(output) - outLeft != sizeof(char32_t)) return OneChar::kInvalid;
  result = output[0];
  return OneChar::kOk;
}

void fillFromIconv(OdCodePageTable& table, iconv_t cd) {
  std::vector<unsigned> leadCandidates;
  for (unsigned b = 0; b < 256; ++b) {
    const unsigned char byte = static_cast<unsigned char>(b);
    char32_t ch = 0;
    switch (convertOne(cd, &byte, 1, ch)) {
      case OneChar::kOk: table.single[b] = ch; break;
      case OneChar::kIncomplete: leadCandidates.push_back(b); break;
      case OneChar::kInvalid: break;
    }
  }
  for (unsigned lead : leadCandidates) {
    std::array<char32_t, 256> row;
    row.fill(kInvalid);
    bool any = false;
    for (unsigned trail = 0; trail < 256; ++trail) {
      const unsigned char bytes[2] = {static_cast<unsigned char>(lead), static_cast<unsigned char>(trail)};
      char32_t ch = 0;
      if (convertOne(cd, bytes, 2, ch) == OneChar::kOk) {
        row[trail] = ch;
        any = true;
      }
    }
    if (any) {
      table.leadRow[lead] = static_cast<OdInt16>(table.rows.size());
      table.rows.push_back(row);
    }
  }
}

void fillEncoding(OdCodePageTable& table) {
  // Single bytes first, so that a character with two spellings gets the short one.
  for (unsigned b = 0; b < 256; ++b) {
    if (table.single[b] != kInvalid) table.encoding.emplace(table.single[b], static_cast<OdUInt16>(b));
  }
  for (unsigned lead = 0; lead < 256; ++lead) {
    if (table.leadRow[lead] < 0) continue;
    for (unsigned trail = 0; trail < 256; ++trail) {
      const char32_t ch = table.pair(lead, trail);
      if (ch != kInvalid) table.encoding.emplace(ch, static_cast<OdUInt16>(lead << 8 | trail));
    }
  }
}

std::unique_ptr<OdCodePageTable> buildTable(int codePage) {
  auto table = std::make_unique<OdCodePageTable>();
  table->codePage = codePage;
  table->single.fill(kInvalid);
  table->leadRow.fill(-1);
  const std::string name = iconvNameOf(codePage);
  iconv_t cd = name.empty() ? reinterpret_cast<iconv_t>(-1) : iconv_open(utf32Name(), name.c_str());
  if (cd != reinterpret_cast<iconv_t>(-1)) {
    fillFromIconv(*table, cd);
    iconv_close(cd);
    table->supported = true;
  } else {
    // Unknown code page: keep ASCII readable, everything else is invalid.
    for (unsigned b = 0; b < 0x80; ++b) table->single[b] = b;
  }
  table->asciiCompatible = true;
  for (unsigned b = 0; b < 0x80; ++b) {
    if (table->single[b] != b) table->asciiCompatible = false;
  }
  fillEncoding(*table);
  return table;
}

const OdCodePageTable* tableOf(int codePage) {
  static std::mutex mutex;
  static std::unordered_map<int, std::unique_ptr<OdCodePageTable>> tables;
  std::lock_guard<std::mutex> lock(mutex);
  auto& slot = tables[codePage];
  if (!slot) slot = buildTable(codePage);
  return slot.get();
}

// ---------------------------------------------------------------------------
// Escapes

int hexValue(unsigned ch) {
  if (ch >= '0' && ch <= '9') return static_cast<int>(ch - '0');
  if (ch >= 'A' && ch <= 'F') return static_cast<int>(ch - 'A' + 10);
  if (ch >= 'a' && ch <= 'f') return static_cast<int>(ch - 'a' + 10);
  return -1;
}

// Four hex digits at text[0..3] (bytes or wide characters); -1 if not.
template <class Char>
int hex4(const Char* text) {
  int value = 0;
  for (int k = 0; k < 4; ++k) {
    const int digit = hexValue(static_cast<unsigned>(text[k]));
    if (digit < 0) return -1;
    value = value << 4 | digit;
  }
  return value;
}

int codePageOfMbcsSelector(unsigned selector) {
  static constexpr int kPages[] = {932, 950, 949, 1361, 936};
  return selector >= '1' && selector <= '5' ? kPages[selector - '1'] : 0;
}

// Recognises an escape at text[0] (a backslash); text has `left` characters.
// Returns the number of characters consumed (0: not an escape) and the decoded
// character.
template <class Char>
size_t matchEscape(const Char* text, size_t left, char32_t& decoded) {
  if (left < 7 || text[2] != '+') return 0;
  if (text[1] == 'U') {
    const int unit = hex4(text + 3);
    if (unit <= 0) return 0;
    if (unit >= 0xD800 && unit <= 0xDBFF) {
      if (left < 14 || text[7] != '\\' || text[8] != 'U' || text[9] != '+') return 0;
      const int low = hex4(text + 10);
      if (low < 0xDC00 || low > 0xDFFF) return 0;
      decoded = 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) + (static_cast<char32_t>(low) - 0xDC00);
      return 14;
    }
    if (unit >= 0xDC00 && unit <= 0xDFFF) return 0;
    decoded = static_cast<char32_t>(unit);
    return 7;
  }
  if (text[1] == 'M' && left >= 8) {
    const int codePage = codePageOfMbcsSelector(static_cast<unsigned>(text[3]));
    const int bytes = codePage ? hex4(text + 4) : -1;
    if (bytes < 0) return 0;
    const OdCodePageTable* table = tableOf(codePage);
    const unsigned lead = static_cast<unsigned>(bytes) >> 8, trail = static_cast<unsigned>(bytes) & 0xFF;
    const char32_t ch = lead == 0 ? table->single[trail] : table->pair(lead, trail);
    if (ch == kInvalid || ch == 0) return 0;
    decoded = ch;
    return 8;
  }
  return 0;
}

// True when text[0..] (a backslash) would read back as an escape.
bool looksLikeEscape(std::wstring_view text) {
  char32_t ignored;
  return matchEscape(text.data(), text.size(), ignored) != 0;
}

void appendUnitEscape(std::string& out, unsigned unit) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  const char escape[7] = {'\\', 'U', '+', kHex[(unit >> 12) & 15], kHex[(unit >> 8) & 15],
                          kHex[(unit >> 4) & 15], kHex[unit & 15]};
  out.append(escape, 7);
}

// \U+XXXX for the character, as UTF-16 units; '?' for values beyond Unicode.
void appendCharEscape(std::string& out, char32_t ch) {
  if (ch > 0x10FFFF) {
    out += '?';
  } else if (ch >= 0x10000) {
    appendUnitEscape(out, 0xD800 + ((ch - 0x10000) >> 10));
    appendUnitEscape(out, 0xDC00 + ((ch - 0x10000) & 0x3FF));
  } else {
    appendUnitEscape(out, ch);
  }
}

// ---------------------------------------------------------------------------
// Decoding

// Length of a valid UTF-8 sequence at text (with `left` bytes), 0 if invalid.
size_t utf8Sequence(const unsigned char* text, size_t left, char32_t& ch) {
  const unsigned lead = text[0];
  size_t length;
  unsigned low = 0x80, high = 0xBF;  // range of the second byte
  if (lead >= 0xC2 && lead <= 0xDF) { length = 2; ch = lead & 0x1F; }
  else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3; ch = lead & 0x0F;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;  // no surrogates
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4; ch = lead & 0x07;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    return 0;
  }
  if (left < length || text[1] < low || text[1] > high) return 0;
  for (size_t k = 1; k < length; ++k) {
    if ((text[k] & 0xC0) != 0x80) return 0;
    ch = ch << 6 | (text[k] & 0x3F);
  }
  return length;
}

// Decodes into out starting at out[size] (out is already large enough: one
// character per byte at most); returns the new size.
size_t decodeUtf8(const unsigned char* text, size_t n, wchar_t* out, bool escapes) {
  wchar_t* start = out;
  size_t i = 0;
  while (i < n) {
    const unsigned char b = text[i];
    if (b < 0x80) {
      if (b == '\\' && escapes) {
        char32_t ch;
        if (const size_t used = matchEscape(text + i, n - i, ch)) {
          *out++ = static_cast<wchar_t>(ch);
          i += used;
          continue;
        }
      }
      *out++ = static_cast<wchar_t>(b);
      ++i;
      continue;
    }
    char32_t ch;
    if (const size_t used = utf8Sequence(text + i, n - i, ch)) {
      *out++ = static_cast<wchar_t>(ch);
      i += used;
    } else {
      *out++ = kReplacement;
      ++i;
    }
  }
  return static_cast<size_t>(out - start);
}

size_t decodeTable(const OdCodePageTable& table, const unsigned char* text, size_t n, wchar_t* out,
                   bool escapes) {
  wchar_t* start = out;
  size_t i = 0;
  while (i < n) {
    const unsigned char b = text[i];
    if (b == '\\' && escapes) {
      char32_t ch;
      if (const size_t used = matchEscape(text + i, n - i, ch)) {
        *out++ = static_cast<wchar_t>(ch);
        i += used;
        continue;
      }
    }
    if (table.leadRow[b] >= 0) {
      const char32_t ch = i + 1 < n ? table.pair(b, text[i + 1]) : kInvalid;
      if (ch != kInvalid) {
        *out++ = static_cast<wchar_t>(ch);
        i += 2;
        continue;
      }
    }
    const char32_t ch = table.single[b];
    *out++ = ch == kInvalid ? kReplacement : static_cast<wchar_t>(ch);
    ++i;
  }
  return static_cast<size_t>(out - start);
}

// Plain ASCII without backslashes: the common case, copied straight.
bool isPlainAscii(const unsigned char* text, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    if (text[i] >= 0x80 || text[i] == '\\') return false;
  }
  return true;
}

// ---------------------------------------------------------------------------
// Encoding

void appendUtf8(std::string& out, char32_t ch) {
  char bytes[4];
  size_t length;
  if (ch < 0x800) {
    bytes[0] = static_cast<char>(0xC0 | (ch >> 6));
    bytes[1] = static_cast<char>(0x80 | (ch & 0x3F));
    length = 2;
  } else if (ch < 0x10000) {
    bytes[0] = static_cast<char>(0xE0 | (ch >> 12));
    bytes[1] = static_cast<char>(0x80 | ((ch >> 6) & 0x3F));
    bytes[2] = static_cast<char>(0x80 | (ch & 0x3F));
    length = 3;
  } else {
    bytes[0] = static_cast<char>(0xF0 | (ch >> 18));
    bytes[1] = static_cast<char>(0x80 | ((ch >> 12) & 0x3F));
    bytes[2] = static_cast<char>(0x80 | ((ch >> 6) & 0x3F));
    bytes[3] = static_cast<char>(0x80 | (ch & 0x3F));
    length = 4;
  }
  out.append(bytes, length);
}

// Characters that DXF escaping must treat specially: line breaks cannot stand
// inside one line (written as \U+XXXX), NUL cannot be stored at all.
bool breaksDxfLine(wchar_t ch) { return ch == L'\n' || ch == L'\r' || ch == 0; }

// Returns true when ch was written as an escape because of DXF escaping.
bool encodeDxfSpecial(std::wstring_view text, size_t i, std::string& out) {
  const wchar_t ch = text[i];
  if (ch == L'\n' || ch == L'\r' || (ch == L'\\' && looksLikeEscape(text.substr(i)))) {
    appendUnitEscape(out, static_cast<unsigned>(ch));
    return true;
  }
  return false;
}

void encodeUnmappable(std::string& out, char32_t ch, OdCodePageConverter::Escaping escaping) {
  if (escaping == OdCodePageConverter::Escaping::kNone) out += '?';
  else appendCharEscape(out, ch);
}

bool isSurrogate(char32_t ch) { return ch >= 0xD800 && ch <= 0xDFFF; }

}  // namespace

// ---------------------------------------------------------------------------
// Public functions

int odCodePageFromDxfName(std::wstring_view name) {
  while (!name.empty() && (name.back() == L' ' || name.back() == L'\t')) name.remove_suffix(1);
  while (!name.empty() && (name.front() == L' ' || name.front() == L'\t')) name.remove_prefix(1);
  for (const NamedCodePage& named : kSpecialNames) {
    if (equalsNoCase(name, named.dxfName)) return named.codePage;
  }
  if (startsWithNoCase(name, L"ANSI_")) return std::max(parseSmallNumber(name.substr(5)), 0);
  if (startsWithNoCase(name, L"DOS")) return std::max(parseSmallNumber(name.substr(3)), 0);
  if (startsWithNoCase(name, L"CP")) return std::max(parseSmallNumber(name.substr(2)), 0);
  if (startsWithNoCase(name, L"ISO8859-")) return isoPartToCodePage(parseSmallNumber(name.substr(8)));
  if (startsWithNoCase(name, L"ISO-8859-")) return isoPartToCodePage(parseSmallNumber(name.substr(9)));
  return kOdCodePageNone;
}

OdString odDxfNameOfCodePage(int codePage) {
  if (codePage == kOdCodePageUtf8) return OdString(L"UTF8");
  if (codePage == 10000) return OdString(L"MACINTOSH");
  if (const int part = codePageToIsoPart(codePage)) return OdString(L"ISO8859-" + std::to_wstring(part));
  if (isDosCodePage(codePage)) return OdString(L"DOS" + std::to_wstring(codePage));
  if (codePage == 874 || codePage == 932 || codePage == 936 || codePage == 949 || codePage == 950 ||
      codePage == 1361 || (codePage >= 1250 && codePage <= 1258)) {
    return OdString(L"ANSI_" + std::to_wstring(codePage));
  }
  return OdString();
}

bool odIsCodePageSupported(int codePage) {
  return codePage == kOdCodePageUtf8 || (!iconvNameOf(codePage).empty() && tableOf(codePage)->supported);
}

std::wstring odDecodeCodePage(std::string_view bytes, int codePage) {
  std::wstring out;
  OdCodePageConverter(codePage).decode(bytes, out, false);
  return out;
}

std::string odEncodeCodePage(std::wstring_view text, int codePage, bool escapeUnmappable, bool* lossy) {
  std::string out;
  const bool unmappable = OdCodePageConverter(codePage).encode(
      text, out, escapeUnmappable ? OdCodePageConverter::Escaping::kUnmappable : OdCodePageConverter::Escaping::kNone);
  if (lossy) *lossy = unmappable;
  return out;
}

bool odDecodeUnicodeEscapes(std::wstring& text) {
  size_t from = text.find(L'\\');
  if (from == std::wstring::npos) return false;
  size_t to = from;
  bool replaced = false;
  while (from < text.size()) {
    char32_t ch;
    const size_t used = text[from] == L'\\' ? matchEscape(text.data() + from, text.size() - from, ch) : 0;
    if (used) {
      text[to++] = static_cast<wchar_t>(ch);
      from += used;
      replaced = true;
    } else {
      text[to++] = text[from++];
    }
  }
  text.resize(to);
  return replaced;
}

// ---------------------------------------------------------------------------
// Converter

OdCodePageConverter::OdCodePageConverter(int codePage)
    : m_codePage(codePage), m_table(codePage == kOdCodePageUtf8 ? nullptr : tableOf(codePage)) {}

bool OdCodePageConverter::isSupported() const { return m_table == nullptr || m_table->supported; }

void OdCodePageConverter::decode(std::string_view bytes, std::wstring& out, bool decodeEscapes) const {
  const auto* text = reinterpret_cast<const unsigned char*>(bytes.data());
  const size_t n = bytes.size();
  const size_t start = out.size();
  out.resize(start + n);
  wchar_t* target = out.data() + start;
  size_t written;
  if (isPlainAscii(text, n) && (m_table == nullptr || m_table->asciiCompatible)) {
    for (size_t i = 0; i < n; ++i) target[i] = static_cast<wchar_t>(text[i]);
    written = n;
  } else if (m_table == nullptr) {
    written = decodeUtf8(text, n, target, decodeEscapes);
  } else {
    written = decodeTable(*m_table, text, n, target, decodeEscapes);
  }
  out.resize(start + written);
}

bool OdCodePageConverter::encode(std::wstring_view text, std::string& out, Escaping escaping) const {
  const bool dxf = escaping == Escaping::kDxfText;
  const bool asciiFast = m_table == nullptr || m_table->asciiCompatible;
  bool unmappable = false;
  size_t i = 0;
  while (i < text.size()) {
    if (asciiFast) {
      // Copy the run of characters that need no attention in one go.
      size_t end = i;
      while (end < text.size() && text[end] < 0x80 && text[end] != L'\\' && !breaksDxfLine(text[end])) ++end;
      if (end > i) {
        const size_t start = out.size();
        out.resize(start + (end - i));
        for (size_t k = i; k < end; ++k) out[start + (k - i)] = static_cast<char>(text[k]);
        i = end;
        if (i == text.size()) break;
      }
    }
    const wchar_t ch = text[i++];
    if (dxf && ch == 0) {
      unmappable = true;  // dropped: a DXF string ends at NUL
      continue;
    }
    if (dxf && (ch == L'\\' || breaksDxfLine(ch)) && encodeDxfSpecial(text, i - 1, out)) continue;
    if (ch < 0x80 && asciiFast) {
      out += static_cast<char>(ch);
      continue;
    }
    const auto code = static_cast<char32_t>(ch);
    if (m_table == nullptr) {
      if (code > 0x10FFFF || isSurrogate(code)) {
        unmappable = true;
        encodeUnmappable(out, code, escaping);
      } else {
        appendUtf8(out, code);
      }
      continue;
    }
    const auto found = m_table->encoding.find(code);
    if (found == m_table->encoding.end()) {
      unmappable = true;
      encodeUnmappable(out, code, escaping);
    } else if (found->second < 0x100) {
      out += static_cast<char>(found->second);
    } else {
      out += static_cast<char>(found->second >> 8);
      out += static_cast<char>(found->second & 0xFF);
    }
  }
  return unmappable;
}
