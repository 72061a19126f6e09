#include "frame/ResultLists.h"

#include "ryed.h"

namespace kestrix {

const resbuf* findGroup(const resbuf* list, int code) {
  for (; list; list = list->rbnext) {
    if (list->restype == code) return list;
  }
  return nullptr;
}

int shortVariable(const wchar_t* name, int otherwise) {
  resbuf value{};
  if (ryedGetVar(name, &value) != RTNORM || value.restype != RTSHORT) return otherwise;
  return value.resval.rint;
}

}  // namespace kestrix
