// LAYDRAWORDER: draw order by layer. The dialog lists the drawing's layers;
// the user moves them up and down, and on OK the entities of the current
// space are drawn layer by layer: the layer at the top of the list over all
// the others, the one at the bottom under them. Within a layer the entities
// keep their order. Cancel changes nothing; one U undoes the new order.
#include <unordered_map>
#include <utility>
#include <vector>

#include "DbBlockTableRecord.h"
#include "DbDictionary.h"
#include "DbEntity.h"
#include "RyDialogs.h"
#include "frame/Guards.h"
#include "frame/ResourceString.h"
#include "frame/commands.h"
#include "layers/LayerSupport.h"
#include "ryut.h"

using namespace kestrix::layers;

namespace {

enum : int { kDialogId = 9120, kLayerList = 1001, kMoveUp = 1002, kMoveDown = 1003 };

}  // namespace

// The layer list: its order is the order of drawing, top first.
class LayerDrawOrderDlg : public CDialog {
 public:
  explicit LayerDrawOrderDlg(std::vector<OdString> layers) : CDialog(kDialogId), m_layers(std::move(layers)) {
    onClicked(kMoveUp, &LayerDrawOrderDlg::OnMoveUp);
    onClicked(kMoveDown, &LayerDrawOrderDlg::OnMoveDown);
  }
  const std::vector<OdString>& layers() const { return m_layers; }

  BOOL OnInitDialog() override {
    CDialog::OnInitDialog();
    fill(0);
    return TRUE;
  }

 protected:
  void DoDataExchange(CDataExchange* pDX) override { DDX_Control(pDX, kLayerList, m_list); }

 private:
  void fill(int selected) {
    m_list.ResetContent();
    for (const OdString& name : m_layers) m_list.AddString(name.c_str());
    m_list.SetCurSel(selected);
  }
  void move(int by) {
    const int at = m_list.GetCurSel();
    const int to = at + by;
    if (at < 0 || to < 0 || to >= static_cast<int>(m_layers.size())) return;
    std::swap(m_layers[static_cast<size_t>(at)], m_layers[static_cast<size_t>(to)]);
    fill(to);
  }
  void OnMoveUp() { move(-1); }
  void OnMoveDown() { move(1); }

  std::vector<OdString> m_layers;
  CListBox m_list;
};

namespace {

std::vector<OdString> layerNames() {
  std::vector<OdString> names;
  OdDbObjectPtr table = drawing()->getLayerTableId().openObject();
  for (const OdDbObjectId& id : static_cast<const OdDbSymbolTable*>(table.get())->recordIds()) {
    if (!id.isErased()) names.push_back(layerName(id));
  }
  return names;
}

// The draw-order table of a block, made when the block has none.
OdDbSortentsTablePtr sortentsTable(const OdDbObjectId& blockId) {
  OdDbObjectPtr block = blockId.openObject(OdDb::kForWrite);
  if (block.isNull()) return OdDbSortentsTablePtr();
  if (block->extensionDictionary().isNull()) block->createExtensionDictionary();
  OdDbDictionaryPtr dictionary = OdDbDictionary::cast(block->extensionDictionary().openObject(OdDb::kForWrite).get());
  if (dictionary.isNull()) return OdDbSortentsTablePtr();
  OdDbSortentsTablePtr table = OdDbSortentsTable::cast(dictionary->getAt(L"ACAD_SORTENTS", OdDb::kForWrite).get());
  if (table.isNull()) {
    table = OdDbSortentsTable::createObject();
    table->setBlockId(blockId);
    dictionary->setAt(L"ACAD_SORTENTS", table.get());
  }
  return table;
}

// Orders the space's entities by layer (the first layer drawn last, on top).
int orderByLayer(const OdDbObjectId& spaceId, const std::vector<OdString>& layers) {
  OdDbSortentsTablePtr table = sortentsTable(spaceId);
  if (table.isNull()) return 0;
  OdDbObjectIdArray order;
  table->getFullDrawOrder(order);
  std::unordered_map<OdDbObjectId, size_t> rank;
  for (size_t i = 0; i < layers.size(); ++i) rank[layerNamed(layers[i])] = i;
  std::vector<OdDbObjectIdArray> byLayer(layers.size() + 1);
  for (const OdDbObjectId& id : order) {
    OdDbObjectPtr object = id.openObject();
    auto* entity = dynamic_cast<const OdDbEntity*>(object.get());
    if (!entity) continue;
    auto found = rank.find(entity->layerId());
    byLayer[found == rank.end() ? layers.size() : found->second].append(id);
  }
  OdDbObjectIdArray bottomToTop = byLayer.back();
  for (size_t i = layers.size(); i-- > 0;) {
    for (const OdDbObjectId& id : byLayer[i]) bottomToTop.append(id);
  }
  table->setDrawOrder(bottomToTop);
  return static_cast<int>(bottomToTop.size());
}

}  // namespace

void laydraworderCommand() {
  kestrix::CmdEchoGuard echo;
  LayerDrawOrderDlg dialog(layerNames());
  if (dialog.DoModal() != IDOK) return;
  const int ordered = orderByLayer(drawing()->currentSpaceId(), dialog.layers());
  ryutPrintf(ResourceString(9111, L"\nDraw order by layer set for %d objects."), ordered);
}
