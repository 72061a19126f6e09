// Basic types of the host SDK: result codes, result-buffer types and lists,
// entity names and points, in the classic forms of CAD automation
// interfaces.
#pragma once

#include <cstdint>

#include "OdaCommon.h"

#ifndef RYAD_API
#define RYAD_API __attribute__((visibility("default")))
#endif

using ACHAR = wchar_t;
using ads_real = double;
using ads_point = ads_real[3];
using ads_name = std::int64_t[2];
using ads_matrix = ads_real[4][4];

// Result codes of the editor and database functions.
enum : int {
  RTNORM = 5100,  // normal completion
  RTNONE = 5000,  // no result (empty input)
  RTERROR = -5001,
  RTCAN = -5002,  // cancelled (Esc)
  RTREJ = -5003,  // request rejected
  RTFAIL = -5004,
  RTKWORD = -5005,  // a keyword was entered
  RTINPUTTRUNCATED = -5008,
};

// Result-buffer types.
enum : short {
  RTREAL = 5001,
  RTPOINT = 5002,  // 2-d point
  RTSHORT = 5003,
  RTANG = 5004,
  RTSTR = 5005,
  RTENAME = 5006,
  RTPICKS = 5007,  // selection set
  RTORINT = 5008,
  RT3DPOINT = 5009,
  RTLONG = 5010,
  RTVOID = 5014,
  RTLB = 5016,
  RTLE = 5017,
  RTDOTE = 5018,
  RTNIL = 5019,
  RTDXF0 = 5020,  // group 0 (entity type) in a selection filter
  RTT = 5021,
  RTRESBUF = 5023,
  RTMODELESS = 5027,
  RTLONG_PTR = 5030,
  RTINT64 = 5031,
};

struct ads_binary {
  short clen;
  char* buf;
};

union ads_u_val {
  ads_real rreal;
  ads_real rpoint[3];
  short rint;
  ACHAR* rstring;
  std::int64_t rlname[2];
  std::int32_t rlong;
  std::int64_t mnInt64;
  ads_binary rbinary;
  unsigned char ihandle[8];
};

struct resbuf {
  resbuf* rbnext;
  short restype;  // a result-buffer type above, or a DXF group code
  ads_u_val resval;
};

// initget bits.
enum : int {
  RSG_NONULL = 1,
  RSG_NOZERO = 2,
  RSG_NONEG = 4,
  RSG_NOLIM = 8,
  RSG_GETZ = 16,
  RSG_DASH = 32,
  RSG_2D = 64,
  RSG_OTHER = 128,
  RSG_DDISTFIRST = 256,
  RSG_TRACKUCS = 512,
  RSG_NOORTHOZ = 1024,
  RSG_NOOSNAP = 2048,
  RSG_NODDIST = 4096,
};

// Coordinate systems of ryedTrans: 0 world, 1 the current user system,
// 2 display, 3 paper space display; or an entity name (its own system).
enum : int { RTWCS = 0, RTUCS = 1, RTDCS = 2, RTPSDCS = 3 };

using ryHandle = void*;
