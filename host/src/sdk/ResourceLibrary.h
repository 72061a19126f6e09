// Resource libraries: the host's own kind of library for numbered strings
// and dialog templates, a UTF-8 text file that LoadLibraryW opens instead of
// a shared object. A module's message catalogue, its local command names and
// its dialog layouts live in such files beside it.
//
// The format (docs/architecture.md, "Resource libraries", says the same):
//
//   RYAD RESOURCE LIBRARY 1          first line, exactly (a UTF-8 BOM may precede it)
//   ; comment                        blank lines and lines starting with ";" or "#" are skipped
//   STRINGTABLE                      a block of numbered strings, up to "END"
//   2205<TAB>Select a block:         <number 0..65535><TAB><text>
//   2232<TAB>\nEnter a file name:    the text runs to the line end, spaces kept
//   END
//   DIALOG 225                       a dialog template, numbered 0..65535, up to "END"
//   CAPTION<TAB>Replace block
//   SIZE<TAB>260<TAB>120             width, height (dialog units)
//   FONT<TAB>9<TAB>Sans              optional: point size, face
//   CONTROL<TAB>1001<TAB>EDIT<TAB><TAB>10<TAB>20<TAB>120<TAB>14
//   CONTROL<TAB>1<TAB>DEFBUTTON<TAB>OK<TAB>150<TAB>96<TAB>50<TAB>14<TAB>TABSTOP
//   END
//
// A CONTROL line is: number (-1 for a label nobody addresses), kind, label,
// x, y, width, height, and optionally style words separated by spaces. Kinds
// are upper-case words; the dialog toolkit knows LTEXT, RTEXT, CTEXT, EDIT,
// BUTTON, DEFBUTTON, CHECKBOX, RADIO, COMBOBOX, LISTBOX, GROUPBOX and ICON,
// and keeps any other word as given. Texts (strings, captions, labels) may
// hold the escapes \n \t \\ \" and nothing else after a backslash. Numbers
// are decimal. Every other line is an error, reported with its line number.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "OdString.h"

namespace ryhost {

// The header line of every resource library of this version, and the words
// that mark a resource library of any version.
inline constexpr std::string_view kResourceLibraryHeader = "RYAD RESOURCE LIBRARY 1";
inline constexpr std::string_view kResourceLibraryMagic = "RYAD RESOURCE LIBRARY";

struct DialogControl {
  int id = -1;
  OdString kind;  // upper case
  OdString label;
  int x = 0, y = 0, width = 0, height = 0;
  std::vector<OdString> styles;  // upper case
};

struct DialogTemplate {
  int id = 0;
  OdString caption;
  int width = 0, height = 0;
  int fontSize = 0;  // 0: the toolkit's own font
  OdString fontName;
  std::vector<DialogControl> controls;  // in the order written (tab order)
  // The block's lines between "DIALOG n" and "END" as written (escapes not
  // undone), for a toolkit that reads keywords this parser does not know.
  std::vector<std::string> lines;

  const DialogControl* control(int controlId) const;
};

class ResourceLibrary {
 public:
  // True when the text starts with the resource-library words (any version):
  // such a file is never handed to the shared-object loader.
  static bool startsAsResourceLibrary(std::string_view text);
  // True when the file's first bytes mark it as a resource library.
  static bool isResourceLibraryFile(const std::string& path);

  // Reads a resource library; null with "line N: what is wrong" (or why the
  // file cannot be read) in reason.
  static std::unique_ptr<ResourceLibrary> load(const std::string& path, std::string* reason);
  static std::unique_ptr<ResourceLibrary> parse(std::string_view text, std::string* reason);

  // The string of that number, or null.
  const OdString* string(unsigned id) const;
  const std::map<unsigned, OdString>& strings() const { return m_strings; }
  // The dialog template of that number, or null.
  const DialogTemplate* dialog(int id) const;
  std::vector<int> dialogIds() const;

 private:
  std::map<unsigned, OdString> m_strings;
  std::map<int, DialogTemplate> m_dialogs;
  friend class ResourceParser;
};

// Undoes the escapes of a resource text; false at a backslash that starts none.
bool unescapeResourceText(std::string_view text, OdString& result);

// The resource library behind a handle of LoadLibraryW, or null (a shared
// object, a freed library or no handle): how the dialog toolkit reaches a
// module's templates through the resource handle the module registered.
const ResourceLibrary* resourceLibraryOf(const void* handle);
// Why the last LoadLibraryW of this thread failed (empty after a success).
std::string lastLibraryError();

}  // namespace ryhost
