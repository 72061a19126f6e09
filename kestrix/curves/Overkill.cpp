// Overkill: removes duplicated geometry from a selection. Objects identical
// within a tolerance are erased, and co-linear or co-circular pieces of
// lines, arcs, circles and polylines that overlap or meet end to end are
// combined. One dialog of options, then three passes (curves, splines, all
// other kinds) and two report lines.
#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbDimension.h"
#include "DbHatch.h"
#include "DbLeader.h"
#include "DbMline.h"
#include "DbModelerGeometry.h"
#include "DbPoint.h"
#include "DbRasterImage.h"
#include "DbSolid.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "DbViewport.h"
#include "RyDialogs.h"
#include "curves/CmpDwgFiler.h"
#include "curves/ExplodeCurves.h"
#include "frame/Guards.h"
#include "frame/ModuleWide.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

using namespace kestrix::curves;

namespace {

// The options live as long as the module: every load starts from the defaults.
OverkillOptions g_options;

void resetOverkillOptions() { g_options = OverkillOptions(); }
KESTRIX_MODULE_WIDE_RESET(resetOverkillOptions);

enum : int {
  kIdTolerance = 1001,
  kIdIgnoreLayer = 1002,
  kIdIgnoreLinetype = 1003,
  kIdIgnoreColor = 1004,
  kIdIgnoreLineweight = 1005,
  kIdIgnorePlotStyle = 1006,
  kIdOptimizePolylines = 1007,
  kIdCombinePartial = 1008,
  kIdCombineEndToEnd = 1009,
};

}  // namespace

class COverKillDlg : public CRyUiDialog {
 public:
  explicit COverKillDlg(OverkillOptions& options) : CRyUiDialog(251), m_options(options) {}

  BOOL OnInitDialog() override {
    CRyUiDialog::OnInitDialog();
    CString text;
    text.format(L"%f", m_options.tolerance);
    SetDlgItemText(kIdTolerance, text.c_str());
    CheckDlgButton(kIdIgnoreLayer, m_options.compareLayer ? BST_UNCHECKED : BST_CHECKED);
    CheckDlgButton(kIdIgnoreLinetype, m_options.compareLinetype ? BST_UNCHECKED : BST_CHECKED);
    CheckDlgButton(kIdIgnoreColor, m_options.compareColor ? BST_UNCHECKED : BST_CHECKED);
    CheckDlgButton(kIdIgnoreLineweight, m_options.compareLineweight ? BST_UNCHECKED : BST_CHECKED);
    CheckDlgButton(kIdIgnorePlotStyle, m_options.comparePlotStyle ? BST_UNCHECKED : BST_CHECKED);
    CheckDlgButton(kIdOptimizePolylines, m_options.optimizePolylines ? BST_CHECKED : BST_UNCHECKED);
    CheckDlgButton(kIdCombinePartial, m_options.combinePartial ? BST_CHECKED : BST_UNCHECKED);
    CheckDlgButton(kIdCombineEndToEnd, m_options.combineEndToEnd ? BST_CHECKED : BST_UNCHECKED);
    return TRUE;
  }

 protected:
  void OnOK() override {
    CString text;
    GetDlgItemText(kIdTolerance, text);
    ads_real value = 0;
    // A "-" anywhere is refused, so "-0" does not pass as zero.
    if (rydbDisToF(text.c_str(), -1, &value) != RTNORM || value < 0 || text.find(L'-') >= 0) {
      RyUiMessageBox(ResourceString(6293, L"The tolerance must be a number, zero or more."));
      return;
    }
    m_options.tolerance = value;
    auto ticked = [&](int id) { return IsDlgButtonChecked(id) == BST_CHECKED; };
    m_options.compareLayer = !ticked(kIdIgnoreLayer);
    m_options.compareLinetype = !ticked(kIdIgnoreLinetype);
    m_options.compareColor = !ticked(kIdIgnoreColor);
    m_options.compareLineweight = !ticked(kIdIgnoreLineweight);
    m_options.comparePlotStyle = !ticked(kIdIgnorePlotStyle);
    m_options.optimizePolylines = ticked(kIdOptimizePolylines);
    m_options.combinePartial = ticked(kIdCombinePartial);
    m_options.combineEndToEnd = ticked(kIdCombineEndToEnd);
    EndDialog(IDOK);
  }

 private:
  OverkillOptions& m_options;
};

namespace {

// Whether two entities share the properties the options compare; the
// linetype scale is compared whatever the options.
bool sameCommonProperties(const OdDbEntity* a, const OdDbEntity* b, const OverkillOptions& options) {
  if (!a || !b) return false;
  const double tol = options.effectiveTolerance();
  if (options.compareColor && !(a->color() == b->color())) return false;
  if (options.compareLayer && a->layerId().handle() != b->layerId().handle()) return false;
  if (options.compareLinetype && a->linetypeId().handle() != b->linetypeId().handle()) return false;
  if (!(std::fabs(a->linetypeScale() - b->linetypeScale()) < tol)) return false;
  if (options.compareLineweight && a->lineWeight() != b->lineWeight()) return false;
  OdDbObjectId pa, pb;
  a->getPlotStyleNameId(pa);
  b->getPlotStyleNameId(pb);
  if (options.comparePlotStyle && pa.handle() != pb.handle()) return false;
  return true;
}

// Records an object's class data as typed values, so that numbers can be
// compared within the tolerance and everything else exactly.
class ValueRecorder : public OdDbDwgFiler {
 public:
  struct Value {
    char kind = 0;  // 'd' double, 'i' integer, 's' string, 'b' bytes, 'h' handle
    double real = 0;
    OdInt64 integer = 0;
    OdString text;
    std::vector<OdUInt8> bytes;
  };
  std::vector<Value> values;

  void wrBool(bool v) override { integer('i', v); }
  void wrInt8(OdInt8 v) override { integer('i', v); }
  void wrUInt8(OdUInt8 v) override { integer('i', v); }
  void wrInt16(OdInt16 v) override { integer('i', v); }
  void wrInt32(OdInt32 v) override { integer('i', v); }
  void wrInt64(OdInt64 v) override { integer('i', v); }
  void wrDouble(double v) override { push('d').real = v; }
  void wrString(const OdString& v) override { push('s').text = v; }
  void wrBytes(const void* buffer, OdUInt32 length) override {
    const auto* p = static_cast<const OdUInt8*>(buffer);
    push('b').bytes.assign(p, p + length);
  }
  void wrHardOwnershipId(const OdDbObjectId&) override {}
  void wrSoftOwnershipId(const OdDbObjectId&) override {}
  void wrHardPointerId(const OdDbObjectId& id) override { integer('h', static_cast<OdInt64>(id.handle().value())); }
  void wrSoftPointerId(const OdDbObjectId& id) override { integer('h', static_cast<OdInt64>(id.handle().value())); }

  // The first number recorded: the key the candidates are sorted by.
  double key() const {
    for (const Value& v : values)
      if (v.kind == 'd') return v.real;
    return 0;
  }
  bool sameAs(const ValueRecorder& other, double tol) const {
    if (values.size() != other.values.size()) return false;
    for (size_t i = 0; i < values.size(); ++i) {
      const Value &a = values[i], &b = other.values[i];
      if (a.kind != b.kind) return false;
      switch (a.kind) {
        case 'd':
          if (!(std::fabs(a.real - b.real) < tol)) return false;
          break;
        case 's':
          if (a.text != b.text) return false;
          break;
        case 'b':
          if (a.bytes != b.bytes) return false;
          break;
        default:
          if (a.integer != b.integer) return false;
      }
    }
    return true;
  }

 private:
  Value& push(char kind) {
    values.emplace_back();
    values.back().kind = kind;
    return values.back();
  }
  void integer(char kind, OdInt64 v) { push(kind).integer = v; }
};

// Classes compared by their own data within the tolerance; every other
// class is compared by the bytes it records through ryDbCmpDwgFile.
bool hasOwnComparator(const OdRxClass* cls) {
  static const OdRxClass* const classes[] = {
      OdDbPoint::desc(),     OdDbText::desc(),         OdDbMText::desc(),     OdDbBlockReference::desc(),
      OdDbDimension::desc(), OdDbHatch::desc(),        OdDbLeader::desc(),    OdDbMline::desc(),
      OdDbSolid::desc(),     OdDbTrace::desc(),        OdDbEllipse::desc(),   OdDbRegion::desc(),
      OdDbRasterImage::desc(), OdDbViewport::desc()};
  for (const OdRxClass* known : classes)
    if (cls->isDerivedFrom(known)) return true;
  return false;
}

// Erases later members of `ids` equal to an earlier one; the earlier member
// survives. Candidates are found through a sorted key: members whose keys
// differ by the tolerance or more are never equal.
template <class Equal, class Erased>
void removeEqualMembers(std::vector<OdDbObjectId>& ids, const std::vector<double>& keys, double tol, Equal equal,
                        Erased erased) {
  const size_t n = ids.size();
  std::vector<size_t> order(n), position(n);
  for (size_t i = 0; i < n; ++i) order[i] = i;
  std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return keys[a] < keys[b]; });
  for (size_t k = 0; k < n; ++k) position[order[k]] = k;
  std::vector<bool> gone(n, false);
  for (size_t i = 0; i < n; ++i) {
    if (gone[i]) continue;
    auto visit = [&](size_t j) {
      if (j <= i || gone[j] || ids[j] == ids[i]) return;
      if (equal(i, j)) {
        gone[j] = true;
        erased(j);
      }
    };
    for (size_t k = position[i] + 1; k < n && keys[order[k]] - keys[i] < tol; ++k) visit(order[k]);
    for (size_t k = position[i]; k-- > 0 && keys[i] - keys[order[k]] < tol;) visit(order[k]);
  }
  std::vector<OdDbObjectId> kept;
  for (size_t i = 0; i < n; ++i)
    if (!gone[i]) kept.push_back(ids[i]);
  ids.swap(kept);
}

void eraseObject(const OdDbObjectId& id) {
  if (OdDbObjectPtr object = id.openObject(OdDb::kForWrite); !object.isNull()) object->erase();
}

OdDbEntityPtr openEntity(const OdDbObjectId& id) { return OdDbEntity::cast(id.openObject().get()); }

// The run state of one invocation.
class OverkillRun {
 public:
  explicit OverkillRun(const OverkillOptions& options) : m_options(options), m_curves(options) {}

  void take(const OdDbObjectId& id) {
    OdDbEntityPtr entity = openEntity(id);
    if (entity.isNull()) return;
    if (m_blockName.isEmpty()) {
      if (OdSmartPtr<OdDbBlockTableRecord> owner = OdDbBlockTableRecord::cast(entity->blockId().openObject().get());
          !owner.isNull())
        m_blockName = owner->getName();
    }
    if (!layerChangeable(entity->layerId())) return;
    if (m_curves.intake(entity.get())) return;
    if (entity->isKindOf(OdDbSpline::desc())) {
      m_splines.push_back(id);
      return;
    }
    m_byClass[entity->isA()].push_back(id);
  }

  void run() {
    m_curves.run(m_duplicates, m_overlaps);
    splinePass();
    otherKindsPass();
  }

  int duplicates() const { return m_duplicates; }
  int overlaps() const { return m_overlaps; }

 private:
  // Frozen, locked or off layers are never changed.
  bool layerChangeable(const OdDbObjectId& layerId) {
    auto found = m_layers.find(layerId);
    if (found != m_layers.end()) return found->second;
    bool changeable = true;
    if (OdSmartPtr<OdDbLayerTableRecord> layer = OdDbLayerTableRecord::cast(layerId.openObject().get()); !layer.isNull())
      changeable = !layer->isFrozen() && !layer->isLocked() && !layer->isOff();
    m_layers.emplace(layerId, changeable);
    return changeable;
  }

  void splinePass() {
    const double tol = m_options.effectiveTolerance();
    std::vector<OdSmartPtr<OdDbSpline>> splines;
    std::vector<double> keys;
    for (const OdDbObjectId& id : m_splines) {
      splines.push_back(OdDbSpline::cast(id.openObject().get()));
      OdGePoint3d first;
      if (!splines.back().isNull() && splines.back()->numControlPoints() > 0) splines.back()->getControlPointAt(0, first);
      keys.push_back(first.x);
    }
    auto equal = [&](size_t i, size_t j) {
      const OdDbSpline *a = splines[i].get(), *b = splines[j].get();
      if (!a || !b || !sameCommonProperties(a, b, m_options)) return false;
      if (a->numControlPoints() != b->numControlPoints() || a->numFitPoints() != b->numFitPoints()) return false;
      OdGePoint3d p, q;
      for (int k = 0; k < a->numControlPoints(); ++k) {
        a->getControlPointAt(k, p);
        b->getControlPointAt(k, q);
        if (!(p.distanceTo(q) < tol)) return false;
      }
      for (int k = 0; k < a->numFitPoints(); ++k) {
        a->getFitPointAt(k, p);
        b->getFitPointAt(k, q);
        if (!(p.distanceTo(q) < tol)) return false;
      }
      return true;
    };
    removeEqualMembers(m_splines, keys, tol, equal, [&](size_t j) {
      eraseObject(splines[j]->objectId());
      ++m_overlaps;  // splines count as overlaps
    });
  }

  void otherKindsPass() {
    const double tol = m_options.effectiveTolerance();
    for (auto& [cls, ids] : m_byClass) {
      if (ids.size() < 2) continue;
      const bool own = hasOwnComparator(cls);
      std::vector<OdDbEntityPtr> entities;
      std::vector<ValueRecorder> records(ids.size());
      std::vector<double> keys;
      for (size_t i = 0; i < ids.size(); ++i) {
        entities.push_back(openEntity(ids[i]));
        if (!entities.back().isNull()) fileOutClassData(entities.back().get(), &records[i]);
        keys.push_back(own ? records[i].key() : 0.0);
      }
      // Keys of classes compared by their rounded bytes are all 0: those
      // classes are few and small in real drawings.
      auto equal = [&](size_t i, size_t j) {
        const OdDbEntity *a = entities[i].get(), *b = entities[j].get();
        if (!sameCommonProperties(a, b, m_options)) return false;
        // The radius ratio of ellipses is held to 1e-8 whatever the tolerance.
        if (const auto *ea = dynamic_cast<const OdDbEllipse*>(a), *eb = dynamic_cast<const OdDbEllipse*>(b);
            ea && eb && !(std::fabs(ea->radiusRatio() - eb->radiusRatio()) < 1e-8))
          return false;
        return own ? records[i].sameAs(records[j], tol) : sameRecordedData(a, b);
      };
      removeEqualMembers(ids, keys, own ? tol : 1.0, equal, [&](size_t j) {
        eraseObject(entities[j]->objectId());
        ++m_duplicates;
      });
    }
  }

  const OverkillOptions& m_options;
  CurvePass m_curves;
  std::vector<OdDbObjectId> m_splines;
  std::map<const OdRxClass*, std::vector<OdDbObjectId>> m_byClass;
  std::map<OdDbObjectId, bool> m_layers;
  OdString m_blockName;
  int m_duplicates = 0;
  int m_overlaps = 0;
};

void printReport(int duplicates, int overlaps) {
  if (duplicates >= 0) ryutPrintf(L"\n%d %ls.", duplicates, ResourceString(6294, L"duplicate objects deleted").c_str());
  if (overlaps >= 0)
    ryutPrintf(L"\n%d %ls.", overlaps, ResourceString(6295, L"overlapping objects deleted or combined").c_str());
}

struct SelectionSet {
  ads_name name = {0, 0};
  ~SelectionSet() { ryedSSFree(name); }
};

}  // namespace

void overkillCommand() {
  kestrix::CmdEchoGuard echo;
  SelectionSet ss;
  if (ryedSSGet(L":C", nullptr, nullptr, nullptr, ss.name) != RTNORM) return;
  COverKillDlg dialog(g_options);
  if (dialog.DoModal() != IDOK) return;

  OdInt32 length = 0;
  ryedSSLength(ss.name, &length);
  if (length == 1) {
    printReport(0, 0);
    return;
  }
  OverkillRun run(g_options);
  // Walked from the last member to the first: of equal objects, the one
  // later in the selection survives.
  for (OdInt32 i = length - 1; i >= 0; --i) {
    ads_name entity;
    if (ryedSSName(ss.name, i, entity) != RTNORM) continue;
    if (kestrix::ResultList list(rydbEntGet(entity)); !list) continue;
    OdDbObjectId id;
    if (rydbGetObjectId(id, entity) != RTNORM) continue;
    run.take(id);
  }
  run.run();
  printReport(run.duplicates(), run.overlaps());
}
