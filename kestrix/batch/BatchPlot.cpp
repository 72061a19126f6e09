// PrintPlt: the current drawing plotted beside itself with the remembered
// settings, in one step (or the settings changed first).
// BP: many drawings plotted with one settings set, each beside its drawing
// or into a chosen folder, with a line per file and a summary; a drawing
// that cannot be read is named and the run goes on.
#include <filesystem>

#include "batch/BatchFiles.h"
#include "frame/Guards.h"
#include "frame/commands.h"
#include "frame/HostSettings.h"
#include "ryed.h"
#include "ryut.h"

namespace fs = std::filesystem;
using namespace kestrix::batch;

namespace {

// One free-text setting, asked until it has a form PLOT takes; false on Esc.
bool askSetting(const OdString& prompt, bool (*valid)(const OdString&), const wchar_t* refusal, OdString& value) {
  for (;;) {
    OdString reply;
    if (!askText(prompt + L" <" + value + L">: ", reply)) return false;
    if (reply.isEmpty()) return true;
    if (valid(reply)) {
      value = reply;
      return true;
    }
    say(OdString(L"\n") + refusal);
  }
}

// Asks each setting, with the remembered one as the default; false on Esc.
bool askPlotSettings(PlotSettings& s) {
  OdString reply;
  if (!askKeyword(L"\nEnter an output device [Pdf/Svg/Png] <" + s.device + L">: ", L"Pdf Svg Png", reply)) return false;
  if (!reply.isEmpty()) s.device = reply;
  if (!askSetting(L"\nEnter paper size (A4, A3, A2, A1, A0, Letter, Legal, Tabloid or WxH in millimetres)", isPaper,
                  L"Unknown paper size.", s.paper))
    return false;
  if (!askKeyword(L"\nEnter drawing orientation [Portrait/Landscape] <" + s.orientation + L">: ", L"Portrait Landscape",
                  reply))
    return false;
  if (!reply.isEmpty()) s.orientation = reply;
  if (!askSetting(L"\nEnter plot scale (Plotted Millimeters=Drawing Units) or Fit", isScale,
                  L"Requires a scale such as 1=100, or Fit.", s.scale))
    return false;
  if (!askSetting(L"\nEnter plot offset (x,y) in millimetres or Center", isOffset, L"Requires two numbers x,y, or Center.",
                  s.offset))
    return false;
  if (!askKeyword(OdString(L"\nPlot in colour? [Yes/No] <") + (s.color ? L"Yes" : L"No") + L">: ", L"Yes No", reply))
    return false;
  if (!reply.isEmpty()) s.color = reply == L"Yes";
  if (s.device == L"Png") {
    if (!askSetting(L"\nEnter resolution in dots per inch", isResolution, L"Requires a resolution between 10 and 2400.",
                    s.dpi))
      return false;
    if (!askKeyword(L"\nEnter background colour [White/Black] <" + s.background + L">: ", L"White Black", reply))
      return false;
    if (!reply.isEmpty()) s.background = reply;
  }
  return true;
}

OdString currentDrawingPath() {
  OdString folder, name;
  resbuf value{};
  if (ryedGetVar(L"DWGPREFIX", &value) == RTNORM && value.restype == RTSTR) {
    folder = value.resval.rstring;
    std::free(value.resval.rstring);
  }
  if (ryedGetVar(L"DWGNAME", &value) == RTNORM && value.restype == RTSTR) {
    name = value.resval.rstring;
    std::free(value.resval.rstring);
  }
  return folder + name;
}

// The block editor edits one block, not whole drawings: commands flagged
// so refuse to run there.
bool inBlockEditor() {
  resbuf value{};
  return ryedGetVar(L"BLOCKEDITOR", &value) == RTNORM && value.restype == RTSHORT && value.resval.rint != 0;
}

}  // namespace

void printPltCommand() {
  PlotSettings settings = PlotSettings::load();
  say(L"\nPlot settings: " + settings.summary());
  OdString reply;
  if (!askKeyword(L"\nEnter an option [Plot/Settings] <Plot>: ", L"Plot Settings", reply)) return;
  if (reply == L"Settings") {
    if (!askPlotSettings(settings)) return;
    settings.save();
  }
  fs::path drawing(currentDrawingPath().toUtf8());
  if (drawing.filename().empty()) drawing = "Drawing1.dxf";
  const fs::path out = fs::path(drawing).replace_extension(settings.extension().toUtf8());
  if (plotCurrent(settings, out))
    say(L"\nPlotted to " + pathText(out) + L".");
  else
    say(L"\nThe drawing could not be plotted to " + pathText(out) + L".");
}

void batchPlotCommand() {
  if (inBlockEditor()) {
    say(L"\n** Command not allowed in Block Editor **");
    return;
  }
  std::vector<fs::path> files;
  fs::path folder;
  if (!chooseDrawings(L"*.dxf;*.dwg", files, folder)) return;
  PlotSettings settings = PlotSettings::load();
  OdString reply;
  if (!askKeyword(L"\nEnter an output device [Pdf/Svg/Png] <" + settings.device + L">: ", L"Pdf Svg Png", reply)) return;
  if (!reply.isEmpty()) settings.device = reply;
  fs::path target;
  for (;;) {
    if (!askText(L"\nEnter output folder, or Enter for beside each drawing: ", reply)) return;
    if (reply.isEmpty()) break;
    std::error_code ec;
    target = fs::path(reply.toUtf8());
    if (fs::is_directory(target, ec) || fs::create_directories(target, ec)) break;
    say(L"\nCannot use the folder " + reply + L".");
  }
  settings.save();
  say(L"\nPlot settings: " + settings.summary());

  // The host commands run for each file do not echo their prompts.
  kestrix::CmdEchoGuard quiet;
  int plotted = 0;
  std::vector<std::pair<fs::path, OdString>> failed;
  for (size_t i = 0; i < files.size(); ++i) {
    const fs::path& file = files[i];
    say(OdString().format(L"\n[%d/%d] ", int(i + 1), int(files.size())) + pathText(file.filename()) + L": ");
    fs::path out = (target.empty() ? file.parent_path() : target) / file.filename();
    out.replace_extension(settings.extension().toUtf8());
    OpenedDrawing drawing(file);
    if (!drawing.isOpen()) {
      failed.push_back({file, L"cannot be read"});
      continue;
    }
    if (plotCurrent(settings, out)) {
      ++plotted;
      say(L"\n  plotted to " + pathText(out));
    } else {
      failed.push_back({file, L"nothing could be plotted"});
      say(L"\n  not plotted");
    }
  }
  say(OdString().format(L"\n%d of %d drawing(s) plotted, %d failed.", plotted, int(files.size()), int(failed.size())));
  for (const auto& [file, why] : failed) say(L"\n  " + pathText(file) + L": " + why);
}
