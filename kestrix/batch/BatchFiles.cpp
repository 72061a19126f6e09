#include "batch/BatchFiles.h"

#include <algorithm>
#include <cstdio>
#include <fstream>

#include "RyApDocManager.h"
#include "frame/HostSettings.h"
#include "ryed.h"
#include "ryut.h"

namespace fs = std::filesystem;

namespace kestrix::batch {

bool askText(const OdString& prompt, OdString& reply) {
  ACHAR buffer[1024] = {};
  const int status = ryedGetString(1, prompt.c_str(), buffer, 1024);
  if (status != RTNORM && status != RTNONE) return false;
  reply = status == RTNONE ? OdString() : OdString(buffer);
  reply.trimLeft().trimRight();
  // A path pasted in quotes.
  if (reply.getLength() >= 2 && reply[0] == L'"' && reply[reply.getLength() - 1] == L'"')
    reply = reply.mid(1, reply.getLength() - 2);
  return true;
}

bool askKeyword(const OdString& prompt, const wchar_t* keywords, OdString& reply) {
  ACHAR buffer[512] = {};
  ryedInitGet(0, keywords);
  const int status = ryedGetKword(prompt.c_str(), buffer, 512);
  if (status != RTNORM && status != RTNONE) return false;
  reply = status == RTNONE ? OdString() : OdString(buffer);
  return true;
}

void say(const OdString& text) { ryutPrintf(L"%ls", text.c_str()); }

OdString pathText(const fs::path& path) { return OdString(path.string()); }

std::vector<fs::path> filesMatching(const fs::path& folder, const OdString& patterns) {
  std::vector<OdString> wanted;
  OdString rest = OdString(patterns).makeUpper();
  while (!rest.isEmpty()) {
    const int cut = rest.find(L';');
    OdString one = cut < 0 ? rest : rest.left(cut);
    rest = cut < 0 ? OdString() : rest.mid(cut + 1);
    one.trimLeft().trimRight();
    if (!one.isEmpty()) wanted.push_back(one);
  }
  std::vector<fs::path> files;
  std::error_code ec;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, ec)) {
    if (!entry.is_regular_file(ec)) continue;
    const OdString name = OdString(entry.path().filename().string()).makeUpper();
    if (std::any_of(wanted.begin(), wanted.end(),
                    [&](const OdString& p) { return ryutWcMatch(name.c_str(), p.c_str()) == RTNORM; }))
      files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<fs::path> filesListed(const fs::path& listFile) {
  std::vector<fs::path> files;
  std::ifstream in(listFile);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const size_t first = line.find_first_not_of(" \t");
    if (first == std::string::npos || line[first] == ';') continue;
    line = line.substr(first, line.find_last_not_of(" \t") - first + 1);
    fs::path path(line);
    files.push_back(path.is_absolute() ? path : listFile.parent_path() / path);
  }
  return files;
}

bool chooseDrawings(const OdString& defaultPattern, std::vector<fs::path>& files, fs::path& folder) {
  OdString answer;
  for (;;) {
    if (!askText(L"\nEnter folder of drawings or list file: ", answer)) return false;
    if (answer.isEmpty()) continue;
    std::error_code ec;
    const fs::path chosen(answer.toUtf8());
    if (fs::is_directory(chosen, ec)) {
      folder = chosen;
      OdString pattern;
      if (!askText(L"\nEnter file name pattern <" + defaultPattern + L">: ", pattern)) return false;
      files = filesMatching(chosen, pattern.isEmpty() ? defaultPattern : pattern);
      break;
    }
    if (fs::is_regular_file(chosen, ec)) {
      folder = chosen.parent_path();
      files = filesListed(chosen);
      break;
    }
    say(L"\nNo such folder or file: " + answer);
  }
  if (files.empty()) say(L"\nNo drawing files found.");
  return !files.empty();
}

// ---------------------------------------------------------------- plot settings

// The forms PLOT accepts, checked here so that a value kept in the profile
// never leaves PLOT asking again (its next reply would then come from the user).
bool isPaper(const OdString& text) {
  for (const wchar_t* name : {L"A4", L"A3", L"A2", L"A1", L"A0", L"Letter", L"Legal", L"Tabloid"})
    if (text.iCompare(name) == 0) return true;
  double w = 0, h = 0;
  char x = 0, rest = 0;
  return std::sscanf(OdString(text).makeLower().toUtf8().c_str(), "%lf %c %lf %c", &w, &x, &h, &rest) == 3 && x == 'x' &&
         w > 0 && h > 0 && w <= 100000 && h <= 100000;
}

bool isScale(const OdString& text) {
  if (text.iCompare(L"Fit") == 0) return true;
  double a = 0, b = 0;
  char sep = 0, rest = 0;
  const std::string s = text.toUtf8();
  if (std::sscanf(s.c_str(), "%lf %c %lf %c", &a, &sep, &b, &rest) == 3) return (sep == '=' || sep == ':') && a > 0 && b > 0;
  return std::sscanf(s.c_str(), "%lf %c", &a, &rest) == 1 && a > 0;
}

bool isOffset(const OdString& text) {
  double x = 0, y = 0;
  char rest = 0;
  return text.iCompare(L"Center") == 0 || std::sscanf(text.toUtf8().c_str(), "%lf , %lf %c", &x, &y, &rest) == 2;
}

bool isResolution(const OdString& text) {
  double dpi = 0;
  char rest = 0;
  return std::sscanf(text.toUtf8().c_str(), "%lf %c", &dpi, &rest) == 1 && dpi >= 10 && dpi <= 2400;
}


PlotSettings PlotSettings::load() {
  PlotSettings s;
  s.device = readHostSetting(L"PlotDevice", s.device);
  s.paper = readHostSetting(L"PlotPaper", s.paper);
  s.orientation = readHostSetting(L"PlotOrientation", s.orientation);
  s.scale = readHostSetting(L"PlotScale", s.scale);
  s.offset = readHostSetting(L"PlotOffset", s.offset);
  s.color = readHostSetting(L"PlotColor", L"1") != L"0";
  s.dpi = readHostSetting(L"PlotDpi", s.dpi);
  s.background = readHostSetting(L"PlotBackground", s.background);
  // A value edited by hand into something PLOT would refuse falls back to the default.
  const PlotSettings defaults;
  if (s.device != L"Pdf" && s.device != L"Svg" && s.device != L"Png") s.device = defaults.device;
  if (!isPaper(s.paper)) s.paper = defaults.paper;
  if (s.orientation != L"Portrait" && s.orientation != L"Landscape") s.orientation = defaults.orientation;
  if (!isScale(s.scale)) s.scale = defaults.scale;
  if (!isOffset(s.offset)) s.offset = defaults.offset;
  if (!isResolution(s.dpi)) s.dpi = defaults.dpi;
  if (s.background != L"White" && s.background != L"Black") s.background = defaults.background;
  return s;
}

void PlotSettings::save() const {
  writeHostSetting(L"PlotDevice", device);
  writeHostSetting(L"PlotPaper", paper);
  writeHostSetting(L"PlotOrientation", orientation);
  writeHostSetting(L"PlotScale", scale);
  writeHostSetting(L"PlotOffset", offset);
  writeHostSetting(L"PlotColor", color ? L"1" : L"0");
  writeHostSetting(L"PlotDpi", dpi);
  writeHostSetting(L"PlotBackground", background);
}

OdString PlotSettings::extension() const {
  return device == L"Svg" ? L".svg" : device == L"Png" ? L".png" : L".pdf";
}

OdString PlotSettings::summary() const {
  OdString text = OdString(device).makeUpper() + L", " + paper + L" " + orientation + L", " + scale + L", " + offset +
                  (color ? L", colour" : L", monochrome");
  if (device == L"Png") text += L", " + dpi + L" dpi, " + background + L" background";
  return text;
}

bool plotCurrent(const PlotSettings& s, const fs::path& out) {
  std::error_code ec;
  const auto before = fs::exists(out, ec) ? fs::last_write_time(out, ec) : fs::file_time_type::min();
  const OdString file = pathText(out);
  const wchar_t* colour = s.color ? L"Yes" : L"No";
  int status;
  if (s.device == L"Png") {
    status = ryedCommand(RTSTR, L"_.PLOT", RTSTR, s.device.c_str(), RTSTR, L"Extents", RTSTR, s.paper.c_str(), RTSTR,
                         s.orientation.c_str(), RTSTR, s.scale.c_str(), RTSTR, s.offset.c_str(), RTSTR, colour, RTSTR,
                         s.dpi.c_str(), RTSTR, s.background.c_str(), RTSTR, file.c_str(), RTNONE);
  } else {
    status = ryedCommand(RTSTR, L"_.PLOT", RTSTR, s.device.c_str(), RTSTR, L"Extents", RTSTR, s.paper.c_str(), RTSTR,
                         s.orientation.c_str(), RTSTR, s.scale.c_str(), RTSTR, s.offset.c_str(), RTSTR, colour, RTSTR,
                         file.c_str(), RTNONE);
  }
  return status == RTNORM && fs::exists(out, ec) && fs::last_write_time(out, ec) != before;
}

// ---------------------------------------------------------------- drawings

OpenedDrawing::OpenedDrawing(const fs::path& file) {
  RyApDocManager* manager = ryDocManagerPtr();
  m_previous = manager->curDocument();
  m_open = manager->appContextOpenDocument(pathText(file)) == eOk;
}

OpenedDrawing::~OpenedDrawing() {
  if (!m_open) return;
  // Closed without saving: whatever is kept was saved on purpose before
  // (CLOSE asks only about a drawing with changes).
  RyApDocManager* manager = ryDocManagerPtr();
  RyApDocument* doc = manager->curDocument();
  if (doc && doc->isModified())
    ryedCommand(RTSTR, L"_.CLOSE", RTSTR, L"_No", RTNONE);
  else if (doc)
    ryedCommand(RTSTR, L"_.CLOSE", RTNONE);
  for (int i = 0; i < manager->documentCount(); ++i) {
    if (manager->document(i) == m_previous) manager->setCurDocument(manager->document(i));
  }
}

}  // namespace kestrix::batch
