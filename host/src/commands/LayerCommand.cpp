// -LAYER (also LAYER on the console): the layer table from the command line.
// Options: ?, Make, Set, New, ON, OFF, Color, Ltype, LWeight, Freeze, Thaw,
// LOck, Unlock, asked again until Enter.
//
// The command works on a copy of the layers' states: every option changes
// the copy, the final Enter writes the differences to the drawing, so that
// Esc at any prompt leaves the drawing as it was.
#include <algorithm>
#include <utility>

#include "DbSymbolTable.h"
#include "commands/CommandRegistry.h"
#include "commands/CommandSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"
#include "rydb.h"
#include "ryed.h"

namespace ryhost {

namespace {

using namespace cmdsupport;

void say(const OdString& text) { Host::instance().print(text); }

OdString quoted(const OdString& name) { return L"\"" + name + L"\""; }

struct LayerState {
  OdDbObjectId id;  // null for a layer this command makes
  OdString name;
  bool off = false, frozen = false, locked = false;
  OdCmColor color = OdCmColor(OdCmEntityColor::fromIndex(7));
  OdDbObjectId linetype;
  OdDb::LineWeight lineWeight = OdDb::kLnWtByLwDefault;

  bool sameAs(const LayerState& other) const {
    return off == other.off && frozen == other.frozen && locked == other.locked && color == other.color &&
           linetype == other.linetype && lineWeight == other.lineWeight;
  }
};

bool hasWildcard(const OdString& name) { return name.findOneOf(L"*?#@.~[]`") >= 0; }

class LayerEditor {
 public:
  explicit LayerEditor(OdDbDatabase* db) : m_db(db) {
    for (const OdDbObjectId& id : tableRecords(db, OdDbNameTable::kLayer)) {
      OdDbObjectPtr object = id.openObject();
      auto* record = static_cast<OdDbLayerTableRecord*>(object.get());
      m_layers.push_back({id, record->getName(), record->isOff(), record->isFrozen(), record->isLocked(),
                          record->color(), record->linetypeObjectId(), record->lineWeight()});
    }
    m_original = m_layers;
    m_current = recordName(db->getCLAYER());
  }

  void run() {
    say(L"\nCurrent layer:  " + quoted(m_current));
    for (;;) {
      const OdString option = askKeyword(
          L"\nEnter an option [?/Make/Set/New/ON/OFF/Color/Ltype/LWeight/Freeze/Thaw/LOck/Unlock]: ",
          L"? Make Set New ON OFF Color Ltype LWeight Freeze Thaw LOck Unlock");
      if (option.isEmpty()) break;
      runOption(option);
    }
    apply();
  }

 private:
  void runOption(const OdString& option) {
    using Handler = void (LayerEditor::*)();
    static const std::pair<const wchar_t*, Handler> kOptions[] = {
        {L"?", &LayerEditor::list},
        {L"Make", &LayerEditor::make},
        {L"Set", &LayerEditor::setCurrent},
        {L"New", &LayerEditor::addNew},
        {L"ON", &LayerEditor::turnOn},
        {L"OFF", &LayerEditor::turnOff},
        {L"Color", &LayerEditor::changeColor},
        {L"Ltype", &LayerEditor::changeLinetype},
        {L"LWeight", &LayerEditor::changeLineWeight},
        {L"Freeze", &LayerEditor::freeze},
        {L"Thaw", &LayerEditor::thaw},
        {L"LOck", &LayerEditor::lock},
        {L"Unlock", &LayerEditor::unlock},
    };
    for (const auto& [keyword, handler] : kOptions) {
      if (option == keyword) (this->*handler)();
    }
  }

  // ---- lookups

  LayerState* find(const OdString& name) {
    for (LayerState& layer : m_layers) {
      if (layer.name.iCompare(name) == 0) return &layer;
    }
    return nullptr;
  }

  // The layers a name list names; names that match nothing are reported.
  std::vector<LayerState*> resolve(const std::vector<OdString>& names) {
    std::vector<LayerState*> found;
    auto add = [&](LayerState* layer) {
      if (std::find(found.begin(), found.end(), layer) == found.end()) found.push_back(layer);
    };
    for (const OdString& name : names) {
      if (!hasWildcard(name)) {
        if (LayerState* layer = find(name))
          add(layer);
        else
          say(L"\nCannot find layer " + quoted(name) + L".");
        continue;
      }
      const size_t before = found.size();
      for (LayerState& layer : m_layers) {
        if (nameMatches(layer.name, name)) add(&layer);
      }
      if (found.size() == before) say(L"\nNo matching layer names found for " + quoted(name) + L".");
    }
    return found;
  }

  std::vector<LayerState*> names(const OdString& prompt, const OdString& defaultName = OdString()) {
    OdString text = askText(prompt);
    if (text.isEmpty()) text = defaultName;
    return resolve(splitNameList(text));
  }

  // A name list, or Enter and the objects whose layers are meant.
  std::vector<LayerState*> namesOrSelection(const OdString& prompt) {
    const OdString text = askText(prompt);
    if (!text.isEmpty()) return resolve(splitNameList(text));
    // The layers of the objects, by name (a layer "L#1" is no pattern).
    std::vector<LayerState*> found;
    for (const OdDbObjectId& id : selectObjects(nullptr, false)) {
      OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
      LayerState* layer = entity.get() ? find(entity->layer()) : nullptr;
      if (layer && std::find(found.begin(), found.end(), layer) == found.end()) found.push_back(layer);
    }
    return found;
  }

  template <class Change>
  void forEach(const std::vector<LayerState*>& layers, Change change) {
    for (LayerState* layer : layers) change(*layer);
  }

  LayerState& addLayer(const OdString& name) {
    LayerState layer;
    layer.name = name;
    layer.linetype = m_db->getLinetypeContinuousId();
    m_layers.push_back(layer);
    return m_layers.back();
  }

  // ---- options

  void list() {
    OdString patterns = askText(L"\nEnter layer name(s) to list <*>: ");
    if (patterns.isEmpty()) patterns = L"*";
    say(OdString().format(L"\n\n%-24ls %-20ls %-14ls %-16ls %ls", L"Layer name", L"State", L"Color",
                          L"Linetype", L"Lineweight"));
    for (const LayerState& layer : m_layers) {
      const std::vector<OdString> wanted = splitNameList(patterns);
      if (std::none_of(wanted.begin(), wanted.end(),
                       [&](const OdString& p) { return nameMatches(layer.name, p); }))
        continue;
      OdString state = layer.off ? L"Off" : L"On";
      if (layer.frozen) state += L" Frozen";
      if (layer.locked) state += L" Locked";
      say(OdString().format(L"\n%-24ls %-20ls %-14ls %-16ls %ls", layer.name.c_str(), state.c_str(),
                            colorText(layer.color).c_str(), recordName(layer.linetype).c_str(),
                            lineWeightText(layer.lineWeight).c_str()));
    }
    say(L"\n\nCurrent layer: " + quoted(m_current));
  }

  void make() {
    OdString name = askText(L"\nEnter name for new layer (becomes the current layer) <" + m_current + L">: ");
    if (name.isEmpty()) name = m_current;
    if (!isValidSymbolName(name)) {
      say(L"\nInvalid layer name " + quoted(name) + L".");
      return;
    }
    LayerState* layer = find(name);
    if (!layer) layer = &addLayer(name);
    if (layer->frozen) {
      say(L"\nCannot make frozen layer " + quoted(layer->name) + L" current.");
      return;
    }
    m_current = layer->name;
  }

  void setCurrent() {
    const OdString name = askText(L"\nEnter layer name to make current or <select object>: ");
    LayerState* layer = nullptr;
    if (name.isEmpty()) {
      layer = pickedLayer();
      if (!layer) return;
    } else if (!(layer = find(literalName(name)))) {
      say(L"\nCannot find layer " + quoted(name) + L".");
      return;
    }
    if (layer->frozen) {
      say(L"\nCannot make frozen layer " + quoted(layer->name) + L" current.");
      return;
    }
    m_current = layer->name;
  }

  LayerState* pickedLayer() {
    for (;;) {
      ads_name picked;
      ads_point where;
      const int code = ryedEntSel(L"\nSelect object: ", picked, where);
      if (code == RTCAN) throw CancelledError();
      if (code != RTNORM) return nullptr;
      OdDbObjectId id;
      rydbGetObjectId(id, picked);
      OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
      if (entity.get()) return find(entity->layer());
    }
  }

  void addNew() {
    for (const OdString& name : splitNameList(askText(L"\nEnter name list for new layer(s): "))) {
      if (!isValidSymbolName(name))
        say(L"\nInvalid layer name " + quoted(name) + L".");
      else if (find(name))
        say(L"\nLayer " + quoted(name) + L" already exists.");
      else
        addLayer(name);
    }
  }

  void turnOn() {
    forEach(names(L"\nEnter name list of layer(s) to turn On: "),
            [](LayerState& layer) { layer.off = false; });
  }

  void turnOff() {
    for (LayerState* layer :
         namesOrSelection(L"\nEnter name list of layer(s) to turn off or <select objects>: ")) {
      if (layer->name.iCompare(m_current) == 0 &&
          !askYesNo(L"\nReally want layer " + layer->name + L" (the CURRENT layer) off? <N>: ", false)) {
        continue;
      }
      layer->off = true;
    }
  }

  void freeze() {
    for (LayerState* layer :
         namesOrSelection(L"\nEnter name list of layer(s) to freeze or <select objects>: ")) {
      if (layer->name.iCompare(m_current) == 0) {
        say(L"\nCannot freeze layer " + quoted(layer->name) + L". It is the CURRENT layer.");
        continue;
      }
      layer->frozen = true;
    }
  }

  void thaw() {
    forEach(names(L"\nEnter name list of layer(s) to thaw: "),
            [](LayerState& layer) { layer.frozen = false; });
  }

  void lock() {
    forEach(namesOrSelection(L"\nEnter name list of layer(s) to lock or <select objects>: "),
            [](LayerState& layer) { layer.locked = true; });
  }

  void unlock() {
    forEach(namesOrSelection(L"\nEnter name list of layer(s) to unlock or <select objects>: "),
            [](LayerState& layer) { layer.locked = false; });
  }

  void changeColor() {
    OdCmColor color;
    for (;;) {
      const OdString reply =
          askKeyword(L"\nEnter color name or number (1-255) or [Truecolor]: ", L"Truecolor", RSG_OTHER);
      if (reply.isEmpty()) return;
      if (reply == L"Truecolor") {
        color = askTrueColor();
        break;
      }
      if (parseColor(reply, false, color)) break;
      say(L"\nInvalid color " + quoted(reply) +
          L": requires a color name, a number from 1 to 255 or Truecolor.");
    }
    forEach(names(L"\nEnter name list of layer(s) for color " + colorText(color) + L" <" + m_current + L">: ",
                  m_current),
            [&](LayerState& layer) { layer.color = color; });
  }

  void changeLinetype() {
    OdDbObjectId linetype;
    for (;;) {
      OdString name = askKeyword(L"\nEnter a loaded linetype name or [?] <Continuous>: ", L"?", RSG_OTHER);
      if (name.isEmpty()) name = L"Continuous";
      if (name == L"?") {
        listLinetypes();
        continue;
      }
      linetype = m_db->findRecord(OdDbNameTable::kLinetype, literalName(name));
      if (!linetype.isNull() && linetype != m_db->getLinetypeByLayerId() &&
          linetype != m_db->getLinetypeByBlockId())
        break;
      if (!linetype.isNull())
        say(L"\nA layer cannot take the linetype " + quoted(name) + L".");
      else
        say(L"\nLinetype " + quoted(name) + L" not found.  Use LINETYPE command to load it.");
    }
    const OdString name = recordName(linetype);
    forEach(names(L"\nEnter name list of layer(s) for linetype " + quoted(name) + L" <" + m_current + L">: ",
                  m_current),
            [&](LayerState& layer) { layer.linetype = linetype; });
  }

  void listLinetypes() {
    say(L"\nLoaded linetypes:");
    for (const OdDbObjectId& id : tableRecords(m_db, OdDbNameTable::kLinetype)) {
      OdDbObjectPtr object = id.openObject();
      auto* record = static_cast<OdDbLinetypeTableRecord*>(object.get());
      say(OdString().format(L"\n  %-20ls %ls", record->getName().c_str(), record->comments().c_str()));
    }
  }

  void changeLineWeight() {
    OdDb::LineWeight weight = OdDb::kLnWtByLwDefault;
    for (;;) {
      const OdString reply = askText(L"\nEnter lineweight (0.0mm-2.11mm): ");
      if (reply.isEmpty()) return;
      if (parseLineWeight(reply, false, weight)) break;
      say(L"\nInvalid lineweight.");
    }
    forEach(names(L"\nEnter name list of layer(s) for lineweight " + lineWeightText(weight) + L" <" +
                      m_current + L">: ",
                  m_current),
            [&](LayerState& layer) { layer.lineWeight = weight; });
  }

  // ---- writing the changes

  void apply() {
    OdDbObjectPtr tableObject;
    for (size_t i = 0; i < m_layers.size(); ++i) {
      const LayerState& layer = m_layers[i];
      if (layer.id.isNull()) {
        if (tableObject.isNull()) tableObject = m_db->getLayerTableId().openObject(OdDb::kForWrite);
        OdSmartPtr<OdDbLayerTableRecord> record = OdDbLayerTableRecord::createObject();
        record->setName(layer.name);
        write(layer, record.get());
        static_cast<OdDbSymbolTable*>(tableObject.get())->add(record.get());
      } else if (!layer.sameAs(m_original[i])) {
        OdDbObjectPtr object = layer.id.openObject(OdDb::kForWrite);
        write(layer, static_cast<OdDbLayerTableRecord*>(object.get()));
      }
    }
    tableObject.release();
    const OdDbObjectId currentId = m_db->findRecord(OdDbNameTable::kLayer, m_current);
    if (currentId != m_db->getCLAYER()) m_db->setCLAYER(currentId);
  }

  static void write(const LayerState& layer, OdDbLayerTableRecord* record) {
    if (record->isOff() != layer.off) record->setIsOff(layer.off);
    if (record->isFrozen() != layer.frozen) record->setIsFrozen(layer.frozen);
    if (record->isLocked() != layer.locked) record->setIsLocked(layer.locked);
    if (record->color() != layer.color) record->setColor(layer.color);
    if (record->linetypeObjectId() != layer.linetype) record->setLinetypeObjectId(layer.linetype);
    if (record->lineWeight() != layer.lineWeight) record->setLineWeight(layer.lineWeight);
  }

  OdDbDatabase* m_db;
  std::vector<LayerState> m_layers, m_original;
  OdString m_current;
};

void layerCommand() {
  Document* doc = Host::instance().current();
  LayerEditor(doc->database()).run();
}

}  // namespace

void registerLayerCommands(CommandStack& stack) {
  addCommandAndLineForm(stack, L"LAYER", layerCommand);
}

RYAD_HOST_COMMANDS(registerLayerCommands);

}  // namespace ryhost
