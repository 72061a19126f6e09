// A growable array with the method names the drawing classes use, built on
// std::vector so that standard algorithms and range-for work on it.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <vector>

#include "OdaCommon.h"

template <class T>
class OdArray : public std::vector<T> {
 public:
  using Base = std::vector<T>;
  using size_type = unsigned int;
  using Base::Base;
  OdArray() = default;
  OdArray(std::initializer_list<T> items) : Base(items) {}

  size_type length() const { return static_cast<size_type>(Base::size()); }
  size_type logicalLength() const { return length(); }
  bool isEmpty() const { return Base::empty(); }

  OdArray& append(const T& value) { Base::push_back(value); return *this; }
  OdArray& append(const OdArray& other) {
    Base::insert(Base::end(), other.begin(), other.end());
    return *this;
  }
  OdArray& insertAt(size_type index, const T& value) {
    Base::insert(Base::begin() + index, value);
    return *this;
  }
  OdArray& removeAt(size_type index) {
    Base::erase(Base::begin() + index);
    return *this;
  }
  OdArray& removeSubArray(size_type first, size_type last) {
    Base::erase(Base::begin() + first, Base::begin() + last + 1);
    return *this;
  }
  OdArray& removeFirst() { return removeAt(0); }
  OdArray& removeLast() { Base::pop_back(); return *this; }
  bool remove(const T& value) {
    auto it = std::find(Base::begin(), Base::end(), value);
    if (it == Base::end()) return false;
    Base::erase(it);
    return true;
  }
  OdArray& setLogicalLength(size_type n) { Base::resize(n); return *this; }
  OdArray& setPhysicalLength(size_type n) { Base::reserve(n); return *this; }
  OdArray& setAll(const T& value) {
    std::fill(Base::begin(), Base::end(), value);
    return *this;
  }
  OdArray& setAt(size_type index, const T& value) { (*this)[index] = value; return *this; }
  T& getAt(size_type index) { return (*this)[index]; }
  const T& getAt(size_type index) const { return (*this)[index]; }
  T& first() { return Base::front(); }
  const T& first() const { return Base::front(); }
  T& last() { return Base::back(); }
  const T& last() const { return Base::back(); }

  bool find(const T& value, size_type& index, size_type start = 0) const {
    for (size_type i = start; i < length(); ++i) {
      if ((*this)[i] == value) { index = i; return true; }
    }
    return false;
  }
  bool contains(const T& value, size_type start = 0) const {
    size_type index;
    return find(value, index, start);
  }
  T* asArrayPtr() { return Base::data(); }
  const T* asArrayPtr() const { return Base::data(); }
  const T* getPtr() const { return Base::data(); }
  OdArray& reverse() { std::reverse(Base::begin(), Base::end()); return *this; }
};

using OdIntArray = OdArray<int>;
using OdInt32Array = OdArray<OdInt32>;
using OdUInt8Array = OdArray<OdUInt8>;
using OdDoubleArray = OdArray<double>;
using OdGeDoubleArray = OdArray<double>;
using OdBinaryData = OdArray<OdUInt8>;
