// Small helpers of the tests that call the SDK directly: result lists that
// free themselves, ERRNO, and setting system variables.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "ryed.h"
#include "ryut.h"

// A result list that frees itself.
struct List {
  resbuf* head;
  explicit List(resbuf* list) : head(list) {}
  ~List() { ryutRelRb(head); }
  List(const List&) = delete;
  List& operator=(const List&) = delete;
  // The n-th group of that code, or null.
  resbuf* group(int code, int nth = 0) const {
    for (resbuf* rb = head; rb; rb = rb->rbnext) {
      if (rb->restype == code && nth-- == 0) return rb;
    }
    return nullptr;
  }
  std::wstring text(int code, int nth = 0) const {
    resbuf* rb = group(code, nth);
    return rb && rb->resval.rstring ? rb->resval.rstring : L"<none>";
  }
  int count(int code) const {
    int n = 0;
    for (resbuf* rb = head; rb; rb = rb->rbnext) n += rb->restype == code;
    return n;
  }
};

inline int errnoValue() {
  resbuf value{};
  ryedGetVar(L"ERRNO", &value);
  return value.resval.rint;
}

inline void setShort(const wchar_t* name, short value) {
  resbuf rb{};
  rb.restype = RTSHORT;
  rb.resval.rint = value;
  ASSERT_EQ(ryedSetVar(name, &rb), RTNORM);
}

inline void setReal(const wchar_t* name, double value) {
  resbuf rb{};
  rb.restype = RTREAL;
  rb.resval.rreal = value;
  ASSERT_EQ(ryedSetVar(name, &rb), RTNORM);
}
