// A numbered message of the module's catalogue, with the text to use when
// the catalogue or the number is missing ("error" unless given).
#pragma once

#include "OdString.h"

class ResourceString {
 public:
  explicit ResourceString(unsigned int id, const wchar_t* fallback = L"error");
  const OdString& text() const { return m_text; }
  const wchar_t* c_str() const { return m_text.c_str(); }
  operator const wchar_t*() const { return m_text.c_str(); }
  operator const OdString&() const { return m_text; }
  unsigned int id() const { return m_id; }

 private:
  unsigned int m_id;
  OdString m_text;
};

// A numbered message formatted printf-style with the arguments given.
OdString formatResource(unsigned int id, const wchar_t* fallback, ...);
