#include "frame/Names.h"

#include <string_view>

namespace kestrix {

OdString wildcardEscaped(const OdString& name) {
  static constexpr std::wstring_view kSpecial = L"#@.*?~[]-,`";
  std::wstring escaped;
  escaped.reserve(name.getLength() * 2);
  for (const wchar_t* p = name.c_str(); *p; ++p) {
    if (kSpecial.find(*p) != std::wstring_view::npos) escaped += L'`';
    escaped += *p;
  }
  return OdString(escaped.c_str());
}

}  // namespace kestrix
