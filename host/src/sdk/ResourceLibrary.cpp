#include "sdk/ResourceLibrary.h"

#include <charconv>
#include <fstream>
#include <iterator>

namespace ryhost {

namespace {

constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";
constexpr long kLargestNumber = 65535;  // string and dialog numbers are 16-bit, as in the classic tables

std::string_view withoutBom(std::string_view text) {
  return text.substr(0, kUtf8Bom.size()) == kUtf8Bom ? text.substr(kUtf8Bom.size()) : text;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) text.remove_suffix(1);
  return text;
}

std::vector<std::string_view> splitTabs(std::string_view line) {
  std::vector<std::string_view> fields;
  size_t start = 0;
  for (;;) {
    size_t tab = line.find('\t', start);
    fields.push_back(line.substr(start, tab == std::string_view::npos ? std::string_view::npos : tab - start));
    if (tab == std::string_view::npos) return fields;
    start = tab + 1;
  }
}

bool parseInt(std::string_view text, long& value) {
  text = trimmed(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return !text.empty() && error == std::errc() && end == text.data() + text.size();
}

std::vector<OdString> upperWords(std::string_view text) {
  std::vector<OdString> words;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find(' ', start);
    if (end == std::string_view::npos) end = text.size();
    if (end > start) words.push_back(OdString(std::string(text.substr(start, end - start))).upper());
    start = end + 1;
  }
  return words;
}

bool isSkipped(std::string_view line) {
  std::string_view bare = trimmed(line);
  return bare.empty() || bare.front() == ';' || bare.front() == '#';
}

}  // namespace

bool unescapeResourceText(std::string_view text, OdString& result) {
  std::string bytes;
  bytes.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      bytes += text[i];
      continue;
    }
    if (++i == text.size()) return false;
    switch (text[i]) {
      case 'n': bytes += '\n'; break;
      case 't': bytes += '\t'; break;
      case '\\': bytes += '\\'; break;
      case '"': bytes += '"'; break;
      default: return false;
    }
  }
  result = OdString(bytes);
  return true;
}

const DialogControl* DialogTemplate::control(int controlId) const {
  for (const auto& item : controls) {
    if (item.id == controlId) return &item;
  }
  return nullptr;
}

// Reads the lines of a resource library one block at a time.
class ResourceParser {
 public:
  ResourceParser(std::string_view text, ResourceLibrary& library) : m_text(withoutBom(text)), m_library(library) {}

  bool run(std::string* reason) {
    std::string_view line;
    if (!nextLine(line) || trimmed(line) != kResourceLibraryHeader) {
      const bool otherVersion = trimmed(line).substr(0, kResourceLibraryMagic.size()) == kResourceLibraryMagic;
      return fail(reason, otherVersion ? "unsupported resource library version \"" + std::string(trimmed(line)) + "\""
                                       : "the first line is not \"" + std::string(kResourceLibraryHeader) + "\"");
    }
    while (nextLine(line)) {
      if (isSkipped(line)) continue;
      std::string_view bare = trimmed(line);
      bool ok = false;
      if (bare == "STRINGTABLE") {
        ok = stringTable();
      } else if (bare.substr(0, 7) == "DIALOG " || bare.substr(0, 7) == "DIALOG\t") {
        ok = dialog(bare.substr(7));
      } else {
        m_error = "expected STRINGTABLE or DIALOG <number>";
      }
      if (!ok) return fail(reason, m_error);
    }
    return true;
  }

 private:
  bool nextLine(std::string_view& line) {
    if (m_position >= m_text.size()) return false;
    size_t end = m_text.find('\n', m_position);
    if (end == std::string_view::npos) end = m_text.size();
    line = m_text.substr(m_position, end - m_position);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    m_position = end + 1;
    ++m_lineNumber;
    return true;
  }

  bool fail(std::string* reason, const std::string& what) const {
    if (reason) *reason = "line " + std::to_string(m_lineNumber) + ": " + what;
    return false;
  }

  bool error(const std::string& what) {
    m_error = what;
    return false;
  }

  bool number(std::string_view text, long& value, const char* what) {
    if (!parseInt(text, value) || value < 0 || value > kLargestNumber) {
      return error(std::string(what) + " must be a number from 0 to 65535");
    }
    return true;
  }

  bool text(std::string_view raw, OdString& value) {
    if (!unescapeResourceText(raw, value)) return error("a backslash starts no escape (use \\n \\t \\\\ or \\\")");
    return true;
  }

  bool stringTable() {
    std::string_view line;
    while (nextLine(line)) {
      if (isSkipped(line)) continue;
      if (trimmed(line) == "END") return true;
      const size_t tab = line.find('\t');
      if (tab == std::string_view::npos) return error("expected <number><TAB><text> or END");
      long id = 0;
      OdString value;
      if (!number(line.substr(0, tab), id, "a string number") || !text(line.substr(tab + 1), value)) return false;
      if (!m_library.m_strings.emplace(static_cast<unsigned>(id), value).second) {
        return error("string " + std::to_string(id) + " is defined twice");
      }
    }
    return error("STRINGTABLE without END");
  }

  bool dialog(std::string_view idText) {
    long id = 0;
    if (!number(idText, id, "a dialog number")) return false;
    DialogTemplate result;
    result.id = static_cast<int>(id);
    std::string_view line;
    while (nextLine(line)) {
      if (isSkipped(line)) continue;
      if (trimmed(line) == "END") {
        const int key = result.id;
        if (!m_library.m_dialogs.emplace(key, std::move(result)).second) {
          return error("dialog " + std::to_string(id) + " is defined twice");
        }
        return true;
      }
      result.lines.emplace_back(line);
      if (!dialogLine(splitTabs(line), result)) return false;
    }
    return error("DIALOG " + std::to_string(id) + " without END");
  }

  bool dialogLine(const std::vector<std::string_view>& fields, DialogTemplate& result) {
    const std::string_view keyword = trimmed(fields[0]);
    long a = 0, b = 0;
    if (keyword == "CAPTION" && fields.size() == 2) return text(fields[1], result.caption);
    if (keyword == "SIZE" && fields.size() == 3) {
      if (!parseInt(fields[1], a) || !parseInt(fields[2], b) || a <= 0 || b <= 0) {
        return error("SIZE takes a positive width and height");
      }
      result.width = static_cast<int>(a);
      result.height = static_cast<int>(b);
      return true;
    }
    if (keyword == "FONT" && fields.size() == 3) {
      if (!parseInt(fields[1], a) || a <= 0) return error("FONT takes a positive point size and a face name");
      result.fontSize = static_cast<int>(a);
      return text(fields[2], result.fontName);
    }
    if (keyword == "CONTROL" && (fields.size() == 8 || fields.size() == 9)) return control(fields, result);
    return error("expected CAPTION, SIZE, FONT, CONTROL or END, with their fields separated by tabs");
  }

  bool control(const std::vector<std::string_view>& fields, DialogTemplate& result) {
    DialogControl item;
    long values[5] = {};
    const size_t numbers[] = {1, 4, 5, 6, 7};
    for (size_t i = 0; i < 5; ++i) {
      if (!parseInt(fields[numbers[i]], values[i])) return error("CONTROL takes number, kind, label, x, y, width, height");
    }
    if (values[0] < -1 || values[0] > kLargestNumber) return error("a control number must be -1 or from 0 to 65535");
    if (values[3] < 0 || values[4] < 0) return error("a control's width and height cannot be negative");
    item.id = static_cast<int>(values[0]);
    item.x = static_cast<int>(values[1]);
    item.y = static_cast<int>(values[2]);
    item.width = static_cast<int>(values[3]);
    item.height = static_cast<int>(values[4]);
    item.kind = OdString(std::string(trimmed(fields[2]))).upper();
    if (item.kind.isEmpty()) return error("a control needs a kind");
    if (!text(fields[3], item.label)) return false;
    if (fields.size() == 9) item.styles = upperWords(fields[8]);
    result.controls.push_back(std::move(item));
    return true;
  }

  std::string_view m_text;
  ResourceLibrary& m_library;
  size_t m_position = 0;
  int m_lineNumber = 0;
  std::string m_error;
};

bool ResourceLibrary::startsAsResourceLibrary(std::string_view text) {
  return withoutBom(text).substr(0, kResourceLibraryMagic.size()) == kResourceLibraryMagic;
}

bool ResourceLibrary::isResourceLibraryFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  char head[64] = {};
  in.read(head, sizeof head);
  return startsAsResourceLibrary(std::string_view(head, static_cast<size_t>(in.gcount())));
}

std::unique_ptr<ResourceLibrary> ResourceLibrary::load(const std::string& path, std::string* reason) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    if (reason) *reason = "cannot read " + path;
    return nullptr;
  }
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::unique_ptr<ResourceLibrary> library = parse(text, reason);
  if (!library && reason) *reason = path + ", " + *reason;
  return library;
}

std::unique_ptr<ResourceLibrary> ResourceLibrary::parse(std::string_view text, std::string* reason) {
  auto library = std::make_unique<ResourceLibrary>();
  if (!ResourceParser(text, *library).run(reason)) return nullptr;
  return library;
}

const OdString* ResourceLibrary::string(unsigned id) const {
  auto it = m_strings.find(id);
  return it == m_strings.end() ? nullptr : &it->second;
}

const DialogTemplate* ResourceLibrary::dialog(int id) const {
  auto it = m_dialogs.find(id);
  return it == m_dialogs.end() ? nullptr : &it->second;
}

std::vector<int> ResourceLibrary::dialogIds() const {
  std::vector<int> ids;
  for (const auto& [id, dialog] : m_dialogs) ids.push_back(id);
  return ids;
}

}  // namespace ryhost
