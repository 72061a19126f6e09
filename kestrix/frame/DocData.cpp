#include "frame/DocData.h"

#include <memory>

void CDocData::attach(OdDbDatabase* database) {
  if (m_reactor || !database) return;
  m_reactor = new KWIBBlockChangeReactor();
  m_reactor->addRef();
  m_database = database;
  database->addReactor(m_reactor);
}

void CDocData::clear() {
  if (!m_reactor) return;
  if (m_database) m_database->removeReactor(m_reactor);
  m_reactor->release();
  m_reactor = nullptr;
  m_database = nullptr;
}

namespace kestrix {

namespace {
std::unique_ptr<DocDataManager<CDocData>> g_documents;
std::unique_ptr<RyApDataManager<breakData>> g_break;
std::unique_ptr<RyApDataManager<CircleAccuracyData>> g_circles;
}  // namespace

DocDataManager<CDocData>& documentData() {
  if (!g_documents) g_documents = std::make_unique<DocDataManager<CDocData>>();
  return *g_documents;
}

RyApDataManager<breakData>& breakDataManager() {
  if (!g_break) g_break = std::make_unique<RyApDataManager<breakData>>();
  return *g_break;
}

RyApDataManager<CircleAccuracyData>& circleAccuracyManager() {
  if (!g_circles) g_circles = std::make_unique<RyApDataManager<CircleAccuracyData>>();
  return *g_circles;
}

void releaseDocumentData() {
  g_documents.reset();
  g_break.reset();
  g_circles.reset();
}

}  // namespace kestrix
