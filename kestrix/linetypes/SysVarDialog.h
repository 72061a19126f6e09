// The dialog of sysvdlg: the variables of the catalogue with their type,
// value and description, grouped under the catalogue's headings and
// filtered by a name pattern. Values typed for a row and values of a loaded
// set are kept as changes and given to the host when the dialog ends with
// OK (Cancel changes nothing); read-only variables are never written.
#pragma once

#include <utility>
#include <vector>

#include "RyDialogs.h"
#include "linetypes/SysVarCatalogue.h"

namespace kestrix::sysvars {

// Controls of dialog 3090.
enum SysVarControl : int {
  kSysVarDialog = 3090,
  kFilterLabel = 3097,  // the pattern in effect, or "*.From File" after a load
  kFilterEdit = 3098,
  kVariableList = 3100,
  kValueEdit = 3101,
  kSetButton = 3102,
  kInfoLine = 3103,
  kSaveButton = 3104,
  kLoadButton = 3105,
};

class CSYSVDLG : public CRyUiDialog {
 public:
  explicit CSYSVDLG(const CIniFile& catalogue);
  // Name and value text of every change to give to the host, in the order made.
  const std::vector<std::pair<OdString, OdString>>& changes() const { return m_changes; }

 protected:
  BOOL OnInitDialog() override;
  void DoDataExchange(CDataExchange* pDX) override;

 private:
  struct Row {
    bool heading = false;
    OdString name, type, description, values;
    short hostType = RTNONE;  // RTNONE: the host has no such variable
    bool readOnly = false;
  };

  void OnFilterEdited();
  void OnRowChosen();
  void OnSet();
  void OnSave();
  void OnLoad();

  Row rowFor(const OdString& name) const;
  void fromCatalogue();
  void refill();
  OdString shownValue(const Row& row) const;
  const OdString* change(const OdString& name) const;
  void setChange(const OdString& name, const OdString& value);
  int chosenRow() const;

  const CIniFile& m_catalogue;
  std::vector<HostVariable> m_host;
  std::vector<Row> m_rows;  // the rows of the source: the catalogue or a loaded set
  bool m_fromFile = false;
  std::vector<std::pair<OdString, OdString>> m_changes;
  CListCtrl m_list;
  bool m_filling = false;
};

}  // namespace kestrix::sysvars
