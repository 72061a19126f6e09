// Filers: an object files its state out as a sequence of typed values and
// reads it back in the same order (dwgOutFields / dwgInFields). Undo
// snapshots, copying and comparison all go through a filer.
#pragma once

#include "DbObjectId.h"
#include "Ge/GePoint2d.h"
#include "Ge/GePoint3d.h"
#include "Ge/GeScale3d.h"
#include "Ge/GeVector2d.h"
#include "Ge/GeVector3d.h"

class OdDbFiler : public OdRxObject {
  ODRX_DECLARE_MEMBERS(OdDbFiler);

 public:
  enum FilerType {
    kFileFiler = 0,
    kCopyFiler = 1,
    kUndoFiler = 2,
    kBagFiler = 3,
    kIdXlateFiler = 4,
    kPageFiler = 5,
    kDeepCloneFiler = 6,
    kIdFiler = 7,
    kPurgeFiler = 8,
    kWblockCloneFiler = 9,
  };
  virtual FilerType filerType() const { return kFileFiler; }
  virtual OdDbDatabase* database() const { return nullptr; }
  virtual OdDb::DwgVersion dwgVersion() const { return OdDb::kDHL_CURRENT; }
  virtual OdResult filerStatus() const { return eOk; }
  virtual void resetFilerStatus() {}
};

class OdDbDwgFiler : public OdDbFiler {
  ODRX_DECLARE_MEMBERS(OdDbDwgFiler);

 public:
  // Reading. Default implementations throw eNotApplicable: a filer that only
  // records (writes) need not read.
  virtual bool rdBool();
  virtual OdInt8 rdInt8();
  virtual OdUInt8 rdUInt8();
  virtual OdInt16 rdInt16();
  virtual OdInt32 rdInt32();
  virtual OdInt64 rdInt64();
  virtual double rdDouble();
  virtual OdString rdString();
  virtual void rdBytes(void* buffer, OdUInt32 length);
  virtual OdBinaryData rdBinaryChunk();
  virtual OdDbObjectId rdHardOwnershipId();
  virtual OdDbObjectId rdSoftOwnershipId();
  virtual OdDbObjectId rdHardPointerId();
  virtual OdDbObjectId rdSoftPointerId();
  virtual OdDbHandle rdDbHandle();
  virtual OdGePoint2d rdPoint2d();
  virtual OdGePoint3d rdPoint3d();
  virtual OdGeVector2d rdVector2d();
  virtual OdGeVector3d rdVector3d();
  virtual OdGeScale3d rdScale3d();

  // Writing.
  virtual void wrBool(bool value) = 0;
  virtual void wrInt8(OdInt8 value) = 0;
  virtual void wrUInt8(OdUInt8 value) = 0;
  virtual void wrInt16(OdInt16 value) = 0;
  virtual void wrInt32(OdInt32 value) = 0;
  virtual void wrInt64(OdInt64 value) = 0;
  virtual void wrDouble(double value) = 0;
  virtual void wrString(const OdString& value) = 0;
  virtual void wrBytes(const void* buffer, OdUInt32 length) = 0;
  virtual void wrBinaryChunk(const OdBinaryData& data) { wrInt32(static_cast<OdInt32>(data.size())); wrBytes(data.data(), data.length()); }
  virtual void wrHardOwnershipId(const OdDbObjectId& id) = 0;
  virtual void wrSoftOwnershipId(const OdDbObjectId& id) = 0;
  virtual void wrHardPointerId(const OdDbObjectId& id) = 0;
  virtual void wrSoftPointerId(const OdDbObjectId& id) = 0;
  virtual void wrDbHandle(const OdDbHandle& handle) { wrInt64(static_cast<OdInt64>(handle.value())); }
  virtual void wrPoint2d(const OdGePoint2d& p) { wrDouble(p.x); wrDouble(p.y); }
  virtual void wrPoint3d(const OdGePoint3d& p) { wrDouble(p.x); wrDouble(p.y); wrDouble(p.z); }
  virtual void wrVector2d(const OdGeVector2d& v) { wrDouble(v.x); wrDouble(v.y); }
  virtual void wrVector3d(const OdGeVector3d& v) { wrDouble(v.x); wrDouble(v.y); wrDouble(v.z); }
  virtual void wrScale3d(const OdGeScale3d& s) { wrDouble(s.sx); wrDouble(s.sy); wrDouble(s.sz); }
};

// A filer that keeps everything in memory, in the process's own byte order.
// Ids are kept as the stub pointers themselves, so the data is only valid in
// the process and the database that wrote it (undo, copying).
class OdDbMemoryFiler : public OdDbDwgFiler {
 public:
  explicit OdDbMemoryFiler(OdDbDatabase* database = nullptr, FilerType type = kCopyFiler)
      : m_database(database), m_type(type) {}
  FilerType filerType() const override { return m_type; }
  OdDbDatabase* database() const override { return m_database; }

  const std::vector<OdUInt8>& data() const { return m_data; }
  std::vector<OdUInt8>& data() { return m_data; }
  void rewind() { m_pos = 0; }
  bool atEnd() const { return m_pos >= m_data.size(); }

  bool rdBool() override { return get<OdUInt8>() != 0; }
  OdInt8 rdInt8() override { return get<OdInt8>(); }
  OdUInt8 rdUInt8() override { return get<OdUInt8>(); }
  OdInt16 rdInt16() override { return get<OdInt16>(); }
  OdInt32 rdInt32() override { return get<OdInt32>(); }
  OdInt64 rdInt64() override { return get<OdInt64>(); }
  double rdDouble() override { return get<double>(); }
  OdString rdString() override;
  void rdBytes(void* buffer, OdUInt32 length) override;
  OdBinaryData rdBinaryChunk() override;
  OdDbObjectId rdHardOwnershipId() override { return OdDbObjectId(get<OdDbStub*>()); }
  OdDbObjectId rdSoftOwnershipId() override { return OdDbObjectId(get<OdDbStub*>()); }
  OdDbObjectId rdHardPointerId() override { return OdDbObjectId(get<OdDbStub*>()); }
  OdDbObjectId rdSoftPointerId() override { return OdDbObjectId(get<OdDbStub*>()); }

  void wrBool(bool value) override { put<OdUInt8>(value ? 1 : 0); }
  void wrInt8(OdInt8 value) override { put(value); }
  void wrUInt8(OdUInt8 value) override { put(value); }
  void wrInt16(OdInt16 value) override { put(value); }
  void wrInt32(OdInt32 value) override { put(value); }
  void wrInt64(OdInt64 value) override { put(value); }
  void wrDouble(double value) override { put(value); }
  void wrString(const OdString& value) override;
  void wrBytes(const void* buffer, OdUInt32 length) override;
  void wrHardOwnershipId(const OdDbObjectId& id) override { put(id.stub()); }
  void wrSoftOwnershipId(const OdDbObjectId& id) override { put(id.stub()); }
  void wrHardPointerId(const OdDbObjectId& id) override { put(id.stub()); }
  void wrSoftPointerId(const OdDbObjectId& id) override { put(id.stub()); }

 private:
  template <class T>
  void put(T value) {
    const auto* bytes = reinterpret_cast<const OdUInt8*>(&value);
    m_data.insert(m_data.end(), bytes, bytes + sizeof(T));
  }
  template <class T>
  T get() {
    T value{};
    rdBytes(&value, sizeof(T));
    return value;
  }

  OdDbDatabase* m_database;
  FilerType m_type;
  std::vector<OdUInt8> m_data;
  size_t m_pos = 0;
};
