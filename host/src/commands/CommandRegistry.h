// Host commands register themselves by family: each source file of host
// commands declares a function that adds its commands to the stack and
// puts it on the kernel's list of registrars, which the kernel calls
// whenever it sets up its commands.
#pragma once

#include <initializer_list>

#include "core/CommandStack.h"

namespace ryhost {

struct HostCommandRegistration {
  explicit HostCommandRegistration(HostCommandRegistrar registrar) { hostCommandRegistrars().push_back(registrar); }
};

// A command of the host's group: one name serves as global and local name.
struct HostCommand {
  const wchar_t* name;
  OdInt32 flags;
  RyCommandFunction handler;
};

inline void addHostCommands(CommandStack& stack, std::initializer_list<HostCommand> commands) {
  for (const HostCommand& command : commands)
    stack.addCommand(L"RYAD", command.name, command.name, command.flags, command.handler);
}

// A command in its two forms, NAME and the command-line "-NAME": the host
// answers both on the command line.
inline void addCommandAndLineForm(CommandStack& stack, const wchar_t* name, RyCommandFunction handler) {
  const OdString lineForm = L"-" + OdString(name);
  addHostCommands(stack, {{lineForm.c_str(), OdEdCommand::kModal, handler}, {name, OdEdCommand::kModal, handler}});
}

}  // namespace ryhost

// In a source file of host commands: RYAD_HOST_COMMANDS(registerLayerCommands);
#define RYAD_HOST_COMMANDS(registrar) \
  [[maybe_unused]] static const ryhost::HostCommandRegistration s_registration_##registrar(registrar)
