// Texts: single-line text, attribute definitions and attributes (also with
// multi-line contents), and multiline text.
#pragma once

#include "DbEntity.h"
#include "Ge/GePoint3dArray.h"

class OdDbMText;
using OdDbMTextPtr = OdSmartPtr<OdDbMText>;

namespace OdDb {
enum TextHorzMode : int { kTextLeft = 0, kTextCenter = 1, kTextRight = 2, kTextAlign = 3, kTextMid = 4, kTextFit = 5 };
enum TextVertMode : int { kTextBase = 0, kTextBottom = 1, kTextVertMid = 2, kTextTop = 3 };
}  // namespace OdDb

class OdDbText : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbText);
  ODDB_DECLARE_SCHEMA();

 public:
  // Points in world coordinates (the drawing keeps them in the text's plane).
  OdGePoint3d position() const;
  void setPosition(const OdGePoint3d& point);
  OdGePoint3d alignmentPoint() const;
  void setAlignmentPoint(const OdGePoint3d& point);
  // True when the text is placed by its insertion point alone (left and baseline).
  bool isDefaultAlignment() const { return m_horizontalMode == OdDb::kTextLeft && m_verticalMode == OdDb::kTextBase; }
  OdString textString() const { return m_text; }
  const OdString& textStringConst() const { return m_text; }
  void setTextString(const OdString& text) { assertWriteEnabled(); m_text = text; }
  double height() const { return m_height; }
  void setHeight(double height) { assertWriteEnabled(); m_height = height; }
  double rotation() const { return m_rotation; }
  void setRotation(double angle) { assertWriteEnabled(); m_rotation = angle; }
  double widthFactor() const { return m_widthFactor; }
  void setWidthFactor(double factor) { assertWriteEnabled(); m_widthFactor = factor; }
  double oblique() const { return m_oblique; }
  void setOblique(double angle) { assertWriteEnabled(); m_oblique = angle; }
  double thickness() const { return m_thickness; }
  void setThickness(double thickness) { assertWriteEnabled(); m_thickness = thickness; }
  OdGeVector3d normal() const { return m_normal; }
  // Changes the plane; the world positions stay where they are.
  void setNormal(const OdGeVector3d& normal);
  OdDbObjectId textStyle() const { return m_styleId; }
  void setTextStyle(const OdDbObjectId& styleId) { assertWriteEnabled(); m_styleId = styleId; }
  OdDb::TextHorzMode horizontalMode() const { return static_cast<OdDb::TextHorzMode>(m_horizontalMode); }
  void setHorizontalMode(OdDb::TextHorzMode mode) { assertWriteEnabled(); m_horizontalMode = static_cast<OdInt16>(mode); }
  OdDb::TextVertMode verticalMode() const { return static_cast<OdDb::TextVertMode>(m_verticalMode); }
  void setVerticalMode(OdDb::TextVertMode mode) { assertWriteEnabled(); m_verticalMode = static_cast<OdInt16>(mode); }
  bool isMirroredInX() const { return (m_generation & 2) != 0; }
  void mirrorInX(bool on);
  bool isMirroredInY() const { return (m_generation & 4) != 0; }
  void mirrorInY(bool on);

  // The text's box in its own plane: corners relative to the insertion point,
  // unrotated, from the metric of the host's text measure (see odDbTextBox).
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  double distanceTo(const OdGePoint3d& point) const override;
  // The four corners of the text box in world coordinates.
  void getBoundingPoints(OdGePoint3dArray& points) const;
  void subSetDatabaseDefaults(OdDbDatabase* database) override;

 protected:
  double m_thickness = 0;
  OdGePoint3d m_position;
  double m_height = 0;
  OdString m_text;
  double m_rotation = 0;
  double m_widthFactor = 1.0;
  double m_oblique = 0;
  OdDbObjectId m_styleId;
  OdInt16 m_generation = 0;
  OdInt16 m_horizontalMode = 0;
  OdGePoint3d m_alignmentPoint;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
  OdInt16 m_verticalMode = 0;

  // The field list shared with attribute definitions and attributes.
  static std::vector<OdDbField> textFields();

  friend class OdDbAttribute;
};
using OdDbTextPtr = OdSmartPtr<OdDbText>;

// The text measure used where no font files are read: every character
// advances 0.7 x height x width factor, East Asian full-width characters
// 1.0 x height x width factor; the box runs from the baseline to one height
// above it. Corners are relative to the insertion point, unrotated.
void odDbTextBox(const OdString& text, double height, double widthFactor, OdGePoint3d& lowerLeft,
                 OdGePoint3d& upperRight);

// The groups an attribute (T = OdDbAttribute) and an attribute definition
// (T = OdDbAttributeDefinition) share, declared once: the version, tag,
// flags, field length, vertical alignment and locked position; the
// definition's prompt stands between the version and the tag.
template <class T>
std::vector<OdDbField> odDbAttributeFields();

class OdDbAttributeDefinition : public OdDbText {
  ODRX_DECLARE_MEMBERS(OdDbAttributeDefinition);
  ODDB_DECLARE_SCHEMA();

 public:
  OdString tag() const { return m_tag; }
  const OdString& tagConst() const { return m_tag; }
  void setTag(const OdString& tag) { assertWriteEnabled(); m_tag = tag; }
  OdString prompt() const { return m_prompt; }
  void setPrompt(const OdString& prompt) { assertWriteEnabled(); m_prompt = prompt; }
  bool isInvisible() const { return (m_attFlags & 1) != 0; }
  void setInvisible(bool on) { setFlag(1, on); }
  bool isConstant() const { return (m_attFlags & 2) != 0; }
  void setConstant(bool on) { setFlag(2, on); }
  bool isVerifiable() const { return (m_attFlags & 4) != 0; }
  void setVerifiable(bool on) { setFlag(4, on); }
  bool isPreset() const { return (m_attFlags & 8) != 0; }
  void setPreset(bool on) { setFlag(8, on); }
  bool lockPositionInBlock() const { return m_lockPosition != 0; }
  void setLockPositionInBlock(bool on) { assertWriteEnabled(); m_lockPosition = on ? 1 : 0; }
  OdInt16 fieldLength() const { return m_fieldLength; }
  void setFieldLength(OdInt16 length) { assertWriteEnabled(); m_fieldLength = length; }
  bool isMTextAttributeDefinition() const;

 protected:
  template <class T>
  friend std::vector<OdDbField> odDbAttributeFields();
  void setFlag(OdInt16 bit, bool on) {
    assertWriteEnabled();
    m_attFlags = static_cast<OdInt16>(on ? (m_attFlags | bit) : (m_attFlags & ~bit));
  }
  OdString m_prompt;
  OdString m_tag;
  OdInt16 m_version = 0;
  OdInt16 m_attFlags = 0;
  OdInt16 m_fieldLength = 0;
  OdInt16 m_lockPosition = 0;
};
using OdDbAttributeDefinitionPtr = OdSmartPtr<OdDbAttributeDefinition>;

class OdDbAttribute : public OdDbText {
  ODRX_DECLARE_MEMBERS(OdDbAttribute);
  ODDB_DECLARE_SCHEMA();

 public:
  OdString tag() const { return m_tag; }
  const OdString& tagConst() const { return m_tag; }
  void setTag(const OdString& tag) { assertWriteEnabled(); m_tag = tag; }
  bool isInvisible() const { return (m_attFlags & 1) != 0; }
  void setInvisible(bool on) { setFlag(1, on); }
  bool isConstant() const { return (m_attFlags & 2) != 0; }
  bool isVerifiable() const { return (m_attFlags & 4) != 0; }
  bool isPreset() const { return (m_attFlags & 8) != 0; }
  bool lockPositionInBlock() const { return m_lockPosition != 0; }
  OdInt16 fieldLength() const { return m_fieldLength; }
  // Multi-line attributes carry an embedded multiline text.
  bool isMTextAttribute() const;
  // The embedded multiline text of a multi-line attribute (not in a database).
  OdDbMTextPtr getMTextAttribute() const;
  void setMTextAttribute(const OdDbMText* mtext);
  void convertIntoMTextAttribute(bool on = true);
  // The value of a multi-line attribute is its multiline text's contents;
  // for others, the text string.
  OdString value() const;
  // Copies tag, flags and geometry from a definition, placed by a block transform.
  void setAttributeFromBlock(const OdDbAttributeDefinition* definition, const OdGeMatrix3d& blockTransform);

 protected:
  template <class T>
  friend std::vector<OdDbField> odDbAttributeFields();
  void setFlag(OdInt16 bit, bool on) {
    assertWriteEnabled();
    m_attFlags = static_cast<OdInt16>(on ? (m_attFlags | bit) : (m_attFlags & ~bit));
  }
  OdString m_tag;
  OdInt16 m_version = 0;
  OdInt16 m_attFlags = 0;
  OdInt16 m_fieldLength = 0;
  OdInt16 m_lockPosition = 0;
};
using OdDbAttributePtr = OdSmartPtr<OdDbAttribute>;

class OdDbMText : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(OdDbMText);
  ODDB_DECLARE_SCHEMA();

 public:
  enum AttachmentPoint : int {
    kTopLeft = 1, kTopCenter = 2, kTopRight = 3,
    kMiddleLeft = 4, kMiddleCenter = 5, kMiddleRight = 6,
    kBottomLeft = 7, kBottomCenter = 8, kBottomRight = 9,
  };
  enum FlowDirection : int { kLtoR = 1, kRtoL = 2, kTtoB = 3, kBtoT = 4, kByStyle = 5 };

  OdGePoint3d location() const { return m_location; }
  void setLocation(const OdGePoint3d& point) { assertWriteEnabled(); m_location = point; }
  OdGeVector3d normal() const { return m_normal; }
  void setNormal(const OdGeVector3d& normal) { assertWriteEnabled(); m_normal = normal; }
  OdGeVector3d direction() const;
  void setDirection(const OdGeVector3d& direction);
  double rotation() const;
  void setRotation(double angle);
  double textHeight() const { return m_textHeight; }
  void setTextHeight(double height) { assertWriteEnabled(); m_textHeight = height; }
  double width() const { return m_width; }
  void setWidth(double width) { assertWriteEnabled(); m_width = width; }
  double actualHeight() const;
  double actualWidth() const;
  AttachmentPoint attachment() const { return static_cast<AttachmentPoint>(m_attachment); }
  void setAttachment(AttachmentPoint attachment) { assertWriteEnabled(); m_attachment = static_cast<OdInt16>(attachment); }
  FlowDirection flowDirection() const { return static_cast<FlowDirection>(m_flowDirection); }
  void setFlowDirection(FlowDirection flow) { assertWriteEnabled(); m_flowDirection = static_cast<OdInt16>(flow); }
  // The contents with formatting codes ("\P" paragraph breaks and the like).
  OdString contents() const { return m_contents; }
  void setContents(const OdString& text) { assertWriteEnabled(); m_contents = text; }
  // The contents with formatting codes removed and "\P" as line breaks.
  OdString text() const;
  OdDbObjectId textStyle() const { return m_styleId; }
  void setTextStyle(const OdDbObjectId& styleId) { assertWriteEnabled(); m_styleId = styleId; }
  double lineSpacingFactor() const { return m_lineSpacingFactor; }
  void setLineSpacingFactor(double factor) { assertWriteEnabled(); m_lineSpacingFactor = factor; }
  OdInt16 lineSpacingStyle() const { return m_lineSpacingStyle; }
  bool backgroundFill() const { return (m_backgroundFlags & 1) != 0; }
  void setBackgroundFill(bool on);
  OdCmColor getBackgroundFillColor() const;
  void setBackgroundFillColor(const OdCmColor& color);
  double getBackgroundScaleFactor() const { return m_backgroundScale; }
  void setBackgroundScaleFactor(double scale);
  bool useBackgroundColor() const { return (m_backgroundFlags & 2) != 0; }
  void setUseBackgroundColor(bool on);

  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;
  double distanceTo(const OdGePoint3d& point) const override;
  // The four corners of the text frame in world coordinates.
  void getBoundingPoints(OdGePoint3dArray& points) const;
  void subSetDatabaseDefaults(OdDbDatabase* database) override;

 protected:
  OdGePoint3d m_location;
  double m_textHeight = 0;
  double m_width = 0;
  OdInt16 m_attachment = kTopLeft;
  OdInt16 m_flowDirection = kLtoR;
  OdString m_contents;
  OdDbObjectId m_styleId;
  OdGeVector3d m_normal = OdGeVector3d(0, 0, 1);
  OdGeVector3d m_direction = OdGeVector3d(1, 0, 0);
  OdInt16 m_lineSpacingStyle = 1;
  double m_lineSpacingFactor = 1.0;
  OdInt32 m_backgroundFlags = 0;
  double m_backgroundScale = 1.5;
  OdInt16 m_backgroundColorIndex = 0;
  OdInt32 m_backgroundTrueColor = 0;
  OdInt32 m_backgroundTransparency = 0;

  friend struct OdDbMTextContentsCodec;
  friend struct OdDbMTextDirectionCodec;
};
