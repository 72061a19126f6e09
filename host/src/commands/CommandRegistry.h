// Host commands register themselves by family: each source file of host
// commands declares a function that adds its commands to the stack, and
// the kernel calls them all whenever it sets up its commands.
#pragma once

#include <vector>

namespace ryhost {

class CommandStack;
using HostCommandRegistrar = void (*)(CommandStack& stack);

std::vector<HostCommandRegistrar>& hostCommandRegistrars();

struct HostCommandRegistration {
  explicit HostCommandRegistration(HostCommandRegistrar registrar) { hostCommandRegistrars().push_back(registrar); }
};

}  // namespace ryhost

// In a source file of host commands: RYAD_HOST_COMMANDS(registerLayerCommands);
#define RYAD_HOST_COMMANDS(registrar) \
  [[maybe_unused]] static const ryhost::HostCommandRegistration s_registration_##registrar(registrar)
