#include "RxDictionary.h"

OdSmartPtr<OdRxDictionary> OdRxDictionary::createObject() { return OdSmartPtr<OdRxDictionary>(new OdRxDictionary); }

OdRxObjectPtr OdRxDictionary::getAt(const OdString& key) const {
  const auto found = m_entries.find(key);
  return found == m_entries.end() ? OdRxObjectPtr() : found->second;
}

OdRxObjectPtr OdRxDictionary::putAt(const OdString& key, OdRxObject* value) {
  OdRxObjectPtr& slot = m_entries[key];
  OdRxObjectPtr previous = slot;
  slot = value;
  return previous;
}

OdRxObjectPtr OdRxDictionary::remove(const OdString& key) {
  const auto found = m_entries.find(key);
  if (found == m_entries.end()) return OdRxObjectPtr();
  OdRxObjectPtr value = found->second;
  m_entries.erase(found);
  return value;
}

OdSmartPtr<OdRxStringValue> OdRxStringValue::createObject(const OdString& value) {
  OdSmartPtr<OdRxStringValue> object(new OdRxStringValue);
  object->m_value = value;
  return object;
}

OdRxDictionary* odrxSysRegistry() {
  static const OdRxDictionaryPtr registry = OdRxDictionary::createObject();
  return registry.get();
}

OdString odrxSysRegistryString(const OdString& entry, const OdString& key) {
  const OdRxObjectPtr holder = odrxSysRegistry()->getAt(entry);
  const auto* dictionary = dynamic_cast<const OdRxDictionary*>(holder.get());
  if (!dictionary) return OdString();
  const OdRxObjectPtr value = dictionary->getAt(key);
  const auto* text = dynamic_cast<const OdRxStringValue*>(value.get());
  return text ? text->value() : OdString();
}
