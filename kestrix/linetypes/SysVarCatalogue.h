// The system-variable catalogue read by sysvdlg, the values of variables as
// the dialog shows and reads them, and sets of name and value pairs saved to
// and loaded from "isv" files.
//
// Catalogue ("sysvdlg.dat" in the module's data folder), one line each:
//   # comment              never listed
//   !Heading               starts a group of the variables that follow
//   NAME|type|description[|values]
// The fourth field (the text after the third "|") says which values the
// variable takes; the dialog shows it with the description.
//
// Saved set: the marker line "RyadSystemVarFile" (read without regard to
// letter case), then "NAME|value" a line.
#pragma once

#include <vector>

#include "OdString.h"
#include "rytypes.h"

namespace kestrix::sysvars {

// One line of the catalogue that is not a comment.
struct CatalogueEntry {
  bool heading = false;  // a "!" line: name holds the heading's text
  OdString name, type, description, values;
};

// Reads the catalogue file.
class CIniFile {
 public:
  // False when the file cannot be opened; entries are then empty.
  bool Read(const OdString& path);
  const std::vector<CatalogueEntry>& entries() const { return m_entries; }
  // The variable line of that name (letter case ignored), or null.
  const CatalogueEntry* find(const OdString& name) const;
  // Reads one line; false for a comment, an empty line, or a variable line
  // without the two "|" that separate name, type and description.
  static bool parseLine(const OdString& line, CatalogueEntry& entry);

 private:
  std::vector<CatalogueEntry> m_entries;
};

// The catalogue's path: "extendCmd/sysvdlg.dat" in the module's folder, each
// part found without regard to letter case; empty when there is none.
OdString cataloguePath(const OdString& moduleFolder);

// Name and value pairs, in the order they were added.
class CSysVarSet {
 public:
  struct Item {
    OdString name, value;
  };
  void add(const OdString& name, const OdString& value) { m_items.push_back({name, value}); }
  const std::vector<Item>& items() const { return m_items; }
  bool empty() const { return m_items.empty(); }
  // Writes the marker line and the pairs (UTF-8); false when the file cannot be made.
  bool Save(const OdString& path) const;
  // Reads a saved set; false (and the set unchanged) when the file cannot be
  // opened or its first line is not the marker. Lines without "|" are skipped.
  bool Load(const OdString& path);

 private:
  std::vector<Item> m_items;
};

// The host's type and read-only flag of every variable it knows.
struct HostVariable {
  OdString name;
  short type = RTNONE;
  bool readOnly = false;
};
std::vector<HostVariable> hostVariables();

// A value as the dialog shows it: switches "On"/"Off" (for a catalogue type
// "Switch"), reals in the shortest decimal form that reads back to the same
// number, points and vectors as "x,y,z"; strings as they are.
OdString formatValue(const resbuf& value, const OdString& catalogueType);
// A typed text as a value of the host's type: integers (also "On"/"Off"),
// reals read with "%lg", points "x,y" or "x,y,z"; false when the text is not
// one. A string value is allocated: release it with releaseValue.
bool parseValue(const OdString& text, short hostType, resbuf& value);
void releaseValue(resbuf& value);
// The current value of a variable as text; false when it cannot be read.
bool currentValue(const OdString& name, const OdString& catalogueType, OdString& text);

}  // namespace kestrix::sysvars
