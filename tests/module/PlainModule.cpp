#include <memory>
#include <string>
#include <utility>

#include "ZETConfig.h"
#include "ZETConfigFile.h"
#include "zet/ZETModule.h"

/// A module of another make: it has what the contract asks for, and nothing beyond. Its files do not tell
/// their text unless they are saved.
namespace {

class PlainFile : public ZET::IZETConfigFile {
  public:
    explicit PlainFile(std::shared_ptr<ZET::IZETConfigFile> file) : m_file(std::move(file)) {}

    bool Open(const std::string& fileName, const std::string& role, bool noMarkers) override {
        return m_file->Open(fileName, role, noMarkers);
    }
    bool OpenTemplate(const std::string& templateName, const std::string& fileName, const std::string& role,
                      bool noMarkers) override {
        return m_file->OpenTemplate(templateName, fileName, role, noMarkers);
    }
    void ApplyTemplates(ZET::StringMap& values) override { m_file->ApplyTemplates(values); }
    void RemoveMarkers(const std::string& beginMarker, const std::string& endMarker) override {
        m_file->RemoveMarkers(beginMarker, endMarker);
    }
    void RemoveZETMarkers() override { m_file->RemoveZETMarkers(); }
    void SetParamValue(const std::string& name, const std::string& value) override {
        m_file->SetParamValue(name, value);
    }
    std::string GetParamValue(const std::string& name) override { return m_file->GetParamValue(name); }
    void RestoreParamValue(const std::string& name) override { m_file->RestoreParamValue(name); }
    void SetLine(const std::string& pattern, const std::string& line) override {
        m_file->SetLine(pattern, line);
    }
    std::string GetLine(const std::string& pattern) override { return m_file->GetLine(pattern); }
    void RestoreLine(const std::string& pattern) override { m_file->RestoreLine(pattern); }
    void Save(bool noBackup) override { m_file->Save(noBackup); }

  private:
    std::shared_ptr<ZET::IZETConfigFile> m_file;
};

std::shared_ptr<ZET::IZETConfigFile> Plain(std::shared_ptr<ZET::IZETConfigFile> file) {
    return file ? std::make_shared<PlainFile>(std::move(file)) : nullptr;
}

class PlainConfig : public ZET::CZETConfig {
  public:
    using CZETConfig::CZETConfig;

    std::shared_ptr<ZET::IZETConfigFile> OpenConfigFile(const std::string& fileName, const std::string& role,
                                                        bool noMarkers) override {
        return Plain(CZETConfig::OpenConfigFile(fileName, role, noMarkers));
    }
    std::shared_ptr<ZET::IZETConfigFile> OpenConfigFileTemplate(const std::string& templateName,
                                                                const std::string& fileName,
                                                                const std::string& role,
                                                                bool noMarkers) override {
        return Plain(CZETConfig::OpenConfigFileTemplate(templateName, fileName, role, noMarkers));
    }
};

constexpr ZET::ZETModuleRecord kRecord = {0x010000, "zet-config", "1.0.0", 1, "a plain module", nullptr};

}  // namespace

const ZET::ZETModuleRecord* get_module_info(const ZET::ZETModuleRecord*) {
    return &kRecord;
}

bool module_init(ZET::IZETCore& core) {
    core.RegisterInterface(std::make_shared<PlainConfig>(core));
    return true;
}

void module_done(ZET::IZETCore& core) {
    core.RemoveInterface("zet-config");
}
