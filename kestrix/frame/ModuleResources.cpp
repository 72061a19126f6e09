#include "frame/ModuleResources.h"

namespace kestrix {

namespace {

HINSTANCE g_messages = nullptr;

// The local-name library is loaded by bare name with the module's static data.
struct LocalNames {
  HINSTANCE handle = LoadLibraryW(L"ryadkwlres");
  ~LocalNames() {
    if (handle) FreeLibrary(handle);
  }
};

LocalNames& localNames() {
  static LocalNames names;
  return names;
}

// Constructed at load so that the library is there from the start.
[[maybe_unused]] const bool s_localNamesLoaded = (localNames(), true);

}  // namespace

OdString moduleFolder() {
  HMODULE self = ryModuleOfAddress(reinterpret_cast<const void*>(&moduleFolder));
  wchar_t path[MAX_PATH * 4] = {};
  DWORD length = GetModuleFileNameW(self, path, MAX_PATH * 4);
  OdString file(path, static_cast<int>(length));
  int slash = file.reverseFind(L'/');
  return slash < 0 ? OdString() : file.left(slash + 1);
}

bool loadMessageLibrary() {
  if (g_messages) return true;
  g_messages = LoadLibraryW((moduleFolder() + L"kestrixres.dll").c_str());
  return g_messages != nullptr;
}

HINSTANCE messageLibrary() {
  loadMessageLibrary();
  return g_messages;
}

void releaseMessageLibrary() {
  if (g_messages) FreeLibrary(g_messages);
  g_messages = nullptr;
}

HINSTANCE localNameLibrary() { return localNames().handle; }

OdString loadResourceString(HINSTANCE library, unsigned int id, const OdString& otherwise) {
  constexpr int kBufferSize = 1000;
  wchar_t buffer[kBufferSize] = {};
  const int length = library ? LoadStringW(library, id, buffer, kBufferSize) : 0;
  return length > 0 ? OdString(buffer, length) : otherwise;
}

OdString localCommandName(unsigned int stringId, const wchar_t* globalName) {
  return loadResourceString(localNameLibrary(), stringId, globalName);
}

}  // namespace kestrix
