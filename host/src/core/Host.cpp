#include "core/Host.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

#include "DxfFile.h"
#include "core/Aliases.h"
#include "core/CommandStack.h"
#include "core/Modules.h"
#include "core/SelectionSets.h"
#include "core/SpatialIndex.h"
#include "DbBlockTableRecord.h"
#include "DbEntity.h"

namespace ryhost {

// ---------------------------------------------------------------- input

bool ListInput::readLine(OdString& line, const OdString&) {
  if (m_lines.empty()) return false;
  line = m_lines.front();
  m_lines.pop_front();
  return true;
}

// ---------------------------------------------------------------- documents

namespace {

// Marks the document changed and keeps its spatial index in step.
class DocumentTracker : public OdDbDatabaseReactor {
 public:
  explicit DocumentTracker(Document* doc) : m_doc(doc) {}
  void objectAppended(const OdDbDatabase*, const OdDbObject* object) override { changed(object); }
  void objectModified(const OdDbDatabase*, const OdDbObject* object) override { changed(object); }
  void objectErased(const OdDbDatabase*, const OdDbObject* object, bool) override { changed(object); }
  void headerSysVarChanged(const OdDbDatabase*, const OdString&) override { m_doc->setModified(true); }

 private:
  void changed(const OdDbObject* object) {
    m_doc->setModified(true);
    if (object->isKindOf(OdDbEntity::desc())) m_doc->spatialIndex().update(object->objectId());
  }
  Document* m_doc;
};

}  // namespace

Document::Document(OdDbDatabasePtr db, const OdString& fileName)
    : m_db(std::move(db)), m_fileName(fileName), m_selections(std::make_unique<SelectionSets>()) {
  m_changeTracker = std::make_unique<DocumentTracker>(this);
  m_db->addReactor(m_changeTracker.get());
}

Document::~Document() {
  if (m_db.get()) m_db->removeReactor(m_changeTracker.get());
}

OdString Document::docTitle() const {
  if (m_fileName.isEmpty()) return L"Drawing1.dwg";
  int slash = m_fileName.reverseFind(L'/');
  return slash < 0 ? m_fileName : m_fileName.mid(slash + 1);
}

SpatialIndex& Document::spatialIndex() {
  if (!m_index) m_index = std::make_unique<SpatialIndex>(m_db.get());
  return *m_index;
}

SelectionSets& Document::selections() { return *m_selections; }

void Document::setUcs(const OdGeMatrix3d& ucs, bool remember) {
  if (remember) m_ucsStack.push_back(m_ucs);
  m_ucs = ucs;
}

bool Document::popUcs() {
  if (m_ucsStack.empty()) return false;
  m_ucs = m_ucsStack.back();
  m_ucsStack.pop_back();
  return true;
}

OdDbObjectId Document::lastEntity() const {
  // The last live entity of the current space.
  OdDbObjectPtr object = m_db->currentSpaceId().openObject();
  auto* space = dynamic_cast<OdDbBlockTableRecord*>(object.get());
  if (!space) return OdDbObjectId();
  const OdDbObjectIdArray& ids = space->entityIds();
  for (auto it = ids.rbegin(); it != ids.rend(); ++it) {
    if (!it->isErased()) return *it;
  }
  return OdDbObjectId();
}

// ---------------------------------------------------------------- host

Host::Host()
    : m_commands(std::make_unique<CommandStack>()),
      m_sysvars(std::make_unique<SysVars>()),
      m_modules(std::make_unique<ModuleList>()) {
  addHostCommands(*m_commands);
}

Host& Host::instance() {
  static Host* host = new Host();  // lives to the end of the process, after every module
  return *host;
}

void Host::reset() {
  m_modules->unloadAll();
  while (!m_documents.empty()) closeDocument(m_documents.back().get());
  m_commands->clear();
  addHostCommands(*m_commands);
  m_sysvars = std::make_unique<SysVars>();
  m_pending.clear();
  m_runningCommands.clear();
  m_problems.clear();
  m_lastCommand.empty();
  m_menuGroups.clear();
  m_aliases.reset();
  m_quit = false;
  m_lineOpen = false;
  m_quiet = 0;
  m_input = nullptr;
  m_transcript = nullptr;
}

void Host::print(const OdString& text) {
  if (text.isEmpty() || m_quiet > 0) return;
  OdString out = text;
  if (m_lineOpen && out[0] != L'\n') out = OdString(L"\n") + out;
  m_lineOpen = false;
  if (m_transcript) m_transcript->write(out);
}

void Host::pushReplies(const std::vector<OdString>& replies) {
  // Replies of a nested ryedCommand come before those still waiting.
  m_pending.insert(m_pending.begin(), replies.begin(), replies.end());
}

Reply Host::readReply(const OdString& prompt) {
  Reply reply;
  OdString line;
  // A terminal's line editor shows the prompt's last line and the reply itself.
  const bool editorShows = m_pending.empty() && m_input && m_input->showsPrompt() && m_quiet == 0;
  const int newline = prompt.reverseFind(L'\n');
  if (editorShows) {
    if (newline >= 0) print(prompt.left(newline + 1));
    else if (m_lineOpen) print(L"\n");
  } else {
    print(prompt);
  }
  if (!m_pending.empty()) {
    line = m_pending.front();
    m_pending.pop_front();
  } else if (!m_input || !m_input->readLine(line, newline < 0 ? prompt : prompt.mid(newline + 1))) {
    reply.kind = Reply::kEnd;
    return reply;
  }
  // A NUL byte ends the reply: what follows it would show in the transcript
  // but be lost wherever the reply is used or named as a C string.
  if (const int nul = line.find(L'\0'); nul >= 0) line = line.left(nul);
  if (editorShows) {
    m_lineOpen = false;
  } else if (m_transcript && m_quiet == 0) {
    m_transcript->write(line);
    m_lineOpen = true;
  }
  OdString trimmed = line;
  trimmed.trimLeft().trimRight();
  if (trimmed == L"^C" || trimmed == L"\x1b" || trimmed.iCompare(L"<esc>") == 0) {
    reply.kind = Reply::kCancel;
    print(L"\n*Cancel*");
    return reply;
  }
  reply.kind = Reply::kText;
  reply.text = line;
  return reply;
}

// ---------------------------------------------------------------- documents

RyApDocument* Host::document(int index) const {
  return index >= 0 && index < documentCount() ? m_documents[static_cast<size_t>(index)].get() : nullptr;
}

RyApDocument* Host::document(const OdDbDatabase* db) const {
  for (const auto& doc : m_documents) {
    if (doc->database() == db) return doc.get();
  }
  return nullptr;
}

void Host::addReactor(RyApDocManagerReactor* reactor) {
  if (std::find(m_docReactors.begin(), m_docReactors.end(), reactor) == m_docReactors.end()) m_docReactors.push_back(reactor);
}

void Host::removeReactor(RyApDocManagerReactor* reactor) { std::erase(m_docReactors, reactor); }

void Host::fireDocumentEvent(void (RyApDocManagerReactor::*event)(RyApDocument*), RyApDocument* doc) {
  for (RyApDocManagerReactor* reactor : std::vector<RyApDocManagerReactor*>(m_docReactors)) (reactor->*event)(doc);
}

Document* Host::addDocument(OdDbDatabasePtr db, const OdString& fileName) {
  m_documents.push_back(std::make_unique<Document>(std::move(db), fileName));
  Document* doc = m_documents.back().get();
  fireDocumentEvent(&RyApDocManagerReactor::documentCreated, doc);
  setCurDocument(doc);
  m_modules->broadcast(kRyrxLoadDwgMsg);
  return doc;
}

OdResult Host::setCurDocument(RyApDocument* doc) {
  auto it = std::find_if(m_documents.begin(), m_documents.end(), [&](const auto& d) { return d.get() == doc; });
  if (it == m_documents.end()) return eInvalidInput;
  if (m_current == doc) return eOk;
  m_current = it->get();
  fireDocumentEvent(&RyApDocManagerReactor::documentBecameCurrent, doc);
  fireDocumentEvent(&RyApDocManagerReactor::documentActivated, doc);
  return eOk;
}

void Host::closeDocument(Document* doc) {
  if (!doc) doc = m_current;
  if (!doc) return;
  Document* previous = m_current;
  m_current = doc;  // the unload message speaks of the current document
  m_modules->broadcast(kRyrxUnloadDwgMsg);
  fireDocumentEvent(&RyApDocManagerReactor::documentToBeDestroyed, doc);
  const OdString name = doc->fileName();
  auto it = std::find_if(m_documents.begin(), m_documents.end(), [&](const auto& d) { return d.get() == doc; });
  std::unique_ptr<Document> closing = std::move(*it);
  m_documents.erase(it);
  m_current = previous == doc ? nullptr : previous;
  closing.reset();
  for (RyApDocManagerReactor* reactor : std::vector<RyApDocManagerReactor*>(m_docReactors)) reactor->documentDestroyed(name);
  if (!m_current && !m_documents.empty()) setCurDocument(m_documents.back().get());
}

OdResult Host::appContextOpenDocument(const OdString& fileName) {
  OdDbDatabasePtr db;
  try {
    OdDxfReadReport report;
    db = odDxfReadFile(fileName, &report);
    printRepairs(fileName, report.repairs);
  } catch (const OdError& error) {
    print(L"\nCannot open " + fileName + L": " + error.description());
    return error.code();
  }
  addDocument(db, fileName);
  return eOk;
}

void Host::printRepairs(const OdString& fileName, const std::vector<OdString>& repairs) {
  if (repairs.empty()) return;
  // The count and the first few; the full list is for a checking tool to print.
  const size_t shown = std::min<size_t>(repairs.size(), kRepairsShown);
  print(OdString().format(L"\n%ls: %d repair%ls made while reading", fileName.c_str(), static_cast<int>(repairs.size()),
                          repairs.size() == 1 ? L"" : L"s"));
  for (size_t i = 0; i < shown; ++i) print(L"\nRepaired: " + repairs[i]);
  if (repairs.size() > shown) {
    print(OdString().format(L"\n... and %d more (dxfcheck lists them all)", static_cast<int>(repairs.size() - shown)));
  }
}

OdResult Host::appContextNewDocument(const OdString&) {
  addDocument(OdDbDatabase::createNew(), OdString());
  return eOk;
}

bool Host::saveDocument(Document* doc, const OdString& fileName) {
  if (!doc) return false;
  Document* previous = m_current;
  m_current = doc;
  m_modules->broadcast(kRyrxSaveMsg);
  m_current = previous;
  // DXF is the only format written: DXF text under a .dwg name would make a
  // file that no DWG reader opens.
  if (fileName.getLength() >= 4 && fileName.right(4).iCompare(L".dwg") == 0) {
    print(L"\nCannot save " + fileName + L": DWG files are not written; save the drawing as DXF");
    noteProblem(L"cannot save " + fileName + L": DWG files are not written");
    return false;
  }
  try {
    odDxfWriteFile(doc->database(), fileName);
  } catch (const OdError& error) {
    print(L"\nCannot save " + fileName + L": " + error.description());
    noteProblem(L"cannot save " + fileName + L": " + error.description());
    return false;
  }
  doc->setFileName(fileName);
  doc->database()->setFilename(fileName);
  doc->setModified(false);
  return true;
}

// ---------------------------------------------------------------- services

OdDbDatabase* Host::workingDatabase() const { return m_current ? m_current->database() : nullptr; }

OdDbDatabasePtr Host::readFile(const OdString& fileName) { return odDxfReadFile(fileName); }

OdString Host::findFile(const OdString& fileName) {
  namespace fs = std::filesystem;
  if (fileName.isEmpty()) return OdString();
  const std::string name = fileName.toUtf8();
  if (fs::path(name).is_absolute()) return fs::exists(name) ? fileName : OdString();
  std::vector<std::string> folders;
  if (m_current && !m_current->fileName().isEmpty()) folders.push_back(fs::path(m_current->fileName().toUtf8()).parent_path().string());
  folders.push_back(fs::current_path().string());
  // The support path: the profile's "General"/"RYAD" list, separated by ";".
  OdString supportPath;
  if (CMqSystem::instance()->getProfileString(L"General", L"RYAD", supportPath)) {
    int start = 0;
    while (start <= supportPath.getLength()) {
      int end = supportPath.find(L';', start);
      OdString folder = supportPath.mid(start, end < 0 ? -1 : end - start);
      folder.trimLeft().trimRight();
      if (!folder.isEmpty()) folders.push_back(folder.toUtf8());
      if (end < 0) break;
      start = end + 1;
    }
  }
  folders.push_back(programFolder().toUtf8());
  for (const auto& folder : folders) {
    fs::path candidate = fs::path(folder) / name;
    std::error_code ec;
    if (fs::is_regular_file(candidate, ec)) return OdString(candidate.lexically_normal().string());
  }
  return OdString();
}

// ---------------------------------------------------------------- editor

void Host::addReactor(OdEditorReactor* reactor) {
  if (std::find(m_editorReactors.begin(), m_editorReactors.end(), reactor) == m_editorReactors.end()) {
    m_editorReactors.push_back(reactor);
  }
}

void Host::removeReactor(OdEditorReactor* reactor) { std::erase(m_editorReactors, reactor); }

OdString Host::activeCommand() const {
  return m_runningCommands.empty() ? OdString() : m_runningCommands.back()->globalName();
}

CommandStack& Host::commands() { return *m_commands; }
ModuleList& Host::modules() { return *m_modules; }

void Host::noteProblem(const OdString& reason) { m_problems.push_back(reason); }

OdString Host::programFolder() const {
  if (!m_programFolder.isEmpty()) return m_programFolder;
  std::error_code ec;
  auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  return OdString(exe.parent_path().string() + "/");
}

OdString Host::dataFolder() const {
  OdString folder = m_dataFolder;
  if (folder.isEmpty()) {
    if (const char* env = std::getenv("RYAD_DATA_DIR")) folder = OdString(env);
    else if (const char* home = std::getenv("HOME")) folder = OdString(std::string(home) + "/.config/ryad");
    else folder = L"/tmp/ryad";
  }
  if (folder.right(1) != L"/") folder += L"/";
  std::error_code ec;
  std::filesystem::create_directories(folder.toUtf8(), ec);
  return folder;
}

// ---------------------------------------------------------------- running commands

bool Host::runCommand(const OdString& typed) {
  OdString name = typed;
  name.trimLeft().trimRight();
  bool transparentCall = false;
  if (name.left(1) == L"'") {
    transparentCall = true;
    name = name.mid(1);
  }
  OdEdCommand* found = m_commands->lookupCmd(name.c_str());
  // An alias stands for a command only where no command has its name.
  if (!found) {
    const OdString aliased = aliases().commandFor(name);
    if (!aliased.isEmpty()) found = m_commands->lookupCmd(aliased.c_str());
  }
  if (!found) return false;
  OdEdCommandPtr command(found);  // kept alive if a module removes it while it runs
  const OdString global = command->globalName();
  const OdInt32 flags = command->flags();
  if (transparentCall && !m_runningCommands.empty() && !(flags & OdEdCommand::kTransparent)) {
    print(L"\n** " + global + L" cannot be used inside another command **");
    return true;
  }
  Document* doc = m_current;
  if (!doc) {
    print(L"\nNo drawing is open.");
    return true;
  }
  // Objects selected before the command go to commands that take them; the others clear them.
  if (!(flags & OdEdCommand::kUsePickSet) && m_runningCommands.empty()) {
    doc->selections().pickFirst().clear();
    doc->selections().gripSet().clear();
  }
  if (m_runningCommands.empty()) doc->selections().setPickFirstHandedOn(false);
  const bool undoable = !(flags & OdEdCommand::kTransparent) && !(flags & OdEdCommand::kNoUndoMarker) && m_runningCommands.empty();
  if (undoable) doc->database()->startUndoRecord();
  for (OdEditorReactor* reactor : std::vector<OdEditorReactor*>(m_editorReactors)) reactor->commandWillStart(global);
  m_runningCommands.push_back(command);
  bool cancelled = false, failed = false;
  try {
    command->execute();
  } catch (const CancelledError&) {
    cancelled = true;
  } catch (const OdError& error) {
    failed = true;
    print(L"\nError: " + error.description());
  } catch (const std::exception& error) {
    failed = true;
    print(L"\nError: " + OdString(error.what()));
  }
  m_runningCommands.pop_back();
  // A command that takes the pick-first set consumes it, unless it handed a
  // set on as the new pick-first set (a count that selects what it counted).
  if (m_runningCommands.empty() && (flags & OdEdCommand::kUsePickSet) && !(flags & OdEdCommand::kRedraw) && m_current == doc &&
      !doc->selections().pickFirstHandedOn()) {
    doc->selections().pickFirst().clear();
  }
  for (OdEditorReactor* reactor : std::vector<OdEditorReactor*>(m_editorReactors)) {
    if (cancelled) reactor->commandCancelled(global);
    else if (failed) reactor->commandFailed(global);
    else reactor->commandEnded(global);
  }
  return true;
}

int Host::runCommandLine() {
  while (!m_quit) {
    Reply reply = readReply(L"\nCommand: ");
    if (reply.kind == Reply::kEnd) break;
    if (reply.kind == Reply::kCancel) {
      // Esc at the Command prompt drops the selection.
      if (m_current) {
        m_current->selections().pickFirst().clear();
        m_current->selections().gripSet().clear();
      }
      continue;
    }
    OdString name = reply.text;
    name.trimLeft().trimRight();
    if (name.isEmpty()) {
      // Enter repeats the last command.
      if (m_lastCommand.isEmpty()) continue;
      name = m_lastCommand;
    }
    if (runCommand(name)) {
      OdString base = name;
      base.trimLeft(L"'_.");
      if (base.iCompare(L"U") != 0 && base.iCompare(L"UNDO") != 0) m_lastCommand = name;
      // Replies left by a command that ended belong to no one.
      if (!m_pending.empty()) {
        noteProblem(OdString().format(L"%d replies left unused by %ls", static_cast<int>(m_pending.size()), name.c_str()));
        m_pending.clear();
      }
      continue;
    }
    OdString variable = name;
    variable.trimLeft(L'\'');
    if (m_sysvars->find(variable)) {
      runSysVarCommand(variable);
      continue;
    }
    reportUnknownCommand(name);
    noteProblem(L"unknown command " + name);
  }
  return static_cast<int>(m_problems.size());
}

}  // namespace ryhost

namespace ryhost {

namespace {

OdString formatValue(const SysVarValue& value) {
  switch (value.type) {
    case RTSHORT:
    case RTLONG: return OdString().format(L"%lld", static_cast<long long>(value.i));
    case RTREAL: return OdString().format(L"%.6g", value.r);
    case RTSTR: return L"\"" + value.s + L"\"";
    case RTPOINT: return OdString().format(L"%.6g,%.6g", value.p[0], value.p[1]);
    default: return OdString().format(L"%.6g,%.6g,%.6g", value.p[0], value.p[1], value.p[2]);
  }
}

// Parses a typed value for a variable of the given type; false when it is no such value.
bool parseValue(const OdString& text, short type, SysVarValue& value) {
  value.type = type;
  std::string s = text.toUtf8();
  char* end = nullptr;
  switch (type) {
    case RTSHORT:
    case RTLONG: {
      long long v = std::strtoll(s.c_str(), &end, 10);
      if (end == s.c_str() || *end) return false;
      value.i = v;
      return true;
    }
    case RTREAL: {
      double v = std::strtod(s.c_str(), &end);
      if (end == s.c_str() || *end) return false;
      value.r = v;
      return true;
    }
    case RTSTR: value.s = text; return true;
    default: {
      double p[3] = {0, 0, 0};
      int n = std::sscanf(s.c_str(), "%lf,%lf,%lf", &p[0], &p[1], &p[2]);
      if (n < 2) return false;
      std::copy(p, p + 3, value.p);
      return true;
    }
  }
}

}  // namespace

void Host::runSysVarCommand(const OdString& name) {
  const SysVarDef* def = m_sysvars->find(name);
  SysVarValue current;
  m_sysvars->get(name, current);
  if (def->readOnly) {
    print(L"\n" + def->name + L" = " + formatValue(current) + L" (read only)");
    return;
  }
  bool undoStep = false;
  for (;;) {
    Reply reply = readReply(L"\nEnter new value for " + def->name + L" <" + formatValue(current) + L">: ");
    if (reply.kind != Reply::kText || reply.isEnter()) return;
    OdString text = reply.text;
    text.trimLeft().trimRight();
    SysVarValue value;
    OdString reason;
    if (!parseValue(text, def->type, value)) {
      print(L"\nRequires a value of the variable's type.");
      continue;
    }
    // A value set at the command prompt is an undo step of its own; inside a
    // command (typed transparently) it belongs to that command's step.
    if (!undoStep && m_runningCommands.empty() && m_current) m_current->database()->startUndoRecord();
    undoStep = true;
    if (m_sysvars->set(name, value, &reason) == RTNORM) return;
    print(L"\n" + reason);
  }
}

}  // namespace ryhost
