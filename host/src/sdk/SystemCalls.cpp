// The system calls of RyWindows.h on this system's loader.
//
// A module handle is what it classically is: the address where the module's
// file is mapped (dladdr's dli_fbase), so that ryModuleOfAddress needs no
// bookkeeping and any shared object of the process has a handle, whoever
// loaded it. A resource library is not mapped; its handle is the address of
// its parsed contents. LoadLibraryW keeps a table of what it opened, with a
// reference count per file; FreeLibrary releases through that table only.
//
// Settings files are read and written whole on every call, through IniFile;
// a file name without a folder means that file in the user's settings folder.
#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

#include "RyWindows.h"
#include "core/Host.h"
#include "core/IniFile.h"
#include "sdk/ResourceLibrary.h"

namespace fs = std::filesystem;

namespace {

// ---------------------------------------------------------------- names and paths

std::string narrow(LPCWSTR text) { return OdString(text).toUtf8(); }

// Folders written with backslashes (the classic separator) name the same
// folders with slashes, unless a file of that very name exists.
std::string withSlashes(std::string path) {
  std::error_code ec;
  if (path.find('\\') != std::string::npos && !fs::exists(path, ec)) std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

std::string canonicalPath(const fs::path& path) {
  std::error_code ec;
  fs::path full = fs::weakly_canonical(fs::absolute(path, ec), ec);
  return ec ? path.string() : full.string();
}

std::string programFile() {
  std::error_code ec;
  return fs::read_symlink("/proc/self/exe", ec).string();
}

// The file names a library may have: as given, or when the name has no
// extension, with each extension a library of this system may carry.
std::vector<fs::path> nameVariants(const fs::path& name) {
  if (name.has_extension()) return {name};
  return {fs::path(name.string() + ".dll"), fs::path(name.string() + ".so"), fs::path(name.string() + ".yrx"), name};
}

bool sameFileName(const std::string& a, const std::string& b) { return OdString(a).iCompare(OdString(b)) == 0; }

// The base address and file of the module mapped over an address; a null
// base when no module is. With exactBase, address must be the base itself.
struct MappedModule {
  void* base = nullptr;
  std::string file;
};

MappedModule moduleAt(const void* address, bool exactBase) {
  Dl_info info{};
  link_map* map = nullptr;
  if (!address || !dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) || !info.dli_fbase) return {};
  if (exactBase && info.dli_fbase != address) return {};
  // The program itself has no name in the loader's list.
  const bool isProgram = !map || !map->l_name || !*map->l_name;
  return {info.dli_fbase, isProgram ? programFile() : canonicalPath(map->l_name)};
}

void* baseOfOpened(void* shared) {
  link_map* map = nullptr;
  if (dlinfo(shared, RTLD_DI_LINKMAP, &map) != 0 || !map || !map->l_ld) return nullptr;
  return moduleAt(map->l_ld, false).base;
}

// Every shared object of the process (the program included) by file and base.
std::vector<MappedModule> mappedModules() {
  std::vector<MappedModule> found;
  dl_iterate_phdr(
      [](dl_phdr_info* info, size_t, void* data) {
        for (int i = 0; i < info->dlpi_phnum; ++i) {
          if (info->dlpi_phdr[i].p_type != PT_LOAD) continue;
          MappedModule module = moduleAt(reinterpret_cast<void*>(info->dlpi_addr + info->dlpi_phdr[i].p_vaddr), false);
          if (module.base) static_cast<std::vector<MappedModule>*>(data)->push_back(module);
          break;
        }
        return 0;
      },
      &found);
  return found;
}

void* programBase() {
  static void* const base = [] {
    void* program = dlopen(nullptr, RTLD_LAZY);
    void* result = program ? baseOfOpened(program) : nullptr;
    if (program) dlclose(program);
    return result;
  }();
  return base;
}

// ---------------------------------------------------------------- libraries opened by LoadLibraryW

struct Library {
  std::string path;  // canonical
  int references = 1;
  void* shared = nullptr;  // the loader's handle of a shared object
  std::unique_ptr<ryhost::ResourceLibrary> resources;
  HMODULE handle = nullptr;
};

class LibraryTable {
 public:
  static LibraryTable& instance() {
    static LibraryTable* table = new LibraryTable();  // outlives every module's static destructors
    return *table;
  }
  // Recursive: loading a shared object runs its initialisers, which may load libraries themselves.
  std::recursive_mutex mutex;

  Library* byPath(const std::string& path) {
    for (const auto& library : m_libraries) {
      if (library->path == path) return library.get();
    }
    return nullptr;
  }
  Library* byHandle(const void* handle) {
    for (const auto& library : m_libraries) {
      if (handle && library->handle == handle) return library.get();
    }
    return nullptr;
  }
  HMODULE add(std::unique_ptr<Library> library) {
    m_libraries.push_back(std::move(library));
    return m_libraries.back()->handle;
  }
  std::unique_ptr<Library> take(const Library* library) {
    auto it = std::find_if(m_libraries.begin(), m_libraries.end(), [&](const auto& l) { return l.get() == library; });
    std::unique_ptr<Library> taken = std::move(*it);
    m_libraries.erase(it);
    return taken;
  }
  const std::vector<std::unique_ptr<Library>>& libraries() const { return m_libraries; }

 private:
  std::vector<std::unique_ptr<Library>> m_libraries;
};

thread_local std::string t_lastLibraryError;

HMODULE failLoad(const std::string& reason) {
  t_lastLibraryError = reason;
  return nullptr;
}

// Where a library of that name is: a name with a folder as given; a bare
// name beside the host program, then beside the module that asks. The module
// that asks is the one LoadLibraryW returns to (a call made as a function's
// last act, a tail call, returns to that function's caller instead).
std::string locateLibrary(const std::string& name, const void* caller) {
  const fs::path given(name);
  std::vector<fs::path> folders;
  if (given.has_parent_path()) {
    folders.push_back(fs::path());
  } else {
    folders.push_back(fs::path(ryhost::Host::instance().programFolder().toUtf8()));
    const MappedModule calling = moduleAt(caller, false);
    if (calling.base) {
      fs::path callerFolder = fs::path(calling.file).parent_path();
      if (canonicalPath(callerFolder) != canonicalPath(folders.front())) folders.push_back(callerFolder);
    }
  }
  for (const fs::path& folder : folders) {
    for (const fs::path& variant : nameVariants(given)) {
      std::error_code ec;
      const fs::path candidate = folder.empty() ? variant : folder / variant;
      if (fs::is_regular_file(candidate, ec)) return canonicalPath(candidate);
    }
  }
  return std::string();
}

HMODULE openResourceLibrary(const std::string& path) {
  std::string reason;
  std::unique_ptr<ryhost::ResourceLibrary> resources = ryhost::ResourceLibrary::load(path, &reason);
  if (!resources) return failLoad(reason);
  auto library = std::make_unique<Library>();
  library->path = path;
  library->handle = resources.get();
  library->resources = std::move(resources);
  return LibraryTable::instance().add(std::move(library));
}

// Opens a shared object by path, or by a bare name through the loader's own
// search (system libraries).
HMODULE openSharedObject(const std::string& pathOrName) {
  LibraryTable& table = LibraryTable::instance();
  void* shared = dlopen(pathOrName.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!shared) return failLoad(dlerror());
  void* base = baseOfOpened(shared);
  if (!base) {
    dlclose(shared);
    return failLoad(pathOrName + ": the loader gives no address for it");
  }
  // The same file under another name (a hard link, a system library found by search).
  if (Library* known = table.byHandle(base)) {
    ++known->references;
    dlclose(shared);
    return known->handle;
  }
  auto library = std::make_unique<Library>();
  library->path = moduleAt(base, true).file;
  library->shared = shared;
  library->handle = base;
  return table.add(std::move(library));
}

// True when a library file answers to a name given to GetModuleHandleW.
bool answersTo(const std::string& file, const std::string& wanted) {
  const fs::path given(wanted);
  for (const fs::path& variant : nameVariants(given)) {
    if (given.has_parent_path() ? canonicalPath(variant) == file
                                : sameFileName(fs::path(file).filename().string(), variant.string())) {
      return true;
    }
  }
  return false;
}

// ---------------------------------------------------------------- copying out

// A text into a buffer of size characters: truncated and terminated; returns
// the characters copied.
DWORD copyText(const OdString& text, LPWSTR buffer, DWORD size) {
  if (!buffer || size == 0) return 0;
  const DWORD length = std::min<DWORD>(static_cast<DWORD>(text.getLength()), size - 1);
  std::wmemcpy(buffer, text.c_str(), length);
  buffer[length] = 0;
  return length;
}

// Names as a list of terminated strings ending with an empty one. When it
// does not fit, the list is cut at size - 2 and ends with two terminators.
// Returns the characters written before the final terminator.
DWORD copyList(const std::vector<OdString>& names, LPWSTR buffer, DWORD size) {
  if (!buffer || size == 0) return 0;
  std::wstring list;
  for (const OdString& name : names) {
    list += name.c_str();
    list += L'\0';
  }
  if (list.size() + 1 <= size) {
    std::wmemcpy(buffer, list.data(), list.size());
    buffer[list.size()] = 0;
    if (list.empty() && size > 1) buffer[1] = 0;
    return static_cast<DWORD>(list.size());
  }
  if (size < 2) {
    buffer[0] = 0;
    return 0;
  }
  std::wmemcpy(buffer, list.data(), size - 2);
  buffer[size - 2] = 0;
  buffer[size - 1] = 0;
  return size - 2;
}

// ---------------------------------------------------------------- settings files

OdString profilePath(LPCWSTR fileName) {
  const std::string name = withSlashes(fileName && *fileName ? narrow(fileName) : std::string("win.ini"));
  if (fs::path(name).has_parent_path()) return OdString(name);
  return ryhost::Host::instance().dataFolder() + OdString(name);
}

// The integer at the start of a text: blanks, a sign, then decimal digits or
// "0x" and hexadecimal ones; 0 without digits. Wraps as the classic call does.
UINT leadingInteger(const OdString& text) {
  const wchar_t* p = text.c_str();
  while (*p == L' ' || *p == L'\t') ++p;
  bool negative = false;
  if (*p == L'-' || *p == L'+') negative = *p++ == L'-';
  unsigned base = 10;
  if (p[0] == L'0' && (p[1] == L'x' || p[1] == L'X')) {
    base = 16;
    p += 2;
  }
  UINT value = 0;
  for (;; ++p) {
    unsigned digit;
    if (*p >= L'0' && *p <= L'9') digit = static_cast<unsigned>(*p - L'0');
    else if (base == 16 && *p >= L'a' && *p <= L'f') digit = static_cast<unsigned>(*p - L'a' + 10);
    else if (base == 16 && *p >= L'A' && *p <= L'F') digit = static_cast<unsigned>(*p - L'A' + 10);
    else break;
    value = value * base + digit;
  }
  return negative ? 0u - value : value;
}

}  // namespace

// ---------------------------------------------------------------- internal accessors

namespace ryhost {

const ResourceLibrary* resourceLibraryOf(const void* handle) {
  LibraryTable& table = LibraryTable::instance();
  std::lock_guard lock(table.mutex);
  Library* library = table.byHandle(handle);
  return library ? library->resources.get() : nullptr;
}

std::string lastLibraryError() { return t_lastLibraryError; }

}  // namespace ryhost

// ---------------------------------------------------------------- libraries

HMODULE LoadLibraryW(LPCWSTR fileName) {
  const void* caller = __builtin_return_address(0);
  t_lastLibraryError.clear();
  if (!fileName || !*fileName) return failLoad("no library name given");
  const std::string name = withSlashes(narrow(fileName));
  LibraryTable& table = LibraryTable::instance();
  std::lock_guard lock(table.mutex);
  const std::string path = locateLibrary(name, caller);
  if (path.empty()) {
    // A bare name found nowhere beside us may still be a library of the system.
    if (!fs::path(name).has_parent_path()) return openSharedObject(name);
    return failLoad("no such library: " + name);
  }
  if (Library* known = table.byPath(path)) {
    ++known->references;
    return known->handle;
  }
  if (ryhost::ResourceLibrary::isResourceLibraryFile(path)) return openResourceLibrary(path);
  return openSharedObject(path);
}

BOOL FreeLibrary(HMODULE module) {
  LibraryTable& table = LibraryTable::instance();
  std::lock_guard lock(table.mutex);
  Library* library = table.byHandle(module);
  if (!library) return FALSE;
  if (--library->references > 0) return TRUE;
  // Out of the table before the loader runs the library's destructors, which may free libraries too.
  std::unique_ptr<Library> released = table.take(library);
  if (released->shared) dlclose(released->shared);
  return TRUE;
}

FARPROC GetProcAddress(HMODULE module, const char* name) {
  if (!module || !name) return nullptr;
  LibraryTable& table = LibraryTable::instance();
  {
    std::lock_guard lock(table.mutex);
    if (Library* library = table.byHandle(module)) return library->shared ? dlsym(library->shared, name) : nullptr;
  }
  // A module loaded some other way (the host, a run-time module): ask the loader for it by file.
  const MappedModule mapped = moduleAt(module, true);
  if (!mapped.base) return nullptr;
  void* shared = module == programBase() ? dlopen(nullptr, RTLD_LAZY) : dlopen(mapped.file.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (!shared) return nullptr;
  void* symbol = dlsym(shared, name);
  dlclose(shared);
  return symbol;
}

HMODULE GetModuleHandleW(LPCWSTR name) {
  if (!name) return programBase();
  const std::string wanted = withSlashes(narrow(name));
  if (wanted.empty()) return nullptr;
  LibraryTable& table = LibraryTable::instance();
  std::lock_guard lock(table.mutex);
  for (const auto& library : table.libraries()) {
    if (answersTo(library->path, wanted)) return library->handle;
  }
  for (const MappedModule& module : mappedModules()) {
    if (answersTo(module.file, wanted)) return module.base;
  }
  return nullptr;
}

// Classic buffer rules: the full path and its length; when it does not fit,
// size - 1 characters, terminated, and size as the result; 0 for an unknown handle.
DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size) {
  std::string path;
  if (!module) {
    path = programFile();
  } else {
    LibraryTable& table = LibraryTable::instance();
    std::lock_guard lock(table.mutex);
    if (Library* library = table.byHandle(module)) path = library->path;
    else path = moduleAt(module, true).file;
  }
  if (path.empty() || !buffer || size == 0) return 0;
  const OdString wide(path);
  const DWORD copied = copyText(wide, buffer, size);
  return copied < static_cast<DWORD>(wide.getLength()) ? size : copied;
}

HMODULE ryModuleOfAddress(const void* address) {
  {
    LibraryTable& table = LibraryTable::instance();
    std::lock_guard lock(table.mutex);
    if (Library* library = table.byHandle(address)) return library->handle;
  }
  return moduleAt(address, false).base;
}

// With size 0, buffer receives a pointer to the library's own copy of the
// text (valid until the library is freed), as the classic call does.
int LoadStringW(HINSTANCE instance, UINT id, LPWSTR buffer, int size) {
  if (!buffer || size < 0) return 0;
  if (size > 0) buffer[0] = 0;
  LibraryTable& table = LibraryTable::instance();
  std::lock_guard lock(table.mutex);
  Library* library = table.byHandle(instance);
  const OdString* text = library && library->resources ? library->resources->string(id) : nullptr;
  if (!text) return 0;
  if (size == 0) {
    *reinterpret_cast<const wchar_t**>(buffer) = text->c_str();
    return text->getLength();
  }
  return static_cast<int>(copyText(*text, buffer, static_cast<DWORD>(size)));
}

// ---------------------------------------------------------------- settings files

DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR defaultValue, LPWSTR buffer, DWORD size,
                               LPCWSTR fileName) {
  if (!buffer || size == 0) return 0;
  const ryhost::IniFile file(profilePath(fileName));
  if (!section) return copyList(file.sections(), buffer, size);
  if (!key) return copyList(file.keys(section), buffer, size);
  OdString value;
  if (file.get(section, key, value)) return copyText(value, buffer, size);
  OdString fallback(defaultValue);
  fallback.trimRight(L' ');  // trailing blanks of the default are dropped
  return copyText(fallback, buffer, size);
}

UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, int defaultValue, LPCWSTR fileName) {
  OdString value;
  if (!section || !key || !ryhost::IniFile(profilePath(fileName)).get(section, key, value) || value.isEmpty()) {
    return static_cast<UINT>(defaultValue);
  }
  return leadingInteger(value);
}

// A null key removes the section, a null value the key; all three null only
// flushes, which has nothing to do here as nothing is cached.
BOOL WritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR fileName) {
  if (!section) return !key && !value ? TRUE : FALSE;
  ryhost::IniFile file(profilePath(fileName));
  if (!key) {
    const auto names = file.sections();
    if (std::none_of(names.begin(), names.end(), [&](const OdString& s) { return s.iCompare(section) == 0; })) return TRUE;
    file.removeSection(section);
  } else if (!value) {
    OdString existing;
    if (!file.get(section, key, existing)) return TRUE;
    file.removeKey(section, key);
  } else {
    file.set(section, key, value);
  }
  return file.save() ? TRUE : FALSE;
}
