// QSAVE and CLOSE: the current drawing saved under its own name, and closed.
// Batch tools drive them to save and let go of the drawings they open one
// after another.
#include "commands/CommandRegistry.h"
#include "commands/CommandSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"

namespace ryhost {

namespace {

using namespace cmdsupport;

void quickSaveCommand() {
  Host& host = Host::instance();
  Document* doc = host.current();
  if (!doc) return;
  OdString name = doc->fileName();
  if (name.isEmpty()) {
    name = askText(L"\nEnter file name: ");
    if (name.isEmpty()) return;
  }
  if (host.saveDocument(doc, name)) host.print(L"\nSaved " + name + L".");
}

// A drawing with changes asks first; Enter saves them.
void closeCommand() {
  Host& host = Host::instance();
  Document* doc = host.current();
  if (!doc) return;
  if (doc->isModified() && askYesNo(L"\nSave changes to " + doc->docTitle() + L"? [Yes/No] <Yes>: ", true)) {
    if (doc->fileName().isEmpty() || !host.saveDocument(doc, doc->fileName())) return;
  }
  host.closeDocument(doc);
}

}  // namespace

void registerFileCommands(CommandStack& stack) {
  stack.addCommand(L"RYAD", L"QSAVE", L"QSAVE", OdEdCommand::kModal, quickSaveCommand);
  stack.addCommand(L"RYAD", L"CLOSE", L"CLOSE", OdEdCommand::kModal, closeCommand);
}

RYAD_HOST_COMMANDS(registerFileCommands);

}  // namespace ryhost
