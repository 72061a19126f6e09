#include "OdString.h"

#include <cwchar>
#include <cwctype>
#include <vector>

OdString OdString::kEmpty;

std::wstring odUtf8ToWide(std::string_view utf8) {
  std::wstring out;
  out.reserve(utf8.size());
  size_t i = 0;
  const size_t n = utf8.size();
  while (i < n) {
    unsigned char c = static_cast<unsigned char>(utf8[i]);
    if (c < 0x80) {
      out += static_cast<wchar_t>(c);
      ++i;
      continue;
    }
    int extra = 0;
    char32_t cp = 0;
    if ((c & 0xE0) == 0xC0) { extra = 1; cp = c & 0x1F; }
    else if ((c & 0xF0) == 0xE0) { extra = 2; cp = c & 0x0F; }
    else if ((c & 0xF8) == 0xF0) { extra = 3; cp = c & 0x07; }
    else { out += L'\xFFFD'; ++i; continue; }
    bool ok = true;
    for (int k = 1; k <= extra; ++k) {
      if (i + k >= n) { ok = false; break; }
      unsigned char cc = static_cast<unsigned char>(utf8[i + k]);
      if ((cc & 0xC0) != 0x80) { ok = false; break; }
      cp = (cp << 6) | (cc & 0x3F);
    }
    if (!ok) { out += L'\xFFFD'; ++i; continue; }
    out += static_cast<wchar_t>(cp);
    i += static_cast<size_t>(extra) + 1;
  }
  return out;
}

std::string odWideToUtf8(std::wstring_view wide) {
  std::string out;
  out.reserve(wide.size());
  for (wchar_t wc : wide) {
    char32_t cp = static_cast<char32_t>(wc);
    if (cp < 0x80) {
      out += static_cast<char>(cp);
    } else if (cp < 0x800) {
      out += static_cast<char>(0xC0 | (cp >> 6));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
      out += static_cast<char>(0xE0 | (cp >> 12));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x110000) {
      out += static_cast<char>(0xF0 | (cp >> 18));
      out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
      out += "\xEF\xBF\xBD";
    }
  }
  return out;
}

wchar_t odToUpper(wchar_t ch) {
  if (ch < 0x80) return (ch >= L'a' && ch <= L'z') ? static_cast<wchar_t>(ch - 32) : ch;
  return static_cast<wchar_t>(std::towupper(static_cast<wint_t>(ch)));
}

size_t OdStringHashNoCase::operator()(const OdString& s) const {
  // FNV-1a over the upper-cased characters, up to the first NUL as iCompare reads.
  size_t hash = 14695981039346656037ull;
  for (const wchar_t* c = s.c_str(); *c; ++c) {
    hash ^= static_cast<size_t>(odToUpper(*c));
    hash *= 1099511628211ull;
  }
  return hash;
}

wchar_t odToLower(wchar_t ch) {
  if (ch < 0x80) return (ch >= L'A' && ch <= L'Z') ? static_cast<wchar_t>(ch + 32) : ch;
  return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(ch)));
}

OdString::OdString(const char* utf8) : m_text(utf8 ? odUtf8ToWide(utf8) : std::wstring()) {}
OdString::OdString(const std::string& utf8) : m_text(odUtf8ToWide(utf8)) {}

std::string OdString::toUtf8() const { return odWideToUtf8(m_text); }

int OdString::iCompare(const wchar_t* other) const {
  const wchar_t* a = m_text.c_str();
  const wchar_t* b = other ? other : L"";
  for (;; ++a, ++b) {
    wchar_t ca = *a, cb = *b;
    if (ca < 0x80 && cb < 0x80) {
      // Plain ASCII (nearly all names) without the Unicode tables.
      if (ca >= L'a' && ca <= L'z') ca -= 32;
      if (cb >= L'a' && cb <= L'z') cb -= 32;
    } else {
      ca = odToUpper(ca);
      cb = odToUpper(cb);
    }
    if (ca != cb) return ca < cb ? -1 : 1;
    if (ca == 0) return 0;
  }
}

OdString& OdString::makeUpper() {
  for (auto& ch : m_text) ch = odToUpper(ch);
  return *this;
}

OdString& OdString::makeLower() {
  for (auto& ch : m_text) ch = odToLower(ch);
  return *this;
}

int OdString::find(wchar_t ch, int start) const {
  if (start < 0 || start > getLength()) return -1;
  auto pos = m_text.find(ch, static_cast<size_t>(start));
  return pos == std::wstring::npos ? -1 : static_cast<int>(pos);
}

int OdString::find(const wchar_t* text, int start) const {
  if (start < 0 || start > getLength()) return -1;
  auto pos = m_text.find(text, static_cast<size_t>(start));
  return pos == std::wstring::npos ? -1 : static_cast<int>(pos);
}

int OdString::reverseFind(wchar_t ch) const {
  auto pos = m_text.rfind(ch);
  return pos == std::wstring::npos ? -1 : static_cast<int>(pos);
}

int OdString::findOneOf(const wchar_t* chars) const {
  auto pos = m_text.find_first_of(chars);
  return pos == std::wstring::npos ? -1 : static_cast<int>(pos);
}

OdString OdString::left(int count) const {
  if (count <= 0) return OdString();
  return OdString(m_text.substr(0, static_cast<size_t>(count)));
}

OdString OdString::right(int count) const {
  if (count <= 0) return OdString();
  if (count >= getLength()) return *this;
  return OdString(m_text.substr(m_text.size() - static_cast<size_t>(count)));
}

OdString OdString::mid(int start, int count) const {
  if (start < 0) start = 0;
  if (start >= getLength()) return OdString();
  if (count < 0) return OdString(m_text.substr(static_cast<size_t>(start)));
  return OdString(m_text.substr(static_cast<size_t>(start), static_cast<size_t>(count)));
}

static bool isSpace(wchar_t ch) { return std::iswspace(static_cast<wint_t>(ch)) != 0; }

OdString& OdString::trimLeft() {
  size_t i = 0;
  while (i < m_text.size() && isSpace(m_text[i])) ++i;
  m_text.erase(0, i);
  return *this;
}

OdString& OdString::trimRight() {
  size_t n = m_text.size();
  while (n > 0 && isSpace(m_text[n - 1])) --n;
  m_text.resize(n);
  return *this;
}

OdString& OdString::trimLeft(wchar_t ch) {
  size_t i = 0;
  while (i < m_text.size() && m_text[i] == ch) ++i;
  m_text.erase(0, i);
  return *this;
}

OdString& OdString::trimRight(wchar_t ch) {
  size_t n = m_text.size();
  while (n > 0 && m_text[n - 1] == ch) --n;
  m_text.resize(n);
  return *this;
}

OdString& OdString::trimLeft(const wchar_t* chars) {
  auto pos = m_text.find_first_not_of(chars);
  m_text.erase(0, pos == std::wstring::npos ? m_text.size() : pos);
  return *this;
}

OdString& OdString::trimRight(const wchar_t* chars) {
  auto pos = m_text.find_last_not_of(chars);
  m_text.resize(pos == std::wstring::npos ? 0 : pos + 1);
  return *this;
}

int OdString::replace(wchar_t from, wchar_t to) {
  int count = 0;
  for (auto& ch : m_text) {
    if (ch == from) { ch = to; ++count; }
  }
  return count;
}

int OdString::replace(const wchar_t* from, const wchar_t* to) {
  std::wstring pattern(from ? from : L"");
  if (pattern.empty()) return 0;
  std::wstring replacement(to ? to : L"");
  int count = 0;
  size_t pos = 0;
  while ((pos = m_text.find(pattern, pos)) != std::wstring::npos) {
    m_text.replace(pos, pattern.size(), replacement);
    pos += replacement.size();
    ++count;
  }
  return count;
}

int OdString::remove(wchar_t ch) {
  size_t before = m_text.size();
  std::erase(m_text, ch);
  return static_cast<int>(before - m_text.size());
}

OdString& OdString::insert(int index, const wchar_t* text) {
  if (index < 0) index = 0;
  if (index > getLength()) index = getLength();
  m_text.insert(static_cast<size_t>(index), text ? text : L"");
  return *this;
}

OdString& OdString::deleteChars(int index, int count) {
  if (index >= 0 && index < getLength() && count > 0) m_text.erase(static_cast<size_t>(index), static_cast<size_t>(count));
  return *this;
}

OdString& OdString::format(const wchar_t* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  formatV(fmt, args);
  va_end(args);
  return *this;
}

OdString& OdString::formatV(const wchar_t* fmt, va_list args) {
  std::vector<wchar_t> buffer(256);
  for (;;) {
    va_list copy;
    va_copy(copy, args);
    int n = std::vswprintf(buffer.data(), buffer.size(), fmt, copy);
    va_end(copy);
    if (n >= 0 && static_cast<size_t>(n) < buffer.size()) {
      m_text.assign(buffer.data(), static_cast<size_t>(n));
      return *this;
    }
    if (buffer.size() > (1u << 24)) {  // a format that can never fit
      m_text.clear();
      return *this;
    }
    buffer.resize(buffer.size() * 4);
  }
}
