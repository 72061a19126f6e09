// The catalogue of sysvdlg, values as text, and saved variable sets.
#include "linetypes/SysVarCatalogue.h"

#include <cmath>
#include <cstdlib>
#include <cwchar>
#include <filesystem>

#include "blocks/RyCStdioFile.h"
#include "frame/ResultLists.h"
#include "ryed.h"
#include "ryut.h"

namespace kestrix::sysvars {

namespace {

const wchar_t* const kMarker = L"RyadSystemVarFile";

OdString trimmed(OdString text) {
  text.trimLeft();
  text.trimRight();
  return text;
}

OdString withoutLineEnd(OdString line) {
  while (!line.isEmpty() && (line[line.getLength() - 1] == L'\r' || line[line.getLength() - 1] == L'\n'))
    line = line.left(line.getLength() - 1);
  return line;
}

// The entry of a folder whose name equals the given one without regard to
// letter case (the exact name first); empty when there is none.
std::filesystem::path entryIgnoringCase(const std::filesystem::path& folder, const OdString& name) {
  std::error_code error;
  const std::filesystem::path exact = folder / name.toUtf8();
  if (std::filesystem::exists(exact, error)) return exact;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (OdString(entry.path().filename().string()).iCompare(name) == 0) return entry.path();
  }
  return {};
}

// The shortest "%.*g" form (up to 17 digits) that reads back to the same number.
OdString formatReal(double value) {
  OdString text;
  for (int digits = 6; digits <= 17; ++digits) {
    text.format(L"%.*g", digits, value);
    if (std::wcstod(text.c_str(), nullptr) == value) break;
  }
  return text;
}

// A whole text read as one number with "%lg"; false for anything else.
bool readReal(const OdString& text, double& value) {
  wchar_t rest = 0;
  return std::swscanf(trimmed(text).c_str(), L"%lg %lc", &value, &rest) == 1 && std::isfinite(value);
}

}  // namespace

// ---------------------------------------------------------------- catalogue

bool CIniFile::parseLine(const OdString& raw, CatalogueEntry& entry) {
  const OdString line = withoutLineEnd(raw);
  entry = CatalogueEntry();
  if (line.isEmpty() || line[0] == L'#') return false;
  if (line[0] == L'!') {
    entry.heading = true;
    entry.name = trimmed(line.mid(1));
    return true;
  }
  const int first = line.find(L'|');
  const int second = first < 0 ? -1 : line.find(L'|', first + 1);
  if (second < 0) return false;
  const int third = line.find(L'|', second + 1);
  entry.name = trimmed(line.left(first));
  entry.type = trimmed(line.mid(first + 1, second - first - 1));
  entry.description = third < 0 ? line.mid(second + 1) : line.mid(second + 1, third - second - 1);
  if (third >= 0) entry.values = line.mid(third + 1);
  return !entry.name.isEmpty();
}

bool CIniFile::Read(const OdString& path) {
  m_entries.clear();
  RyCStdioFile file(RyCStdioFile::kUtf8, false, false);
  if (path.isEmpty() || !file.Open(path.c_str(), CStdioFile::modeRead | CStdioFile::typeText)) return false;
  file.detectEncoding();
  OdString line;
  CatalogueEntry entry;
  while (file.ReadString(line)) {
    if (parseLine(line, entry)) m_entries.push_back(entry);
  }
  return true;
}

const CatalogueEntry* CIniFile::find(const OdString& name) const {
  for (const CatalogueEntry& entry : m_entries) {
    if (!entry.heading && entry.name.iCompare(name) == 0) return &entry;
  }
  return nullptr;
}

OdString cataloguePath(const OdString& moduleFolder) {
  const std::filesystem::path module = moduleFolder.toUtf8();
  const std::filesystem::path folder = entryIgnoringCase(module, L"extendCmd");
  if (folder.empty()) return OdString();
  const std::filesystem::path file = entryIgnoringCase(folder, L"sysvdlg.dat");
  return file.empty() ? OdString() : OdString(file.string());
}

// ---------------------------------------------------------------- saved sets

bool CSysVarSet::Save(const OdString& path) const {
  RyCStdioFile file(RyCStdioFile::kUtf8, false, false);
  if (!file.Open(path.c_str(), CStdioFile::modeCreate | CStdioFile::modeWrite | CStdioFile::typeText)) return false;
  file.WriteString((OdString(kMarker) + L"\n").c_str());
  for (const Item& item : m_items) file.WriteString((item.name + L"|" + item.value + L"\n").c_str());
  file.Close();
  return true;
}

bool CSysVarSet::Load(const OdString& path) {
  RyCStdioFile file(RyCStdioFile::kUtf8, false, false);
  if (!file.Open(path.c_str(), CStdioFile::modeRead | CStdioFile::typeText)) return false;
  file.detectEncoding();
  OdString line;
  if (!file.ReadString(line) || withoutLineEnd(line).iCompare(kMarker) != 0) return false;
  std::vector<Item> items;
  while (file.ReadString(line)) {
    line = withoutLineEnd(line);
    const int bar = line.find(L'|');
    if (bar <= 0) continue;
    items.push_back({trimmed(line.left(bar)), line.mid(bar + 1)});
  }
  m_items = std::move(items);
  return true;
}

// ---------------------------------------------------------------- host variables and values

std::vector<HostVariable> hostVariables() {
  std::vector<HostVariable> variables;
  resbuf* list = nullptr;
  const int status = ryedGetSysVarList(&list);
  const ResultList owner(list);
  if (status != RTNORM) return variables;
  for (const resbuf* rb = list; rb && rb->rbnext && rb->rbnext->rbnext; rb = rb->rbnext->rbnext->rbnext) {
    variables.push_back({rb->resval.rstring, rb->rbnext->resval.rint, rb->rbnext->rbnext->resval.rint != 0});
  }
  return variables;
}

OdString formatValue(const resbuf& value, const OdString& catalogueType) {
  const bool isSwitch = catalogueType.iCompare(L"Switch") == 0;
  OdString text;
  switch (value.restype) {
    case RTSHORT:
      if (isSwitch && (value.resval.rint == 0 || value.resval.rint == 1)) return value.resval.rint ? L"On" : L"Off";
      text.format(L"%d", value.resval.rint);
      return text;
    case RTLONG: text.format(L"%d", static_cast<int>(value.resval.rlong)); return text;
    case RTREAL: return formatReal(value.resval.rreal);
    case RTSTR: return value.resval.rstring ? OdString(value.resval.rstring) : OdString();
    case RTPOINT:
    case RT3DPOINT:
      text.format(L"%ls,%ls,%ls", formatReal(value.resval.rpoint[0]).c_str(),
                  formatReal(value.resval.rpoint[1]).c_str(), formatReal(value.resval.rpoint[2]).c_str());
      return text;
    default: return text;
  }
}

bool parseValue(const OdString& given, short hostType, resbuf& value) {
  const OdString text = trimmed(given);
  value = resbuf();
  value.restype = hostType;
  switch (hostType) {
    case RTSHORT:
    case RTLONG: {
      long number = 0;
      if (text.iCompare(L"On") == 0) {
        number = 1;
      } else if (text.iCompare(L"Off") == 0) {
        number = 0;
      } else {
        wchar_t* end = nullptr;
        number = std::wcstol(text.c_str(), &end, 10);
        if (text.isEmpty() || *end != 0) return false;
      }
      if (hostType == RTSHORT) {
        if (number < -32768 || number > 32767) return false;
        value.resval.rint = static_cast<short>(number);
      } else {
        value.resval.rlong = static_cast<std::int32_t>(number);
      }
      return true;
    }
    case RTREAL: return readReal(text, value.resval.rreal);
    case RTSTR: {
      const OdString raw = given;
      value.resval.rstring = static_cast<ACHAR*>(std::calloc(static_cast<size_t>(raw.getLength()) + 1, sizeof(ACHAR)));
      std::wmemcpy(value.resval.rstring, raw.c_str(), static_cast<size_t>(raw.getLength()));
      return true;
    }
    case RTPOINT:
    case RT3DPOINT: {
      int start = 0, count = 0;
      while (start <= text.getLength()) {
        int comma = text.find(L',', start);
        if (comma < 0) comma = text.getLength();
        if (count == 3 || !readReal(text.mid(start, comma - start), value.resval.rpoint[count])) return false;
        ++count;
        start = comma + 1;
      }
      return count >= 2;
    }
    default: return false;
  }
}

void releaseValue(resbuf& value) {
  if (value.restype == RTSTR) std::free(value.resval.rstring);
  value = resbuf();
}

bool currentValue(const OdString& name, const OdString& catalogueType, OdString& text) {
  resbuf value{};
  if (ryedGetVar(name.c_str(), &value) != RTNORM) return false;
  text = formatValue(value, catalogueType);
  releaseValue(value);
  return true;
}

}  // namespace kestrix::sysvars
