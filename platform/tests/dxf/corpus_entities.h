// Entities of the drawings of the shared corpus, as the DXF tag reader
// gives them: each entity's type and its tags from the first subclass marker
// up to the extended data, read with the database's field tables in the tests
// of this folder.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "db/db_test_support.h"
#include "dxf/DxfTagReader.h"

namespace entities_test {

inline const std::filesystem::path kCorpus = KESTRIX_CORPUS_DIR;

// One entity of a drawing: its type and its tags from the first subclass
// marker up to the extended data.
struct CorpusEntity {
  std::string file;
  OdString type;
  OdDxfTagList body;
  OdDb::DwgVersion version = OdDb::kDHL_CURRENT;
};

inline OdDb::DwgVersion versionOf(const std::wstring& acadVer) {
  static const std::pair<const wchar_t*, OdDb::DwgVersion> kVersions[] = {
      {L"AC1009", OdDb::vAC09}, {L"AC1012", OdDb::vAC12}, {L"AC1014", OdDb::vAC14},
      {L"AC1015", OdDb::vAC15}, {L"AC1018", OdDb::vAC18}, {L"AC1021", OdDb::vAC21},
      {L"AC1024", OdDb::vAC24}, {L"AC1027", OdDb::vAC27}, {L"AC1032", OdDb::vAC32}};
  for (const auto& [name, version] : kVersions) {
    if (acadVer == name) return version;
  }
  return OdDb::vAC09;
}

// Every entity of the given types in every drawing of the corpus.
inline std::vector<CorpusEntity> corpusEntities(const std::vector<std::wstring>& types) {
  std::vector<CorpusEntity> found;
  if (!std::filesystem::is_directory(kCorpus)) return found;
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(kCorpus)) {
    std::string extension = entry.path().extension().string();
    if (extension == ".dxf" || extension == ".DXF") paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  for (const auto& path : paths) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream content;
    content << in.rdbuf();
    const std::string data = content.str();
    OdDxfTagReader reader(data);
    std::wstring acadVer, dwgCodePage, *pending = nullptr;
    OdDxfTag tag;
    OdDxfTagList all;
    while (reader.next(tag)) {
      if (pending && tag.type == OdDxf::ValueType::kString) {
        *pending = tag.s.c_str();
        reader.setCodePage(OdDxf::stringCodePageOf(acadVer, dwgCodePage));
      }
      pending = nullptr;
      if (tag.code == 9 && tag.s == L"$ACADVER") pending = &acadVer;
      if (tag.code == 9 && tag.s == L"$DWGCODEPAGE") pending = &dwgCodePage;
      all.push_back(tag);
    }
    const OdDb::DwgVersion version = versionOf(acadVer);
    bool inEntities = false;
    for (size_t i = 0; i < all.size(); ++i) {
      if (all[i].code == 2 && i > 0 && all[i - 1].code == 0 && all[i - 1].s == L"SECTION") {
        inEntities = all[i].s == L"ENTITIES" || all[i].s == L"BLOCKS";
      }
      if (!inEntities || all[i].code != 0) continue;
      if (std::find(types.begin(), types.end(), std::wstring(all[i].s.c_str())) == types.end()) continue;
      CorpusEntity entity{path.filename().string(), all[i].s, {}, version};
      bool started = false;
      for (size_t j = i + 1; j < all.size() && all[j].code != 0 && all[j].code != 1001; ++j) {
        started |= all[j].code == 100;
        if (started) entity.body.push_back(all[j]);
      }
      found.push_back(std::move(entity));
    }
  }
  return found;
}

// The entities of one type in one drawing of the corpus.
inline std::vector<CorpusEntity> corpusEntitiesOf(const std::wstring& type, const std::string& file) {
  std::vector<CorpusEntity> found;
  for (auto& entity : corpusEntities({type})) {
    if (entity.file == file) found.push_back(std::move(entity));
  }
  return found;
}

// A fresh object of class T read from the entity's tags.
template <class T>
OdSmartPtr<T> readEntity(const CorpusEntity& entity) {
  OdSmartPtr<T> object = T::createObject();
  TestTagContext ctx(entity.version);
  OdDbSchemaIo::readFields(object.get(), entity.body.data(), entity.body.data() + entity.body.size(), ctx);
  return object;
}

}  // namespace entities_test
