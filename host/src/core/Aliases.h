// Command aliases: short names typed at the Command prompt for commands
// ("L" for LINE). Read from alias files, lines "ALIAS,*COMMAND" with ";"
// comments: the one shipped beside the program first, then the user's own
// in the data folder, whose lines add to and override the shipped ones.
#pragma once

#include <map>

#include "OdString.h"

namespace ryhost {

class CommandAliases {
 public:
  // Reads the files again (REINIT); a file that is missing adds nothing.
  void load(const OdString& shippedFile, const OdString& userFile);
  // Adds the aliases of one file's text; later lines override earlier ones.
  void addText(const std::string& text);
  // The command an alias stands for; empty when the name is no alias.
  OdString commandFor(const OdString& alias) const;
  const std::map<OdString, OdString, OdStringLessNoCase>& all() const { return m_aliases; }

 private:
  std::map<OdString, OdString, OdStringLessNoCase> m_aliases;
};

}  // namespace ryhost
