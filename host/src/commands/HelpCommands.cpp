// HELP (and ?): which commands exist, grouped as they were registered, and
// what one command asks and keeps; REINIT reads the alias files again.
//
// The texts come from help files beside the program ("*.help": the host's
// own ryad.help and one per module). A file holds one entry per command:
//
//   # NAME
//   One line: what the command does.
//   Further lines: its prompts, keywords, settings and where it keeps them.
//
// Lines starting with ";" are comments.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include "commands/CommandRegistry.h"
#include "commands/Prompts.h"
#include "core/Aliases.h"
#include "core/CommandStack.h"
#include "core/Host.h"

namespace ryhost {

namespace {

Host& host() { return Host::instance(); }

struct HelpEntry {
  OdString summary;
  std::vector<OdString> details;
};
using HelpCatalogue = std::map<OdString, HelpEntry, OdStringLessNoCase>;

void readHelpFile(const std::filesystem::path& path, HelpCatalogue& catalogue) {
  std::ifstream in(path, std::ios::binary);
  std::string line;
  HelpEntry* entry = nullptr;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty() && line[0] == ';') continue;
    if (line.rfind("# ", 0) == 0) {
      OdString name(line.substr(2));
      name.trimLeft().trimRight();
      entry = &catalogue[name];
      *entry = HelpEntry();
      continue;
    }
    if (!entry) continue;
    if (entry->summary.isEmpty()) {
      if (!line.empty()) entry->summary = OdString(line);
    } else {
      entry->details.push_back(OdString(line));
    }
  }
  // Blank lines at an entry's end say nothing.
  for (auto& [name, help] : catalogue) {
    while (!help.details.empty() && help.details.back().isEmpty()) help.details.pop_back();
  }
}

HelpCatalogue readHelpFiles() {
  HelpCatalogue catalogue;
  std::error_code ec;
  const std::filesystem::path folder(host().programFolder().toUtf8());
  std::vector<std::filesystem::path> files;
  for (const auto& item : std::filesystem::directory_iterator(folder, ec)) {
    if (item.path().extension() == ".help") files.push_back(item.path());
  }
  std::sort(files.begin(), files.end());
  for (const auto& file : files) readHelpFile(file, catalogue);
  return catalogue;
}

OdString summaryOf(const HelpCatalogue& catalogue, const OdEdCommand* command) {
  auto it = catalogue.find(command->globalName());
  return it == catalogue.end() ? OdString(L"(no description)") : it->second.summary;
}

OdString padded(const OdString& text, int width) {
  std::wstring result(text.c_str());
  result.resize(std::max<size_t>(result.size(), static_cast<size_t>(width)), L' ');
  return OdString((result + L" ").c_str());
}

void listAllCommands(const HelpCatalogue& catalogue) {
  // Groups in the order their first command was registered.
  std::vector<OdString> groups;
  std::map<OdString, std::vector<OdEdCommand*>, OdStringLessNoCase> byGroup;
  for (OdEdCommand* command : host().commands().commands()) {
    if (byGroup.find(command->groupName()) == byGroup.end()) groups.push_back(command->groupName());
    byGroup[command->groupName()].push_back(command);
  }
  prompt::say(L"\nCommands by group (HELP, then a command's name, tells more of one):");
  for (const OdString& group : groups) {
    auto& commands = byGroup[group];
    std::sort(commands.begin(), commands.end(),
              [](const OdEdCommand* a, const OdEdCommand* b) { return a->localName().iCompare(b->localName()) < 0; });
    prompt::say(L"\n\n" + group + (group == L"RYAD" ? OdString(L" (host commands)") : OdString()));
    for (const OdEdCommand* command : commands) {
      prompt::say(L"\n  " + padded(command->localName(), 16) + summaryOf(catalogue, command));
    }
  }
  const auto& aliases = host().aliases().all();
  if (!aliases.empty()) {
    OdString line = L"\n\nAliases:";
    for (const auto& [alias, command] : aliases) line += L" " + alias + L"=" + command;
    prompt::say(line);
  }
}

void showOneCommand(const HelpCatalogue& catalogue, const OdString& name) {
  OdEdCommand* command = host().commands().lookupCmd(name.c_str());
  OdString aliasOf;
  if (!command) {
    aliasOf = host().aliases().commandFor(name);
    if (!aliasOf.isEmpty()) command = host().commands().lookupCmd(aliasOf.c_str());
  }
  if (!command) {
    host().reportUnknownCommand(name);
    return;
  }
  OdString heading = L"\n" + command->localName();
  if (command->localName().iCompare(command->globalName()) != 0) heading += L" (" + command->globalName() + L")";
  if (!aliasOf.isEmpty()) heading += L", typed as the alias " + name.upper();
  heading += L", group " + command->groupName() + L": " + summaryOf(catalogue, command);
  prompt::say(heading);
  const OdInt32 flags = command->flags();
  if (flags & OdEdCommand::kTransparent) prompt::say(L"\n  Works inside another command when typed with a leading '.");
  if (flags & OdEdCommand::kUsePickSet) prompt::say(L"\n  Takes the objects selected before it starts.");
  auto it = catalogue.find(command->globalName());
  if (it == catalogue.end() || it->second.details.empty()) return;
  for (const OdString& line : it->second.details) prompt::say(L"\n  " + line);
}

void helpCommand() {
  OdString name = prompt::askText(L"\nCommand name (Enter lists them all): ", false);
  name.trimLeft().trimRight();
  const HelpCatalogue catalogue = readHelpFiles();
  if (name.isEmpty() || name == L"*") listAllCommands(catalogue);
  else showOneCommand(catalogue, name);
}

void reinitCommand() {
  host().reloadAliases();
  prompt::say(OdString().format(L"\nCommand aliases read again: %d.", static_cast<int>(host().aliases().all().size())));
}

void registerHelpCommands(CommandStack& stack) {
  const OdInt32 inside = OdEdCommand::kTransparent | OdEdCommand::kNoUndoMarker;
  addHostCommands(stack, {{L"HELP", inside, helpCommand},
                          {L"?", inside, helpCommand},
                          {L"REINIT", OdEdCommand::kNoUndoMarker, reinitCommand}});
}

RYAD_HOST_COMMANDS(registerHelpCommands);

}  // namespace

}  // namespace ryhost
