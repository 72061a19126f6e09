#include "frame/ResourceString.h"

#include <cstdarg>

#include "frame/ModuleResources.h"

ResourceString::ResourceString(unsigned int id, const wchar_t* fallback) : m_id(id) {
  // The catalogue is tried again by each new string until it loads.
  m_text = kestrix::loadResourceString(kestrix::messageLibrary(), id, fallback ? fallback : L"");
}

OdString formatResource(unsigned int id, const wchar_t* fallback, ...) {
  ResourceString format(id, fallback);
  va_list args;
  va_start(args, fallback);
  OdString text;
  text.formatV(format.c_str(), args);
  va_end(args);
  return text;
}
