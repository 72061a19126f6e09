// The host's settings profile, kept in "profile.ini" of the settings folder.
#include "RyHostServices.h"
#include "core/Host.h"
#include "core/IniFile.h"

namespace ryhost {

namespace {
class ProfileStore : public CMqProfile {
 public:
  bool getString(const OdString& section, const OdString& key, OdString& value) const override {
    return IniFile(path()).get(section, key, value);
  }
  bool setString(const OdString& section, const OdString& key, const OdString& value) override {
    IniFile file(path());
    file.set(section, key, value);
    return file.save();
  }

 private:
  static OdString path() { return Host::instance().dataFolder() + L"profile.ini"; }
};

class System : public CMqSystem {
 public:
  CMqProfile* profile() override { return &m_profile; }

 private:
  ProfileStore m_profile;
};
}  // namespace

}  // namespace ryhost

CMqSystem* CMqSystem::instance() {
  static ryhost::System system;
  return &system;
}
