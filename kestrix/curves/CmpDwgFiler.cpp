// The comparison recorder and the walk over a class's field table that
// feeds it.
#include "curves/CmpDwgFiler.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "DbEntity.h"
#include "DbSchema.h"

void rycpBinaryData::reserve(std::uint32_t n) {
  if (n < m_capacity) return;
  const std::uint32_t capacity = n + 2048 + m_capacity;
  auto buffer = std::make_unique<std::uint8_t[]>(2 * static_cast<size_t>(capacity));
  std::memset(buffer.get(), 0, 2 * static_cast<size_t>(capacity));
  if (m_buffer) std::memcpy(buffer.get(), m_buffer.get(), 2 * static_cast<size_t>(m_used));
  m_buffer = std::move(buffer);
  m_capacity = capacity;
}

void rycpBinaryData::append(const void* bytes, std::uint32_t k) {
  reserve(m_used + k);
  if (k) std::memcpy(m_buffer.get() + 2 * static_cast<size_t>(m_used), bytes, k);
  m_used += k;
}

bool rycpBinaryData::sameAs(const rycpBinaryData& other) const {
  if (m_used != other.m_used) return false;
  if (m_used == 0) return true;
  return std::memcmp(m_buffer.get(), other.m_buffer.get(), 2 * static_cast<size_t>(m_used)) == 0;
}

void ryDbCmpDwgFile::wrBool(bool value) {
  const OdUInt8 byte = value ? 1 : 0;
  m_data.append(&byte, 1);
}
void ryDbCmpDwgFile::wrInt8(OdInt8 value) { m_data.append(&value, 1); }
void ryDbCmpDwgFile::wrUInt8(OdUInt8 value) { m_data.append(&value, 1); }
void ryDbCmpDwgFile::wrInt16(OdInt16 value) { m_data.append(&value, 2); }
void ryDbCmpDwgFile::wrInt32(OdInt32 value) { m_data.append(&value, 4); }

void ryDbCmpDwgFile::wrInt64(OdInt64 value) {
  const auto bits = static_cast<OdUInt64>(value);
  wrInt32(static_cast<OdInt32>(bits & 0xFFFFFFFFu));
  wrInt32(static_cast<OdInt32>(bits >> 32));
}

void ryDbCmpDwgFile::wrDouble(double value) {
  // Printed with 5 decimals and read back: values that differ only beyond
  // the fifth decimal record alike.
  char text[512];
  std::snprintf(text, sizeof text, "%.5f", value);
  const double rounded = std::strtod(text, nullptr);
  m_data.append(&rounded, 8);
}

void ryDbCmpDwgFile::wrString(const OdString& value) {
  // The text as UTF-16 with the count of characters passed as the count of
  // bytes: only the first half of the text is recorded.
  std::vector<char16_t> units;
  units.reserve(value.getLength());
  for (int i = 0; i < value.getLength(); ++i) {
    const auto c = static_cast<std::uint32_t>(value[i]);
    if (c >= 0x10000) {
      units.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
      units.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
    } else {
      units.push_back(static_cast<char16_t>(c));
    }
  }
  m_data.append(units.data(), static_cast<std::uint32_t>(units.size()));
}

void ryDbCmpDwgFile::wrBytes(const void* buffer, OdUInt32 length) { m_data.append(buffer, length); }

void ryDbCmpDwgFile::wrBinaryChunk(const OdBinaryData& data) {
  m_data.append(data.data(), static_cast<std::uint32_t>(data.size()));
}

void ryDbCmpDwgFile::wrHandle(const OdDbObjectId& id) { wrInt64(static_cast<OdInt64>(id.handle().value())); }

namespace kestrix::curves {

void fileOutClassData(const OdDbObject* object, OdDbDwgFiler* filer) {
  const OdDbClassSchema* schema = object->isA()->schema();
  if (!schema) return;
  for (const OdDbSubclass* sub : schema->chain()) {
    // The common entity properties are not class data (the object header is
    // filed by the object itself, outside the field table).
    if (OdString(sub->marker) == L"AcDbEntity") continue;
    for (const OdDbField& field : sub->fields) {
      if (field.flags & OdDbField::kNoFiler) continue;
      // Owned sub-objects are other objects in every copy: left out.
      if (field.kind == OdDbFieldKind::kHardOwner || field.kind == OdDbFieldKind::kSoftOwner) continue;
      if (field.kind == OdDbFieldKind::kCustom) field.codec->fileOut(object, filer);
      else OdDbSchemaIo::fileOutValue(field, field.ref(object), filer);
    }
  }
}

bool sameRecordedData(const OdDbObject* a, const OdDbObject* b) {
  if (a->isA() != b->isA()) return false;
  ryDbCmpDwgFile first, second;
  fileOutClassData(a, &first);
  fileOutClassData(b, &second);
  return first.binaryData().sameAs(second.binaryData());
}

}  // namespace kestrix::curves
