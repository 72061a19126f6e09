// The object a run-time module gives the platform: its name and the calls
// that initialise and release it.
#pragma once

#include "RxObject.h"

class OdRxModule : public OdRxObject {
 public:
  virtual OdString moduleName() const = 0;
  virtual void initApp() {}
  virtual void uninitApp() {}
  // The system's handle of the module's library.
  virtual void* sysData() const { return nullptr; }
};
using OdRxModulePtr = OdSmartPtr<OdRxModule>;

// A module that extends the platform with commands and classes.
class OdRxExtendModule : public OdRxModule {};
