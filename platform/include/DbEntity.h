// Entities: objects with graphics, owned by a block table record (model
// space, a layout or a block definition), with the common properties.
#pragma once

#include "CmColor.h"
#include "DbObject.h"
#include "Ge/GeExtents3d.h"
#include "Ge/GeMatrix3d.h"

class OdDbEntity;
using OdDbEntityPtr = OdSmartPtr<OdDbEntity>;
using OdRxObjectPtrArray = OdArray<OdRxObjectPtr>;

class OdDbEntity : public OdDbObject {
  ODRX_DECLARE_MEMBERS(OdDbEntity);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbEntity();

  // The block table record that owns the entity.
  OdDbObjectId blockId() const { return ownerId(); }

  OdString layer() const;
  OdDbObjectId layerId() const { return m_layerId; }
  OdResult setLayer(const OdString& layerName, bool doSubents = true);
  OdResult setLayer(const OdDbObjectId& layerId, bool doSubents = true);

  OdString linetype() const;
  OdDbObjectId linetypeId() const { return m_linetypeId; }
  OdResult setLinetype(const OdString& linetypeName, bool doSubents = true);
  OdResult setLinetype(const OdDbObjectId& linetypeId, bool doSubents = true);
  double linetypeScale() const { return m_linetypeScale; }
  OdResult setLinetypeScale(double scale, bool doSubents = true);

  OdCmColor color() const { return OdCmColor(m_color); }
  const OdCmEntityColor& entityColor() const { return m_color; }
  OdResult setColor(const OdCmColor& color, bool doSubents = true);
  OdInt16 colorIndex() const { return m_color.colorIndex(); }
  OdResult setColorIndex(OdInt16 index, bool doSubents = true);

  OdDb::LineWeight lineWeight() const { return static_cast<OdDb::LineWeight>(m_lineWeight); }
  OdResult setLineWeight(OdDb::LineWeight weight, bool doSubents = true);

  OdCmTransparency transparency() const;
  OdResult setTransparency(const OdCmTransparency& transparency, bool doSubents = true);

  // Plot style: by layer unless an id of a plot-style name is set.
  OdDb::PlotStyleNameType getPlotStyleNameId(OdDbObjectId& id) const;
  OdDbObjectId plotStyleNameId() const { return m_plotStyleNameId; }
  OdResult setPlotStyleName(OdDb::PlotStyleNameType type, const OdDbObjectId& id = OdDbObjectId(), bool doSubents = true);

  OdDb::Visibility visibility() const { return static_cast<OdDb::Visibility>(m_visibility); }
  OdResult setVisibility(OdDb::Visibility visibility, bool doSubents = true);

  // Layer, linetype, scale, colour, lineweight, plot style, visibility and
  // transparency of another entity.
  void setPropertiesFrom(const OdDbEntity* source, bool doSubents = true);
  // The database's current layer, linetype, colour, scale and lineweight.
  void setDatabaseDefaults(OdDbDatabase* database = nullptr, bool doSubents = false);

  // Geometry. The base class has no geometry of its own.
  virtual OdResult getGeomExtents(OdGeExtents3d& extents) const;
  virtual OdResult transformBy(const OdGeMatrix3d& xform);
  virtual OdResult getTransformedCopy(const OdGeMatrix3d& xform, OdDbEntityPtr& copy) const;
  // Breaks the entity into simpler ones (not added to any database).
  virtual OdResult explode(OdRxObjectPtrArray& entities) const;
  // The nearest distance from a world point to the entity's geometry, used
  // for picking. Entities without a finer rule use their extents.
  virtual double distanceTo(const OdGePoint3d& point) const;

  // The paper-space flag as files carry it (derived from the owner).
  bool isInPaperSpace() const;

  // Complex entities (block references with attributes, polylines with
  // vertices) own a sequence of subentities closed by an end marker (SEQEND).
  // They return their list and marker slot; other entities return null.
  virtual OdDbObjectIdArray* subentityIdsInternal() { return nullptr; }
  virtual OdDbObjectId* sequenceEndIdInternal() { return nullptr; }
  const OdDbObjectIdArray* subentityIds() const { return const_cast<OdDbEntity*>(this)->subentityIdsInternal(); }
  OdDbObjectId sequenceEndId() const {
    const OdDbObjectId* slot = const_cast<OdDbEntity*>(this)->sequenceEndIdInternal();
    return slot ? *slot : OdDbObjectId();
  }
  // True when the entity can own that kind of subentity (attributes, vertices).
  virtual bool acceptsSubentity(const OdDbEntity* sub) const { return false; }

 protected:
  OdDbObjectId m_layerId;
  OdDbObjectId m_linetypeId;
  OdDbObjectId m_plotStyleNameId;
  double m_linetypeScale = 1.0;
  OdCmEntityColor m_color;
  OdUInt32 m_transparency = 0;
  OdInt16 m_lineWeight = OdDb::kLnWtByLayer;
  OdInt16 m_visibility = OdDb::kVisible;

  friend struct OdDbEntityColorCodec;
};

// Entities with a parameterised path: lines, arcs, polylines, splines.
class OdDbCurve : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbCurve);
  ODDB_DECLARE_SCHEMA();

 public:
  virtual bool isClosed() const { return false; }
  virtual bool isPeriodic() const { return false; }
  virtual OdResult getStartParam(double& param) const { return eNotApplicable; }
  virtual OdResult getEndParam(double& param) const { return eNotApplicable; }
  virtual OdResult getStartPoint(OdGePoint3d& point) const { return eNotApplicable; }
  virtual OdResult getEndPoint(OdGePoint3d& point) const { return eNotApplicable; }
  virtual OdResult getPointAtParam(double param, OdGePoint3d& point) const { return eNotApplicable; }
  virtual OdResult getParamAtPoint(const OdGePoint3d& point, double& param) const { return eNotApplicable; }
  virtual OdResult getDistAtParam(double param, double& dist) const { return eNotApplicable; }
  virtual OdResult getClosestPointTo(const OdGePoint3d& point, OdGePoint3d& closest, bool extend = false) const {
    return eNotApplicable;
  }
  virtual OdResult getArea(double& area) const { return eNotApplicable; }
  double distanceTo(const OdGePoint3d& point) const override;
};
