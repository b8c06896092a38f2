#ifndef ZET_FAKE_FILE_H
#define ZET_FAKE_FILE_H

#include <string>
#include <vector>

#include "zet/IZETConfigFile.h"

namespace ZET {

/// A managed file that only records what is done with it, in a list that outlives it.
class FakeFile : public IZETConfigFile {
  public:
    explicit FakeFile(std::vector<std::string>& calls) : m_calls(calls) {}
    ~FakeFile() override { m_calls.emplace_back("released"); }

    bool Open(const std::string&, const std::string&, bool) override { return Note("Open"); }
    bool OpenTemplate(const std::string&, const std::string&, const std::string&, bool) override {
        return Note("OpenTemplate");
    }
    void ApplyTemplates(StringMap& values) override {
        std::string text = "ApplyTemplates";
        for (const auto& [placeholder, value] : values)
            text.append(" ").append(placeholder).append("=").append(value);
        Note(text);
    }
    void RemoveMarkers(const std::string&, const std::string&) override { Note("RemoveMarkers"); }
    void RemoveZETMarkers() override { Note("RemoveZETMarkers"); }
    void SetParamValue(const std::string&, const std::string&) override { Note("SetParamValue"); }
    std::string GetParamValue(const std::string&) override { return Note("GetParamValue") ? "" : "?"; }
    void RestoreParamValue(const std::string&) override { Note("RestoreParamValue"); }
    void SetLine(const std::string&, const std::string&) override { Note("SetLine"); }
    std::string GetLine(const std::string&) override { return Note("GetLine") ? "" : "?"; }
    void RestoreLine(const std::string&) override { Note("RestoreLine"); }
    void Save(bool noBackup) override { Note(noBackup ? "Save(true)" : "Save(false)"); }

  private:
    bool Note(const std::string& call) {
        m_calls.push_back(call);
        return true;
    }

    std::vector<std::string>& m_calls;
};

}  // namespace ZET

#endif
