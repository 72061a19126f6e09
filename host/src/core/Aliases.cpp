#include "core/Aliases.h"

#include <fstream>
#include <sstream>

namespace ryhost {

namespace {

OdString trimmed(const std::string& text) {
  OdString result(text);
  result.trimLeft().trimRight();
  return result;
}

void addFile(CommandAliases& aliases, const OdString& path) {
  std::ifstream in(path.toUtf8(), std::ios::binary);
  if (!in) return;
  std::ostringstream text;
  text << in.rdbuf();
  aliases.addText(text.str());
}

}  // namespace

void CommandAliases::load(const OdString& shippedFile, const OdString& userFile) {
  m_aliases.clear();
  addFile(*this, shippedFile);
  addFile(*this, userFile);
}

void CommandAliases::addText(const std::string& text) {
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const size_t comma = line.find(',');
    if (line.empty() || line[0] == ';' || comma == std::string::npos) continue;
    OdString alias = trimmed(line.substr(0, comma));
    OdString command = trimmed(line.substr(comma + 1));
    command.trimLeft(L'*');
    command.trimLeft();
    if (alias.isEmpty() || command.isEmpty() || alias.find(L' ') >= 0 || command.find(L' ') >= 0) continue;
    m_aliases[alias] = command;
  }
}

OdString CommandAliases::commandFor(const OdString& alias) const {
  auto it = m_aliases.find(alias);
  return it == m_aliases.end() ? OdString() : it->second;
}

}  // namespace ryhost
