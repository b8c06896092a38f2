#ifndef ZET_ZETCONFIG_FILE_H
#define ZET_ZETCONFIG_FILE_H

#include <sys/stat.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "Buffer.h"
#include "FileAccess.h"
#include "TextReader.h"
#include "zet/IZETConfigFile.h"
#include "zet/IZETCore.h"

namespace ZET {

/// The only implementation of `IZETConfigFile`. Keeps a plain reference to the core. Its operations call each
/// other as virtual functions. Cannot be copied.
class CZETConfigFile : public IZETConfigFile {
  public:
    explicit CZETConfigFile(IZETCore& core);
    ~CZETConfigFile() override;
    CZETConfigFile(const CZETConfigFile&) = delete;
    CZETConfigFile& operator=(const CZETConfigFile&) = delete;

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

    /// Logs which file is processed.
    virtual void InternalNotice();

    /// Inserts `header` as a notice before the first non-empty line, unless that line contains the opening
    /// marker of a notice, and drops the empty lines before it. An empty header throws `EZETCheckError`.
    virtual void InsertHeader(const std::string& header);

    /// Reads the file into the text; false, with a log record, if it cannot be read.
    virtual bool InternalOpen(const std::string& fileName, const std::string& role, bool noMarkers);

    /// The text of the notice for this file.
    virtual std::string Header();

  protected:
    /// Prepares the text for saving. The view is valid until the next operation.
    std::string_view TextToSave();

  private:
    template <typename Pass>
    void Rewrite(Pass&& pass);
    void RequireContent(const char* function, std::size_t line) const;
    void InternalSaveAs(const std::string& fileName, bool noBackup);
    void WriteTemporary(const std::string& temporaryName, const std::string& fileName);
    mode_t FinalMode(const Owner& owner, bool isGiven) const;

    IZETCore& m_core;
    std::string m_fileName;        ///< the file that was read: the file itself or the template's working copy
    std::string m_targetFileName;  ///< the file that a template is saved as; empty for a file edited in place
    std::unique_ptr<TextReader> m_content;  ///< null until a file is open
    std::string m_role;
    bool m_fromTemplate = false;
    bool m_noMarkers = false;
    struct stat m_fileStat = {};  ///< of `m_fileName` as read; its mode is the saved file's
    Buffer m_spare;               ///< the memory of the previous text, for the next pass
};

}  // namespace ZET

#endif
