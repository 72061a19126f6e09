#include "frame/ResourceString.h"

#include <cstdarg>

#include "RyWindows.h"
#include "frame/ModuleResources.h"

ResourceString::ResourceString(unsigned int id, const wchar_t* fallback) : m_id(id) {
  // The catalogue is tried again by each new string until it loads.
  HINSTANCE library = kestrix::messageLibrary();
  wchar_t buffer[kBufferSize] = {};
  int length = library ? LoadStringW(library, id, buffer, kBufferSize) : 0;
  m_text = length > 0 ? OdString(buffer, length) : OdString(fallback ? fallback : L"");
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
