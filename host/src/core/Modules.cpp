#include "core/Modules.h"

#include <dlfcn.h>

#include <filesystem>

#include "RyHostServices.h"
#include "core/Host.h"

namespace ryhost {

namespace {
std::string canonical(const OdString& path) {
  std::error_code ec;
  auto full = std::filesystem::weakly_canonical(path.toUtf8(), ec);
  return ec ? path.toUtf8() : full.string();
}
}  // namespace

ModuleList::~ModuleList() = default;

bool ModuleList::isLoaded(const OdString& path) const {
  const std::string key = canonical(path);
  for (const auto& module : m_modules) {
    if (canonical(module.path) == key) return true;
  }
  return false;
}

std::vector<OdString> ModuleList::loaded() const {
  std::vector<OdString> paths;
  for (const auto& module : m_modules) paths.push_back(module.path);
  return paths;
}

bool ModuleList::load(const OdString& path, OdString* reason) {
  auto fail = [&](const OdString& why) {
    if (reason) *reason = why;
    return false;
  };
  if (isLoaded(path)) return true;
  std::error_code ec;
  if (!std::filesystem::exists(path.toUtf8(), ec)) return fail(L"no such file: " + path);
  void* handle = dlopen(canonical(path).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) return fail(OdString(dlerror()));
  auto entry = reinterpret_cast<std::uintptr_t (*)(unsigned int, void*)>(dlsym(handle, "ryrxEntryPoint"));
  if (!entry) {
    dlclose(handle);
    return fail(path + L" is not a run-time module (no ryrxEntryPoint)");
  }
  if (auto version = reinterpret_cast<OdrxGetApiVersionFn>(dlsym(handle, "odrxGetAPIVersion"))) {
    unsigned int major = 0, minor = 0, build = 0, revision = 0;
    version(&major, &minor, &build, &revision);
    if (major != 3) {
      dlclose(handle);
      return fail(OdString().format(L"%ls was built for interface version %u.%u, the host offers 3.5", path.c_str(), major, minor));
    }
  }
  m_modules.push_back({path, handle, entry});
  entry(kRyrxInitAppMsg, handle);
  if (Host::instance().current()) entry(kRyrxLoadDwgMsg, handle);
  return true;
}

bool ModuleList::unload(const OdString& path) {
  const std::string key = canonical(path);
  for (auto it = m_modules.begin(); it != m_modules.end(); ++it) {
    if (canonical(it->path) != key) continue;
    Module module = *it;
    module.entry(kRyrxUnloadAppMsg, module.handle);
    m_modules.erase(it);
    dlclose(module.handle);
    return true;
  }
  return false;
}

void ModuleList::unloadAll() {
  while (!m_modules.empty()) unload(m_modules.back().path);
}

void ModuleList::broadcast(unsigned int message) {
  for (const Module& module : std::vector<Module>(m_modules)) module.entry(message, module.handle);
}

}  // namespace ryhost

bool ryrxLoadModule(const OdString& path, OdString* reason) { return ryhost::Host::instance().modules().load(path, reason); }
bool ryrxUnloadModule(const OdString& path) { return ryhost::Host::instance().modules().unload(path); }
