// Records kept per open document: the block-change reactor of each drawing
// (DocDataManager<CDocData>) and the per-document settings of two tools.
#pragma once

#include "RyApDocManager.h"
#include "frame/Reactors.h"

// The record of one document: its block-change reactor, attached to the
// document's database while the record holds it.
class CDocData {
 public:
  CDocData() = default;
  CDocData(const CDocData&) = delete;
  CDocData& operator=(const CDocData&) = delete;
  CDocData(CDocData&& other) noexcept : m_reactor(other.m_reactor), m_database(other.m_database) {
    other.m_reactor = nullptr;
    other.m_database = nullptr;
  }
  ~CDocData() { clear(); }

  KWIBBlockChangeReactor* blockChangeReactor() const { return m_reactor; }
  bool isEmpty() const { return m_reactor == nullptr; }
  // Makes a reactor and adds it to the database.
  void attach(OdDbDatabase* database);
  // Removes the reactor from its database (when there is one) and deletes it.
  void clear();

 private:
  KWIBBlockChangeReactor* m_reactor = nullptr;
  OdDbDatabase* m_database = nullptr;
};

// One record per document, made on first need and dropped with the
// document; makes the block-change reactor when a document becomes current.
template <class T>
class DocDataManager : public RyApDocManagerReactor {
 public:
  DocDataManager() { ryDocManagerPtr()->addReactor(this); }
  ~DocDataManager() override {
    if (RyApDocManager* manager = ryDocManagerPtr()) manager->removeReactor(this);
    m_records.clear();
  }
  // The slot of a document, an empty one inserted when it has none yet.
  T& docData(RyApDocument* doc) { return m_records[doc]; }
  bool hasSlot(RyApDocument* doc) const { return m_records.count(doc) != 0; }
  size_t size() const { return m_records.size(); }

  void documentBecameCurrent(RyApDocument* doc) override {
    T& slot = docData(doc);
    if (slot.isEmpty() && doc->database()) slot.attach(doc->database());
  }
  void documentToBeDestroyed(RyApDocument* doc) override {
    auto it = m_records.find(doc);
    if (it == m_records.end()) return;
    it->second.clear();
    m_records.erase(it);
  }

 private:
  std::map<RyApDocument*, T> m_records;
};

// Per-document settings of the break-object tool and the circle accuracy of
// the superhatch tool.
struct breakData {
  double gap = 0;
  bool keepEnds = true;
};
struct CircleAccuracyData {
  int segments = 72;
};

namespace kestrix {
// The managers live while the module is loaded.
DocDataManager<CDocData>& documentData();
RyApDataManager<breakData>& breakDataManager();
RyApDataManager<CircleAccuracyData>& circleAccuracyManager();
void releaseDocumentData();
}  // namespace kestrix
