// Blocks: -INSERT places a block reference (of a block of the drawing, or of
// a drawing file whose model space becomes a new block) with its scale,
// rotation and attribute values; -BLOCK makes a block of selected objects,
// which leave the drawing.
#include <cmath>
#include <filesystem>
#include <map>
#include <vector>

#include "DbBlockReference.h"
#include "DbPolyline.h"
#include "DbSymbolTable.h"
#include "DbTagSupport.h"
#include "DbText.h"
#include "DxfFile.h"
#include "RyApDocManager.h"
#include "commands/CommandRegistry.h"
#include "commands/EditSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"
#include "rydb.h"
#include "ryut.h"
#include "sdk/Input.h"

namespace ryhost {

namespace {

using namespace edit;

struct InsertMemory {
  OdString lastBlock;
};

InsertMemory& memory() {
  static RyApDataManager<InsertMemory> data;
  return data.docData();
}

bool isValidBlockName(const OdString& name) {
  if (name.isEmpty() || name.getLength() > 255 || name[0] == L'*') return false;
  return name.findOneOf(L"<>/\\\":;?*|,=`") < 0;
}

OdDbBlockTableRecordPtr openBlock(const OdDbObjectId& id, OdDb::OpenMode mode = OdDb::kForRead) {
  return OdDbBlockTableRecord::cast(id.openObject(mode).get());
}

// Blocks a reference may name: not layouts and not external references.
bool isInsertable(const OdDbBlockTableRecord* block) {
  return !block->isLayout() && !block->isFromExternalReference() && !block->isFromOverlayReference();
}

void listBlocks() {
  OdString pattern = askText(L"\nEnter block(s) to list <*>: ");
  pattern.trimLeft().trimRight();
  if (pattern.isEmpty()) pattern = L"*";
  OdDbObjectPtr object = database()->getBlockTableId().openObject();
  say(L"\nDefined blocks.");
  int count = 0;
  for (OdDbSymbolTableIteratorPtr it = static_cast<OdDbSymbolTable*>(object.get())->newIterator();
       !it->done(); it->step()) {
    OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::cast(it->getRecord().get());
    if (block.isNull() || !isInsertable(block.get()) || block->isAnonymous()) continue;
    if (ryutWcMatch(block->getName().c_str(), pattern.c_str()) != RTNORM) continue;
    say(L"\n  \"" + block->getName() + L"\"");
    ++count;
  }
  say(L"\n" + plural(count, L"block", L"blocks") + L" listed.");
}

// ---------------------------------------------------------------- drawing files as blocks

// Copies entities of another drawing into this one by their groups: names of
// layers, linetypes, text and dimension styles and blocks are looked up in
// this drawing, and what it lacks is copied along (an anonymous block always
// gets a new name of its own). References by handle do not cross drawings.
class DrawingImport {
 public:
  DrawingImport(OdDbDatabase* source, OdDbDatabase* target) : m_source(source), m_target(target) {}

  // The record of this drawing a name of the other one stands for (copied when missing).
  OdDbObjectId resolve(OdDbNameTable table, const OdString& name) {
    const OdDbObjectId sourceId = m_source->findRecord(table, name);
    OdDbObjectPtr sourceRecord = sourceId.openObject();
    auto* block = dynamic_cast<OdDbBlockTableRecord*>(sourceRecord.get());
    const bool anonymous = block && block->isAnonymous();
    if (!anonymous) {
      const OdDbObjectId existing = m_target->findRecord(table, name);
      if (!existing.isNull() || sourceId.isNull()) return existing;
    }
    auto known = m_copied.find(sourceId);
    if (known != m_copied.end()) return known->second;
    return block ? copyBlock(block, anonymous ? OdString() : name) : copyRecord(table, sourceRecord.get());
  }

  // A new block (named, or anonymous with a null name) holding copies of a block's entities.
  OdDbObjectId copyBlock(const OdDbBlockTableRecord* source, const OdString& name) {
    OdDbObjectId id;
    if (name.isEmpty()) {
      OdString prefix = source->getName().left(2);
      id = newAnonymousBlock(prefix.getLength() == 2 ? prefix : OdString(L"*U"));
    } else {
      OdDbBlockTableRecordPtr record = OdDbBlockTableRecord::createObject();
      record->setName(name);
      OdDbObjectPtr table = m_target->getBlockTableId().safeOpenObject(OdDb::kForWrite);
      id = static_cast<OdDbSymbolTable*>(table.get())->add(record.get());
    }
    m_copied[source->objectId()] = id;
    {
      OdDbBlockTableRecordPtr record = openBlock(id, OdDb::kForWrite);
      record->setOrigin(source->origin());
      record->setBlockFlags(
          static_cast<OdInt16>(source->blockFlags() & (OdDbBlockTableRecord::kAnonymous |
                                                       OdDbBlockTableRecord::kHasAttributeDefinitions)));
      record->setExplodable(source->explodable());
      record->setBlockInsertUnits(source->blockInsertUnits());
    }
    copyEntities(source->entityIds(), id);
    return id;
  }

  void copyEntities(const OdDbObjectIdArray& ids, const OdDbObjectId& owner) {
    for (const OdDbObjectId& id : ids) {
      OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
      if (entity.isNull()) continue;
      Piece piece;
      if (!copyEntity(entity.get(), piece)) continue;
      addPiece(piece, owner);
    }
  }

 private:
  // Each object is read with a context of its own: copying what it names
  // reads other objects in the middle of its groups.
  OdDbObjectPtr copyObject(const OdDbObject* source) {
    // The source drawing's records are written by name.
    OdDbDatabaseTagContext names(m_source);
    OdDxfTagList tags;
    OdDbSchemaIo::writeFields(source, tags, names, true);
    OdDbObjectPtr copy = OdDbObject::cast(source->isA()->create().get());
    if (copy.isNull()) return copy;
    TargetNames targetNames(*this);
    OdDbSchemaIo::readFields(copy.get(), tags.data(), tags.data() + tags.size(), targetNames);
    return copy;
  }

  OdDbObjectId copyRecord(OdDbNameTable table, const OdDbObject* source) {
    OdDbObjectPtr copy = copyObject(source);
    auto* record = dynamic_cast<OdDbSymbolTableRecord*>(copy.get());
    if (!record) return OdDbObjectId();
    OdDbObjectPtr tableObject = m_target->tableId(table).safeOpenObject(OdDb::kForWrite);
    const OdDbObjectId id = static_cast<OdDbSymbolTable*>(tableObject.get())->add(record);
    m_copied[source->objectId()] = id;
    return id;
  }

  // The entity with its attributes or vertices; false for what cannot be copied.
  bool copyEntity(const OdDbEntity* source, Piece& piece) {
    piece.entity = OdDbEntity::cast(copyObject(source).get());
    if (piece.entity.isNull()) return false;
    const OdDbObjectIdArray* subentities = source->subentityIds();
    if (!subentities) return true;
    if (auto* reference = dynamic_cast<OdDbBlockReference*>(piece.entity.get())) {
      *reference->subentityIdsInternal() = OdDbObjectIdArray();
      *reference->sequenceEndIdInternal() = OdDbObjectId();
    }
    for (const OdDbObjectId& id : *subentities) {
      OdDbEntityPtr sub = OdDbEntity::cast(id.openObject().get());
      if (sub.isNull()) continue;
      OdDbEntityPtr copy = OdDbEntity::cast(copyObject(sub.get()).get());
      if (copy.isNull()) continue;
      if (copy->isKindOf(OdDbAttribute::desc())) {
        piece.attributes.push_back(copy);
      } else if (auto* polyline = dynamic_cast<OdDb2dPolyline*>(piece.entity.get())) {
        if (auto* vertex = dynamic_cast<OdDb2dVertex*>(copy.get())) polyline->appendVertex(vertex);
      } else if (auto* polyline3d = dynamic_cast<OdDb3dPolyline*>(piece.entity.get())) {
        if (auto* vertex = dynamic_cast<OdDb3dPolylineVertex*>(copy.get())) polyline3d->appendVertex(vertex);
      } else if (auto* mesh = dynamic_cast<OdDbPolygonMesh*>(piece.entity.get())) {
        if (auto* vertex = dynamic_cast<OdDbPolygonMeshVertex*>(copy.get())) mesh->appendVertex(vertex);
      } else if (auto* faces = dynamic_cast<OdDbPolyFaceMesh*>(piece.entity.get())) {
        if (auto* vertex = dynamic_cast<OdDbPolyFaceMeshVertex*>(copy.get()))
          faces->appendVertex(vertex);
        else if (auto* face = dynamic_cast<OdDbFaceRecord*>(copy.get()))
          faces->appendFaceRecord(face);
      }
    }
    return true;
  }

  // Reads names into this drawing's records; handles name nothing here.
  class TargetNames : public OdDbTagContext {
   public:
    explicit TargetNames(DrawingImport& import) : m_import(import) {}
    OdDbDatabase* database() const override { return m_import.m_target; }
    OdDbObjectId idFromHandle(OdUInt64) override { return OdDbObjectId(); }
    OdDbObjectId idFromName(OdDbNameTable table, const OdString& name) override {
      return m_import.resolve(table, name);
    }

   private:
    DrawingImport& m_import;
  };

  OdDbDatabase* m_source;
  OdDbDatabase* m_target;
  std::map<OdDbObjectId, OdDbObjectId> m_copied;
};

// ---------------------------------------------------------------- -INSERT

// The block a reference will name: one of the drawing, or a drawing file
// still to be copied in.
struct BlockSource {
  OdString name;
  OdDbObjectId block;
  OdDbDatabasePtr file;  // set when the block comes from a drawing file

  // The entities that make the block (the file's model space for a file).
  OdDbObjectId contents() const { return file.isNull() ? block : file->getModelSpaceId(); }
};

// A drawing file for "name" or "name=file"; false when there is none to read.
bool readDrawing(const OdString& typed, BlockSource& source) {
  OdString located = Host::instance().findFile(typed);
  if (located.isEmpty() && std::filesystem::path(typed.toUtf8()).extension().empty())
    located = Host::instance().findFile(typed + L".dxf");
  if (located.isEmpty()) return false;
  try {
    source.file = odDxfReadFile(located);
  } catch (const OdError& error) {
    say(L"\nCannot read " + located + L": " + error.description());
    return false;
  }
  if (source.name.isEmpty()) source.name = OdString(std::filesystem::path(located.toUtf8()).stem().string());
  return true;
}

// The block to insert, by name or drawing file; without a name when Enter
// has no last block to repeat.
BlockSource askBlock() {
  for (;;) {
    const OdString last = memory().lastBlock;
    OdString typed = askText(last.isEmpty() ? OdString(L"\nEnter block name or [?]: ")
                                            : L"\nEnter block name or [?] <" + last + L">: ");
    typed.trimLeft().trimRight();
    if (typed.isEmpty()) {
      if (last.isEmpty()) return BlockSource();  // nothing to insert: the command ends
      typed = last;
    }
    if (typed == L"?") {
      listBlocks();
      continue;
    }
    BlockSource source;
    const int equals = typed.find(L'=');
    if (equals > 0) {
      // "name=file": the file becomes the block of that name.
      source.name = typed.left(equals);
      source.name.trimRight();
      OdString file = typed.mid(equals + 1);
      file.trimLeft();
      if (!isValidBlockName(source.name)) {
        say(L"\nInvalid block name.");
        continue;
      }
      if (!readDrawing(file, source)) {
        say(L"\nCannot find the drawing \"" + file + L"\".");
        continue;
      }
      if (!findBlock(source.name).isNull() &&
          !askYesNo(L"\nBlock \"" + source.name + L"\" already exists. Redefine it?", false)) {
        continue;
      }
      return source;
    }
    source.block = findBlock(cmdsupport::literalName(typed));
    if (!source.block.isNull()) {
      OdDbBlockTableRecordPtr block = openBlock(source.block);
      if (isInsertable(block.get())) {
        source.name = block->getName();
        return source;
      }
      say(L"\n\"" + typed + L"\" is a layout or an external reference and cannot be inserted.");
      continue;
    }
    if (readDrawing(typed, source)) {
      // A block of the file's name already in the drawing is used as it is.
      source.block = findBlock(source.name);
      if (!source.block.isNull()) source.file = nullptr;
      return source;
    }
    say(L"\nCannot find a block or drawing named \"" + typed + L"\".");
  }
}

struct Scale {
  double x = 1, y = 1, z = 1;
};

// A scale factor typed as a number (not zero); false for other text.
bool scaleFactor(const Answer& answer, double& value) {
  if (!parseReal(answer.text, value)) {
    say(L"\nRequires a number, a point or an option keyword.");
    return false;
  }
  if (value == 0) {
    say(L"\nValue must be nonzero.");
    return false;
  }
  return true;
}

// Scales from the insertion point to an opposite corner.
bool cornerScale(const OdGePoint3d& insertion, const OdGePoint3d& corner, Scale& scale) {
  const double dx = corner.x - insertion.x, dy = corner.y - insertion.y;
  if (std::fabs(dx) < 1e-12 || std::fabs(dy) < 1e-12) {
    say(L"\nThe corner must lie off both axes of the insertion point.");
    return false;
  }
  scale = {dx, dy, dx};
  return true;
}

double askOptionalFactor(const OdString& prompt, double otherwise) {
  double value = otherwise;
  askReal(prompt, value, nullptr, RSG_NOZERO);
  return value;
}

Scale askScale(const OdGePoint3d& insertion) {
  Scale scale;
  for (;;) {
    OdGePoint3d corner;
    const Answer answer = askPoint(L"\nEnter X scale factor, specify opposite corner, or [Corner/XYZ] <1>: ",
                                   corner, L"Corner XYZ", &insertion, RSG_OTHER);
    if (answer.isEnter()) {
      scale.x = scale.z = 1;
    } else if (answer.kind == Answer::kOther) {
      if (!scaleFactor(answer, scale.x)) continue;
      scale.z = scale.x;
    } else if (answer.is(L"Corner")) {
      askPoint(L"\nSpecify opposite corner: ", corner, nullptr, &insertion, RSG_NONULL);
      if (cornerScale(insertion, corner, scale)) return scale;
      continue;
    } else if (answer.is(L"XYZ")) {
      for (;;) {
        const Answer x =
            askPoint(L"\nSpecify X scale factor or [Corner] <1>: ", corner, L"Corner", &insertion, RSG_OTHER);
        if (x.isEnter()) break;
        if (x.is(L"Corner")) {
          askPoint(L"\nSpecify opposite corner: ", corner, nullptr, &insertion, RSG_NONULL);
          if (cornerScale(insertion, corner, scale)) break;
          continue;
        }
        if (x.isValue()) {
          if (cornerScale(insertion, corner, scale)) break;
          continue;
        }
        if (scaleFactor(x, scale.x)) break;
      }
      scale.y = askOptionalFactor(L"\nSpecify Y scale factor <use X scale factor>: ", scale.x);
      scale.z = askOptionalFactor(L"\nSpecify Z scale factor <use X scale factor>: ", scale.x);
      return scale;
    } else {
      if (cornerScale(insertion, corner, scale)) return scale;
      continue;
    }
    scale.y = askOptionalFactor(L"\nEnter Y scale factor <use X scale factor>: ", scale.x);
    return scale;
  }
}

// The attribute definitions that take a value on insertion, in block order.
std::vector<OdDbAttributeDefinitionPtr> valueDefinitions(const OdDbObjectId& contents) {
  std::vector<OdDbAttributeDefinitionPtr> definitions;
  OdDbBlockTableRecordPtr block = openBlock(contents);
  if (block.isNull()) return definitions;
  for (const OdDbObjectId& id : block->entityIds()) {
    OdDbAttributeDefinitionPtr definition = OdDbAttributeDefinition::cast(id.openObject().get());
    if (!definition.isNull() && !definition->isConstant()) definitions.push_back(definition);
  }
  return definitions;
}

OdString promptOf(const OdDbAttributeDefinition* definition) {
  return definition->prompt().isEmpty() ? definition->tag() : definition->prompt();
}

OdString withDefault(const OdString& prompt, const OdString& value) {
  return L"\n" + prompt + (value.isEmpty() ? OdString(L": ") : L" <" + value + L">: ");
}

// The values of the attributes: asked for (ATTREQ 1) unless preset, else the
// defaults; values of verifiable attributes are shown again to be confirmed.
std::vector<OdString> askAttributeValues(const std::vector<OdDbAttributeDefinitionPtr>& definitions) {
  std::vector<OdString> values;
  std::vector<size_t> toVerify;
  bool headed = false;
  const bool ask = Host::instance().sysvars().getInt(L"ATTREQ", 1) != 0;
  for (const OdDbAttributeDefinitionPtr& definition : definitions) {
    const OdString fallback = definition->textString();
    if (!ask || definition->isPreset()) {
      values.push_back(fallback);
      continue;
    }
    if (!headed) say(L"\nEnter attribute values");
    headed = true;
    const OdString value = askText(withDefault(promptOf(definition.get()), fallback));
    values.push_back(value.isEmpty() ? fallback : value);
    if (definition->isVerifiable()) toVerify.push_back(values.size() - 1);
  }
  if (!toVerify.empty()) say(L"\nVerify attribute values");
  for (size_t index : toVerify) {
    const OdString value = askText(withDefault(promptOf(definitions[index].get()), values[index]));
    if (!value.isEmpty()) values[index] = value;
  }
  return values;
}

void insertCommand() {
  BlockSource source = askBlock();
  if (source.name.isEmpty()) return;
  OdGePoint3d insertion;
  Scale scale;
  double rotation = 0;
  bool scaleGiven = false, rotationGiven = false;
  for (;;) {
    const Answer answer = askPoint(L"\nSpecify insertion point or [Scale/X/Y/Z/Rotate]: ", insertion,
                                   L"Scale X Y Z Rotate", nullptr, RSG_NONULL);
    if (answer.isValue()) break;
    scaleGiven = scaleGiven || !answer.is(L"Rotate");
    if (answer.is(L"Scale")) {
      scale.x = scale.y = scale.z = askOptionalFactor(L"\nSpecify scale factor for XYZ axes <1>: ", 1.0);
    } else if (answer.is(L"X")) {
      scale.x = askOptionalFactor(L"\nSpecify X scale factor <1>: ", 1.0);
    } else if (answer.is(L"Y")) {
      scale.y = askOptionalFactor(L"\nSpecify Y scale factor <1>: ", 1.0);
    } else if (answer.is(L"Z")) {
      scale.z = askOptionalFactor(L"\nSpecify Z scale factor <1>: ", 1.0);
    } else if (answer.is(L"Rotate")) {
      askDirection(L"\nSpecify rotation angle <" + formatDirection(rotation) + L">: ", rotation);
      rotationGiven = true;
    }
  }
  if (!scaleGiven) scale = askScale(insertion);
  if (!rotationGiven) {
    askDirection(L"\nSpecify rotation angle <" + formatDirection(0) + L">: ", rotation, nullptr, &insertion);
  }
  const std::vector<OdString> values = askAttributeValues(valueDefinitions(source.contents()));

  // Everything is known: the drawing changes from here on.
  if (!source.file.isNull()) {
    DrawingImport import(source.file.get(), database());
    OdDbObjectId old = findBlock(source.name);
    if (!old.isNull()) {
      // "name=file" over an existing block: the definition is replaced.
      OdDbBlockTableRecordPtr block = openBlock(old, OdDb::kForWrite);
      for (const OdDbObjectId& id : OdDbObjectIdArray(block->entityIds())) {
        if (OdDbObjectPtr entity = id.openObject(OdDb::kForWrite)) entity->erase();
      }
      block->setOrigin(source.file->headerPoint(L"$INSBASE"));
      block.release();
      OdDbBlockTableRecordPtr model = openBlock(source.file->getModelSpaceId());
      import.copyEntities(model->entityIds(), old);
      source.block = old;
    } else {
      OdDbBlockTableRecordPtr model = openBlock(source.file->getModelSpaceId());
      source.block = import.copyBlock(model.get(), source.name);
      openBlock(source.block, OdDb::kForWrite)->setOrigin(source.file->headerPoint(L"$INSBASE"));
    }
  }
  OdDbBlockReferencePtr reference = OdDbBlockReference::createObject();
  reference->setBlockTableRecord(source.block);
  reference->setPosition(insertion);
  reference->setScaleFactors(OdGeScale3d(scale.x, scale.y, scale.z));
  reference->setRotation(rotation);
  placeInUcs(reference.get());
  appendEntity(reference.get());
  const std::vector<OdDbAttributeDefinitionPtr> definitions = valueDefinitions(source.block);
  const OdGeMatrix3d placement = reference->blockTransform();
  for (size_t i = 0; i < definitions.size() && i < values.size(); ++i) {
    OdDbAttributePtr attribute = OdDbAttribute::createObject();
    attribute->setAttributeFromBlock(definitions[i].get(), placement);
    attribute->setTextString(values[i]);
    // Definitions on layer 0 follow the reference's layer, as the block's other entities do.
    if (attribute->layerId() == database()->getLayerZeroId()) attribute->setLayer(reference->layerId());
    reference->appendAttribute(attribute.get());
  }
  memory().lastBlock = source.name;
}

// ---------------------------------------------------------------- -BLOCK

// True when the block is the entity's own block or one nested in it.
bool refersTo(const OdDbEntity* entity, const OdDbObjectId& block, int depth = 0) {
  auto* reference = dynamic_cast<const OdDbBlockReference*>(entity);
  if (!reference || depth > 64) return false;
  if (reference->blockTableRecord() == block) return true;
  OdDbBlockTableRecordPtr nested = openBlock(reference->blockTableRecord());
  if (nested.isNull()) return false;
  for (const OdDbObjectId& id : nested->entityIds()) {
    OdDbEntityPtr inner = OdDbEntity::cast(id.openObject().get());
    if (!inner.isNull() && refersTo(inner.get(), block, depth + 1)) return true;
  }
  return false;
}

void blockCommand() {
  OdString name;
  OdDbObjectId existing;
  for (;;) {
    name = askText(L"\nEnter block name or [?]: ");
    name.trimLeft().trimRight();
    if (name.isEmpty()) return;
    if (name == L"?") {
      listBlocks();
      continue;
    }
    if (!isValidBlockName(name)) {
      say(L"\nInvalid block name.");
      continue;
    }
    existing = findBlock(name);
    if (existing.isNull()) break;
    if (!isInsertable(openBlock(existing).get())) {
      say(L"\n\"" + name + L"\" is a layout or an external reference.");
      continue;
    }
    if (askYesNo(L"\nBlock \"" + name + L"\" already exists. Redefine it?", false)) break;
  }
  OdGePoint3d base;
  askPoint(L"\nSpecify insertion base point: ", base, nullptr, nullptr, RSG_NONULL);
  const std::vector<OdDbObjectId> ids = selectObjects(nullptr, true);
  if (ids.empty()) {
    say(L"\nNo objects selected: no block was made.");
    return;
  }
  std::vector<Piece> pieces;
  bool hasDefinitions = false;
  for (const OdDbObjectId& id : ids) {
    OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
    if (entity.isNull()) continue;
    if (!existing.isNull() && refersTo(entity.get(), existing)) {
      say(L"\nBlock \"" + name + L"\" cannot contain a reference to itself.");
      return;
    }
    Piece piece;
    if (makePiece(entity.get(), OdGeMatrix3d::kIdentity, piece) != eOk) continue;
    hasDefinitions = hasDefinitions || entity->isKindOf(OdDbAttributeDefinition::desc());
    pieces.push_back(std::move(piece));
  }

  OdDbObjectId blockId = existing;
  if (blockId.isNull()) {
    OdDbBlockTableRecordPtr record = OdDbBlockTableRecord::createObject();
    record->setName(name);
    OdDbObjectPtr table = database()->getBlockTableId().safeOpenObject(OdDb::kForWrite);
    blockId = static_cast<OdDbSymbolTable*>(table.get())->add(record.get());
  } else {
    OdDbBlockTableRecordPtr record = openBlock(blockId, OdDb::kForWrite);
    for (const OdDbObjectId& id : OdDbObjectIdArray(record->entityIds())) {
      if (OdDbObjectPtr entity = id.openObject(OdDb::kForWrite)) entity->erase();
    }
  }
  {
    OdDbBlockTableRecordPtr record = openBlock(blockId, OdDb::kForWrite);
    record->setOrigin(toWorld(base));
    const OdInt16 flags = record->blockFlags();
    record->setBlockFlags(hasDefinitions ? (flags | OdDbBlockTableRecord::kHasAttributeDefinitions)
                                         : (flags & ~OdDbBlockTableRecord::kHasAttributeDefinitions));
  }
  for (Piece& piece : pieces) addPiece(piece, blockId);
  for (const OdDbObjectId& id : ids) {
    if (OdDbObjectPtr entity = id.openObject(OdDb::kForWrite)) entity->erase();
  }
  say(L"\nBlock \"" + name + L"\" made of " +
      plural(static_cast<int>(pieces.size()), L"object.", L"objects."));
}

}  // namespace

void registerInsertCommands(CommandStack& stack) {
  addHostCommands(stack, {{L"-INSERT", OdEdCommand::kModal, insertCommand},
                          {L"-BLOCK", OdEdCommand::kModal, blockCommand}});
}

RYAD_HOST_COMMANDS(registerInsertCommands);

}  // namespace ryhost
