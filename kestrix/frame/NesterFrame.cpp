#include "frame/NesterFrame.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

// The upper outline of what stands on a sheet: segments left to right.
struct Segment {
  double x, y, width;
};

struct Sheet {
  std::vector<Segment> skyline;
};

// Where a w x h rectangle would go on a sheet (lowest, then leftmost), or false.
bool findPlace(const Sheet& sheet, double w, double h, double sheetWidth, double sheetHeight, double& bestX,
               double& bestY) {
  bool found = false;
  for (size_t i = 0; i < sheet.skyline.size(); ++i) {
    const double x = sheet.skyline[i].x;
    if (x + w > sheetWidth + 1e-9) break;
    double y = 0, covered = 0;
    for (size_t j = i; j < sheet.skyline.size() && covered < w - 1e-12; ++j) {
      y = std::max(y, sheet.skyline[j].y);
      covered += sheet.skyline[j].width;
    }
    if (covered < w - 1e-9 || y + h > sheetHeight + 1e-9) continue;
    if (!found || y < bestY - 1e-12 || (y < bestY + 1e-12 && x < bestX)) {
      bestX = x;
      bestY = y;
      found = true;
    }
  }
  return found;
}

void occupy(Sheet& sheet, double x, double w, double top) {
  std::vector<Segment> next;
  for (const Segment& s : sheet.skyline) {
    const double end = s.x + s.width;
    if (end <= x + 1e-12 || s.x >= x + w - 1e-12) {
      next.push_back(s);
      continue;
    }
    if (s.x < x) next.push_back({s.x, s.y, x - s.x});
    if (end > x + w) next.push_back({x + w, s.y, end - (x + w)});
  }
  next.push_back({x, top, w});
  std::sort(next.begin(), next.end(), [](const Segment& a, const Segment& b) { return a.x < b.x; });
  // Neighbours at the same height join.
  sheet.skyline.clear();
  for (const Segment& s : next) {
    if (!sheet.skyline.empty() && sheet.skyline.back().y == s.y &&
        sheet.skyline.back().x + sheet.skyline.back().width >= s.x - 1e-12) {
      sheet.skyline.back().width = s.x + s.width - sheet.skyline.back().x;
    } else {
      sheet.skyline.push_back(s);
    }
  }
}

}  // namespace

int nestFrames(NestPlacement* placements, OdInt32 count, const double* parameters, NestSummary* summary) {
  if (!placements || !parameters || count < 0) return -1;
  const double width = parameters[0];
  const double height = parameters[1];
  const double gap = parameters[2];
  const bool mayTurn = parameters[3] != 0;
  if (!(width > 0) || !(height > 0) || gap < 0) return -1;
  for (OdInt32 i = 0; i < count; ++i) {
    if (!(parameters[4 + 2 * i] > 0) || !(parameters[5 + 2 * i] > 0)) return -1;
  }
  // The largest frames first; the sheet's usable area keeps the gap to its edges.
  std::vector<OdInt32> order(static_cast<size_t>(count));
  std::iota(order.begin(), order.end(), 0);
  auto area = [&](OdInt32 i) { return parameters[4 + 2 * i] * parameters[5 + 2 * i]; };
  std::stable_sort(order.begin(), order.end(), [&](OdInt32 a, OdInt32 b) { return area(a) > area(b); });
  const double usableWidth = width - gap, usableHeight = height - gap;
  std::vector<Sheet> sheets;
  int missing = 0;
  double placedArea = 0;
  for (OdInt32 index : order) {
    const double w = parameters[4 + 2 * index] + gap, h = parameters[5 + 2 * index] + gap;
    NestPlacement& result = placements[index];
    result = {-1, 0, 0, 0};
    auto tryOn = [&](size_t s) {
      double x = 0, y = 0, xr = 0, yr = 0;
      bool upright = findPlace(sheets[s], w, h, usableWidth, usableHeight, x, y);
      bool turned = mayTurn && findPlace(sheets[s], h, w, usableWidth, usableHeight, xr, yr);
      if (!upright && !turned) return false;
      const bool useTurned = turned && (!upright || yr < y - 1e-12 || (yr < y + 1e-12 && xr < x));
      if (useTurned) {
        occupy(sheets[s], xr, h, yr + w);
        result = {static_cast<OdInt32>(s), xr + gap, yr + gap, 1};
      } else {
        occupy(sheets[s], x, w, y + h);
        result = {static_cast<OdInt32>(s), x + gap, y + gap, 0};
      }
      return true;
    };
    bool placed = false;
    for (size_t s = 0; s < sheets.size() && !placed; ++s) placed = tryOn(s);
    if (!placed) {
      sheets.push_back(Sheet{{{0, 0, usableWidth}}});
      placed = tryOn(sheets.size() - 1);
      if (!placed) sheets.pop_back();
    }
    if (placed) placedArea += (w - gap) * (h - gap);
    else ++missing;
  }
  if (summary) {
    summary->sheets = static_cast<OdInt32>(sheets.size());
    double top = 0;
    if (!sheets.empty()) {
      for (const Segment& s : sheets.back().skyline) top = std::max(top, s.y);
    }
    summary->usedHeight = sheets.empty() ? 0 : top + gap;
    const double sheetArea = height >= kNestEndlessStrip ? width * summary->usedHeight : width * height;
    const double used = sheets.empty() ? 0 : (sheets.size() - 1) * width * height + sheetArea;
    summary->utilisation = used > 0 ? placedArea / used : 0;
  }
  return missing;
}
