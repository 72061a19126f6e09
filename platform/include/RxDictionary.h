// The run-time object dictionary: named objects that live in the process,
// not in any drawing. Programs use it to hand each other small values for
// the time of one operation (who drives a command, for instance); nothing
// in it is saved.
#pragma once

#include <map>

#include "OdaCommon.h"
#include "RxObject.h"

// A dictionary of run-time objects by name (names compare exactly).
class OdRxDictionary : public OdRxObject {
 public:
  static OdSmartPtr<OdRxDictionary> createObject();
  // The object under the name; null when there is none.
  OdRxObjectPtr getAt(const OdString& key) const;
  // Puts the object under the name; returns the object it replaces (or null).
  OdRxObjectPtr putAt(const OdString& key, OdRxObject* value);
  // Takes the entry out; returns its object (or null when there was none).
  OdRxObjectPtr remove(const OdString& key);
  bool has(const OdString& key) const { return m_entries.count(key) != 0; }
  OdUInt32 numEntries() const { return static_cast<OdUInt32>(m_entries.size()); }

 private:
  std::map<OdString, OdRxObjectPtr> m_entries;
};
using OdRxDictionaryPtr = OdSmartPtr<OdRxDictionary>;

// A text value to keep in a run-time dictionary.
class OdRxStringValue : public OdRxObject {
 public:
  static OdSmartPtr<OdRxStringValue> createObject(const OdString& value);
  const OdString& value() const { return m_value; }

 private:
  OdString m_value;
};

// The process's dictionary of run-time objects.
OdRxDictionary* odrxSysRegistry();

// The text value under the path "entry/key" of the process dictionary (an
// entry that is a dictionary holding a text value); empty when missing.
OdString odrxSysRegistryString(const OdString& entry, const OdString& key);
