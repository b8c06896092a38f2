#include "deploy/host/StagedText.h"

#include <utility>

#include "deploy/host/FileBytes.h"
#include "deploy/host/FileMode.h"
#include "deploy/host/StagedFile.h"

namespace ZET::Deploy {

StagedText::StagedText(const Staging& staging, std::string name, std::string_view text, mode_t mode)
    : m_staging(&staging),
      m_name(std::move(name)),
      m_isInMemory(staging.TakeIntoMemory(text.size())),
      m_mode(mode) {
    if (m_isInMemory) {
        m_text = text;
        return;
    }
    m_file = staging.PathOf(m_name);
    WriteStagedFile(m_file, text, mode);
}

StagedText::StagedText(const std::string& file) : m_mode(ModeOf(file)), m_file(file) {}

const std::string& StagedText::File() const {
    if (m_file.empty()) {
        const std::string file = m_staging->PathOf(m_name);
        WriteStagedFile(file, m_text, m_mode);
        m_file = file;
    }
    return m_file;
}

std::string StagedText::Text() const {
    return m_isInMemory ? m_text : ReadFileBytes(m_file);
}

bool StagedText::IsIn(const std::string& path) const {
    return m_isInMemory ? HoldsBytes(path, m_text) : HaveSameBytes(path, m_file);
}

bool StagedText::IsIn(int descriptor, const std::string& path) const {
    return m_isInMemory && descriptor >= 0 ? HoldsBytes(descriptor, path, m_text) : IsIn(path);
}

}  // namespace ZET::Deploy
