// Classic INI files: "[section]" lines and "key=value" lines; sections and
// keys ignore letter case; comments start with ";". Files are UTF-8 (a
// UTF-8 or UTF-16 byte-order mark is honoured on reading).
#pragma once

#include <vector>

#include "OdString.h"

namespace ryhost {

class IniFile {
 public:
  // Reads the file; a missing file is an empty one.
  explicit IniFile(const OdString& path);
  bool get(const OdString& section, const OdString& key, OdString& value) const;
  void set(const OdString& section, const OdString& key, const OdString& value);
  void removeKey(const OdString& section, const OdString& key);
  void removeSection(const OdString& section);
  std::vector<OdString> sections() const;
  std::vector<OdString> keys(const OdString& section) const;
  // Writes the file (atomically); false when it cannot be written.
  bool save() const;

 private:
  struct Entry {
    OdString key, value;
  };
  struct Section {
    OdString name;
    std::vector<Entry> entries;
  };
  Section* findSection(const OdString& name);
  const Section* findSection(const OdString& name) const;
  OdString m_path;
  std::vector<Section> m_sections;
};

}  // namespace ryhost
