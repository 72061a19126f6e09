#include "core/CommandStack.h"

#include "core/Host.h"

ODRX_NO_CONS_DEFINE_MEMBERS(OdEditorReactor, OdRxObject)

namespace ryhost {

namespace {
bool sameName(const OdString& a, const OdChar* b) { return b && a.iCompare(b) == 0; }
}  // namespace

OdResult CommandStack::addCommand(const OdChar* group, const OdChar* globalName, const OdChar* localName, OdInt32 flags,
                                  RyCommandFunction handler, void*, int, ryHandle resourceHandle, OdEdCommand** command) {
  if (!group || !globalName || !*globalName) return eInvalidInput;
  if (lookupGlobalCmd(globalName, group)) return eDuplicateKey;
  OdString local = localName && *localName ? OdString(localName) : OdString(globalName);
  m_commands.push_back(OdSmartPtr<RegisteredCommand>(
      new RegisteredCommand(group, globalName, local, flags, handler, resourceHandle)));
  if (command) *command = m_commands.back().get();
  return eOk;
}

OdResult CommandStack::removeCmd(const OdChar* group, const OdChar* globalName) {
  for (auto it = m_commands.begin(); it != m_commands.end(); ++it) {
    if (sameName((*it)->groupName(), group) && sameName((*it)->globalName(), globalName)) {
      m_commands.erase(it);
      return eOk;
    }
  }
  return eKeyNotFound;
}

OdResult CommandStack::removeGroup(const OdChar* group) {
  const size_t before = m_commands.size();
  std::erase_if(m_commands, [&](const auto& c) { return sameName(c->groupName(), group); });
  return before == m_commands.size() ? eKeyNotFound : eOk;
}

OdEdCommand* CommandStack::lookupGlobalCmd(const OdChar* name, const OdChar* group) const {
  if (!name) return nullptr;
  // The newest registration wins, as later modules override earlier ones.
  for (auto it = m_commands.rbegin(); it != m_commands.rend(); ++it) {
    if (group && !sameName((*it)->groupName(), group)) continue;
    if (sameName((*it)->globalName(), name)) return it->get();
  }
  return nullptr;
}

OdEdCommand* CommandStack::lookupLocalCmd(const OdChar* name, const OdChar* group) const {
  if (!name) return nullptr;
  for (auto it = m_commands.rbegin(); it != m_commands.rend(); ++it) {
    if (group && !sameName((*it)->groupName(), group)) continue;
    if (sameName((*it)->localName(), name)) return it->get();
  }
  return nullptr;
}

OdEdCommand* CommandStack::lookupCmd(const OdChar* name) const {
  if (!name) return nullptr;
  // "_NAME" asks for the global name; "." (".LINE", "_.LINE") for the built-in one.
  OdString key(name);
  bool global = false;
  while (!key.isEmpty() && (key[0] == L'_' || key[0] == L'.')) {
    if (key[0] == L'_') global = true;
    key = key.mid(1);
  }
  if (key.isEmpty()) return nullptr;
  if (global) return lookupGlobalCmd(key.c_str());
  if (OdEdCommand* local = lookupLocalCmd(key.c_str())) return local;
  return lookupGlobalCmd(key.c_str());
}

OdArray<OdEdCommand*> CommandStack::commands() const {
  OdArray<OdEdCommand*> result;
  for (const auto& c : m_commands) result.append(c.get());
  return result;
}

std::vector<HostCommandRegistrar>& hostCommandRegistrars() {
  static std::vector<HostCommandRegistrar> registrars;
  return registrars;
}

void addHostCommands(CommandStack& stack) {
  for (HostCommandRegistrar registrar : hostCommandRegistrars()) registrar(stack);
}

}  // namespace ryhost

OdEdCommandStack* odedRegCmds() { return &ryhost::Host::instance().commands(); }
OdEditor* odedEditor() { return &ryhost::Host::instance(); }
