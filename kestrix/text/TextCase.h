// The letter-case rules of tcase over strings that may hold multiline-text
// format codes: only letters change, codes and braces are kept as written.
#pragma once

#include "OdString.h"

namespace kestrix::text {

enum class CaseRule { kSentence = 1, kLower = 2, kUpper = 3, kTitle = 4, kToggle = 5 };

OdString changeCase(const OdString& text, CaseRule rule);

}  // namespace kestrix::text
