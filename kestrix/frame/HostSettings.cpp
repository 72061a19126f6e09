#include "frame/HostSettings.h"

#include <cstdlib>
#include <vector>

#include "RyWindows.h"
#include "ryed.h"

namespace kestrix {

namespace {
constexpr const wchar_t* kSection = L"RYADEXCMD";
}

OdString hostSettingsPath() {
  resbuf folder{};
  OdString path;
  if (ryedGetVar(L"APPDATADIR", &folder) == RTNORM && folder.restype == RTSTR && folder.resval.rstring) {
    path = folder.resval.rstring;
    std::free(folder.resval.rstring);
  }
  if (!path.isEmpty() && path.right(1) != L"/" && path.right(1) != L"\\") path += L"/";
  return path + L"RYAD.INI";
}

OdString readHostSetting(const wchar_t* key, const wchar_t* otherwise) {
  std::vector<wchar_t> buffer(1024);
  GetPrivateProfileStringW(kSection, key, otherwise, buffer.data(), static_cast<DWORD>(buffer.size()),
                           hostSettingsPath().c_str());
  return OdString(buffer.data());
}

bool writeHostSetting(const wchar_t* key, const OdString& value) {
  return WritePrivateProfileStringW(kSection, key, value.c_str(), hostSettingsPath().c_str()) != FALSE;
}

}  // namespace kestrix
