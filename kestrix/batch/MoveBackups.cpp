// movebak: the backup files of a folder (*.bak, and autosave files *.sv$)
// moved into another folder under the same names. A file of that name
// already there is replaced only when the user says so.
#include <filesystem>

#include "batch/BatchFiles.h"
#include "frame/commands.h"
#include "ryed.h"

namespace fs = std::filesystem;
using namespace kestrix::batch;

namespace {

OdString drawingFolder() {
  resbuf value{};
  OdString folder;
  if (ryedGetVar(L"DWGPREFIX", &value) == RTNORM && value.restype == RTSTR) {
    folder = value.resval.rstring;
    std::free(value.resval.rstring);
  }
  return folder.isEmpty() ? OdString(fs::current_path().string()) : folder;
}

// Renamed when both folders are on one file system; copied and removed otherwise.
bool moveFile(const fs::path& from, const fs::path& to) {
  std::error_code ec;
  fs::rename(from, to, ec);
  if (!ec) return true;
  ec.clear();
  fs::copy_file(from, to, fs::copy_options::overwrite_existing, ec);
  if (ec) return false;
  fs::remove(from, ec);
  return !ec;
}

}  // namespace

void moveBackupsCommand() {
  const OdString defaultFolder = drawingFolder();
  OdString reply;
  fs::path source;
  for (;;) {
    if (!askText(L"\nEnter folder with backup files <" + defaultFolder + L">: ", reply)) return;
    source = fs::path((reply.isEmpty() ? defaultFolder : reply).toUtf8());
    std::error_code ec;
    if (fs::is_directory(source, ec)) break;
    say(L"\nNo such folder: " + pathText(source));
  }
  fs::path target;
  for (;;) {
    if (!askText(L"\nEnter folder to move them to: ", reply)) return;
    if (reply.isEmpty()) continue;
    target = fs::path(reply.toUtf8());
    std::error_code ec;
    if (fs::equivalent(source, target, ec)) {
      say(L"\nThe backups are already in that folder.");
      continue;
    }
    if (fs::is_directory(target, ec) || fs::create_directories(target, ec)) break;
    say(L"\nCannot use the folder " + reply + L".");
  }
  const std::vector<fs::path> backups = filesMatching(source, L"*.bak;*.sv$");
  int moved = 0, kept = 0, failed = 0;
  bool replaceAll = false;
  for (const fs::path& file : backups) {
    const fs::path to = target / file.filename();
    std::error_code ec;
    if (fs::exists(to, ec) && !replaceAll) {
      if (!askKeyword(L"\n" + pathText(to) + L" exists. Replace it? [Yes/No/All] <No>: ", L"Yes No All", reply)) break;
      if (reply == L"All") replaceAll = true;
      if (reply != L"Yes" && reply != L"All") {
        ++kept;
        continue;
      }
    }
    if (moveFile(file, to))
      ++moved;
    else
      ++failed;
  }
  say(OdString().format(L"\n%d backup file(s) moved to ", moved) + pathText(target) + L".");
  if (kept) say(OdString().format(L" %d left where they were.", kept));
  if (failed) say(OdString().format(L" %d could not be moved.", failed));
}
