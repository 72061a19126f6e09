// The command stack: registered commands by group, in registration order.
#pragma once

#include <memory>
#include <vector>

#include "OdEdCommandStack.h"

namespace ryhost {

class RegisteredCommand : public OdEdCommand {
 public:
  RegisteredCommand(const OdString& group, const OdString& globalName, const OdString& localName, OdInt32 flags,
                    RyCommandFunction handler, ryHandle resource)
      : m_group(group), m_global(globalName), m_local(localName), m_flags(flags), m_handler(handler), m_resource(resource) {}
  const OdString& groupName() const override { return m_group; }
  const OdString& globalName() const override { return m_global; }
  const OdString& localName() const override { return m_local; }
  OdInt32 flags() const override { return m_flags; }
  ryHandle resourceHandle() const override { return m_resource; }
  void execute() override {
    if (m_handler) m_handler();
  }

 private:
  OdString m_group, m_global, m_local;
  OdInt32 m_flags;
  RyCommandFunction m_handler;
  ryHandle m_resource;
};

class CommandStack : public OdEdCommandStack {
 public:
  OdResult addCommand(const OdChar* group, const OdChar* globalName, const OdChar* localName, OdInt32 flags,
                      RyCommandFunction handler, void* uiContext = nullptr, int functionCode = -1,
                      ryHandle resourceHandle = nullptr, OdEdCommand** command = nullptr) override;
  OdResult removeCmd(const OdChar* group, const OdChar* globalName) override;
  OdResult removeGroup(const OdChar* group) override;
  OdEdCommand* lookupGlobalCmd(const OdChar* name, const OdChar* group = nullptr) const override;
  OdEdCommand* lookupLocalCmd(const OdChar* name, const OdChar* group = nullptr) const override;
  OdEdCommand* lookupCmd(const OdChar* name) const override;
  OdArray<OdEdCommand*> commands() const override;
  void clear() { m_commands.clear(); }

 private:
  std::vector<OdSmartPtr<RegisteredCommand>> m_commands;
};

// The host's own commands register themselves by family, each with a function
// that adds its commands to a stack (see commands/CommandRegistry.h); the
// kernel adds them all whenever it sets up its commands.
using HostCommandRegistrar = void (*)(CommandStack& stack);
std::vector<HostCommandRegistrar>& hostCommandRegistrars();
void addHostCommands(CommandStack& stack);

}  // namespace ryhost
