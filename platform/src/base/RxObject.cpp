#include "RxObject.h"

#include <map>
#include <memory>
#include <vector>

namespace {

// Every registered class by name, by DXF name, and in registration order.
struct ClassRegistry {
  std::map<OdString, OdRxClass*> byName;
  std::map<OdString, OdRxClass*> byDxfName;
  std::vector<OdRxClass*> ordered;
};

ClassRegistry& registry() {
  static ClassRegistry* instance = new ClassRegistry();  // lives to the end of the process
  return *instance;
}

}  // namespace

OdRxClass* OdRxObject::s_desc = nullptr;

OdRxClass* OdRxObject::desc() {
  if (!s_desc) s_desc = newOdRxClass(L"OdRxObject", nullptr);
  return s_desc;
}

OdRxClass* OdRxObject::isA() const { return desc(); }

bool OdRxObject::isKindOf(const OdRxClass* cls) const {
  const OdRxClass* mine = isA();
  return mine && mine->isDerivedFrom(cls);
}

void OdRxObject::release() const {
  if (--m_refs == 0) onFinalRelease();
}

OdRxClass::OdRxClass(const OdString& name, OdRxClass* parent, OdPseudoConstructorType constructor,
                     const OdString& dxfName, const OdString& appName, int proxyFlags, int customFlags)
    : m_name(name), m_dxfName(dxfName), m_appName(appName), m_parent(parent),
      m_constructor(constructor), m_proxyFlags(proxyFlags), m_customFlags(customFlags) {
  m_refs = 1;  // held by the registry
}

OdRxClass* OdRxClass::desc() {
  static OdRxClass* cls = newOdRxClass(L"OdRxClass", OdRxObject::desc());
  return cls;
}

OdRxClass* OdRxClass::isA() const { return desc(); }

bool OdRxClass::isDerivedFrom(const OdRxClass* other) const {
  for (const OdRxClass* c = this; c; c = c->m_parent) {
    if (c == other) return true;
  }
  return false;
}

OdRxObjectPtr OdRxClass::create() const {
  if (!m_constructor) return OdRxObjectPtr();
  return m_constructor();
}

OdRxClass* newOdRxClass(const OdString& name, OdRxClass* parent, OdPseudoConstructorType constructor,
                        int, int, int proxyFlags, const OdString& dxfName, const OdString& appName,
                        void*, int customFlags) {
  auto& reg = registry();
  auto found = reg.byName.find(name);
  if (found != reg.byName.end()) return found->second;
  auto* cls = new OdRxClass(name, parent, constructor, dxfName, appName, proxyFlags, customFlags);
  cls->setRegistered(true);
  reg.byName[name] = cls;
  if (!dxfName.isEmpty()) reg.byDxfName.emplace(dxfName.upper(), cls);
  reg.ordered.push_back(cls);
  return cls;
}

void deleteOdRxClass(OdRxClass* cls) {
  if (!cls) return;
  auto& reg = registry();
  reg.byName.erase(cls->name());
  auto dxf = reg.byDxfName.find(cls->dxfName().upper());
  if (dxf != reg.byDxfName.end() && dxf->second == cls) reg.byDxfName.erase(dxf);
  std::erase(reg.ordered, cls);
  cls->setRegistered(false);
  cls->release();
}

OdRxClass* odrxFindClass(const OdString& name) {
  auto& reg = registry();
  auto found = reg.byName.find(name);
  return found == reg.byName.end() ? nullptr : found->second;
}

OdRxClass* odrxFindClassByDxfName(const OdString& dxfName) {
  auto& reg = registry();
  auto found = reg.byDxfName.find(dxfName.upper());
  return found == reg.byDxfName.end() ? nullptr : found->second;
}

OdArray<OdRxClass*> odrxRegisteredClasses() {
  auto& reg = registry();
  return OdArray<OdRxClass*>(reg.ordered.begin(), reg.ordered.end());
}
