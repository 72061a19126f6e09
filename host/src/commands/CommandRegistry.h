// Host commands register themselves by family: each source file of host
// commands declares a function that adds its commands to the stack and
// puts it on the kernel's list of registrars, which the kernel calls
// whenever it sets up its commands.
#pragma once

#include "core/CommandStack.h"

namespace ryhost {

struct HostCommandRegistration {
  explicit HostCommandRegistration(HostCommandRegistrar registrar) { hostCommandRegistrars().push_back(registrar); }
};

}  // namespace ryhost

// In a source file of host commands: RYAD_HOST_COMMANDS(registerLayerCommands);
#define RYAD_HOST_COMMANDS(registrar) \
  [[maybe_unused]] static const ryhost::HostCommandRegistration s_registration_##registrar(registrar)
