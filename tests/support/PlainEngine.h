#ifndef ZET_TESTS_PLAIN_ENGINE_H
#define ZET_TESTS_PLAIN_ENGINE_H

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <sstream>
#include <string>

#include "zet/IZETConfigFile.h"
#include "zet/IZETCore.h"

namespace ZET {

/// The rules of `IZETConfigFile` implemented a second time, as literally as possible on a string stream:
/// simple, slow, obviously right. The tests compare the real engine with it; the product never uses it.
class PlainConfigFile : public IZETConfigFile {
  public:
    explicit PlainConfigFile(IZETCore& core);

    bool Open(const std::string& fileName, const std::string& role, bool noMarkers) override;
    bool OpenTemplate(const std::string& templateName, const std::string& fileName, const std::string& role,
                      bool noMarkers) override;
    void ApplyTemplates(StringMap& values) override;
    void RemoveMarkers(const std::string& beginMarker, const std::string& endMarker) override;
    void RemoveZETMarkers() override;
    void SetParamValue(const std::string& name, const std::string& value) override;
    std::string GetParamValue(const std::string& name) override;
    void RestoreParamValue(const std::string& name) override;
    void SetLine(const std::string& pattern, const std::string& line) override;
    std::string GetLine(const std::string& pattern) override;
    void RestoreLine(const std::string& pattern) override;
    void Save(bool noBackup) override;

    virtual void InternalNotice();
    virtual void InsertHeader(const std::string& header);
    virtual bool InternalOpen(const std::string& fileName, const std::string& role, bool noMarkers);
    virtual std::string Header();

    /// The text that the next operation would read; empty after a lookup exhausted it.
    std::string ReadableText() const;

    /// Whether a lookup that found nothing has exhausted the text.
    bool IsExhausted() const { return m_content != nullptr && m_content->fail(); }

  private:
    bool ReadFile(const std::string& fileName);
    void InternalSaveAs(const std::string& fileName, bool noBackup);
    void WriteTemporary(const std::string& temporary);
    void GiveOwnerAndMode(const std::string& temporary, const std::optional<struct stat>& target);
    void KeepFormerState(const std::string& fileName);
    void RequireContent(const char* function);
    void Substitute(std::string& line, const StringMap& values);
    void Rewind();

    IZETCore& m_core;
    std::string m_fileName;
    std::string m_targetFileName;
    std::unique_ptr<std::stringstream> m_content;
    std::string m_role;
    bool m_fromTemplate = false;
    bool m_noMarkers = false;
    struct stat m_fileStat = {};
};

}  // namespace ZET

#endif
