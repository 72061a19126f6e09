// ERASE: erases the selected objects. The selection takes every mode of the
// classic "Select objects:" prompt (picks, Last, Previous, Window, Crossing,
// ALL, handles...) and reports what each step found; objects on locked layers
// are left alone.
#include "commands/CommandRegistry.h"
#include "commands/CommandSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"

namespace ryhost {

namespace {

void eraseCommand() {
  for (const OdDbObjectId& id : cmdsupport::selectObjects()) {
    OdDbObjectPtr object = id.openObject(OdDb::kForWrite);
    if (object.get()) object->erase();
  }
}

}  // namespace

void registerEraseCommands(CommandStack& stack) {
  stack.addCommand(L"RYAD", L"ERASE", L"ERASE", OdEdCommand::kUsePickSet, eraseCommand);
}

RYAD_HOST_COMMANDS(registerEraseCommands);

}  // namespace ryhost
