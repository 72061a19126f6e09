// The host's kernel: documents, the command line (input and transcript),
// the command stack, system variables and modules. The SDK functions are
// built on this; nothing outside the host sees it.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "DbDatabase.h"
#include "Ge/GeMatrix3d.h"
#include "OdEdCommandStack.h"
#include "RyApDocManager.h"
#include "RyHostServices.h"
#include "rytypes.h"

namespace ryhost {

class SpatialIndex;
class SelectionSets;
class CommandAliases;

// ---------------------------------------------------------------- input and output

// Where replies come from: a script, the terminal, or a test's list.
class InputSource {
 public:
  virtual ~InputSource() = default;
  // The next reply line without its line end; false at the end of input.
  // prompt is the prompt's last line, for sources that show it themselves.
  virtual bool readLine(OdString& line, const OdString& prompt) = 0;
  // True for a terminal's line editor, which shows the prompt and the reply.
  virtual bool showsPrompt() const { return false; }
};

// Replies given in advance (tests, scripts read whole).
class ListInput : public InputSource {
 public:
  explicit ListInput(std::vector<OdString> lines = {}) : m_lines(lines.begin(), lines.end()) {}
  void add(const OdString& line) { m_lines.push_back(line); }
  bool readLine(OdString& line, const OdString&) override;
  size_t remaining() const { return m_lines.size(); }

 private:
  std::deque<OdString> m_lines;
};

// Where the command line's text goes.
class Transcript {
 public:
  virtual ~Transcript() = default;
  virtual void write(const OdString& text) = 0;
};

class StringTranscript : public Transcript {
 public:
  void write(const OdString& text) override { m_text += text; }
  const OdString& text() const { return m_text; }
  void clear() { m_text.empty(); }

 private:
  OdString m_text;
};

// One reply to a prompt.
struct Reply {
  enum Kind { kText, kCancel, kEnd };
  Kind kind = kEnd;
  OdString text;
  bool isEnter() const { return kind == kText && text.isEmpty(); }
};

// Thrown to leave a command when the user pressed Esc and the command does
// not handle RTCAN itself (host commands).
struct CancelledError {};

// ---------------------------------------------------------------- documents

class Document : public RyApDocument {
 public:
  Document(OdDbDatabasePtr db, const OdString& fileName);
  ~Document() override;

  OdDbDatabase* database() const override { return m_db.get(); }
  OdString fileName() const override { return m_fileName; }
  OdString docTitle() const override;
  bool isModified() const override { return m_modified; }
  void setFileName(const OdString& name) { m_fileName = name; }
  void setModified(bool on) { m_modified = on; }

  // The spatial index of the drawing's entities (kept up to date by reactors).
  SpatialIndex& spatialIndex();
  SelectionSets& selections();

  // The current user coordinate system (to world) and the stack of previous ones.
  const OdGeMatrix3d& ucs() const { return m_ucs; }
  void setUcs(const OdGeMatrix3d& ucs, bool remember = true);
  bool popUcs();
  // The last entity made or picked, for "L" and rydbEntLast.
  OdDbObjectId lastEntity() const;

 private:
  OdDbDatabasePtr m_db;
  OdString m_fileName;
  bool m_modified = false;
  OdGeMatrix3d m_ucs;
  std::vector<OdGeMatrix3d> m_ucsStack;
  std::unique_ptr<SpatialIndex> m_index;
  std::unique_ptr<SelectionSets> m_selections;
  std::unique_ptr<OdDbDatabaseReactor> m_changeTracker;
};

// ---------------------------------------------------------------- system variables

struct SysVarValue {
  short type = RTSHORT;  // RTSHORT, RTLONG, RTREAL, RTSTR, RT3DPOINT, RTPOINT
  OdInt64 i = 0;
  double r = 0;
  double p[3] = {0, 0, 0};
  OdString s;
};

struct SysVarDef {
  OdString name;
  short type;
  SysVarValue defaultValue;
  bool readOnly = false;
  OdString headerName;  // "$CLAYER": the value lives in the drawing's header
  int headerCode = 0;
  // Integer ranges (inclusive); min > max means no range.
  OdInt64 minimum = 1, maximum = 0;
  // Reals are always finite; some must also be above zero, or not below it.
  enum class RealRange { kAny, kNotNegative, kPositive } realRange = RealRange::kAny;
  OdString description;
  // Values computed on reading (DWGNAME, DATE…).
  std::function<SysVarValue()> compute;
};

class SysVars {
 public:
  SysVars();
  const SysVarDef* find(const OdString& name) const;
  int get(const OdString& name, SysVarValue& value) const;
  // RTNORM, or RTERROR for an unknown, read-only or out-of-range value.
  int set(const OdString& name, const SysVarValue& value, OdString* reason = nullptr);
  // Typed shortcuts for the host's own use.
  OdInt64 getInt(const OdString& name, OdInt64 otherwise = 0) const;
  double getReal(const OdString& name, double otherwise = 0) const;
  void setInt(const OdString& name, OdInt64 value);
  void add(SysVarDef def);
  // Every variable's name, in order.
  std::vector<OdString> names() const;

 private:
  std::map<OdString, SysVarDef, OdStringLessNoCase> m_defs;
  std::map<OdString, SysVarValue, OdStringLessNoCase> m_session;
};

// ---------------------------------------------------------------- the host

class CommandStack;
class ModuleList;

class Host : public RyApDocManager, public OdDbHostAppServices, public OdEditor {
 public:
  static Host& instance();
  // Puts the host back to its first state (no documents, no modules, host
  // commands only): each test starts from here.
  void reset();

  // ---- input and output
  void setInput(InputSource* input) { m_input = input; }
  void setTranscript(Transcript* transcript) { m_transcript = transcript; }
  InputSource* input() const { return m_input; }
  void print(const OdString& text);
  // While quiet, nothing reaches the transcript (commands run by programs with CMDECHO 0).
  void pushQuiet() { ++m_quiet; }
  void popQuiet() { --m_quiet; }
  // Shows the prompt, reads a reply (from pending command arguments first,
  // then the input source) and echoes it.
  Reply readReply(const OdString& prompt);
  // Replies given by ryedCommand, used before the input source.
  void pushReplies(const std::vector<OdString>& replies);
  size_t pendingReplies() const { return m_pending.size(); }
  void clearPendingReplies() { m_pending.clear(); }

  // ---- documents (RyApDocManager)
  RyApDocument* curDocument() const override { return m_current; }
  Document* current() const { return m_current; }
  int documentCount() const override { return static_cast<int>(m_documents.size()); }
  RyApDocument* document(int index) const override;
  RyApDocument* document(const OdDbDatabase* db) const override;
  void addReactor(RyApDocManagerReactor* reactor) override;
  void removeReactor(RyApDocManagerReactor* reactor) override;
  OdResult appContextOpenDocument(const OdString& fileName) override;
  // What the reader repaired in a drawing being opened: the count, and the
  // first kRepairsShown lines.
  static constexpr size_t kRepairsShown = 5;
  void printRepairs(const OdString& fileName, const std::vector<OdString>& repairs);
  OdResult appContextNewDocument(const OdString& templateName = OdString()) override;
  OdResult setCurDocument(RyApDocument* doc) override;
  // Adds a document for a database already read; it becomes current.
  Document* addDocument(OdDbDatabasePtr db, const OdString& fileName);
  // Closes a document (the current one when null).
  void closeDocument(Document* doc = nullptr);
  // Saves a document's drawing; false with the reason printed when it fails.
  bool saveDocument(Document* doc, const OdString& fileName);

  // ---- host application services
  OdDbDatabase* workingDatabase() const override;
  OdDbDatabasePtr readFile(const OdString& fileName) override;
  OdDbDatabasePtr createDatabase() override { return OdDbDatabase::createNew(); }
  OdString findFile(const OdString& fileName) override;

  // ---- editor (OdEditor)
  void addReactor(OdEditorReactor* reactor) override;
  void removeReactor(OdEditorReactor* reactor) override;
  OdString activeCommand() const override;
  // The innermost command that runs (its resource handle finds its dialogs), or null at the prompt.
  OdEdCommand* runningCommand() const { return m_runningCommands.empty() ? nullptr : m_runningCommands.back().get(); }

  // ---- commands
  CommandStack& commands();
  // Runs one command by name, as typed at the prompt ("_LINE", "'ZOOM"…).
  // Returns false when there is no such command.
  bool runCommand(const OdString& name);
  // Reads and runs commands until the input ends or QUIT; returns the
  // number of problems (unknown commands, failed saves).
  int runCommandLine();
  // Shows a system variable and asks for its new value (a variable's name typed at the prompt).
  void runSysVarCommand(const OdString& name);
  // Says that no command has the name typed, with up to three close names
  // (commands, aliases, variables) so that a typing error leads somewhere.
  void reportUnknownCommand(const OdString& name);
  // Command, alias and variable names that start with the text typed, sorted.
  std::vector<OdString> commandNamesStartingWith(const OdString& start);
  // The command aliases (ryad.pgp beside the program, then the user's own).
  CommandAliases& aliases();
  // Reads the alias files again.
  void reloadAliases();
  void requestQuit() { m_quit = true; }
  void noteProblem(const OdString& reason);
  const std::vector<OdString>& problems() const { return m_problems; }
  // How many commands run, one inside the other (0 at the prompt).
  int commandDepth() const { return static_cast<int>(m_runningCommands.size()); }

  // ---- variables and settings
  SysVars& sysvars() { return *m_sysvars; }
  // The folder of the host's program, modules and support files (trailing slash).
  OdString programFolder() const;
  void setProgramFolder(const OdString& folder) { m_programFolder = folder; }
  // The folder of the user's settings (APPDATADIR), made on demand.
  OdString dataFolder() const;
  void setDataFolder(const OdString& folder) { m_dataFolder = folder; }

  // ---- modules
  ModuleList& modules();

  // ---- menus
  std::set<OdString, OdStringLessNoCase>& menuGroups() { return m_menuGroups; }

 private:
  Host();
  void fireDocumentEvent(void (RyApDocManagerReactor::*event)(RyApDocument*), RyApDocument* doc);

  InputSource* m_input = nullptr;
  Transcript* m_transcript = nullptr;
  bool m_lineOpen = false;  // the last output was a reply: the next text starts a new line
  int m_quiet = 0;
  std::deque<OdString> m_pending;
  std::vector<std::unique_ptr<Document>> m_documents;
  Document* m_current = nullptr;
  std::vector<RyApDocManagerReactor*> m_docReactors;
  std::vector<OdEditorReactor*> m_editorReactors;
  std::unique_ptr<CommandStack> m_commands;
  std::unique_ptr<SysVars> m_sysvars;
  std::unique_ptr<ModuleList> m_modules;
  std::unique_ptr<CommandAliases> m_aliases;
  // The commands that run, the innermost last (held, so that a module may remove one while it runs).
  std::vector<OdEdCommandPtr> m_runningCommands;
  std::vector<OdString> m_problems;
  OdString m_lastCommand;
  OdString m_programFolder, m_dataFolder;
  std::set<OdString, OdStringLessNoCase> m_menuGroups;
  bool m_quit = false;
};

}  // namespace ryhost
