// The attribute text file that attout writes and attin reads, and what the
// two commands share: the records, the unique tags of one reference, the
// column list, the selection filter of attributed block references and the
// walk over a reference's attributes.
//
// The file: one line per row, columns separated by one tab. The header row
// is "HANDLE", "BLOCKNAME" and the column tags; each data row holds an
// apostrophe and the reference's handle, its block name and one value per
// column, "<>" where the reference has no attribute of that column ("<>"
// read back leaves the attribute as it is).
//
// The file has no quoting: a value is exactly what stands between its tabs,
// quotes, commas and semicolons included. It is written in the ANSI code
// page with "\U+XXXX" escapes for what the page lacks (RyCStdioFile), and
// read back that way, so that an unchanged file changes nothing. Files a
// spreadsheet saved again are read too: a byte-order mark (UTF-8, UTF-16)
// selects its encoding, CR LF, LF and lone CR all end lines, blank lines and
// lines of tabs only are passed over, a final line may lack its line end and
// an empty last field stays a field. Lines are split at every tab: a value
// cannot hold a tab or a line break.
#pragma once

#include <functional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "DbBlockReference.h"
#include "OdString.h"
#include "frame/ResultLists.h"
#include "rytypes.h"

class RyCStdioFile;

namespace kestrix::attributes {

inline constexpr const wchar_t* kHandleColumn = L"HANDLE";
inline constexpr const wchar_t* kBlockNameColumn = L"BLOCKNAME";
inline constexpr const wchar_t* kUnchanged = L"<>";

// One selected block reference for export.
struct attoutStruct {
  OdString handle;               // upper-case hexadecimal, no prefix
  OdString blockName;            // the block the reference carries
  std::vector<OdString> tags;    // unique within the reference, in attribute order
  std::vector<OdString> values;  // in the same order
};

// One data row of a file; its values stand in the file's columns.
struct attinStruct {
  OdString handle;  // as it stands in the file
  OdString blockName;
  std::vector<OdString> values;
};

// Names compared without regard to letter case (per character, as
// OdString::iCompare folds it), and hashed alike, without folded copies.
inline bool equalNoCase(const OdString& a, const OdString& b) {
  return a.getLength() == b.getLength() && a.iCompare(b) == 0;
}
struct NoCaseHash {
  size_t operator()(const OdString& text) const;
};
struct NoCaseEqual {
  bool operator()(const OdString& a, const OdString& b) const { return equalNoCase(a, b); }
};
// "<>": the value that leaves an attribute as it is.
inline bool isUnchangedMark(const OdString& value) {
  return value.getLength() == 2 && value[0] == L'<' && value[1] == L'>';
}

// The tags of one reference made unique: a tag met before (letter case
// ignored) becomes "TAG(n)" with the smallest n not yet used.
class UniqueTags {
 public:
  // The unique form of the next attribute's tag.
  const OdString& add(const OdString& tag);
  std::vector<OdString> takeTags() { return std::move(m_tags); }
  bool contains(const OdString& tag) const;
  void clear() { m_tags.clear(); }

 private:
  std::vector<OdString> m_tags;
};

// The file's columns after HANDLE and BLOCKNAME: the first reference's tags,
// then each tag not yet a column (letter case ignored), in order.
class ColumnList {
 public:
  void add(const std::vector<OdString>& tags);
  // The column of a tag (letter case ignored); -1 when there is none.
  int indexOf(const OdString& tag) const;
  const std::vector<OdString>& tags() const { return m_tags; }
  size_t size() const { return m_tags.size(); }

 private:
  std::vector<OdString> m_tags;
  std::unordered_map<OdString, int, NoCaseHash, NoCaseEqual> m_index;
};

// The selection filter of block references with attributes: (0 . "INSERT") (66 . 1).
ResultList attributedReferenceFilter();

// Block names by block record, looked up once each.
class BlockNames {
 public:
  const OdString& of(const OdDbBlockReference* reference);

 private:
  std::unordered_map<OdDbObjectId, OdString> m_names;
};

// The reference an id names when it is a block reference (INSERT) with
// attributes following it; null otherwise.
OdSmartPtr<OdDbBlockReference> openAttributedReference(const OdDbObjectId& id);
OdSmartPtr<OdDbBlockReference> openAttributedReference(const ads_name entity);

// Calls visit for each live attribute of the reference in order: the
// attributes that follow it up to its end marker.
void forEachAttribute(const OdDbBlockReference* reference,
                      const std::function<void(const OdDbObjectId&, OdDbAttribute*)>& visit);

// Handle, block name, unique tags and values of a reference.
void collectAttributes(const OdDbBlockReference* reference, BlockNames& blockNames, attoutStruct& record);

// Writes the file (encoding 1, escapes on, text mode); false when it cannot
// be created or could not be written whole (a file cut short is removed).
bool writeAttributeFile(const OdString& path, const std::vector<attoutStruct>& records,
                        const ColumnList& columns);

// What a file holds.
struct AttributeFileRows {
  bool headerSeen = false;
  std::vector<OdString> columns;  // the last header's
  std::vector<attinStruct> rows;  // rows whose value count matched the columns of their time
};

// The fields of one line split at every tab (none for a line without a tab).
std::vector<OdString> splitFields(std::wstring_view line);

// Reads the rest of an open file.
void readAttributeRows(RyCStdioFile& file, AttributeFileRows& contents);

}  // namespace kestrix::attributes
