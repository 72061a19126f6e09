// tjust: changes the justification of the selected texts, multiline texts,
// attribute definitions and the attributes of block references without
// moving them. The host's JUSTIFYTEXT does the change; for the time of its
// run an entry of the process dictionary tells it who drives it, so that it
// takes this command's "Start" keyword (the left baseline justification).
#include "RxDictionary.h"
#include "frame/Guards.h"
#include "frame/ResourceString.h"
#include "frame/commands.h"
#include "ryed.h"
#include "ryut.h"
#include "text/TextAdjust.h"

using namespace kestrix::text;

namespace {

const wchar_t* const kDriverEntry = L"RYAD_CMDS_JUSTIFYTEXT_TYPE_DICT";
const wchar_t* const kDriverKey = L"RYMD_JUSTIFYTEXT_TYPE";

// The dictionary entry that names this command as JUSTIFYTEXT's driver,
// put in when made and taken out on every way out.
class JustifyDriverEntry {
 public:
  JustifyDriverEntry() {
    OdRxDictionaryPtr entry = OdRxDictionary::createObject();
    entry->putAt(kDriverKey, OdRxStringValue::createObject(L"TJUST").get());
    odrxSysRegistry()->putAt(kDriverEntry, entry.get());
  }
  ~JustifyDriverEntry() { odrxSysRegistry()->remove(kDriverEntry); }
  JustifyDriverEntry(const JustifyDriverEntry&) = delete;
  JustifyDriverEntry& operator=(const JustifyDriverEntry&) = delete;
};

// The justification keyword, or empty when the answer was empty or cancelled.
OdString askJustification() {
  ryedInitGet(0,
              L"Start Center Middle Right TL TC TR ML MC MR BL BC BR "
              L"_Start Center Middle Right TL TC TR ML MC MR BL BC BR");
  wchar_t reply[512] = {};
  const OdString prompt =
      ResourceString(2401, L"\nEnter a justification option [Start/Center/Middle/Right/TL/TC/TR/ML/MC/MR/BL/BC/BR]: ");
  if (ryedGetKword(prompt.c_str(), reply, 512) != RTNORM) return OdString();
  return OdString(reply);
}

}  // namespace

void tjustCommand() {
  kestrix::CmdEchoGuard guard;
  SelectionSet set;
  if (!selectTexts(TextKinds::kTextsAndReferences, set)) return;
  const OdString keyword = askJustification();
  if (keyword.isEmpty()) return;
  const OdInt32 count = set.length();
  {
    UndoGroup undo;
    JustifyDriverEntry driver;
    ryedCommand(RTSTR, L"_.JUSTIFYTEXT", RTPICKS, set.name(), RTSTR, L"", RTSTR, keyword.c_str(), RTNONE);
  }
  ryutPrintf(L"\n %d%ls", static_cast<int>(count), ResourceString(2402, L" objects justified.").c_str());
}
