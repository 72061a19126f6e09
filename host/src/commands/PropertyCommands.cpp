// CHPROP: changes the common properties of the selected objects: colour,
// layer, linetype, linetype scale, lineweight, thickness and transparency.
// After the selection the property prompt repeats until Enter; the values
// are kept and written to the objects at the end, so Esc changes nothing.
// Each value prompt offers the selection's present value (or "varies").
#include <functional>
#include <optional>
#include <utility>

#include "DbSymbolTable.h"
#include "commands/CommandRegistry.h"
#include "commands/CommandSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"
#include "ryed.h"

namespace ryhost {

namespace {

using namespace cmdsupport;

void say(const OdString& text) { Host::instance().print(text); }

OdString quoted(const OdString& name) { return L"\"" + name + L"\""; }

struct NewProperties {
  std::optional<OdCmColor> color;
  std::optional<OdString> layer;  // made when the drawing has no layer of that name
  std::optional<OdDbObjectId> linetype;
  std::optional<double> linetypeScale;
  std::optional<OdDb::LineWeight> lineWeight;
  std::optional<double> thickness;
  std::optional<OdCmTransparency> transparency;
};

class PropertyChanger {
 public:
  PropertyChanger(OdDbDatabase* db, std::vector<OdDbObjectId> ids) : m_db(db), m_ids(std::move(ids)) {}

  void run() {
    for (;;) {
      const OdString property = askKeyword(
          L"\nEnter property to change [Color/LAyer/LType/ltScale/LWeight/Thickness/TRansparency]: ",
          L"Color LAyer LType ltScale LWeight Thickness TRansparency");
      if (property.isEmpty()) break;
      using Asker = void (PropertyChanger::*)();
      static const std::pair<const wchar_t*, Asker> kProperties[] = {
          {L"Color", &PropertyChanger::askColor},
          {L"LAyer", &PropertyChanger::askLayer},
          {L"LType", &PropertyChanger::askLinetype},
          {L"ltScale", &PropertyChanger::askLinetypeScale},
          {L"LWeight", &PropertyChanger::askLineWeight},
          {L"Thickness", &PropertyChanger::askThickness},
          {L"TRansparency", &PropertyChanger::askTransparency},
      };
      for (const auto& [keyword, ask] : kProperties) {
        if (property == keyword) (this->*ask)();
      }
    }
    apply();
  }

 private:
  // The text of a property shared by the selection, or "varies"; entities
  // that lack the property (thickness) are not counted.
  OdString present(const std::function<bool(const OdDbEntity*, OdString&)>& valueOf) const {
    OdString common;
    bool any = false;
    for (const OdDbObjectId& id : m_ids) {
      OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
      OdString value;
      if (entity.isNull() || !valueOf(entity.get(), value)) continue;
      if (any && value != common) return L"varies";
      common = value;
      any = true;
    }
    return common;
  }

  void askColor() {
    const OdString now =
        m_new.color ? colorText(*m_new.color) : present([](const OdDbEntity* e, OdString& v) {
          v = colorText(e->color());
          return true;
        });
    for (;;) {
      const OdString reply = askKeyword(L"\nNew color [Truecolor] <" + now + L">: ", L"Truecolor", RSG_OTHER);
      if (reply.isEmpty()) return;
      OdCmColor color;
      if (reply == L"Truecolor")
        color = askTrueColor();
      else if (!parseColor(reply, true, color)) {
        say(L"\nInvalid color " + quoted(reply) +
            L": requires BYLAYER, BYBLOCK, a color name, a number from 0 to 256 "
            L"or Truecolor.");
        continue;
      }
      m_new.color = color;
      return;
    }
  }

  void askLayer() {
    const OdString now = m_new.layer ? *m_new.layer : present([](const OdDbEntity* e, OdString& v) {
      v = e->layer();
      return true;
    });
    for (;;) {
      const OdString name = askText(L"\nEnter new layer name <" + now + L">: ");
      if (name.isEmpty()) return;
      if (isValidSymbolName(name)) {
        m_new.layer = name;
        return;
      }
      say(L"\nInvalid layer name " + quoted(name) + L".");
    }
  }

  void askLinetype() {
    const OdString now =
        m_new.linetype ? recordName(*m_new.linetype) : present([](const OdDbEntity* e, OdString& v) {
          v = recordName(e->linetypeId());
          if (v.isEmpty()) v = L"ByLayer";
          return true;
        });
    for (;;) {
      const OdString name = askText(L"\nEnter new linetype name <" + now + L">: ");
      if (name.isEmpty()) return;
      const OdDbObjectId id = m_db->findRecord(OdDbNameTable::kLinetype, name);
      if (!id.isNull()) {
        m_new.linetype = id;
        return;
      }
      say(L"\nLinetype " + quoted(name) + L" not found.  Use LINETYPE command to load it.");
    }
  }

  void askLinetypeScale() {
    const OdString now = m_new.linetypeScale ? formatDistance(*m_new.linetypeScale)
                                             : present([](const OdDbEntity* e, OdString& v) {
                                                 v = formatDistance(e->linetypeScale());
                                                 return true;
                                               });
    double scale = 0;
    if (askReal(L"\nSpecify new linetype scale <" + now + L">: ", scale, RSG_NOZERO | RSG_NONEG))
      m_new.linetypeScale = scale;
  }

  void askLineWeight() {
    const OdString now =
        m_new.lineWeight ? lineWeightText(*m_new.lineWeight) : present([](const OdDbEntity* e, OdString& v) {
          v = lineWeightText(e->lineWeight());
          return true;
        });
    for (;;) {
      const OdString reply = askText(L"\nEnter new lineweight <" + now + L">: ");
      if (reply.isEmpty()) return;
      OdDb::LineWeight weight;
      if (parseLineWeight(reply, true, weight)) {
        m_new.lineWeight = weight;
        return;
      }
      say(L"\nInvalid lineweight: requires ByLayer, ByBlock, Default or millimetres from 0.00 to 2.11.");
    }
  }

  void askThickness() {
    const OdString now =
        m_new.thickness ? formatDistance(*m_new.thickness) : present([](const OdDbEntity* e, OdString& v) {
          double thickness = 0;
          if (!entityThickness(e, thickness)) return false;
          v = formatDistance(thickness);
          return true;
        });
    double thickness = 0;
    if (askReal(L"\nSpecify new thickness <" + (now.isEmpty() ? formatDistance(0) : now) + L">: ", thickness))
      m_new.thickness = thickness;
  }

  void askTransparency() {
    const OdString now = m_new.transparency ? transparencyText(*m_new.transparency)
                                            : present([](const OdDbEntity* e, OdString& v) {
                                                v = transparencyText(e->transparency());
                                                return true;
                                              });
    for (;;) {
      const OdString reply =
          askKeyword(L"\nEnter transparency value (0-90) or [ByLayer/ByBlock] <" + now + L">: ",
                     L"ByLayer ByBlock", RSG_OTHER);
      if (reply.isEmpty()) return;
      OdCmTransparency transparency;
      if (reply == L"ByBlock") {
        transparency.setMethod(OdCmTransparency::kByBlock);
      } else if (reply != L"ByLayer") {
        wchar_t* end = nullptr;
        const long percent = std::wcstol(reply.c_str(), &end, 10);
        if (!end || *end || percent < 0 || percent > 90) {
          say(L"\nRequires ByLayer, ByBlock or a whole number from 0 to 90.");
          continue;
        }
        transparency = transparencyFromPercent(static_cast<int>(percent));
      }
      m_new.transparency = transparency;
      return;
    }
  }

  // ---- writing the changes

  OdDbObjectId layerToUse() {
    OdDbObjectId id = m_db->findRecord(OdDbNameTable::kLayer, *m_new.layer);
    if (!id.isNull()) return id;
    OdSmartPtr<OdDbLayerTableRecord> layer = OdDbLayerTableRecord::createObject();
    layer->setName(*m_new.layer);
    layer->setLinetypeObjectId(m_db->getLinetypeContinuousId());
    OdDbObjectPtr table = m_db->getLayerTableId().openObject(OdDb::kForWrite);
    return static_cast<OdDbSymbolTable*>(table.get())->add(layer.get());
  }

  void apply() {
    const OdDbObjectId layer = m_new.layer ? layerToUse() : OdDbObjectId();
    for (const OdDbObjectId& id : m_ids) {
      OdDbEntityPtr entity = OdDbEntity::cast(id.openObject(OdDb::kForWrite).get());
      if (entity.isNull()) continue;
      if (m_new.color && entity->color() != *m_new.color) entity->setColor(*m_new.color);
      if (!layer.isNull() && entity->layerId() != layer) entity->setLayer(layer);
      if (m_new.linetype && entity->linetypeId() != *m_new.linetype) entity->setLinetype(*m_new.linetype);
      if (m_new.linetypeScale && entity->linetypeScale() != *m_new.linetypeScale)
        entity->setLinetypeScale(*m_new.linetypeScale);
      if (m_new.lineWeight && entity->lineWeight() != *m_new.lineWeight)
        entity->setLineWeight(*m_new.lineWeight);
      if (m_new.transparency && entity->transparency() != *m_new.transparency)
        entity->setTransparency(*m_new.transparency);
      if (m_new.thickness) setEntityThickness(entity.get(), *m_new.thickness);
    }
  }

  OdDbDatabase* m_db;
  std::vector<OdDbObjectId> m_ids;
  NewProperties m_new;
};

void chpropCommand() {
  std::vector<OdDbObjectId> ids = selectObjects();
  if (ids.empty()) return;
  PropertyChanger(Host::instance().current()->database(), std::move(ids)).run();
}

}  // namespace

void registerPropertyCommands(CommandStack& stack) {
  stack.addCommand(L"RYAD", L"CHPROP", L"CHPROP", OdEdCommand::kUsePickSet, chpropCommand);
}

RYAD_HOST_COMMANDS(registerPropertyCommands);

}  // namespace ryhost
