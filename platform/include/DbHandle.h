// Database handle: a 64-bit number that names an object in its drawing and
// in the DXF file (written as upper-case hexadecimal without leading zeros).
#pragma once

#include "OdString.h"

class OdDbHandle {
 public:
  OdDbHandle() = default;
  OdDbHandle(OdUInt64 value) : m_value(value) {}
  // Parses hexadecimal text; anything that is not a hexadecimal number gives the null handle.
  explicit OdDbHandle(const OdString& hex);
  explicit OdDbHandle(const char* hex);

  operator OdUInt64() const { return m_value; }
  OdUInt64 value() const { return m_value; }
  bool isNull() const { return m_value == 0; }
  OdString ascii() const;
  void getIntoAsciiBuffer(wchar_t* buffer) const;  // at least 17 characters

  OdDbHandle& operator++() { ++m_value; return *this; }
  OdDbHandle operator++(int) { OdDbHandle old = *this; ++m_value; return old; }
  OdDbHandle& operator+=(OdUInt64 n) { m_value += n; return *this; }
  bool operator==(const OdDbHandle& other) const { return m_value == other.m_value; }
  bool operator!=(const OdDbHandle& other) const { return m_value != other.m_value; }
  bool operator<(const OdDbHandle& other) const { return m_value < other.m_value; }

  // Parses hexadecimal text strictly: returns false on an empty or malformed text.
  static bool parse(std::wstring_view hex, OdUInt64& value);
  static bool parse(std::string_view hex, OdUInt64& value);

 private:
  OdUInt64 m_value = 0;
};
