// tcount: numbers the selected texts in sequence. The texts are taken in
// selection order, or sorted by the X coordinate of their insertion point
// (smallest first, left to right) or by Y (largest first, top to bottom);
// texts with equal coordinates keep their selection order. The number
// overwrites the text, goes in front of it or behind it, or replaces a
// piece of it; the last answers are remembered in the host settings file.
#include <cmath>
#include <map>

#include "frame/Guards.h"
#include "frame/HostSettings.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"
#include "text/TextAdjust.h"

using namespace kestrix::text;

namespace {

enum class Placement { kOverwrite, kPrefix, kSuffix, kFindReplace };

// The texts in numbering order.
std::vector<OdDbObjectId> ordered(const std::vector<OdDbObjectId>& ids, const OdString& order) {
  if (order != L"X" && order != L"Y") return ids;
  const int axis = order == L"X" ? 0 : 1;
  // A multimap keeps texts with equal keys in the order they were put in.
  std::multimap<double, OdDbObjectId> sorted;
  for (const OdDbObjectId& id : ids) {
    ads_name entity;
    if (rydbGetAdsName(entity, id) != RTNORM) continue;
    const kestrix::ResultList list(rydbEntGet(entity));
    double value = 0;
    for (const resbuf* rb = list.get(); rb; rb = rb->rbnext) {
      if (rb->restype == 10) value = rb->resval.rpoint[axis];
    }
    sorted.emplace(axis == 1 ? -value : value, id);
  }
  std::vector<OdDbObjectId> result;
  result.reserve(sorted.size());
  for (const auto& entry : sorted) result.push_back(entry.second);
  return result;
}

// A remembered number as it is shown: no trailing zeros.
OdString shown(double value) {
  OdString text;
  text.format(L"%.6f", value);
  while (text.right(1) == L"0") text = text.left(text.getLength() - 1);
  if (text.right(1) == L".") text = text.left(text.getLength() - 1);
  return text == L"-0" ? OdString(L"0") : text;
}

// Reads "start,increment"; an empty answer takes the remembered pair.
bool askStartAndIncrement(double& start, double& increment) {
  const OdString rememberedStart = kestrix::readHostSetting(L"TCOUNT_START", L"1");
  const OdString rememberedStep = kestrix::readHostSetting(L"TCOUNT_INCREMENT", L"1");
  OdString prompt = ResourceString(2408, L"\nStart number and increment ").text();
  prompt += OdString().format(L"<%ls,%ls>:", rememberedStart.c_str(), rememberedStep.c_str());
  wchar_t reply[512] = {};
  const int status = ryedGetString(0, prompt.c_str(), reply, 512);
  if (status != RTNORM) return false;
  OdString answer(reply);
  answer.trimLeft().trimRight();
  if (answer.isEmpty()) answer = rememberedStart + L"," + rememberedStep;
  const int comma = answer.find(L',');
  if (comma < 0 || rydbDisToF(answer.left(comma).c_str(), -1, &start) != RTNORM ||
      rydbDisToF(answer.mid(comma + 1).c_str(), -1, &increment) != RTNORM) {
    ryutPrintf(L"无效初始化!\n");
    return false;
  }
  kestrix::writeHostSetting(L"TCOUNT_START", shown(start));
  kestrix::writeHostSetting(L"TCOUNT_INCREMENT", shown(increment));
  return true;
}

Placement placementOf(const OdString& keyword) {
  if (keyword == L"Prefix") return Placement::kPrefix;
  if (keyword == L"Suffix") return Placement::kSuffix;
  if (keyword == L"Find&replace") return Placement::kFindReplace;
  return Placement::kOverwrite;
}

// Every occurrence of found replaced by number; false when there is none.
bool replaceAll(OdString& text, const OdString& found, const OdString& number) {
  if (found.isEmpty() || text.find(found) < 0) return false;
  OdString result;
  int from = 0;
  for (int at = text.find(found, from); at >= 0; at = text.find(found, from)) {
    result += text.mid(from, at - from) + number;
    from = at + found.getLength();
  }
  text = result + text.mid(from);
  return true;
}

// The new string of one text, or false when the text keeps its string.
bool numbered(const OdDbObjectId& id, Placement placement, const OdString& found, double value, OdString& text) {
  if (!readTextString(id, text)) return false;
  OdString number;
  switch (placement) {
    case Placement::kOverwrite:
      text = number.format(L"%.0f", value);
      return true;
    case Placement::kPrefix:
      text = number.format(L"%.0f ", value) + text;
      return true;
    case Placement::kSuffix:
      // A multiline text takes its number on a line of its own.
      text += number.format(entityType(id) == L"MTEXT" ? L"\\P%.0f" : L" %.0f", value);
      return true;
    case Placement::kFindReplace:
      return replaceAll(text, found, number.format(L"%.0f", value));
  }
  return false;
}

}  // namespace

void tcountCommand() {
  kestrix::CmdEchoGuard guard;
  if (ResourceString(2407).text() == L"error") {
    ryutPrintf(L"error\n");
    return;
  }
  SelectionSet set;
  if (!selectTexts(TextKinds::kTexts, set)) return;
  std::vector<OdDbObjectId> ids = set.ids();
  if (!keepParallelToUcs(ids)) return;

  const OdString order = askRememberedKeyword(ResourceString(2407), L"X Y Select-order _X Y Select-order",
                                              L"TCOUNT_SORT", L"Select-order");
  if (order.isEmpty()) return;
  double start = 1, increment = 1;
  {
    // Numbers are formatted with the zeros of DIMZIN's own choosing put aside.
    kestrix::SysVarSaver dimzin(L"DIMZIN");
    dimzin.setShort(8);
    if (!askStartAndIncrement(start, increment)) return;
  }
  const OdString where = askRememberedKeyword(
      ResourceString(2410, L"\nPlace the numbers [Overwrite/Prefix/Suffix/Find&replace] <%ls>: "),
      L"Overwrite Prefix Suffix Find&replace _Overwrite Prefix Suffix Find&replace", L"TCOUNT_PLACE", L"Overwrite");
  if (where.isEmpty()) return;
  const Placement placement = placementOf(where);
  OdString found;
  if (placement == Placement::kFindReplace) {
    wchar_t reply[512] = {};
    if (ryedGetString(1, ResourceString(2411, L"\nText to replace by the number: "), reply, 512) != RTNORM) return;
    found = reply;
    if (found.isEmpty()) return;
  }

  int modified = 0;
  {
    UndoGroup undo;
    double value = start;
    for (const OdDbObjectId& id : ordered(ids, order)) {
      OdString text;
      if (!numbered(id, placement, found, value, text) || !writeTextString(id, text)) continue;
      ++modified;
      value += increment;
    }
  }
  ryutPrintf(L"\n%d objects modified.", modified);
}
