#include "blocks/AttributeFile.h"

#include <cstdio>
#include <cwctype>
#include <filesystem>

#include "blocks/RyCStdioFile.h"
#include "rydb.h"
#include "ryut.h"

namespace kestrix::attributes {

// ---------------------------------------------------------------- tags and columns

size_t NoCaseHash::operator()(const OdString& text) const {
  size_t hash = 14695981039346656037ull;
  for (wchar_t ch : text.str()) hash = (hash ^ static_cast<size_t>(odToUpper(ch))) * 1099511628211ull;
  return hash;
}

bool UniqueTags::contains(const OdString& tag) const {
  for (const OdString& used : m_tags) {
    if (equalNoCase(used, tag)) return true;
  }
  return false;
}

const OdString& UniqueTags::add(const OdString& tag) {
  if (!contains(tag)) return m_tags.emplace_back(tag);
  OdString name;
  for (int n = 1;; ++n) {
    name.format(L"%ls(%d)", tag.c_str(), n);
    if (!contains(name)) return m_tags.emplace_back(std::move(name));
  }
}

void ColumnList::add(const std::vector<OdString>& tags) {
  for (const OdString& tag : tags) {
    if (m_index.count(tag)) continue;
    m_index.emplace(tag, static_cast<int>(m_tags.size()));
    m_tags.push_back(tag);
  }
}

int ColumnList::indexOf(const OdString& tag) const {
  auto found = m_index.find(tag);
  return found == m_index.end() ? -1 : found->second;
}

// ---------------------------------------------------------------- references

ResultList attributedReferenceFilter() { return ResultList(ryutBuildList(RTDXF0, L"INSERT", 66, 1, RTNONE)); }

const OdString& BlockNames::of(const OdDbBlockReference* reference) {
  const OdDbObjectId blockId = reference->blockTableRecord();
  auto found = m_names.find(blockId);
  if (found != m_names.end()) return found->second;
  OdString name;
  OdDbObjectPtr object = blockId.openObject();
  if (auto* block = dynamic_cast<const OdDbBlockTableRecord*>(object.get())) name = block->getName();
  return m_names.emplace(blockId, name).first->second;
}

OdSmartPtr<OdDbBlockReference> openAttributedReference(const OdDbObjectId& id) {
  OdDbObjectPtr object = id.openObject();
  OdSmartPtr<OdDbBlockReference> reference = OdDbBlockReference::cast(object.get());
  if (reference.isNull() || reference->dxfName().iCompare(L"INSERT") != 0) return {};
  for (const OdDbObjectId& attributeId : reference->attributeIds()) {
    if (!attributeId.isErased()) return reference;
  }
  return {};
}

OdSmartPtr<OdDbBlockReference> openAttributedReference(const ads_name entity) {
  OdDbObjectId id;
  if (rydbGetObjectId(id, entity) != RTNORM) return {};
  return openAttributedReference(id);
}

void forEachAttribute(const OdDbBlockReference* reference,
                      const std::function<void(const OdDbObjectId&, OdDbAttribute*)>& visit) {
  // The reference's own list is the sequence up to its end marker; erased
  // attributes are not part of it any more.
  for (const OdDbObjectId& id : reference->attributeIds()) {
    if (id.isErased()) continue;
    OdDbObjectPtr object = id.openObject();
    if (auto* attribute = dynamic_cast<OdDbAttribute*>(object.get())) visit(id, attribute);
  }
}

void collectAttributes(const OdDbBlockReference* reference, BlockNames& blockNames, attoutStruct& record) {
  record.handle = reference->objectId().handle().ascii();
  record.blockName = blockNames.of(reference);
  UniqueTags unique;
  forEachAttribute(reference, [&](const OdDbObjectId&, OdDbAttribute* attribute) {
    unique.add(attribute->tagConst());
    record.values.push_back(attribute->textStringConst());
  });
  record.tags = unique.takeTags();
}

// ---------------------------------------------------------------- writing

bool writeAttributeFile(const OdString& path, const std::vector<attoutStruct>& records,
                        const ColumnList& columns) {
  RyCStdioFile file(RyCStdioFile::kAnsi, true, false);
  if (!file.Open(path.c_str(), CStdioFile::modeCreate | CStdioFile::modeWrite | CStdioFile::typeText))
    return false;
  std::wstring line = kHandleColumn;
  line += L'\t';
  line += kBlockNameColumn;
  for (const OdString& tag : columns.tags()) (line += L'\t') += tag.str();
  line += L'\n';
  file.WriteString(line.c_str());

  std::vector<const OdString*> cells;
  for (const attoutStruct& record : records) {
    cells.assign(columns.size(), nullptr);
    for (size_t k = 0; k < record.tags.size() && k < record.values.size(); ++k) {
      const int column = columns.indexOf(record.tags[k]);
      if (column >= 0 && !cells[static_cast<size_t>(column)])
        cells[static_cast<size_t>(column)] = &record.values[k];
    }
    line.assign(1, L'\'');
    line += record.handle.str();
    line += L'\t';
    line += record.blockName.str();
    for (const OdString* cell : cells) {
      line += L'\t';
      if (cell)
        line += cell->str();
      else
        line += kUnchanged;
    }
    line += L'\n';
    file.WriteString(line.c_str());
  }
  // What is still buffered goes out now: a full disk or a file size limit
  // shows here, not in the writes before.
  // A file that ended early is removed, so that no half of it is taken for
  // the whole (a device such as /dev/full is left alone).
  const bool written = std::fflush(file.m_pStream) == 0 && std::ferror(file.m_pStream) == 0;
  file.Close();
  std::error_code ignored;
  const std::filesystem::path filePath(path.toUtf8());
  if (!written && std::filesystem::is_regular_file(filePath, ignored))
    std::filesystem::remove(filePath, ignored);
  return written;
}

// ---------------------------------------------------------------- reading

namespace {

bool isBlank(std::wstring_view text) {
  for (wchar_t ch : text) {
    if (!std::iswspace(static_cast<wint_t>(ch))) return false;
  }
  return true;
}

void takeLine(std::wstring_view line, AttributeFileRows& contents) {
  if (isBlank(line)) return;
  std::vector<OdString> fields = splitFields(line);
  if (fields.size() < 2) return;
  if (equalNoCase(fields[0], kHandleColumn) && equalNoCase(fields[1], kBlockNameColumn)) {
    contents.headerSeen = true;
    contents.columns.assign(std::make_move_iterator(fields.begin() + 2),
                            std::make_move_iterator(fields.end()));
    return;
  }
  if (fields.size() - 2 != contents.columns.size()) return;
  attinStruct row;
  row.handle = std::move(fields[0]);
  row.blockName = std::move(fields[1]);
  row.values.assign(std::make_move_iterator(fields.begin() + 2), std::make_move_iterator(fields.end()));
  contents.rows.push_back(std::move(row));
}

}  // namespace

std::vector<OdString> splitFields(std::wstring_view line) {
  std::vector<OdString> fields;
  if (line.find(L'\t') == std::wstring_view::npos) return fields;
  size_t start = 0;
  for (;;) {
    const size_t tab = line.find(L'\t', start);
    fields.emplace_back(line.substr(start, tab == std::wstring_view::npos ? std::wstring_view::npos : tab - start));
    if (tab == std::wstring_view::npos) break;
    start = tab + 1;
  }
  return fields;
}

void readAttributeRows(RyCStdioFile& file, AttributeFileRows& contents) {
  OdString line;
  while (file.ReadString(line)) {
    // A carriage return left in a line ends a line too (files with CR line ends).
    std::wstring_view rest(line.str());
    for (size_t cr; (cr = rest.find(L'\r')) != std::wstring_view::npos; rest.remove_prefix(cr + 1)) {
      takeLine(rest.substr(0, cr), contents);
    }
    takeLine(rest, contents);
  }
}

}  // namespace kestrix::attributes
