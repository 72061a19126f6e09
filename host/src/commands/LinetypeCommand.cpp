// -LINETYPE (also LINETYPE on the console): linetype definition files and
// the drawing's linetypes. Options: ? (the definitions of a file), Load
// (names or wildcards from a file), Set (the current linetype, CELTYPE) and
// Create (a new definition written to a file and loaded), asked again until
// Enter.
//
// Definition files hold, for each linetype, a header line "*NAME,description"
// and a pattern line "A,dash,gap,..." (positive: a dash, negative: a gap,
// 0: a dot), where an element may carry text in brackets:
// ["TEXT",style,S=scale,R=rotation,A=absolute rotation,X=offset,Y=offset].
// Lines starting with ";" are comments; a pattern line ending with "," goes
// on on the next line. Loads, the new current linetype and the file writes
// are kept until the final Enter, so that Esc changes nothing.
#include <cmath>
#include <fstream>
#include <map>
#include <utility>

#include "DbSymbolTable.h"
#include "commands/CommandRegistry.h"
#include "commands/CommandSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"
#include "ryed.h"
#include "sdk/Input.h"

namespace ryhost {

namespace {

using namespace cmdsupport;

const wchar_t* const kDefaultFile = L"ryad.lin";

void say(const OdString& text) { Host::instance().print(text); }

OdString quoted(const OdString& name) { return L"\"" + name + L"\""; }

// ---------------------------------------------------------------- definitions

struct LinetypeDefinition {
  OdString name, description;
  OdString pattern;  // the pattern line as written, "A,..."
};

// Splits at commas outside brackets and quotes.
std::vector<OdString> splitElements(const OdString& text) {
  std::vector<OdString> parts;
  OdString part;
  int depth = 0;
  bool inQuotes = false;
  for (int i = 0; i < text.getLength(); ++i) {
    const wchar_t c = text[i];
    if (c == L'"') inQuotes = !inQuotes;
    if (!inQuotes && c == L'[') ++depth;
    if (!inQuotes && c == L']') --depth;
    if (c == L',' && depth == 0 && !inQuotes) {
      part.trimLeft().trimRight();
      parts.push_back(part);
      part.empty();
      continue;
    }
    part += c;
  }
  part.trimLeft().trimRight();
  parts.push_back(part);
  return parts;
}

// An angle of a complex element: degrees, or with a suffix r (radians) or g (grads).
bool parseElementAngle(OdString text, double& radians) {
  double factor = 3.14159265358979323846 / 180.0;
  const wchar_t last = text.isEmpty() ? 0 : text[text.getLength() - 1];
  if (last == L'r' || last == L'R') factor = 1.0;
  if (last == L'g' || last == L'G') factor = 3.14159265358979323846 / 200.0;
  if (last == L'r' || last == L'R' || last == L'g' || last == L'G' || last == L'd' || last == L'D')
    text = text.left(text.getLength() - 1);
  if (!parseReal(text, radians)) return false;
  radians *= factor;
  return true;
}

// One "KEY=value" field of a text element; U (keep upright) is taken and ignored.
bool applyElementField(const OdString& field, OdDbLinetypeDash& dash) {
  const int equals = field.find(L'=');
  if (equals <= 0) return false;
  const OdString key = field.left(equals).upper(), value = field.mid(equals + 1);
  if (key == L"S") return parseReal(value, dash.scale);
  if (key == L"X") return parseReal(value, dash.offsetX);
  if (key == L"Y") return parseReal(value, dash.offsetY);
  if (key == L"A") dash.complexType |= 1;  // rotation measured from the world, not the line
  if (key == L"R" || key == L"A") return parseElementAngle(value, dash.rotation);
  return key == L"U";
}

// The text part of a complex element, attached to the dash before it.
bool parseComplex(OdDbDatabase* db, const OdString& element, OdDbLinetypeDash& dash, OdString& problem) {
  const std::vector<OdString> fields = splitElements(element.mid(1, element.getLength() - 2));
  if (fields.size() < 2 || fields[0].left(1) != L"\"" || fields[0].right(1) != L"\"" ||
      fields[0].getLength() < 2) {
    problem = L"only text elements (\"TEXT\",style,...) can be loaded, not " + element;
    return false;
  }
  dash.complexType = 2;
  dash.text = fields[0].mid(1, fields[0].getLength() - 2);
  dash.styleId = db->findRecord(OdDbNameTable::kTextStyle, fields[1]);
  if (dash.styleId.isNull()) {
    problem = L"text style " + quoted(fields[1]) + L" not found";
    return false;
  }
  for (size_t i = 2; i < fields.size(); ++i) {
    if (!applyElementField(fields[i], dash)) {
      problem = L"cannot read " + quoted(fields[i]);
      return false;
    }
  }
  return true;
}

// The dashes of a pattern line ("A,0.5,-0.25"); false with the reason.
bool parsePattern(OdDbDatabase* db, const OdString& line, OdArray<OdDbLinetypeDash>& dashes,
                  OdString& problem) {
  const std::vector<OdString> elements = splitElements(line);
  if (elements.empty() || elements[0].iCompare(L"A") != 0) {
    problem = L"the pattern must start with \"A,\"";
    return false;
  }
  dashes.clear();
  for (size_t i = 1; i < elements.size(); ++i) {
    const OdString& element = elements[i];
    if (element.left(1) == L"[") {
      if (dashes.isEmpty() || element.right(1) != L"]") {
        problem = L"misplaced element " + element;
        return false;
      }
      if (!parseComplex(db, element, dashes.last(), problem)) return false;
      continue;
    }
    OdDbLinetypeDash dash;
    if (!parseReal(element, dash.length)) {
      problem = L"cannot read " + quoted(element);
      return false;
    }
    dashes.append(dash);
  }
  if (dashes.isEmpty() || dashes[0].length < 0) {
    problem = L"the pattern must start with a dash or a dot";
    return false;
  }
  return true;
}

std::vector<OdString> readLines(const OdString& path) {
  std::ifstream in(path.toUtf8());
  std::vector<OdString> lines;
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(OdString(line));
  }
  return lines;
}

std::vector<LinetypeDefinition> readDefinitions(const OdString& path) {
  std::vector<LinetypeDefinition> definitions;
  LinetypeDefinition* open = nullptr;  // the definition whose pattern is being read
  bool continued = false;              // its pattern line ended with a comma
  for (OdString line : readLines(path)) {
    line.trimLeft().trimRight();
    if (line.isEmpty() || line.left(1) == L";") continue;
    if (line.left(1) == L"*") {
      LinetypeDefinition definition;
      const int comma = line.find(L',');
      definition.name = line.mid(1, comma < 0 ? -1 : comma - 1);
      definition.name.trimLeft().trimRight();
      if (comma >= 0) definition.description = line.mid(comma + 1);
      definitions.push_back(definition);
      open = &definitions.back();
      continued = false;
      continue;
    }
    if (!open || (!open->pattern.isEmpty() && !continued)) continue;
    open->pattern += line;
    continued = line.right(1) == L",";
  }
  return definitions;
}

OdString findFile(OdString name) {
  if (name.isEmpty()) name = kDefaultFile;
  ACHAR found[1024];
  if (ryedFindFile(name.c_str(), found, 1024) == RTNORM) return OdString(found);
  if (name.right(4).iCompare(L".lin") != 0 && ryedFindFile((name + L".lin").c_str(), found, 1024) == RTNORM)
    return OdString(found);
  return OdString();
}

// ---------------------------------------------------------------- the command

struct PendingWrite {
  OdString path;
  LinetypeDefinition definition;
};

class LinetypeEditor {
 public:
  explicit LinetypeEditor(OdDbDatabase* db) : m_db(db), m_current(recordName(db->getCELTYPE())) {}

  void run() {
    say(L"\nCurrent line type:  " + quoted(m_current));
    for (;;) {
      const OdString option = askKeyword(L"\nEnter an option [?/Create/Load/Set]: ", L"? Create Load Set");
      if (option.isEmpty()) break;
      using Handler = void (LinetypeEditor::*)();
      static const std::pair<const wchar_t*, Handler> kOptions[] = {
          {L"?", &LinetypeEditor::listFile},
          {L"Create", &LinetypeEditor::create},
          {L"Load", &LinetypeEditor::load},
          {L"Set", &LinetypeEditor::setCurrent},
      };
      for (const auto& [keyword, handler] : kOptions) {
        if (option == keyword) (this->*handler)();
      }
    }
    apply();
  }

 private:
  bool isKnown(const OdString& name) const {
    return !m_db->findRecord(OdDbNameTable::kLinetype, name).isNull() || m_loads.count(name.upper()) != 0;
  }

  // A definition file that exists, asked for until one is found; empty when
  // Enter names a default file that is missing.
  OdString askExistingFile(const OdString& prompt) {
    for (;;) {
      const OdString typed = askText(prompt + L" <" + kDefaultFile + L">: ");
      const OdString path = findFile(typed);
      if (!path.isEmpty()) return path;
      say(L"\nCannot find file " + quoted(typed.isEmpty() ? OdString(kDefaultFile) : typed) + L".");
      if (typed.isEmpty()) return OdString();
    }
  }

  void listFile() {
    const OdString path = askExistingFile(L"\nEnter name of linetype file to list");
    if (path.isEmpty()) return;
    say(L"\nLinetypes defined in file " + path + L":");
    for (const LinetypeDefinition& definition : readDefinitions(path)) {
      say(OdString().format(L"\n  %-20ls %ls", definition.name.c_str(), definition.description.c_str()));
    }
  }

  void load() {
    const OdString names = askText(L"\nEnter linetype(s) to load: ");
    if (names.isEmpty()) return;
    const OdString path = askExistingFile(L"\nEnter name of linetype file");
    if (path.isEmpty()) return;
    const std::vector<OdString> patterns = splitNameList(names);
    std::vector<bool> used(patterns.size(), false);
    for (const LinetypeDefinition& definition : readDefinitions(path)) {
      bool wanted = false;
      for (size_t i = 0; i < patterns.size(); ++i) {
        if (nameMatches(definition.name, patterns[i])) wanted = used[i] = true;
      }
      if (wanted) loadDefinition(definition);
    }
    for (size_t i = 0; i < patterns.size(); ++i) {
      if (!used[i]) say(L"\nLinetype " + quoted(patterns[i]) + L" not found in " + path + L".");
    }
  }

  void loadDefinition(const LinetypeDefinition& definition) {
    OdArray<OdDbLinetypeDash> dashes;
    OdString problem;
    if (!isValidSymbolName(definition.name) || !parsePattern(m_db, definition.pattern, dashes, problem)) {
      say(L"\nLinetype " + quoted(definition.name) + L" cannot be loaded: " +
          (problem.isEmpty() ? OdString(L"invalid name") : problem) + L".");
      return;
    }
    if (isKnown(definition.name) &&
        !askYesNo(L"\nLinetype " + quoted(definition.name) + L" is already loaded.  Reload it? <Y>: ",
                  true)) {
      return;
    }
    m_loads[definition.name.upper()] = definition;
    say(L"\nLinetype " + quoted(definition.name) + L" loaded.");
  }

  void setCurrent() {
    for (;;) {
      OdString name = askKeyword(L"\nSpecify linetype name or [?] <" + m_current + L">: ", L"?", RSG_OTHER);
      if (name.isEmpty()) return;
      if (name == L"?") {
        listLoaded();
        continue;
      }
      name = literalName(name);
      if (!isKnown(name)) {
        say(L"\nLinetype " + quoted(name) + L" not found.  Use the Load option to load it.");
        continue;
      }
      const OdDbObjectId id = m_db->findRecord(OdDbNameTable::kLinetype, name);
      m_current = id.isNull() ? m_loads[name.upper()].name : recordName(id);
      return;
    }
  }

  void listLoaded() {
    say(L"\nLoaded linetypes:");
    for (const OdDbObjectId& id : tableRecords(m_db, OdDbNameTable::kLinetype)) {
      OdDbObjectPtr object = id.openObject();
      auto* record = static_cast<OdDbLinetypeTableRecord*>(object.get());
      say(OdString().format(L"\n  %-20ls %ls", record->getName().c_str(), record->comments().c_str()));
    }
    for (const auto& [key, definition] : m_loads) {
      if (m_db->findRecord(OdDbNameTable::kLinetype, definition.name).isNull())
        say(OdString().format(L"\n  %-20ls %ls", definition.name.c_str(), definition.description.c_str()));
    }
  }

  void create() {
    LinetypeDefinition definition;
    definition.name = askText(L"\nEnter name of linetype to create: ");
    if (definition.name.isEmpty()) return;
    if (!isValidSymbolName(definition.name)) {
      say(L"\nInvalid linetype name " + quoted(definition.name) + L".");
      return;
    }
    OdString file = askText(L"\nEnter name of linetype file to write <" + OdString(kDefaultFile) + L">: ");
    if (file.isEmpty()) file = kDefaultFile;
    OdString path = findFile(file);
    if (path.isEmpty()) path = file.right(4).iCompare(L".lin") == 0 ? file : file + L".lin";
    for (const LinetypeDefinition& existing : readDefinitions(path)) {
      if (existing.name.iCompare(definition.name) == 0 &&
          !askYesNo(L"\nLinetype " + quoted(definition.name) + L" is already defined in " + path +
                        L".  Overwrite it? <N>: ",
                    false)) {
        return;
      }
    }
    definition.description = askText(L"\nDescriptive text: ");
    for (;;) {
      const OdString pattern = askText(L"\nEnter linetype pattern (on next line):\nA,");
      if (pattern.isEmpty()) return;
      definition.pattern = L"A," + pattern;
      OdArray<OdDbLinetypeDash> dashes;
      OdString problem;
      if (parsePattern(m_db, definition.pattern, dashes, problem)) break;
      say(L"\nInvalid pattern: " + problem + L".");
    }
    m_writes.push_back({path, definition});
    m_loads[definition.name.upper()] = definition;
  }

  // ---- writing the changes

  void apply() {
    for (const PendingWrite& write : m_writes) writeDefinition(write);
    for (const auto& [key, definition] : m_loads) loadIntoDrawing(definition);
    const OdDbObjectId current = m_db->findRecord(OdDbNameTable::kLinetype, m_current);
    if (!current.isNull() && current != m_db->getCELTYPE()) m_db->setCELTYPE(current);
  }

  // Replaces the definition of that name in the file, or adds it at the end.
  static void writeDefinition(const PendingWrite& write) {
    std::vector<OdString> lines = readLines(write.path);
    std::vector<OdString> kept;
    bool skipping = false;
    for (const OdString& line : lines) {
      OdString trimmed = line;
      trimmed.trimLeft();
      if (trimmed.left(1) == L"*") {
        const int comma = trimmed.find(L',');
        OdString name = trimmed.mid(1, comma < 0 ? -1 : comma - 1);
        name.trimLeft().trimRight();
        skipping = name.iCompare(write.definition.name) == 0;
      } else if (skipping && !trimmed.isEmpty() && trimmed.left(1) != L";") {
        continue;  // the old pattern line
      }
      if (!skipping) kept.push_back(line);
    }
    kept.push_back(L"*" + write.definition.name + L"," + write.definition.description);
    kept.push_back(write.definition.pattern);
    std::ofstream out(write.path.toUtf8(), std::ios::trunc);
    for (const OdString& line : kept) out << line.toUtf8() << '\n';
    if (out)
      say(L"\nLinetype " + quoted(write.definition.name) + L" written to " + write.path + L".");
    else
      say(L"\nCannot write " + write.path + L".");
  }

  void loadIntoDrawing(const LinetypeDefinition& definition) {
    OdArray<OdDbLinetypeDash> dashes;
    OdString problem;
    if (!parsePattern(m_db, definition.pattern, dashes, problem)) return;
    const OdDbObjectId existing = m_db->findRecord(OdDbNameTable::kLinetype, definition.name);
    if (!existing.isNull()) {
      OdDbObjectPtr object = existing.openObject(OdDb::kForWrite);
      auto* record = static_cast<OdDbLinetypeTableRecord*>(object.get());
      record->setComments(definition.description);
      record->setDashes(dashes);
      return;
    }
    OdSmartPtr<OdDbLinetypeTableRecord> record = OdDbLinetypeTableRecord::createObject();
    record->setName(definition.name);
    record->setComments(definition.description);
    record->setDashes(dashes);
    OdDbObjectPtr table = m_db->getLinetypeTableId().openObject(OdDb::kForWrite);
    static_cast<OdDbSymbolTable*>(table.get())->add(record.get());
  }

  OdDbDatabase* m_db;
  OdString m_current;
  std::map<OdString, LinetypeDefinition> m_loads;  // by upper-case name
  std::vector<PendingWrite> m_writes;
};

void linetypeCommand() { LinetypeEditor(Host::instance().current()->database()).run(); }

}  // namespace

void registerLinetypeCommands(CommandStack& stack) {
  addCommandAndLineForm(stack, L"LINETYPE", linetypeCommand);
}

RYAD_HOST_COMMANDS(registerLinetypeCommands);

}  // namespace ryhost
