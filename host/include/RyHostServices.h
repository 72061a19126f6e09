// Services of the host application: the working database, reading drawing
// files, the settings profile, and the run-time module interface.
#pragma once

#include "DbDatabase.h"
#include "rytypes.h"

class OdDbHostAppServices {
 public:
  virtual ~OdDbHostAppServices() = default;
  // The database of the current document (null without a document).
  virtual OdDbDatabase* workingDatabase() const = 0;
  // Reads a drawing file into a new database that belongs to no document.
  virtual OdDbDatabasePtr readFile(const OdString& fileName) = 0;
  virtual OdDbDatabasePtr createDatabase() = 0;
  // The full path of a file found as ryedFindFile finds it; empty when not found.
  virtual OdString findFile(const OdString& fileName) = 0;
};

RYAD_API OdDbHostAppServices* oddbHostApplicationServices();

// The host's settings profile: values by section and key, kept in the
// settings folder between sessions.
class CMqProfile {
 public:
  virtual ~CMqProfile() = default;
  virtual bool getString(const OdString& section, const OdString& key, OdString& value) const = 0;
  virtual bool setString(const OdString& section, const OdString& key, const OdString& value) = 0;
};

class CMqSystem {
 public:
  static CMqSystem* instance();
  virtual ~CMqSystem() = default;
  virtual CMqProfile* profile() = 0;
  // Shortcuts on the profile.
  bool getProfileString(const OdString& section, const OdString& key, OdString& value) {
    return profile()->getString(section, key, value);
  }
  bool writeProfileString(const OdString& section, const OdString& key, const OdString& value) {
    return profile()->setString(section, key, value);
  }
};

// Messages the host sends to a run-time module's entry point.
enum RyrxMessage : unsigned int {
  kRyrxInitAppMsg = 1,
  kRyrxUnloadAppMsg = 2,
  kRyrxLoadDwgMsg = 3,
  kRyrxUnloadDwgMsg = 4,
  kRyrxInvkSubrMsg = 5,
  kRyrxCfgMsg = 6,
  kRyrxEndMsg = 7,
  kRyrxQuitMsg = 8,
  kRyrxSaveMsg = 9,
};

// The exports a module offers (C linkage): its entry point and version.
extern "C" {
using RyrxEntryPointFn = std::uintptr_t (*)(unsigned int message, void* appId);
using OdrxGetApiVersionFn = int (*)(unsigned int* major, unsigned int* minor, unsigned int* build, unsigned int* revision);
}

// Loads a run-time module, sends it the initialisation message and keeps it;
// returns false with a reason when it cannot be loaded.
RYAD_API bool ryrxLoadModule(const OdString& path, OdString* reason = nullptr);
RYAD_API bool ryrxUnloadModule(const OdString& path);
