// A filer that records what an object files out, so that the filed data of
// two objects can be compared as a byte string. Doubles are recorded rounded
// to 5 decimals, ids as their handles, strings by their first half (the
// character count is passed as the byte count), all into a store counted in
// 16-bit units. Both objects of a pair are recorded the same way, so the
// recorded form only has to be stable, not readable.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "DbFiler.h"

class OdDbObject;

// A growable byte store counted in 16-bit units: a used count, a capacity
// and the buffer.
class rycpBinaryData {
 public:
  rycpBinaryData() = default;
  rycpBinaryData(const rycpBinaryData&) = delete;
  rycpBinaryData& operator=(const rycpBinaryData&) = delete;

  // Grows so that n units fit: when n is not below the capacity, the capacity
  // becomes n + 2048 + the old capacity, and twice that many bytes are
  // allocated, zero-filled, with the used part copied over.
  void reserve(std::uint32_t n);
  // Appends k bytes: grows to used + k, copies them to byte 2 * used and adds
  // k to the used count (units and bytes are mixed on purpose; see above).
  void append(const void* bytes, std::uint32_t k);
  // Sets the used count without copying.
  void resize(std::uint32_t n) { m_used = n; }
  std::uint32_t length() const { return m_used; }
  std::uint32_t capacity() const { return m_capacity; }
  const std::uint8_t* data() const { return m_buffer.get(); }
  // The bytes that hold the recorded form: the first 2 * used bytes.
  bool sameAs(const rycpBinaryData& other) const;

 private:
  std::uint32_t m_used = 0;
  std::uint32_t m_capacity = 0;
  std::unique_ptr<std::uint8_t[]> m_buffer;
};

class ryDbCmpDwgFile : public OdDbDwgFiler {
 public:
  ryDbCmpDwgFile() = default;

  OdResult filerStatus() const override { return static_cast<OdResult>(m_status); }
  void setFilerStatus(OdUInt32 status) { m_status = status; }
  void resetFilerStatus() override { m_status = 0; }

  void wrBool(bool value) override;
  void wrInt8(OdInt8 value) override;
  void wrUInt8(OdUInt8 value) override;
  void wrInt16(OdInt16 value) override;
  void wrInt32(OdInt32 value) override;
  void wrInt64(OdInt64 value) override;
  void wrDouble(double value) override;
  void wrString(const OdString& value) override;
  void wrBytes(const void* buffer, OdUInt32 length) override;
  void wrBinaryChunk(const OdBinaryData& data) override;
  void wrHardOwnershipId(const OdDbObjectId& id) override { wrHandle(id); }
  void wrSoftOwnershipId(const OdDbObjectId& id) override { wrHandle(id); }
  void wrHardPointerId(const OdDbObjectId& id) override { wrHandle(id); }
  void wrSoftPointerId(const OdDbObjectId& id) override { wrHandle(id); }

  const rycpBinaryData& binaryData() const { return m_data; }

 private:
  void wrHandle(const OdDbObjectId& id);

  rycpBinaryData m_data;
  OdUInt32 m_status = 0;
};

namespace kestrix::curves {

// Files the class data of an object (every field of its class's field table
// below the common entity properties, owned sub-objects left out) into a
// filer. The common properties are compared by the callers on their own.
void fileOutClassData(const OdDbObject* object, OdDbDwgFiler* filer);

// True when the two objects record the same bytes through ryDbCmpDwgFile.
bool sameRecordedData(const OdDbObject* a, const OdDbObject* b);

}  // namespace kestrix::curves
