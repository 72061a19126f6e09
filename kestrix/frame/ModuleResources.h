// The module's resource libraries: the message catalogue "kestrixres.dll"
// beside the module (also the home of its dialog templates) and the local
// command names of "ryadkwlres".
#pragma once

#include "OdString.h"
#include "RyWindows.h"

namespace kestrix {

// The folder of the module's own file, with a trailing separator.
OdString moduleFolder();
// The message catalogue, loaded from the module's folder on first need;
// null while it cannot be loaded (each call tries again).
HINSTANCE messageLibrary();
// Loads the catalogue unless it is loaded; false when it cannot be.
bool loadMessageLibrary();
void releaseMessageLibrary();
// The library of local command names (loaded by bare name when the module's
// data is set up); null when it is missing.
HINSTANCE localNameLibrary();
// The string of a resource library (up to 999 characters); otherwise when the
// library (null) or the string is missing or empty.
OdString loadResourceString(HINSTANCE library, unsigned int id, const OdString& otherwise);
// The local name of a registration: its string, or the global name when the
// library or the string is missing or empty.
OdString localCommandName(unsigned int stringId, const wchar_t* globalName);

}  // namespace kestrix
