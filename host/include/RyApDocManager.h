// Documents of the host: each open drawing is a document with its database;
// one is current. Reactors hear of documents made, activated and destroyed.
#pragma once

#include <map>
#include <vector>

#include "DbDatabase.h"
#include "rytypes.h"

class RyApDocument {
 public:
  virtual ~RyApDocument() = default;
  virtual OdDbDatabase* database() const = 0;
  virtual OdString fileName() const = 0;
  virtual OdString docTitle() const = 0;
  // True when the drawing changed since it was opened or saved.
  virtual bool isModified() const = 0;
};

class RyApDocManagerReactor {
 public:
  virtual ~RyApDocManagerReactor() = default;
  virtual void documentCreated(RyApDocument* doc) {}
  virtual void documentBecameCurrent(RyApDocument* doc) {}
  virtual void documentActivated(RyApDocument* doc) {}
  virtual void documentToBeDestroyed(RyApDocument* doc) {}
  virtual void documentDestroyed(const OdString& fileName) {}
};

class RyApDocManager {
 public:
  virtual ~RyApDocManager() = default;
  virtual RyApDocument* curDocument() const = 0;
  virtual RyApDocument* mdiActiveDocument() const { return curDocument(); }
  virtual int documentCount() const = 0;
  virtual RyApDocument* document(int index) const = 0;
  virtual RyApDocument* document(const OdDbDatabase* db) const = 0;
  virtual void addReactor(RyApDocManagerReactor* reactor) = 0;
  virtual void removeReactor(RyApDocManagerReactor* reactor) = 0;
  // Opens a drawing as a new document and makes it current.
  virtual OdResult appContextOpenDocument(const OdString& fileName) = 0;
  virtual OdResult appContextNewDocument(const OdString& templateName = OdString()) = 0;
  virtual OdResult setCurDocument(RyApDocument* doc) = 0;
};

RYAD_API RyApDocManager* ryDocManagerPtr();

// One record of type T per open document, made on first use and dropped
// when its document is destroyed.
template <class T>
class RyApDataManager : public RyApDocManagerReactor {
 public:
  RyApDataManager() { ryDocManagerPtr()->addReactor(this); }
  ~RyApDataManager() override {
    if (RyApDocManager* manager = ryDocManagerPtr()) manager->removeReactor(this);
    m_records.clear();
  }
  RyApDataManager(const RyApDataManager&) = delete;
  RyApDataManager& operator=(const RyApDataManager&) = delete;

  T& docData(RyApDocument* doc) { return m_records[doc]; }
  T& docData() { return docData(ryDocManagerPtr()->curDocument()); }
  bool hasData(RyApDocument* doc) const { return m_records.count(doc) != 0; }
  size_t size() const { return m_records.size(); }
  void documentToBeDestroyed(RyApDocument* doc) override { m_records.erase(doc); }

 protected:
  std::map<RyApDocument*, T> m_records;
};
