#include "core/IniFile.h"

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>

namespace ryhost {

namespace {
OdString decode(const std::string& bytes) {
  if (bytes.size() >= 3 && bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) return OdString(bytes.substr(3));
  if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF && static_cast<unsigned char>(bytes[1]) == 0xFE) {
    std::wstring text;
    for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
      text += static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) | (static_cast<unsigned char>(bytes[i + 1]) << 8));
    }
    return OdString(text);
  }
  return OdString(bytes);
}
}  // namespace

IniFile::IniFile(const OdString& path) : m_path(path) {
  std::ifstream in(path.toUtf8(), std::ios::binary);
  if (!in) return;
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  OdString text = decode(bytes);
  Section* current = nullptr;
  int start = 0;
  while (start < text.getLength()) {
    int end = text.find(L'\n', start);
    OdString line = text.mid(start, end < 0 ? -1 : end - start);
    start = end < 0 ? text.getLength() : end + 1;
    line.trimRight(L"\r");
    OdString trimmed = line;
    trimmed.trimLeft().trimRight();
    if (trimmed.isEmpty() || trimmed[0] == L';') continue;
    if (trimmed[0] == L'[' && trimmed.right(1) == L"]") {
      OdString name = trimmed.mid(1, trimmed.getLength() - 2);
      name.trimLeft().trimRight();
      current = findSection(name);
      if (!current) {
        m_sections.push_back({name, {}});
        current = &m_sections.back();
      }
      continue;
    }
    int equals = line.find(L'=');
    if (!current || equals < 0) continue;
    OdString key = line.left(equals);
    OdString value = line.mid(equals + 1);
    key.trimLeft().trimRight();
    value.trimLeft().trimRight();
    // A value in double quotes keeps its spaces.
    if (value.getLength() >= 2 && value[0] == L'"' && value.right(1) == L"\"") value = value.mid(1, value.getLength() - 2);
    current->entries.push_back({key, value});
  }
}

IniFile::Section* IniFile::findSection(const OdString& name) {
  for (auto& section : m_sections) {
    if (section.name.iCompare(name) == 0) return &section;
  }
  return nullptr;
}

const IniFile::Section* IniFile::findSection(const OdString& name) const {
  return const_cast<IniFile*>(this)->findSection(name);
}

bool IniFile::get(const OdString& section, const OdString& key, OdString& value) const {
  const Section* s = findSection(section);
  if (!s) return false;
  for (const auto& entry : s->entries) {
    if (entry.key.iCompare(key) == 0) {
      value = entry.value;
      return true;
    }
  }
  return false;
}

void IniFile::set(const OdString& section, const OdString& key, const OdString& value) {
  Section* s = findSection(section);
  if (!s) {
    m_sections.push_back({section, {}});
    s = &m_sections.back();
  }
  for (auto& entry : s->entries) {
    if (entry.key.iCompare(key) == 0) {
      entry.value = value;
      return;
    }
  }
  s->entries.push_back({key, value});
}

void IniFile::removeKey(const OdString& section, const OdString& key) {
  if (Section* s = findSection(section)) std::erase_if(s->entries, [&](const Entry& e) { return e.key.iCompare(key) == 0; });
}

void IniFile::removeSection(const OdString& section) {
  std::erase_if(m_sections, [&](const Section& s) { return s.name.iCompare(section) == 0; });
}

std::vector<OdString> IniFile::sections() const {
  std::vector<OdString> names;
  for (const auto& s : m_sections) names.push_back(s.name);
  return names;
}

std::vector<OdString> IniFile::keys(const OdString& section) const {
  std::vector<OdString> names;
  if (const Section* s = findSection(section)) {
    for (const auto& e : s->entries) names.push_back(e.key);
  }
  return names;
}

bool IniFile::save() const {
  std::ostringstream out;
  for (const auto& section : m_sections) {
    out << "[" << section.name.toUtf8() << "]\r\n";
    for (const auto& entry : section.entries) {
      OdString value = entry.value;
      // Spaces at either end survive only in quotes.
      bool quote = !value.isEmpty() && (value[0] == L' ' || value.right(1) == L" ");
      out << entry.key.toUtf8() << "=" << (quote ? "\"" : "") << value.toUtf8() << (quote ? "\"" : "") << "\r\n";
    }
  }
  const std::string target = m_path.toUtf8();
  const std::string temporary = target + ".tmp";
  {
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    if (!file) return false;
    file << out.str();
    if (!file.flush()) return false;
  }
  return std::rename(temporary.c_str(), target.c_str()) == 0;
}

}  // namespace ryhost
