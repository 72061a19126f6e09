// The engine object and the library's two exports.
#include <exception>

#include "Comparison.h"
#include "DxfFile.h"

namespace {

class CompareJet : public DwgCompareJet {
 public:
  void setOldDatabase(OdDbDatabase* db) override { m_old = db; }
  void setNewDatabase(OdDbDatabase* db) override { m_new = db; }

  std::int32_t compare(const DwgCompareOptions* options, const DwgCompareColors* colors) override {
    m_counts = DwgCompareCounts();
    m_report = OdString();
    if (!m_old || !m_new || m_old->getFilename().isEmpty() || m_new->getFilename().isEmpty()) return 0;
    // Records of another size are not ours: their defaults serve.
    const DwgCompareOptions opts =
        options && options->size == sizeof(DwgCompareOptions) ? *options : DwgCompareOptions();
    const DwgCompareColors cols = colors && colors->size == sizeof(DwgCompareColors) ? *colors : DwgCompareColors();
    try {
      const dwgcmp::Classification result = dwgcmp::classify(m_old, m_new, opts);
      m_counts = result.counts;
      const std::int64_t compared = result.outcomes.size();
      if (compared == 0) return 0;
      dwgcmp::mark(m_old, m_new, result, opts, cols);
      odDxfWriteFile(m_old, m_old->getFilename());
      odDxfWriteFile(m_new, m_new->getFilename());
      const OdString reportPath = dwgcmp::reportPathFor(m_new->getFilename());
      if (dwgcmp::writeFileAtomically(reportPath, dwgcmp::reportText(m_old, m_new, result, opts)))
        m_report = reportPath;
      return compared > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<std::int32_t>(compared);
    } catch (const std::exception&) {
      // OdError too: a drawing that cannot be marked or saved shows nothing.
      return 0;
    }
  }

  DwgCompareCounts counts() const override { return m_counts; }
  const wchar_t* reportPath() const override { return m_report.c_str(); }

 private:
  OdDbDatabase* m_old = nullptr;
  OdDbDatabase* m_new = nullptr;
  DwgCompareCounts m_counts;
  OdString m_report;
};

}  // namespace

extern "C" {
__attribute__((visibility("default"))) DwgCompareJet* GetDwgCompareJet() { return new CompareJet(); }
__attribute__((visibility("default"))) void FreeDwgCompareJet(DwgCompareJet* jet) { delete jet; }
}
