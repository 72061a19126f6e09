#include "DbFiler.h"

#include <cstring>

#include "DbDatabase.h"
#include "db/TagFiling.h"

ODRX_NO_CONS_DEFINE_MEMBERS(OdDbFiler, OdRxObject)
ODRX_NO_CONS_DEFINE_MEMBERS(OdDbDwgFiler, OdDbFiler)

namespace {
[[noreturn]] void notReadable() { throw OdError(eNotApplicable, L"this filer only records"); }
}  // namespace

bool OdDbDwgFiler::rdBool() { notReadable(); }
OdInt8 OdDbDwgFiler::rdInt8() { notReadable(); }
OdUInt8 OdDbDwgFiler::rdUInt8() { notReadable(); }
OdInt16 OdDbDwgFiler::rdInt16() { notReadable(); }
OdInt32 OdDbDwgFiler::rdInt32() { notReadable(); }
OdInt64 OdDbDwgFiler::rdInt64() { notReadable(); }
double OdDbDwgFiler::rdDouble() { notReadable(); }
OdString OdDbDwgFiler::rdString() { notReadable(); }
void OdDbDwgFiler::rdBytes(void*, OdUInt32) { notReadable(); }
OdBinaryData OdDbDwgFiler::rdBinaryChunk() {
  OdInt32 length = rdInt32();
  if (length < 0) throw OdError(eFilerError, L"negative chunk length");
  OdBinaryData data(static_cast<size_t>(length));
  if (length) rdBytes(data.data(), static_cast<OdUInt32>(length));
  return data;
}
OdDbObjectId OdDbDwgFiler::rdHardOwnershipId() { notReadable(); }
OdDbObjectId OdDbDwgFiler::rdSoftOwnershipId() { notReadable(); }
OdDbObjectId OdDbDwgFiler::rdHardPointerId() { notReadable(); }
OdDbObjectId OdDbDwgFiler::rdSoftPointerId() { notReadable(); }
OdDbHandle OdDbDwgFiler::rdDbHandle() { return OdDbHandle(static_cast<OdUInt64>(rdInt64())); }
OdGePoint2d OdDbDwgFiler::rdPoint2d() {
  double x = rdDouble();
  double y = rdDouble();
  return {x, y};
}
OdGePoint3d OdDbDwgFiler::rdPoint3d() {
  double x = rdDouble();
  double y = rdDouble();
  double z = rdDouble();
  return {x, y, z};
}
OdGeVector2d OdDbDwgFiler::rdVector2d() {
  double x = rdDouble();
  double y = rdDouble();
  return {x, y};
}
OdGeVector3d OdDbDwgFiler::rdVector3d() {
  double x = rdDouble();
  double y = rdDouble();
  double z = rdDouble();
  return {x, y, z};
}
OdGeScale3d OdDbDwgFiler::rdScale3d() {
  double x = rdDouble();
  double y = rdDouble();
  double z = rdDouble();
  return {x, y, z};
}

OdString OdDbMemoryFiler::rdString() {
  OdUInt32 length = get<OdUInt32>();
  if (length > m_data.size() - m_pos) throw OdError(eFilerError, L"string beyond the end of the data");
  std::wstring text(length, L'\0');
  if (length) rdBytes(text.data(), length * static_cast<OdUInt32>(sizeof(wchar_t)));
  return OdString(std::move(text));
}

void OdDbMemoryFiler::rdBytes(void* buffer, OdUInt32 length) {
  if (length > m_data.size() - m_pos) throw OdError(eFilerError, L"read beyond the end of the data");
  std::memcpy(buffer, m_data.data() + m_pos, length);
  m_pos += length;
}

OdBinaryData OdDbMemoryFiler::rdBinaryChunk() { return OdDbDwgFiler::rdBinaryChunk(); }

void OdDbMemoryFiler::wrString(const OdString& value) {
  put(static_cast<OdUInt32>(value.getLength()));
  wrBytes(value.c_str(), static_cast<OdUInt32>(value.getLength() * sizeof(wchar_t)));
}

void OdDbMemoryFiler::wrBytes(const void* buffer, OdUInt32 length) {
  const auto* bytes = static_cast<const OdUInt8*>(buffer);
  m_data.insert(m_data.end(), bytes, bytes + length);
}

void odFileOutTag(OdDbDwgFiler* filer, const OdDxfTag& tag) {
  filer->wrInt16(tag.code);
  filer->wrUInt8(static_cast<OdUInt8>(tag.type));
  switch (tag.type) {
    case OdDxf::ValueType::kString: filer->wrString(tag.s); break;
    case OdDxf::ValueType::kDouble: filer->wrDouble(tag.x); break;
    case OdDxf::ValueType::kPoint:
      filer->wrUInt8(tag.dims);
      filer->wrDouble(tag.x);
      filer->wrDouble(tag.y);
      filer->wrDouble(tag.z);
      break;
    case OdDxf::ValueType::kBinary: filer->wrBinaryChunk(tag.bin); break;
    default: filer->wrInt64(tag.i); break;
  }
}

OdDxfTag odFileInTag(OdDbDwgFiler* filer) {
  OdDxfTag tag;
  tag.code = filer->rdInt16();
  tag.type = static_cast<OdDxf::ValueType>(filer->rdUInt8());
  switch (tag.type) {
    case OdDxf::ValueType::kString: tag.s = filer->rdString(); break;
    case OdDxf::ValueType::kDouble: tag.x = filer->rdDouble(); break;
    case OdDxf::ValueType::kPoint:
      tag.dims = filer->rdUInt8();
      tag.x = filer->rdDouble();
      tag.y = filer->rdDouble();
      tag.z = filer->rdDouble();
      break;
    case OdDxf::ValueType::kBinary: tag.bin = filer->rdBinaryChunk(); break;
    default: tag.i = filer->rdInt64(); break;
  }
  return tag;
}

void odFileOutTags(OdDbDwgFiler* filer, const OdDxfTagList& tags) {
  filer->wrInt32(static_cast<OdInt32>(tags.size()));
  for (const auto& tag : tags) odFileOutTag(filer, tag);
}

OdDxfTagList odFileInTags(OdDbDwgFiler* filer) {
  OdInt32 count = filer->rdInt32();
  if (count < 0) throw OdError(eFilerError, L"negative tag count");
  OdDxfTagList tags;
  tags.reserve(static_cast<size_t>(count));
  for (OdInt32 i = 0; i < count; ++i) tags.push_back(odFileInTag(filer));
  return tags;
}
