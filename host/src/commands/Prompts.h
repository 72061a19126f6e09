// The prompts of the host commands. Each reads one reply through the SDK's
// get-functions (so keywords, transparent commands and the entry forms of
// points behave as at every other prompt) and tells what the reply was.
// Esc, or the end of input, throws CancelledError, which ends the command
// with nothing changed.
#pragma once

#include "Ge/GePoint3d.h"
#include "OdString.h"

namespace ryhost::prompt {

// A reply to one of the prompts below. Esc (or the end of input) throws
// CancelledError, which ends the command with nothing changed.
struct Answer {
  enum Kind { kValue, kKeyword, kEnter, kOther };
  Kind kind = kEnter;
  // kKeyword: the global keyword; kOther: the text typed (with RSG_OTHER).
  OdString text;
  bool isValue() const { return kind == kValue; }
  bool isEnter() const { return kind == kEnter; }
  bool is(const wchar_t* keyword) const { return kind == kKeyword && text == keyword; }
};

// Points are in the current user coordinate system; base (optional) is
// the point the reply may be measured from.
Answer askPoint(const OdString& prompt, OdGePoint3d& point, const wchar_t* keywords = nullptr,
                const OdGePoint3d* base = nullptr, int flags = 0);
Answer askDistance(const OdString& prompt, double& value, const wchar_t* keywords = nullptr,
                   const OdGePoint3d* base = nullptr, int flags = 0);
// An angle counted from ANGBASE (a rotation amount).
Answer askAngle(const OdString& prompt, double& value, const wchar_t* keywords = nullptr,
                const OdGePoint3d* base = nullptr, int flags = 0);
// A direction: counter-clockwise from the user x axis.
Answer askDirection(const OdString& prompt, double& value, const wchar_t* keywords = nullptr,
                    const OdGePoint3d* base = nullptr, int flags = 0);
Answer askReal(const OdString& prompt, double& value, const wchar_t* keywords = nullptr, int flags = 0);
Answer askKeyword(const OdString& prompt, const wchar_t* keywords, int flags = 0);
// Free text; without allowSpaces a space ends it.
OdString askText(const OdString& prompt, bool allowSpaces = true);
// "[Yes/No] <default>": true for Yes.
bool askYesNo(const OdString& question, bool defaultYes);

void say(const OdString& text);

}  // namespace ryhost::prompt
