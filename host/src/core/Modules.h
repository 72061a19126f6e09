// Run-time modules loaded into the host: shared objects with the entry
// point "ryrxEntryPoint", which hears of the host's events by message.
#pragma once

#include <vector>

#include "OdString.h"

namespace ryhost {

class ModuleList {
 public:
  ~ModuleList();
  // Loads a module and sends it the initialisation message (and the
  // load-drawing message when a drawing is open). A module already loaded
  // is not loaded twice.
  bool load(const OdString& path, OdString* reason);
  bool unload(const OdString& path);
  void unloadAll();
  void broadcast(unsigned int message);
  bool isLoaded(const OdString& path) const;
  std::vector<OdString> loaded() const;

 private:
  struct Module {
    OdString path;
    void* handle;
    std::uintptr_t (*entry)(unsigned int, void*);
  };
  std::vector<Module> m_modules;
};

}  // namespace ryhost
