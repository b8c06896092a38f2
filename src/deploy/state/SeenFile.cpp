#include "deploy/state/SeenFile.h"

#include <utility>

#include "deploy/host/FileBytes.h"
#include "posix/ModeBits.h"

namespace ZET::Deploy {

namespace {

constexpr off_t kLargestHeld = off_t{1} << 20;

}  // namespace

SeenFile::SeenFile(const std::string& path) : m_path(path) {
    FileLook look = LookAt(path);
    m_state = look.state;
    m_version = look.version;
}

SeenFile::SeenFile(std::string path, const std::optional<struct stat>& status)
    : m_path(std::move(path)),
      m_state(StateFrom(status)),
      m_version(status ? VersionFrom(*status) : FileVersion()) {}

const std::optional<std::string>& SeenFile::Text() const {
    // Some of the system's own files report no size.
    const bool isHeld = m_version.size > 0 && m_version.size <= kLargestHeld;
    if (!m_text && isHeld) m_text = ReadFileBytes(m_path, m_opened);
    return m_text;
}

bool SeenFile::HasBytes(std::string_view bytes) const {
    return Text() ? *m_text == bytes : HoldsBytes(m_path, bytes);
}

bool SeenFile::IsAs(const RecordedState& recorded) const {
    if (m_state.exists != recorded.exists) return false;
    if (!m_state.exists) return true;
    if (!m_state.IsRegular() || (m_state.mode & kModeBits) != recorded.mode) return false;
    return Text() ? IsRecordedText(*m_text, recorded) : HasRecordedText(m_path, recorded);
}

std::optional<CapturedFile> SeenFile::Captured(std::uint64_t longest) const {
    if (!Text()) return std::nullopt;
    CapturedFile captured = CapturedOf(m_state, *m_text, longest);
    captured.state.attributes = AttributesOf(m_opened, m_path);
    return captured;
}

}  // namespace ZET::Deploy
