// What the batch file tools share: their prompts, the choice of drawing
// files (a folder with a pattern, or a list file), the plot settings kept in
// the profile, and the host commands that open, plot, save and close one
// drawing after another.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "OdString.h"

namespace kestrix::batch {

// Prompts. False on Esc; `reply` is "" for Enter.
bool askText(const OdString& prompt, OdString& reply);
// A keyword of the list (its global form), or "" for Enter.
bool askKeyword(const OdString& prompt, const wchar_t* keywords, OdString& reply);
void say(const OdString& text);

// The drawing files of a folder whose names match any of the patterns
// ("*.dxf;*.dwg", letter case ignored), sorted by name.
std::vector<std::filesystem::path> filesMatching(const std::filesystem::path& folder, const OdString& patterns);
// The paths of a list file, one per line (relative ones from the list's
// folder; blank lines and lines starting with ";" left out).
std::vector<std::filesystem::path> filesListed(const std::filesystem::path& listFile);

// Asks for the folder (or list file), then for the pattern when a folder
// was given. False on Esc or when the answer names nothing there.
bool chooseDrawings(const OdString& defaultPattern, std::vector<std::filesystem::path>& files,
                    std::filesystem::path& folder);

// The forms PLOT takes for a paper size (a name or "WxH" in millimetres), a
// scale (Fit, "1=100", "1:100" or one number), an offset (Center or "x,y")
// and a resolution (10 - 2400 dpi).
bool isPaper(const OdString& text);
bool isScale(const OdString& text);
bool isOffset(const OdString& text);
bool isResolution(const OdString& text);

// The plot settings batch plotting uses, remembered in the profile.
struct PlotSettings {
  OdString device = L"Pdf";  // Pdf, Svg or Png
  OdString paper = L"A4";
  OdString orientation = L"Landscape";
  OdString scale = L"Fit";   // Fit or "1=100"
  OdString offset = L"Center";
  bool color = true;
  OdString dpi = L"150";
  OdString background = L"White";

  static PlotSettings load();
  void save() const;
  OdString extension() const;
  // "PDF, A4 Landscape, Fit, Center, colour"
  OdString summary() const;
};

// Plots the current drawing's extents to `out` through the host's PLOT.
// True when the file was written.
bool plotCurrent(const PlotSettings& settings, const std::filesystem::path& out);

// A drawing opened as the current document, closed (without saving) and the
// first document made current again when it goes.
class OpenedDrawing {
 public:
  explicit OpenedDrawing(const std::filesystem::path& file);
  ~OpenedDrawing();
  OpenedDrawing(const OpenedDrawing&) = delete;
  OpenedDrawing& operator=(const OpenedDrawing&) = delete;
  bool isOpen() const { return m_open; }

 private:
  void* m_previous = nullptr;
  bool m_open = false;
};

// "C:/a/b.dxf" as a host string.
OdString pathText(const std::filesystem::path& path);

}  // namespace kestrix::batch
