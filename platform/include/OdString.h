// Wide-character string used for every name and text in a drawing.
// Characters are Unicode code points (wchar_t is 32 bits here); conversion to
// and from UTF-8 is explicit.
#pragma once

#include <cstdarg>
#include <functional>
#include <string>
#include <string_view>

#include "OdArray.h"

class OdString {
 public:
  OdString() = default;
  OdString(const wchar_t* text) : m_text(text ? text : L"") {}
  OdString(const wchar_t* text, int length) : m_text(text, static_cast<size_t>(length)) {}
  OdString(std::wstring text) : m_text(std::move(text)) {}
  OdString(std::wstring_view text) : m_text(text) {}
  OdString(wchar_t ch, int count) : m_text(static_cast<size_t>(count), ch) {}
  // Narrow text is taken as UTF-8.
  OdString(const char* utf8);
  OdString(const std::string& utf8);

  static OdString kEmpty;

  const wchar_t* c_str() const { return m_text.c_str(); }
  operator const wchar_t*() const { return m_text.c_str(); }
  const std::wstring& str() const { return m_text; }
  std::wstring& str() { return m_text; }
  std::string toUtf8() const;

  int getLength() const { return static_cast<int>(m_text.size()); }
  bool isEmpty() const { return m_text.empty(); }
  wchar_t getAt(int index) const { return m_text[static_cast<size_t>(index)]; }
  wchar_t operator[](int index) const { return getAt(index); }
  void setAt(int index, wchar_t ch) { m_text[static_cast<size_t>(index)] = ch; }
  OdString& empty() { m_text.clear(); return *this; }

  OdString& operator=(const wchar_t* text) { m_text = text ? text : L""; return *this; }
  OdString& operator+=(const OdString& other) { m_text += other.m_text; return *this; }
  OdString& operator+=(const wchar_t* other) { m_text += other; return *this; }
  OdString& operator+=(wchar_t ch) { m_text += ch; return *this; }
  friend OdString operator+(const OdString& a, const OdString& b) { return OdString(a.m_text + b.m_text); }
  friend OdString operator+(const OdString& a, const wchar_t* b) { return OdString(a.m_text + b); }
  friend OdString operator+(const wchar_t* a, const OdString& b) { return OdString(a + b.m_text); }

  bool operator==(const OdString& other) const { return m_text == other.m_text; }
  bool operator==(const wchar_t* other) const { return m_text == (other ? other : L""); }
  bool operator!=(const OdString& other) const { return m_text != other.m_text; }
  bool operator!=(const wchar_t* other) const { return !(*this == other); }
  bool operator<(const OdString& other) const { return m_text < other.m_text; }

  int compare(const wchar_t* other) const { return m_text.compare(other); }
  // Compares without regard to letter case (simple per-character folding).
  int iCompare(const wchar_t* other) const;
  int iCompare(const OdString& other) const { return iCompare(other.c_str()); }

  OdString& makeUpper();
  OdString& makeLower();
  OdString upper() const { OdString s(*this); return s.makeUpper(); }
  OdString lower() const { OdString s(*this); return s.makeLower(); }

  int find(wchar_t ch, int start = 0) const;
  int find(const wchar_t* text, int start = 0) const;
  int reverseFind(wchar_t ch) const;
  int findOneOf(const wchar_t* chars) const;
  OdString left(int count) const;
  OdString right(int count) const;
  OdString mid(int start, int count = -1) const;
  OdString& trimLeft();
  OdString& trimRight();
  OdString& trimLeft(wchar_t ch);
  OdString& trimRight(wchar_t ch);
  OdString& trimLeft(const wchar_t* chars);
  OdString& trimRight(const wchar_t* chars);
  int replace(wchar_t from, wchar_t to);
  int replace(const wchar_t* from, const wchar_t* to);
  int remove(wchar_t ch);
  OdString& insert(int index, const wchar_t* text);
  OdString& deleteChars(int index, int count = 1);

  OdString& format(const wchar_t* fmt, ...);
  OdString& formatV(const wchar_t* fmt, va_list args);

 private:
  std::wstring m_text;
};

using OdStringArray = OdArray<OdString>;

// Case-insensitive ordering for maps keyed by names.
struct OdStringLessNoCase {
  bool operator()(const OdString& a, const OdString& b) const { return a.iCompare(b) < 0; }
};
// Case-insensitive hashing and equality for unordered maps keyed by names
// (names equal but for case hash alike).
struct OdStringHashNoCase {
  size_t operator()(const OdString& s) const;
};
struct OdStringEqualNoCase {
  bool operator()(const OdString& a, const OdString& b) const { return a.iCompare(b) == 0; }
};

// Conversions between UTF-8 and wide text (invalid input becomes U+FFFD).
std::wstring odUtf8ToWide(std::string_view utf8);
std::string odWideToUtf8(std::wstring_view wide);
wchar_t odToUpper(wchar_t ch);
wchar_t odToLower(wchar_t ch);

template <>
struct std::hash<OdString> {
  size_t operator()(const OdString& s) const noexcept { return std::hash<std::wstring>()(s.str()); }
};
