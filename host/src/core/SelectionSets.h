// Selection sets of a document: the sets that ryedSSGet and ryedSSAdd make,
// named by a number; the pick-first and grip sets; the previous selection.
#pragma once

#include <map>
#include <vector>

#include "DbObjectId.h"
#include "rytypes.h"

namespace ryhost {

class SelectionSets {
 public:
  // A selection set's name: its number and a tag telling it from an entity name.
  static constexpr std::int64_t kSetTag = 0x5e7e5e7e;

  std::int64_t create();
  std::vector<OdDbObjectId>* find(std::int64_t number);
  bool free(std::int64_t number);
  size_t count() const { return m_sets.size(); }

  std::vector<OdDbObjectId>& pickFirst() { return m_pickFirst; }
  std::vector<OdDbObjectId>& gripSet() { return m_grips; }
  std::vector<OdDbObjectId>& previous() { return m_previous; }
  // A command that hands a set on as the pick-first set (ryedSSSetFirst)
  // leaves it selected when it ends; the host clears only sets it consumed.
  void setPickFirstHandedOn(bool on) { m_pickFirstHandedOn = on; }
  bool pickFirstHandedOn() const { return m_pickFirstHandedOn; }

  void toName(std::int64_t number, ads_name name) const {
    name[0] = number;
    name[1] = kSetTag;
  }
  static bool isSetName(const ads_name name) { return name[1] == kSetTag; }

 private:
  std::map<std::int64_t, std::vector<OdDbObjectId>> m_sets;
  std::int64_t m_next = 1;
  std::vector<OdDbObjectId> m_pickFirst, m_grips, m_previous;
  bool m_pickFirstHandedOn = false;
};

}  // namespace ryhost
