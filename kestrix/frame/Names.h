// Names that a user or a drawing supplies (layers, blocks, styles) handed to
// something that reads wildcards: a selection filter, a host command's name
// prompt, ryutWcMatch. Such a name must match itself only.
#pragma once

#include "OdString.h"

namespace kestrix {

// The name with a reverse quote before every character that the wildcard
// matcher reads as special (# @ . * ? ~ [ ] - , and the reverse quote), so
// that as a pattern it matches exactly that name.
OdString wildcardEscaped(const OdString& name);

}  // namespace kestrix
