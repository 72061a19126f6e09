// Small readers of what the host hands back through the SDK: a group of a
// result-buffer list, a system variable of type short, and the owner of a list.
#pragma once

#include "rytypes.h"
#include "ryut.h"

namespace kestrix {

// The first group of the list with the code; null when there is none.
const resbuf* findGroup(const resbuf* list, int code);

// The value of a short system variable; otherwise when it cannot be read or is of another type.
int shortVariable(const wchar_t* name, int otherwise);

// Owner of a result-buffer list: the list is released on every way out.
using ResultList = RyResultList;

}  // namespace kestrix
