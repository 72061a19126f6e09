// A small run-time module for the host's tests: it registers two commands
// (and, in a group of their own, one that shows the standard dialogs)
// when it is initialised, removes them when it is unloaded, and records
// every message the host sends it. The tests read the record and call the
// module's own uses of the system calls through the C exports below.
#include <cstdint>
#include <string>

#include "OdEdCommandStack.h"
#include "RyDialogs.h"
#include "RyHostServices.h"
#include "RyWindows.h"
#include "ryed.h"
#include "ryut.h"

namespace {

const wchar_t* const kGroup = L"TESTMODULE";
// Commands that show the host's standard dialogs, in a group of their own.
const wchar_t* const kDialogGroup = L"TESTMODULEDIALOGS";
std::string g_messages;  // "1,3,4": the messages received, in order
void* volatile g_lastLoaded = nullptr;

void echoCommand() {
  ACHAR reply[256];
  const int status = ryedGetString(1, L"\nText to echo: ", reply, 256);
  if (status == RTNORM) ryutPrintf(L"\nEcho: %ls", reply);
  else ryutPrintf(L"\nEcho status %d", status);
}

void pickCountCommand() {
  ads_name set;
  OdInt32 length = 0;
  if (ryedSSGet(L"I", nullptr, nullptr, nullptr, set) == RTNORM) {
    ryedSSLength(set, &length);
    ryedSSFree(set);
  }
  ryutPrintf(L"\nPicked before: %d", static_cast<int>(length));
}

// A question, a file to save to and a colour: the host's standard dialogs.
void dialogsCommand() {
  if (RyUiMessageBox(L"Save the settings to a file?", L"Settings", MB_YESNO | MB_ICONQUESTION) != IDYES) {
    ryutPrintf(L"\nNothing saved.");
    return;
  }
  CRyUiNavDialog files(CNavFilterArray{CNavFilter(L"Text files", L"*.txt")});
  files.SetCreatingFile(true);
  files.SetDialogCaption(L"Save settings");
  files.SetConfirmReplace(true);
  files.SetPreviewPresent(false);
  files.SetInitialFileName(L"settings.txt");
  if (files.DoModal() != IDOK) {
    ryutPrintf(L"\nNo file chosen.");
    return;
  }
  OdCmColor color, layerColor;
  color.setColorIndex(1);
  layerColor.setColorIndex(7);
  if (ryedSetColorDialogTrueColor(color, true, layerColor) != RTNORM) return;
  ryutPrintf(L"\nThe settings would go to %ls (%ls), marked in colour %ls.", files.GetPathName().c_str(),
             files.GetFileName().c_str(), color.toString().c_str());
}

void registerCommands() {
  OdEdCommandStack* stack = odedRegCmds();
  HMODULE self = ryModuleOfAddress(reinterpret_cast<const void*>(&registerCommands));
  stack->addCommand(kDialogGroup, L"TMDIALOGS", L"TMDIALOGS", OdEdCommand::kModal, dialogsCommand, nullptr, -1,
                    self);
  stack->addCommand(kGroup, L"TMECHO", L"TMECHO", OdEdCommand::kModal, echoCommand, nullptr, -1, self);
  stack->addCommand(kGroup, L"TMPICKCOUNT", L"TMPICKCOUNT", OdEdCommand::kUsePickSet, pickCountCommand, nullptr, -1, self);
}

}  // namespace

extern "C" {

RYAD_API std::uintptr_t ryrxEntryPoint(unsigned int message, void*) {
  if (!g_messages.empty()) g_messages += ',';
  g_messages += std::to_string(message);
  if (message == kRyrxInitAppMsg) registerCommands();
  if (message == kRyrxUnloadAppMsg) {
    odedRegCmds()->removeGroup(kGroup);
    odedRegCmds()->removeGroup(kDialogGroup);
  }
  return 0;
}

RYAD_API int odrxGetAPIVersion(unsigned int* major, unsigned int* minor, unsigned int* build, unsigned int* revision) {
  *major = 3;
  *minor = 5;
  *build = 0;
  *revision = 0;
  return 0;
}

// The messages received so far, comma-separated.
RYAD_API const char* testmoduleMessages() { return g_messages.c_str(); }

// LoadLibraryW called from inside the module (a bare name is also looked for
// beside it). The handle is kept after the call so that the call returns here:
// a tail call would return to the test, which would then count as the caller.
RYAD_API void* testmoduleLoadLibrary(const wchar_t* name) {
  g_lastLoaded = LoadLibraryW(name);
  return g_lastLoaded;
}

// The module's own file, found as a module finds it.
RYAD_API unsigned testmoduleOwnFile(wchar_t* buffer, unsigned size) {
  return GetModuleFileNameW(ryModuleOfAddress(reinterpret_cast<const void*>(&testmoduleOwnFile)), buffer, size);
}

}  // extern "C"
