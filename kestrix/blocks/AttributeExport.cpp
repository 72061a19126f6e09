// attout: the attributes of the selected block references to a tab-separated
// text file, one row per reference and one column per attribute tag (the
// file is described in AttributeFile.h).
#include <cstdlib>

#include "RyDialogs.h"
#include "blocks/AttributeFile.h"
#include "frame/Guards.h"
#include "frame/ResourceString.h"
#include "frame/commands.h"
#include "ryed.h"
#include "ryut.h"

using namespace kestrix::attributes;

namespace {

// The drawing's name cut before its last "." with ".txt" after it.
OdString initialFileName() {
  OdString name;
  resbuf value{};
  if (ryedGetVar(L"DWGNAME", &value) == RTNORM && value.restype == RTSTR) {
    name = value.resval.rstring;
    std::free(value.resval.rstring);
  }
  const int dot = name.reverseFind(L'.');
  return (dot < 0 ? OdString() : name.left(dot)) + L".txt";
}

bool chooseExportFile(OdString& path) {
  CRyUiNavDialog dialog({CNavFilter(ResourceString(14916, L"文本/样板/提取文件"), L"*.txt")});
  dialog.SetCreatingFile(true);
  dialog.SetDialogCaption(ResourceString(2234));
  dialog.SetConfirmReplace(true);
  dialog.SetPreviewPresent(true);
  dialog.SetInitialFileName(initialFileName());
  if (dialog.DoModal() != IDOK) return false;
  path = dialog.GetPathName();
  return true;
}

// The records of the selected references, in selection order.
std::vector<attoutStruct> collectSelection(const ads_name ss) {
  std::vector<attoutStruct> records;
  OdInt32 length = 0;
  ryedSSLength(ss, &length);
  records.reserve(static_cast<size_t>(length));
  BlockNames blockNames;
  for (OdInt32 i = 0; i < length; ++i) {
    ads_name entity;
    if (ryedSSName(ss, i, entity) != RTNORM) continue;
    OdSmartPtr<OdDbBlockReference> reference = openAttributedReference(entity);
    if (reference.isNull()) continue;
    records.emplace_back();
    collectAttributes(reference.get(), blockNames, records.back());
  }
  return records;
}

}  // namespace

void attoutCommand() {
  kestrix::CmdEchoGuard guard;
  OdString path;
  if (!chooseExportFile(path)) return;

  ads_name ss = {0, 0};
  const int status = ryedSSGet(nullptr, nullptr, nullptr, attributedReferenceFilter().get(), ss);
  if (status == RTCAN) {
    ryutPrintf(L"%ls", ResourceString(2021).c_str());
    return;
  }
  if (status != RTNORM) {
    ryutPrintf(L"%ls", ResourceString(2235).c_str());
    return;
  }
  const std::vector<attoutStruct> records = collectSelection(ss);
  ryedSSFree(ss);

  ColumnList columns;
  for (const attoutStruct& record : records) columns.add(record.tags);
  if (!writeAttributeFile(path, records, columns)) {
    ryedAlert((ResourceString(2236).text() + path + ResourceString(2237).text()).c_str());
    return;
  }
  ryutPrintf(ResourceString(2616), path.c_str());
}
