// The host settings file: "RYAD.INI" in the host's data folder (the value of
// "APPDATADIR"), section "RYADEXCMD", where commands remember their options
// between sessions.
#pragma once

#include "OdString.h"

namespace kestrix {

// The full path of the settings file.
OdString hostSettingsPath();

// A key of section "RYADEXCMD"; otherwise when the key or the file is missing.
OdString readHostSetting(const wchar_t* key, const wchar_t* otherwise);

// Writes a key of section "RYADEXCMD"; false when the file cannot be written.
bool writeHostSetting(const wchar_t* key, const OdString& value);

}  // namespace kestrix
