#include "core/SelectionSets.h"

namespace ryhost {

std::int64_t SelectionSets::create() {
  std::int64_t number = m_next++;
  m_sets[number];
  return number;
}

std::vector<OdDbObjectId>* SelectionSets::find(std::int64_t number) {
  auto it = m_sets.find(number);
  return it == m_sets.end() ? nullptr : &it->second;
}

bool SelectionSets::free(std::int64_t number) { return m_sets.erase(number) != 0; }

}  // namespace ryhost
