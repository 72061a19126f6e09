// The names a user may type at the Command prompt: commands (global and
// local names), aliases and system variables. Unknown names are answered
// with the closest of them; the terminal completes from them.
#include <algorithm>
#include <set>

#include "core/Aliases.h"
#include "core/CommandStack.h"
#include "core/Host.h"

namespace ryhost {

namespace {

// Edit distance without regard to case (insertions, deletions, changes and
// swaps of two neighbours each count one).
int editDistance(const OdString& a, const OdString& b) {
  const OdString x = a.upper(), y = b.upper();
  const int n = x.getLength(), m = y.getLength();
  std::vector<std::vector<int>> d(n + 1, std::vector<int>(m + 1));
  for (int i = 0; i <= n; ++i) d[i][0] = i;
  for (int j = 0; j <= m; ++j) d[0][j] = j;
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= m; ++j) {
      d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + (x[i - 1] == y[j - 1] ? 0 : 1)});
      if (i > 1 && j > 1 && x[i - 1] == y[j - 2] && x[i - 2] == y[j - 1]) d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
    }
  }
  return d[n][m];
}

std::set<OdString, OdStringLessNoCase> typableNames(Host& host) {
  std::set<OdString, OdStringLessNoCase> names;
  for (OdEdCommand* command : host.commands().commands()) {
    names.insert(command->globalName());
    names.insert(command->localName());
  }
  for (const auto& entry : host.aliases().all()) names.insert(entry.first);
  for (const OdString& name : host.sysvars().names()) names.insert(name);
  return names;
}

}  // namespace

CommandAliases& Host::aliases() {
  if (!m_aliases) {
    m_aliases = std::make_unique<CommandAliases>();
    m_aliases->load(programFolder() + L"ryad.pgp", dataFolder() + L"ryad.pgp");
  }
  return *m_aliases;
}

void Host::reloadAliases() {
  m_aliases.reset();
  aliases();
}

void Host::reportUnknownCommand(const OdString& typed) {
  OdString name = typed;
  name.trimLeft(L"'_.");
  // Close names: at most a third of the name's letters wrong (one at least).
  const int allowed = std::max(1, name.getLength() / 3);
  std::vector<std::pair<int, OdString>> close;
  for (const OdString& candidate : typableNames(*this)) {
    const int distance = editDistance(name, candidate);
    if (distance <= allowed) close.emplace_back(distance, candidate.upper());
  }
  std::stable_sort(close.begin(), close.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  OdString text = L"\nUnknown command \"" + typed.upper() + L"\".";
  for (size_t i = 0; i < close.size() && i < 3; ++i) text += (i == 0 ? L" Did you mean " : L", ") + close[i].second;
  if (!close.empty()) text += L"?";
  print(text);
}

std::vector<OdString> Host::commandNamesStartingWith(const OdString& start) {
  std::vector<OdString> result;
  const OdString prefix = start.upper();
  for (const OdString& name : typableNames(*this)) {
    if (name.getLength() >= prefix.getLength() && name.left(prefix.getLength()).upper() == prefix) result.push_back(name);
  }
  return result;
}

}  // namespace ryhost
