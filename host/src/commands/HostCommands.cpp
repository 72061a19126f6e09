// The host's own commands: drawings (OPEN, NEW, SAVE, SAVEAS, QSAVE, CLOSE,
// QUIT) and undo (UNDO, U).
#include <cctype>
#include <filesystem>

#include "commands/CommandRegistry.h"
#include "core/CommandStack.h"
#include "core/Host.h"

namespace ryhost {

namespace {

Host& host() { return Host::instance(); }

// A reply to a host command's prompt; Esc or the end of input leaves the command.
OdString ask(const OdString& prompt) {
  Reply reply = host().readReply(prompt);
  if (reply.kind != Reply::kText) throw CancelledError();
  OdString text = reply.text;
  text.trimLeft().trimRight();
  return text;
}

// A reply that must be one of the keywords (matched by their capital letters
// or in full, with or without a leading underscore); empty for Enter.
OdString askKeyword(const OdString& prompt, const std::vector<OdString>& keywords) {
  for (;;) {
    OdString text = ask(prompt);
    if (text.isEmpty()) return text;
    OdString bare = text;
    bare.trimLeft(L'_');
    for (const OdString& keyword : keywords) {
      OdString abbreviation;
      for (int i = 0; i < keyword.getLength(); ++i) {
        if (keyword[i] >= L'A' && keyword[i] <= L'Z') abbreviation += keyword[i];
      }
      if (bare.iCompare(keyword) == 0 || bare.iCompare(abbreviation) == 0 ||
          (bare.getLength() >= abbreviation.getLength() && keyword.left(bare.getLength()).iCompare(bare) == 0)) {
        return keyword;
      }
    }
    host().print(L"\nInvalid option keyword.");
  }
}

OdString withExtension(const OdString& path) {
  std::filesystem::path p(path.toUtf8());
  if (p.extension().empty()) p += ".dxf";
  return OdString(p.string());
}

void openCommand() {
  OdString path = ask(L"\nEnter name of drawing to open: ");
  if (path.isEmpty()) return;
  host().appContextOpenDocument(withExtension(path));
}

void newCommand() { host().appContextNewDocument(); }

// Drawings are written as DXF only: a drawing read from a DWG file is
// offered under the same name with the .dxf extension.
bool isDwgName(const OdString& path) {
  std::string ext = std::filesystem::path(path.toUtf8()).extension().string();
  for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return ext == ".dwg";
}

OdString asDxfName(const OdString& path) {
  std::filesystem::path p(path.toUtf8());
  p.replace_extension(".dxf");
  return OdString(p.string());
}

void saveAs(Document* doc, const OdString& prompt) {
  OdString current = doc->fileName().isEmpty() ? OdString(L"Drawing1.dxf") : doc->fileName();
  if (isDwgName(current)) {
    host().print(L"\nDrawings read from DWG files are saved as DXF.");
    current = asDxfName(current);
  }
  OdString path = ask(prompt + L" <" + current + L">: ");
  if (path.isEmpty()) path = current;
  path = withExtension(path);
  if (isDwgName(path)) {
    host().print(L"\nDWG files are not written; the drawing is saved as DXF.");
    path = asDxfName(path);
  }
  std::error_code ec;
  if (path != doc->fileName() && std::filesystem::exists(path.toUtf8(), ec)) {
    OdString answer = askKeyword(L"\nA drawing with this name already exists. Do you want to replace it? [Yes/No] <No>: ",
                                 {L"Yes", L"No"});
    if (answer != L"Yes") return;
  }
  if (host().saveDocument(doc, path)) host().print(L"\nSaved " + path);
}

void saveCommand() { saveAs(host().current(), L"\nSave drawing as"); }
void saveAsCommand() { saveAs(host().current(), L"\nSave drawing as"); }

void qsaveCommand() {
  Document* doc = host().current();
  if (doc->fileName().isEmpty() || isDwgName(doc->fileName())) {
    saveAs(doc, L"\nSave drawing as");
    return;
  }
  if (host().saveDocument(doc, doc->fileName())) host().print(L"\nSaved " + doc->fileName());
}

void closeCommand() {
  Document* doc = host().current();
  if (doc->isModified()) {
    OdString answer = askKeyword(L"\nSave changes to " + doc->docTitle() + L"? [Yes/No] <Yes>: ", {L"Yes", L"No"});
    if (answer != L"No") {
      if (doc->fileName().isEmpty() || isDwgName(doc->fileName())) saveAs(doc, L"\nSave drawing as");
      else if (!host().saveDocument(doc, doc->fileName())) return;
    }
  }
  host().closeDocument(doc);
}

void quitCommand() { host().requestQuit(); }

// ---------------------------------------------------------------- undo

void undoSteps(int count) {
  Document* doc = host().current();
  OdDbDatabase* db = doc->database();
  for (int i = 0; i < count; ++i) {
    if (!db->hasUndo()) {
      host().print(L"\nEverything has been undone");
      return;
    }
    db->undo();
  }
}

void uCommand() {
  Document* doc = host().current();
  OdDbDatabase* db = doc->database();
  if (!db->hasUndo()) {
    host().print(L"\nEverything has been undone");
    return;
  }
  // An undo group still open is closed by the undo that takes it back.
  while (db->isUndoBlockStarted()) db->endUndoGroup();
  db->undo();
  host().print(L"\nU");
}

void undoCommand() {
  OdDbDatabase* db = host().current()->database();
  for (;;) {
    OdString text = ask(L"\nEnter the number of operations to undo or [BEgin/End/Back] <1>: ");
    OdString bare = text;
    bare.trimLeft(L'_');
    if (bare.isEmpty()) {
      undoSteps(1);
      return;
    }
    if (bare.iCompare(L"BE") == 0 || bare.iCompare(L"BEGIN") == 0 || bare.iCompare(L"BEG") == 0) {
      db->beginUndoGroup();
      return;
    }
    if (bare.iCompare(L"E") == 0 || bare.iCompare(L"END") == 0) {
      if (db->isUndoBlockStarted()) db->endUndoGroup();
      return;
    }
    if (bare.iCompare(L"B") == 0 || bare.iCompare(L"BACK") == 0) {
      while (db->hasUndo()) db->undo();
      host().print(L"\nEverything has been undone");
      return;
    }
    wchar_t* end = nullptr;
    long count = std::wcstol(bare.c_str(), &end, 10);
    if (end && *end == 0 && count > 0) {
      undoSteps(static_cast<int>(count));
      return;
    }
    host().print(L"\nRequires a positive integer or an option keyword.");
  }
}

void registerFileCommands(CommandStack& stack) {
  addHostCommands(stack, {{L"OPEN", OdEdCommand::kNoUndoMarker, openCommand},
                          {L"NEW", OdEdCommand::kNoUndoMarker, newCommand},
                          {L"SAVE", OdEdCommand::kNoUndoMarker, saveCommand},
                          {L"SAVEAS", OdEdCommand::kNoUndoMarker, saveAsCommand},
                          {L"QSAVE", OdEdCommand::kNoUndoMarker, qsaveCommand},
                          {L"CLOSE", OdEdCommand::kNoUndoMarker, closeCommand},
                          {L"QUIT", OdEdCommand::kNoUndoMarker, quitCommand},
                          {L"EXIT", OdEdCommand::kNoUndoMarker, quitCommand},
                          {L"UNDO", OdEdCommand::kNoUndoMarker, undoCommand},
                          {L"U", OdEdCommand::kNoUndoMarker, uCommand}});
}

}  // namespace

RYAD_HOST_COMMANDS(registerFileCommands);

}  // namespace ryhost
