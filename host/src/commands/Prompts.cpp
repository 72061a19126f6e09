#include "commands/Prompts.h"

#include <vector>

#include "core/Host.h"
#include "ryed.h"
#include "sdk/Input.h"

namespace ryhost::prompt {

namespace {

// The answer for an SDK return code; Esc (or anything that leaves the prompt
// without a reply) ends the command.
Answer answerOf(int code, const wchar_t* keywords, int flags) {
  switch (code) {
    case RTNORM:
      return {Answer::kValue, OdString()};
    case RTNONE:
      return {Answer::kEnter, OdString()};
    case RTKWORD: {
      ACHAR typed[1024];
      ryedGetInput(typed, 1024);
      const OdString text(typed);
      if (flags & RSG_OTHER) {
        // Other input comes back as typed; a keyword comes back as its global name.
        OdString keyword;
        if (!KeywordList(OdString(keywords ? keywords : L"")).match(text, keyword) || keyword != text)
          return {Answer::kOther, text};
      }
      return {Answer::kKeyword, text};
    }
    default:
      throw CancelledError();
  }
}

void initGet(const wchar_t* keywords, int flags) { ryedInitGet(flags, keywords); }

void store(const OdGePoint3d& point, ads_point out) {
  out[0] = point.x;
  out[1] = point.y;
  out[2] = point.z;
}

// A real value from one of the SDK's distance, angle or direction prompts.
Answer askReal(int (*prompt)(const ads_point, const ACHAR*, ads_real*), const OdString& text, double& value,
               const wchar_t* keywords, const OdGePoint3d* base, int flags) {
  ads_point from;
  if (base) store(*base, from);
  double result = 0;
  initGet(keywords, flags);
  const Answer answer = answerOf(prompt(base ? from : nullptr, text.c_str(), &result), keywords, flags);
  if (answer.isValue()) value = result;
  return answer;
}

}  // namespace

Answer askPoint(const OdString& prompt, OdGePoint3d& point, const wchar_t* keywords, const OdGePoint3d* base,
                int flags) {
  ads_point from, result;
  if (base) store(*base, from);
  initGet(keywords, flags);
  const Answer answer =
      answerOf(ryedGetPoint(base ? from : nullptr, prompt.c_str(), result), keywords, flags);
  if (answer.isValue()) point = OdGePoint3d(result[0], result[1], result[2]);
  return answer;
}

Answer askDistance(const OdString& prompt, double& value, const wchar_t* keywords, const OdGePoint3d* base,
                   int flags) {
  return askReal(ryedGetDist, prompt, value, keywords, base, flags);
}

Answer askAngle(const OdString& prompt, double& value, const wchar_t* keywords, const OdGePoint3d* base,
                int flags) {
  return askReal(ryedGetAngle, prompt, value, keywords, base, flags);
}

Answer askDirection(const OdString& prompt, double& value, const wchar_t* keywords, const OdGePoint3d* base,
                    int flags) {
  return askReal(ryedGetOrient, prompt, value, keywords, base, flags);
}

Answer askReal(const OdString& prompt, double& value, const wchar_t* keywords, int flags) {
  double result = 0;
  initGet(keywords, flags);
  const Answer answer = answerOf(ryedGetReal(prompt.c_str(), &result), keywords, flags);
  if (answer.isValue()) value = result;
  return answer;
}

Answer askKeyword(const OdString& prompt, const wchar_t* keywords, int flags) {
  ACHAR result[512];
  initGet(keywords, flags);
  const int code = ryedGetKword(prompt.c_str(), result, 512);
  if (code == RTCAN || code == RTERROR) throw CancelledError();
  if (code == RTNONE) return {Answer::kEnter, OdString()};
  return {Answer::kKeyword, OdString(result)};
}

OdString askText(const OdString& prompt, bool allowSpaces) {
  std::vector<ACHAR> result(4096);
  const int code = ryedGetString(allowSpaces ? 1 : 0, prompt.c_str(), result.data(), result.size());
  if (code != RTNORM && code != RTINPUTTRUNCATED) throw CancelledError();
  return OdString(result.data());
}

bool askYesNo(const OdString& question, bool defaultYes) {
  const Answer answer =
      askKeyword(question + (defaultYes ? L" [Yes/No] <Yes>: " : L" [Yes/No] <No>: "), L"Yes No");
  return answer.isEnter() ? defaultYes : answer.text == L"Yes";
}

void say(const OdString& text) { Host::instance().print(text); }

}  // namespace ryhost::prompt
