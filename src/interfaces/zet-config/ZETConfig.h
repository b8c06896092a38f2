#ifndef ZET_ZETCONFIG_H
#define ZET_ZETCONFIG_H

#include <memory>
#include <string>

#include "zet/IZETConfig.h"
#include "zet/IZETCore.h"

namespace ZET {

/// The only implementation of `IZETConfig`, named "zet-config". Keeps a plain reference to the core. Its
/// operations call each other as virtual functions.
class CZETConfig : public IZETConfig {
  public:
    /// Builds the template values at once; an exception of the core passes through.
    explicit CZETConfig(IZETCore& core);
    ~CZETConfig() override;

    std::shared_ptr<IZETConfigFile> OpenConfigFile(const std::string& fileName, const std::string& role,
                                                   bool noMarkers) override;
    std::shared_ptr<IZETConfigFile> OpenConfigFileTemplate(const std::string& templateName,
                                                           const std::string& fileName,
                                                           const std::string& role, bool noMarkers) override;
    void RecreateTemplatesMap() override;
    StringMap& TemplatesValues() override;
    void InstallConfigFileTemplate(const std::string& templateName) override;
    void ProcessConfigFileTemplate(const std::string& templateName, const std::string& fileName,
                                   const std::string& role, StringMap* values) override;
    void ReserveConfigFile(const std::string& fileName) override;
    void RestoreConfigFile(const std::string& fileName) override;
    void RemoveConfigFileReserve(const std::string& fileName) override;
    void RemoveZETMarkersFromConfigFile(const std::string& fileName) override;
    bool UpdateConfigFileParam(const std::string& name, const std::string& value) override;
    std::string TemplateValue(const std::string& placeholder) override;
    bool TemplateValueExists(const std::string& placeholder) override;
    void SetTemplateValue(const std::string& placeholder, const std::string& value) override;
    void SaveConfigStatus(const std::string& mode) override;
    bool IsConfigStatusExist(const std::string& mode) override;
    void RemoveConfigStatus(const std::string& mode) override;
    void LoadConfigStatus(const std::string& mode, StringMap& values) override;
    void SaveFileServerStatus() override;
    std::string GetFileServerStatus() override;
    void RemoveFileServerStatus() override;

    /// The path of a mode's status file. An empty mode throws `EZETCheckError`, one that is neither "server"
    /// nor "client" throws `EZETInternalError`.
    std::string ConfigStatusName(const std::string& mode);

  private:
    IZETCore& m_core;
    StringMap m_templates;
};

}  // namespace ZET

#endif
