// Writes a database as an ASCII DXF file: header, classes, tables, blocks,
// entities, objects and the sections kept as read.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <condition_variable>
#include <cstring>
#include <cwchar>
#include <deque>
#include <filesystem>
#include <mutex>
#include <thread>
#include <sys/stat.h>
#include <unistd.h>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbDictionary.h"
#include "DbProxy.h"
#include "DbSymbolTable.h"
#include "DxfFile.h"
#include "dxf/DxfStructure.h"
#include "dxf/DxfTagWriter.h"

namespace {

class WriteContext : public OdDbTagContext {
 public:
  OdDbDatabase* db;
  OdDb::DwgVersion target;
  WriteContext(OdDbDatabase* d, OdDb::DwgVersion v) : db(d), target(v) {}
  OdDbDatabase* database() const override { return db; }
  OdDb::DwgVersion version() const override { return target; }
  OdDbObjectId idFromHandle(OdUInt64 handle) override { return db->getOdDbObjectId(OdDbHandle(handle)); }
};

// Fields go straight into the file; after a chosen subclass marker, extra
// groups can be put in (the block's own values after AcDbBlockBegin).
class WriterSink : public OdDbTagSink {
 public:
  explicit WriterSink(OdDxfTagWriter& out) : m_out(out) {}
  void insertAfterMarker(const wchar_t* marker, const OdDxfTagList* tags) {
    m_marker = marker;
    m_insert = tags;
  }
  void addTag(const OdDxfTag& tag) override { m_out.writeTag(tag); }
  void addString(int code, const OdString& value) override { m_out.writeString(code, value); }
  // Subclass markers come as constant text.
  void addText(int code, const wchar_t* value) override {
    m_out.writeString(code, value);
    if (code == 100 && m_insert && std::wcscmp(value, m_marker) == 0) {
      for (const auto& tag : *m_insert) m_out.writeTag(tag);
      m_insert = nullptr;
    }
  }
  void addReal(int code, double value) override { m_out.writeDouble(code, value); }
  void addPoint(int code, double x, double y, double z, int dims) override {
    if (dims == 2) m_out.writePoint(code, x, y);
    else m_out.writePoint(code, x, y, z);
  }
  void addInteger(int code, OdInt64 value) override { m_out.writeInt(code, value); }
  void addHandle(int code, OdUInt64 value) override { m_out.writeHandle(code, value); }

 private:
  OdDxfTagWriter& m_out;
  const wchar_t* m_marker = nullptr;
  const OdDxfTagList* m_insert = nullptr;
};

// Takes the written text in pieces as it is made (a file being saved).
class ChunkSink {
 public:
  virtual ~ChunkSink() = default;
  virtual void take(std::string&& chunk) = 0;
};

class DxfWriter {
 public:
  DxfWriter(OdDbDatabase* db, OdDb::DwgVersion version, ChunkSink* sink = nullptr)
      : m_db(db), m_version(version < OdDb::vAC12 ? OdDb::vAC15 : version), m_ctx(db, m_version), m_sink(sink) {
    m_out.setCodePage(m_version >= OdDb::vAC21 ? kOdCodePageUtf8 : db->getDWGCODEPAGE());
  }
  // The whole text; with a sink, what the sink has not taken yet.
  std::string write();

 private:
  void section(const wchar_t* name) {
    m_out.writeString(0, L"SECTION");
    m_out.writeString(2, name);
  }
  void endSection() { m_out.writeString(0, L"ENDSEC"); }
  void writeHeader();
  void writeClasses();
  void writeTables();
  void writeBlocks();
  void writeEntities();
  void writeObjects();
  // One object: 0 NAME, handle, application groups, owner, fields, extended data.
  void writeObject(const OdDbObject* object, const OdString& dxfName, int handleCode = 5,
                   const OdDxfTagList* afterFirstMarker = nullptr, const wchar_t* insertAfterMarker = nullptr);
  // The same after its "0 NAME" (a table head has its name between the two).
  void writeObjectBody(const OdDbObject* object, int handleCode, const OdDxfTagList* insert = nullptr,
                       const wchar_t* insertAfterMarker = nullptr);
  // An entity and, for complex entities, its subentities and end marker.
  void writeEntity(const OdDbObjectId& id);
  OdDbObject* objectOf(const OdDbObjectId& id) const {
    return id.isNull() || !id.isValid() || id.isErased() ? nullptr : id.stub()->object;
  }

  // Hands the text made so far to the sink once it is large enough.
  void passOn() {
    if (m_sink && m_out.size() >= kChunkSize) {
      m_sink->take(m_out.release());
      m_out.reserve(kChunkSize + kChunkSize / 4);
    }
  }
  static constexpr size_t kChunkSize = 8u << 20;

  OdDbDatabase* m_db;
  OdDb::DwgVersion m_version;
  WriteContext m_ctx;
  ChunkSink* m_sink;
  OdDxfTagWriter m_out;
};

void DxfWriter::writeObject(const OdDbObject* object, const OdString& dxfName, int handleCode,
                            const OdDxfTagList* insert, const wchar_t* insertAfterMarker) {
  m_out.writeString(0, dxfName);
  writeObjectBody(object, handleCode, insert, insertAfterMarker);
}

void DxfWriter::writeObjectBody(const OdDbObject* object, int handleCode, const OdDxfTagList* insert,
                                const wchar_t* insertAfterMarker) {
  m_out.writeHandle(handleCode, object->objectId().handle().value());
  const OdDbObjectExtras* extras = object->extras();
  if (extras) {
    for (const auto& tag : extras->appData) m_out.writeTag(tag);
    if (!extras->persistentReactors.empty()) {
      m_out.writeString(102, L"{ACAD_REACTORS");
      for (const auto& id : extras->persistentReactors) {
        if (!id.isNull() && !id.isErased()) m_out.writeHandle(330, id.handle().value());
      }
      m_out.writeString(102, L"}");
    }
    if (!extras->extensionDictionary.isNull() && !extras->extensionDictionary.isErased()) {
      m_out.writeString(102, L"{ACAD_XDICTIONARY");
      m_out.writeHandle(360, extras->extensionDictionary.handle().value());
      m_out.writeString(102, L"}");
    }
  }
  m_out.writeHandle(330, object->ownerId().handle().value());
  WriterSink sink(m_out);
  sink.insertAfterMarker(insertAfterMarker, insert);
  OdDbSchemaIo::writeFields(object, sink, m_ctx, true);
  if (extras) {
    for (const auto& tag : extras->xdata) m_out.writeTag(tag);
  }
  passOn();
}

void DxfWriter::writeHeader() {
  section(L"HEADER");
  auto writeVariable = [&](const OdString& name, const OdDxfTagList& tags) {
    m_out.writeString(9, name);
    for (const auto& tag : tags) m_out.writeTag(tag);
  };
  bool wroteVersion = false, wroteSeed = false;
  // Version and handle seed as this file has them; everything else as kept.
  OdDxfTagList version{OdDxfTag::str(1, odDxfVersionName(m_version))};
  // The database keeps its seed above every handle it has handed out or met.
  OdDxfTagList handseed{OdDxfTag::handle(5, m_db->handseed().value())};
  for (const auto& var : m_db->headerVariables()) {
    if (var.name.iCompare(L"$ACADVER") == 0) {
      writeVariable(var.name, version);
      wroteVersion = true;
    } else if (var.name.iCompare(L"$HANDSEED") == 0) {
      writeVariable(var.name, handseed);
      wroteSeed = true;
    } else if (var.name.iCompare(L"$DWGCODEPAGE") == 0 && m_version >= OdDb::vAC21) {
      writeVariable(var.name, var.tags);
    } else {
      if (!wroteVersion) {
        writeVariable(L"$ACADVER", version);
        wroteVersion = true;
      }
      writeVariable(var.name, var.tags);
    }
  }
  if (!wroteVersion) writeVariable(L"$ACADVER", version);
  if (!wroteSeed) writeVariable(L"$HANDSEED", handseed);
  endSection();
}

void DxfWriter::writeClasses() {
  section(L"CLASSES");
  std::vector<OdDbClassRecord> records = m_db->classRecords();
  // Classes in use that the file needs to announce and that were not read.
  std::vector<OdString> used;
  std::vector<const OdRxClass*> seen;
  const OdRxClass* last = nullptr;
  m_db->forEachObjectId([&](const OdDbObjectId& id) {
    const OdRxClass* cls = id.stub()->object->isA();
    if (cls == last || id.isErased()) return;
    last = cls;
    if (std::find(seen.begin(), seen.end(), cls) != seen.end()) return;
    seen.push_back(cls);
    if (odDxfStandardClass(cls->dxfName())) used.push_back(cls->dxfName());
  });
  std::sort(used.begin(), used.end());
  for (const OdString& name : used) {
    auto known = std::find_if(records.begin(), records.end(), [&](const auto& r) { return r.dxfName.iCompare(name) == 0; });
    if (known != records.end()) continue;
    const OdDxfStandardClass* cls = odDxfStandardClass(name);
    OdDbClassRecord record;
    record.dxfName = cls->dxfName;
    record.cppName = cls->cppName;
    record.appName = L"kestrix platform";
    record.proxyFlags = cls->proxyFlags;
    record.isEntity = cls->isEntity;
    records.push_back(record);
  }
  for (const auto& record : records) {
    m_out.writeString(0, L"CLASS");
    m_out.writeString(1, record.dxfName);
    m_out.writeString(2, record.cppName);
    m_out.writeString(3, record.appName);
    m_out.writeInt(90, record.proxyFlags);
    if (m_version >= OdDb::vAC18) m_out.writeInt(91, record.instanceCount);
    m_out.writeInt(280, record.wasProxy ? 1 : 0);
    m_out.writeInt(281, record.isEntity ? 1 : 0);
  }
  endSection();
}

void DxfWriter::writeTables() {
  section(L"TABLES");
  for (const OdDxfTableKind& kind : odDxfTableKinds()) {
    auto* table = static_cast<OdDbSymbolTable*>(objectOf(m_db->tableId(kind.table)));
    if (!table) continue;
    m_out.writeString(0, L"TABLE");
    m_out.writeString(2, kind.name);
    // The table object itself: "0 TABLE" already stands, its name follows it.
    writeObjectBody(table, 5);
    const int handleCode = kind.table == OdDbNameTable::kDimStyle ? 105 : 5;
    for (const OdDbObjectId& id : table->recordIds()) {
      const OdDbObject* record = objectOf(id);
      if (!record) continue;
      writeObject(record, kind.name, handleCode);
    }
    m_out.writeString(0, L"ENDTAB");
  }
  endSection();
}

void DxfWriter::writeBlocks() {
  section(L"BLOCKS");
  auto* table = static_cast<OdDbSymbolTable*>(objectOf(m_db->getBlockTableId()));
  const OdDbObjectId modelSpace = m_db->getModelSpaceId(), paperSpace = m_db->getPaperSpaceId();
  for (const OdDbObjectId& id : table->recordIds()) {
    auto* block = static_cast<OdDbBlockTableRecord*>(objectOf(id));
    if (!block) continue;
    const OdDbObject* begin = objectOf(block->blockBeginId());
    const OdDbObject* end = objectOf(block->blockEndId());
    if (begin) {
      OdDxfTagList values;
      values.push_back(OdDxfTag::str(2, block->getName()));
      values.push_back(OdDxfTag::integer(70, block->blockFlags()));
      OdGePoint3d origin = block->origin();
      values.push_back(OdDxfTag::point(10, origin.x, origin.y, origin.z));
      values.push_back(OdDxfTag::str(3, block->getName()));
      values.push_back(OdDxfTag::str(1, block->pathName()));
      if (!block->comments().isEmpty()) values.push_back(OdDxfTag::str(4, block->comments()));
      writeObject(begin, L"BLOCK", 5, &values, L"AcDbBlockBegin");
    }
    // Entities of model space and of the current paper space stand in the ENTITIES section.
    if (id != modelSpace && id != paperSpace) {
      for (const OdDbObjectId& entityId : block->entityIds()) writeEntity(entityId);
    }
    if (end) {
      writeObject(end, L"ENDBLK");
    }
  }
  endSection();
}

void DxfWriter::writeEntity(const OdDbObjectId& id) {
  const OdDbObject* object = objectOf(id);
  if (!object) return;
  auto* entity = dynamic_cast<const OdDbEntity*>(object);
  if (!entity) return;
  writeObject(entity, entity->dxfName());
  const OdDbObjectIdArray* subs = entity->subentityIds();
  if (!subs) return;
  bool any = false;
  for (const OdDbObjectId& subId : *subs) {
    const OdDbObject* sub = objectOf(subId);
    if (!sub) continue;
    any = true;
    writeObject(sub, sub->dxfName());
  }
  // Polylines always close their vertex list; references only when they have attributes.
  if (!any && entity->isKindOf(OdDbBlockReference::desc())) return;
  const OdDbObject* seqEnd = objectOf(entity->sequenceEndId());
  if (seqEnd) {
    writeObject(seqEnd, L"SEQEND");
  } else {
    // A complex entity made without its end marker still needs one in the file.
    m_out.writeString(0, L"SEQEND");
    m_out.writeHandle(5, 0);
    m_out.writeHandle(330, entity->objectId().handle().value());
    m_out.writeString(100, L"AcDbEntity");
    m_out.writeString(8, m_ctx.nameOf(entity->layerId()));
  }
}

void DxfWriter::writeEntities() {
  section(L"ENTITIES");
  for (const OdDbObjectId& spaceId : {m_db->getModelSpaceId(), m_db->getPaperSpaceId()}) {
    auto* space = static_cast<OdDbBlockTableRecord*>(objectOf(spaceId));
    if (!space) continue;
    for (const OdDbObjectId& id : space->entityIds()) writeEntity(id);
  }
  endSection();
}

void DxfWriter::writeObjects() {
  section(L"OBJECTS");
  const OdDbObject* root = objectOf(m_db->getNamedObjectsDictionaryId());
  if (root) writeObject(root, root->dxfName());
  // The other objects, in handle order.
  std::vector<const OdDbObject*> rest;
  // Tables, records and entities stand in their own sections (entities of no
  // block are not written); the answer is the same for every object of a class.
  const OdRxClass* lastClass = nullptr;
  bool lastGoesHere = false;
  m_db->forEachObjectId([&](const OdDbObjectId& id) {
    const OdDbObject* object = objectOf(id);
    if (!object || object == root) return;
    const OdRxClass* cls = object->isA();
    if (cls != lastClass) {
      lastClass = cls;
      lastGoesHere = !cls->isDerivedFrom(OdDbEntity::desc()) && !cls->isDerivedFrom(OdDbSymbolTable::desc()) &&
                     !cls->isDerivedFrom(OdDbSymbolTableRecord::desc());
    }
    if (lastGoesHere) rest.push_back(object);
  });
  std::sort(rest.begin(), rest.end(), [](const OdDbObject* a, const OdDbObject* b) {
    return a->getDbHandle().value() < b->getDbHandle().value();
  });
  for (const OdDbObject* object : rest) writeObject(object, object->dxfName());
  endSection();
}

std::string DxfWriter::write() {
  // About 250 bytes an object: the buffer grows rarely.
  m_out.reserve(m_sink ? kChunkSize + kChunkSize / 4 : std::max<size_t>(1 << 20, m_db->numberOfHandles() * 250));
  writeHeader();
  writeClasses();
  writeTables();
  writeBlocks();
  writeEntities();
  writeObjects();
  for (const auto& raw : m_db->rawSections()) {
    section(raw.name.c_str());
    for (const auto& tag : raw.tags) m_out.writeTag(tag);
    endSection();
  }
  m_out.writeString(0, L"EOF");
  return m_out.release();
}

}  // namespace

std::string odDxfWriteBuffer(OdDbDatabase* db, OdDb::DwgVersion version) {
  DxfWriter writer(db, version);
  return writer.write();
}

void odDxfWriteFile(OdDbDatabase* db, const OdString& path) { odDxfWriteFile(db, path, odDxfSaveVersion(db)); }

namespace {

// Writes the pieces of text to a file on a thread of its own, so that making
// the text and copying it to the system overlap.
class FileChunkWriter : public ChunkSink {
 public:
  explicit FileChunkWriter(int fd) : m_fd(fd), m_thread([this] { run(); }) {}
  ~FileChunkWriter() override { finish(); }
  void take(std::string&& chunk) override {
    std::unique_lock<std::mutex> lock(m_mutex);
    // At most two pieces wait: the maker does not run far ahead.
    m_room.wait(lock, [&] { return m_queue.size() < 2 || m_error != 0; });
    m_queue.push_back(std::move(chunk));
    m_ready.notify_one();
  }
  // Waits until everything is written; returns the first error (0 when none).
  int finish() {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_done = true;
      m_ready.notify_one();
    }
    if (m_thread.joinable()) m_thread.join();
    return m_error;
  }

 private:
  void run() {
    for (;;) {
      std::string chunk;
      {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_ready.wait(lock, [&] { return !m_queue.empty() || m_done; });
        if (m_queue.empty()) return;
        chunk = std::move(m_queue.front());
        m_queue.pop_front();
        m_room.notify_one();
      }
      if (m_error) continue;  // after an error the rest is dropped
      size_t done = 0;
      while (done < chunk.size()) {
        ssize_t n = ::write(m_fd, chunk.data() + done, chunk.size() - done);
        if (n < 0) {
          if (errno == EINTR) continue;
          std::lock_guard<std::mutex> lock(m_mutex);
          m_error = errno;
          m_room.notify_all();
          break;
        }
        done += static_cast<size_t>(n);
      }
    }
  }

  int m_fd;
  std::mutex m_mutex;
  std::condition_variable m_ready, m_room;
  std::deque<std::string> m_queue;
  bool m_done = false;
  int m_error = 0;
  std::thread m_thread;
};

}  // namespace

namespace {

// The file a save replaces: a symbolic link is followed to what it names (the
// user's file is the target, not the link), however many links deep.
std::string saveTarget(const std::string& path, const OdString& shown) {
  std::string current = path;
  for (int hops = 0; hops < 40; ++hops) {
    struct stat st;
    if (lstat(current.c_str(), &st) != 0 || !S_ISLNK(st.st_mode)) return current;
    std::vector<char> buffer(static_cast<size_t>(st.st_size > 0 ? st.st_size : 255) + 1);
    ssize_t length = readlink(current.c_str(), buffer.data(), buffer.size());
    if (length < 0) throw OdError_FileException(eFileAccessErr, shown + L": " + OdString(std::strerror(errno)));
    std::string link(buffer.data(), static_cast<size_t>(length));
    if (!link.empty() && link[0] != '/') {
      const size_t slash = current.rfind('/');
      if (slash != std::string::npos) link = current.substr(0, slash + 1) + link;
    }
    current = link;
  }
  throw OdError_FileException(eFileAccessErr, shown + L": too many levels of symbolic links");
}

// Temporary files of a save carry this mark after the drawing's name, so that
// one left by a killed save is known for what it is and removed by the next.
constexpr const char kSaveMark[] = ".ryad-save-";

void removeStaleTemporaries(const std::string& target) {
  const size_t slash = target.rfind('/');
  const std::string folder = slash == std::string::npos ? std::string(".") : target.substr(0, slash + 1);
  const std::string prefix = (slash == std::string::npos ? target : target.substr(slash + 1)) + kSaveMark;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename().string();
    if (name.size() == prefix.size() + 6 && name.compare(0, prefix.size(), prefix) == 0 && entry.is_regular_file(error)) {
      std::filesystem::remove(entry.path(), error);
    }
  }
}

}  // namespace

void odDxfWriteFile(OdDbDatabase* db, const OdString& path, OdDb::DwgVersion version) {
  if (path.isEmpty()) throw OdError_FileException(eInvalidInput, OdString(L"no file name given; nothing saved"));
  const std::string target = saveTarget(path.toUtf8(), path);
  // Only a regular file is ever replaced: a device, a pipe or a folder at the
  // path is left alone.
  struct stat existing;
  const bool exists = stat(target.c_str(), &existing) == 0;
  if (exists && !S_ISREG(existing.st_mode)) {
    throw OdError_FileException(eFileAccessErr, path + L": not a regular file; not saved");
  }
  removeStaleTemporaries(target);
  // A temporary file beside the target, flushed and renamed over it: the old
  // file stays whole until the new one is complete.
  std::string temporary = target + kSaveMark + "XXXXXX";
  std::vector<char> name(temporary.begin(), temporary.end());
  name.push_back('\0');
  int fd = mkstemp(name.data());
  if (fd < 0) throw OdError_FileException(eFileAccessErr, path + L": " + OdString(std::strerror(errno)));
  auto fail = [&](int error) {
    close(fd);
    unlink(name.data());
    throw OdError_FileException(eFileWriteError, path + L": " + OdString(std::strerror(error)));
  };
  int error = 0;
  {
    FileChunkWriter chunks(fd);
    try {
      DxfWriter writer(db, version, &chunks);
      chunks.take(writer.write());
    } catch (...) {
      chunks.finish();
      close(fd);
      unlink(name.data());
      throw;
    }
    error = chunks.finish();
  }
  if (error) fail(error);
  if (fsync(fd) != 0) fail(errno);
  // The replaced file's mode and (where allowed) owner; a new file's mode
  // follows the umask as any file the user creates.
  if (exists) {
    if (fchown(fd, existing.st_uid, existing.st_gid) != 0) {
      // Only the owner's group may be settable; a failure keeps the saver's ids.
      if (fchown(fd, static_cast<uid_t>(-1), existing.st_gid) != 0) {}
    }
    fchmod(fd, existing.st_mode & 07777);
  } else {
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(fd, 0666 & ~mask);
  }
  if (close(fd) != 0) {
    int closeError = errno;
    unlink(name.data());
    throw OdError_FileException(eFileWriteError, path + L": " + OdString(std::strerror(closeError)));
  }
  if (rename(name.data(), target.c_str()) != 0) {
    int renameError = errno;
    unlink(name.data());
    throw OdError_FileException(eFileWriteError, path + L": " + OdString(std::strerror(renameError)));
  }
}
