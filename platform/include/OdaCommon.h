// Basic integer types and small helpers shared by every platform header.
#pragma once

#include <cstddef>
#include <cstdint>

using OdInt8 = std::int8_t;
using OdUInt8 = std::uint8_t;
using OdInt16 = std::int16_t;
using OdUInt16 = std::uint16_t;
using OdInt32 = std::int32_t;
using OdUInt32 = std::uint32_t;
using OdInt64 = std::int64_t;
using OdUInt64 = std::uint64_t;
using OdChar = wchar_t;

#define ODA_ASSERT(x) ((void)0)

// Versions of the drawing format, ordered, so that "newer than" is a comparison.
namespace OdDb {
enum DwgVersion : int {
  vAC09 = 9,   // R12
  vAC12 = 12,  // R13
  vAC14 = 14,  // R14
  vAC15 = 15,  // R2000
  vAC18 = 18,  // R2004
  vAC21 = 21,  // R2007
  vAC24 = 24,  // R2010
  vAC27 = 27,  // R2013
  vAC32 = 32,  // R2018
  kDHL_CURRENT = vAC32,
};

enum OpenMode : int {
  kNotOpen = -1,
  kForRead = 0,
  kForWrite = 1,
  kForNotify = 2,
};

enum LineWeight : int {
  kLnWt000 = 0, kLnWt005 = 5, kLnWt009 = 9, kLnWt013 = 13, kLnWt015 = 15,
  kLnWt018 = 18, kLnWt020 = 20, kLnWt025 = 25, kLnWt030 = 30, kLnWt035 = 35,
  kLnWt040 = 40, kLnWt050 = 50, kLnWt053 = 53, kLnWt060 = 60, kLnWt070 = 70,
  kLnWt080 = 80, kLnWt090 = 90, kLnWt100 = 100, kLnWt106 = 106, kLnWt120 = 120,
  kLnWt140 = 140, kLnWt158 = 158, kLnWt200 = 200, kLnWt211 = 211,
  kLnWtByLayer = -1, kLnWtByBlock = -2, kLnWtByLwDefault = -3,
};

enum Visibility : int { kVisible = 0, kInvisible = 1 };

enum PlotStyleNameType : int {
  kPlotStyleNameByLayer = 0,
  kPlotStyleNameByBlock = 1,
  kPlotStyleNameIsDictDefault = 2,
  kPlotStyleNameById = 3,
};
}  // namespace OdDb
