#include "deploy/host/ProcessOutput.h"

#include <algorithm>

#include "deploy/host/Words.h"

namespace ZET::Deploy {

void ProcessOutput::Append(std::string_view part) {
    const std::size_t room = m_kept == 0 ? part.size() : std::min(part.size(), m_kept - m_begin.size());
    m_begin.append(part.substr(0, room));
    m_end.append(part.substr(room));
    // Not on each call, as it moves what stays.
    if (m_end.size() <= 2 * m_kept) return;
    m_leftOut += m_end.size() - m_kept;
    m_end.erase(0, m_end.size() - m_kept);
}

std::string ProcessOutput::Text() const {
    const std::size_t more = m_end.size() > m_kept ? m_end.size() - m_kept : 0;
    if (m_leftOut + more == 0) return m_begin + m_end;
    return m_begin + "\n" + Words("... %s bytes are left out here ...", std::to_string(m_leftOut + more)) +
           "\n" + m_end.substr(more);
}

}  // namespace ZET::Deploy
