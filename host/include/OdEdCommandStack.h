// The host's command stack: commands registered by group, with a global
// (language-independent) and a local name, flags and a handler; and the
// editor with its reactors.
#pragma once

#include "RxObject.h"
#include "rytypes.h"

using RyCommandFunction = void (*)();

class OdEdCommand : public OdRxObject {
 public:
  enum Flags : OdInt32 {
    kModal = 0,
    kTransparent = 1,
    kUsePickSet = 2,
    kRedraw = 4,
    kNoPerspective = 8,
    kNoMultiple = 16,
    kNoTileMode = 32,
    kNoPaperSpace = 64,
    kNoInternalLock = 0x100,
    kInterruptible = 0x2000,
    kNoHistory = 0x4000,
    kNoUndoMarker = 0x8000,
    kNoBlockEditor = 0x2000000,
  };
  virtual const OdString& groupName() const = 0;
  virtual const OdString& globalName() const = 0;
  virtual const OdString& localName() const = 0;
  virtual OdInt32 flags() const = 0;
  virtual ryHandle resourceHandle() const = 0;
  virtual void execute() = 0;
};
using OdEdCommandPtr = OdSmartPtr<OdEdCommand>;

class OdEdCommandStack {
 public:
  virtual ~OdEdCommandStack() = default;
  // Registers a command; a global name already in the group is refused with eDuplicateKey.
  virtual OdResult addCommand(const OdChar* group, const OdChar* globalName, const OdChar* localName, OdInt32 flags,
                              RyCommandFunction handler, void* uiContext = nullptr, int functionCode = -1,
                              ryHandle resourceHandle = nullptr, OdEdCommand** command = nullptr) = 0;
  virtual OdResult removeCmd(const OdChar* group, const OdChar* globalName) = 0;
  virtual OdResult removeGroup(const OdChar* group) = 0;
  // Lookups ignore letter case; a leading "_" asks for the global name.
  virtual OdEdCommand* lookupGlobalCmd(const OdChar* name, const OdChar* group = nullptr) const = 0;
  virtual OdEdCommand* lookupLocalCmd(const OdChar* name, const OdChar* group = nullptr) const = 0;
  virtual OdEdCommand* lookupCmd(const OdChar* name) const = 0;
  // Every command in registration order.
  virtual OdArray<OdEdCommand*> commands() const = 0;
};

RYAD_API OdEdCommandStack* odedRegCmds();

class OdEditorReactor : public OdRxObject {
  ODRX_DECLARE_MEMBERS(OdEditorReactor);

 public:
  virtual void commandWillStart(const OdString& globalName) {}
  virtual void commandEnded(const OdString& globalName) {}
  virtual void commandCancelled(const OdString& globalName) {}
  virtual void commandFailed(const OdString& globalName) {}
  virtual void unknownCommand(const OdString& name) {}
};

class OdEditor {
 public:
  virtual ~OdEditor() = default;
  virtual void addReactor(OdEditorReactor* reactor) = 0;
  virtual void removeReactor(OdEditorReactor* reactor) = 0;
  // The global name of the command that runs (empty at the command prompt).
  virtual OdString activeCommand() const = 0;
};

RYAD_API OdEditor* odedEditor();
