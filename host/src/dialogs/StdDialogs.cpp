// The standard dialogs: each gathers its request and hands it to the front end.
#include <filesystem>

#include "dialogs/DialogDriver.h"
#include "ryut.h"

using ryhost::dialogDriver;

// ---------------------------------------------------------------- file navigation

CNavFilter::CNavFilter(LPCTSTR description, LPCTSTR patterns)
    : m_description(description ? description : L"") {
  const OdString list(patterns ? patterns : L"");
  for (int start = 0; start < list.getLength();) {
    int end = list.find(L';', start);
    if (end < 0) end = list.getLength();
    OdString pattern = list.mid(start, end - start);
    if (!pattern.trimLeft().trimRight().isEmpty()) m_patterns.push_back(pattern);
    start = end + 1;
  }
}

int CNavFilter::Add(LPCTSTR pattern) {
  m_patterns.emplace_back(pattern ? pattern : L"");
  return GetCount() - 1;
}

CString CNavFilter::GetAt(int index) const {
  return index >= 0 && index < GetCount() ? m_patterns[static_cast<size_t>(index)] : CString();
}

CString CNavFilter::GetDefaultExtension() const {
  if (m_patterns.empty()) return CString();
  const CString& first = m_patterns.front();
  // "*.txt" names one; "*.*", "*" and "data.*" name none.
  if (first.left(2) != L"*." || first.findOneOf(L"*?") != 0 || first.mid(2).findOneOf(L"*?") >= 0)
    return CString();
  return first.mid(2);
}

bool CNavFilter::Matches(LPCTSTR fileName) const {
  for (const auto& pattern : m_patterns) {
    if (ryutWcMatch(fileName, pattern) == RTNORM) return true;
  }
  return false;
}

CNavDialog::CNavDialog(const CNavFilterArray& filters, CWnd*) : m_filters(filters) {}

INT_PTR CNavDialog::DoModal() {
  const ryhost::FileRequest request{.caption = m_caption,
                                    .filters = m_filters,
                                    .creatingFile = m_creatingFile,
                                    .confirmReplace = m_confirmReplace,
                                    .previewPresent = m_previewPresent,
                                    .initialFileName = m_initialFileName,
                                    .initialFolder = m_initialFolder};
  OdString path;
  if (!dialogDriver().chooseFile(request, path)) return IDCANCEL;
  m_pathName = path;
  return IDOK;
}

CString CNavDialog::GetFileName() const {
  return CString(std::filesystem::path(m_pathName.toUtf8()).filename().string());
}

CString CNavDialog::GetFileTitle() const {
  return CString(std::filesystem::path(m_pathName.toUtf8()).stem().string());
}

CString CNavDialog::GetFileExt() const {
  const std::string extension = std::filesystem::path(m_pathName.toUtf8()).extension().string();
  return CString(extension.empty() ? extension : extension.substr(1));
}

// ---------------------------------------------------------------- message boxes, colours, views

int RyUiMessageBox(LPCTSTR text, LPCTSTR caption, UINT type) {
  return dialogDriver().messageBox(OdString(text ? text : L""),
                                   OdString(caption ? caption : ryhost::kToolkitCaption), type);
}

int ryedSetColorDialogTrueColor(OdCmColor& color, bool allowMetaColor, const OdCmColor& currentLayerColor,
                                int tabs) {
  OdCmColor chosen = color;
  const int status = dialogDriver().chooseColor(chosen, allowMetaColor, currentLayerColor, tabs);
  if (status == RTNORM) color = chosen;
  return status;
}

int ryedSetColorDialog(int& colorIndex, bool allowMetaColor, int currentLayerColor) {
  OdCmColor color, layerColor;
  color.setColorIndex(static_cast<OdInt16>(colorIndex));
  layerColor.setColorIndex(static_cast<OdInt16>(currentLayerColor));
  const int status = ryedSetColorDialogTrueColor(color, allowMetaColor, layerColor, kRyAciTab);
  if (status == RTNORM) colorIndex = color.colorIndex();
  return status;
}

CView* ryedGetRyadDwgView() { return dialogDriver().drawingView(); }
