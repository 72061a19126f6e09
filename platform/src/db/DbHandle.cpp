#include "DbHandle.h"

#include <cstring>

namespace {
template <class Char>
bool parseHex(const Char* text, size_t length, OdUInt64& value) {
  if (length == 0 || length > 16) return false;
  OdUInt64 result = 0;
  for (size_t i = 0; i < length; ++i) {
    Char c = text[i];
    int digit;
    if (c >= '0' && c <= '9') digit = c - '0';
    else if (c >= 'a' && c <= 'f') digit = c - 'a' + 10;
    else if (c >= 'A' && c <= 'F') digit = c - 'A' + 10;
    else return false;
    result = (result << 4) | static_cast<OdUInt64>(digit);
  }
  value = result;
  return true;
}
}  // namespace

bool OdDbHandle::parse(std::wstring_view hex, OdUInt64& value) { return parseHex(hex.data(), hex.size(), value); }
bool OdDbHandle::parse(std::string_view hex, OdUInt64& value) { return parseHex(hex.data(), hex.size(), value); }

OdDbHandle::OdDbHandle(const OdString& hex) {
  OdUInt64 value = 0;
  if (parse(std::wstring_view(hex.c_str(), static_cast<size_t>(hex.getLength())), value)) m_value = value;
}

OdDbHandle::OdDbHandle(const char* hex) {
  OdUInt64 value = 0;
  if (hex && parse(std::string_view(hex), value)) m_value = value;
}

void OdDbHandle::getIntoAsciiBuffer(wchar_t* buffer) const {
  static const wchar_t kDigits[] = L"0123456789ABCDEF";
  wchar_t tmp[17];
  int n = 0;
  OdUInt64 v = m_value;
  do {
    tmp[n++] = kDigits[v & 0xF];
    v >>= 4;
  } while (v);
  for (int i = 0; i < n; ++i) buffer[i] = tmp[n - 1 - i];
  buffer[n] = 0;
}

OdString OdDbHandle::ascii() const {
  wchar_t buffer[17];
  getIntoAsciiBuffer(buffer);
  return OdString(buffer);
}
