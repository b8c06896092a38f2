#include "deploy/edit/SoundBlocks.h"

#include <functional>

#include "cli/ExitStatus.h"
#include "deploy/host/FileBytes.h"
#include "deploy/targets/FileOrigin.h"
#include "text/FirstLine.h"
#include "text/Markers.h"
#include "text/RegionScan.h"
#include "text/repair/MarkerDamage.h"

namespace ZET {

namespace {

[[noreturn]] void Refuse(Session& session, const std::string& path, const MarkerDamage& damage) {
    const Request& asked = session.Asked();
    throw Failure(path + ":" + std::to_string(damage.line) + ": " + damage.text + " (\"" + asked.program +
                  " doctor " + asked.file + "\" tells a repair)");
}

std::optional<MarkerDamage> DiagnosedDamage(std::string_view text, const NoticeTexts* noticeTexts) {
    const Diagnosis diagnosis =
        DiagnoseMarkers(text, noticeTexts != nullptr ? *noticeTexts : NoticeTexts(), std::nullopt);
    for (const MarkerDamage& damage : diagnosis.damages) {
        if (damage.regions == DamagedRegions::Blocks ||
            (damage.regions == DamagedRegions::Notices && noticeTexts != nullptr))
            return damage;
    }
    return std::nullopt;
}

bool HasRegions(std::string_view text) {
    for (std::size_t at = text.find(kMarkerStart); at != std::string_view::npos;
         at = text.find(kMarkerStart, at + 1)) {
        const Marker marker = MarkerOf(text.substr(at));
        const bool isBegin = marker == Marker::BlockBegin || marker == Marker::Notice;
        if (isBegin && (at == 0 || text[at - 1] == '\n')) return true;
    }
    return false;
}

/// Looks through a text as its lines come.
class Look {
  public:
    explicit Look(const NoticeTexts* noticeTexts) : m_noticeTexts(noticeTexts), m_regions(noticeTexts) {}

    void Take(std::string_view lines) {
        // What takes notices out sets no line.
        if (m_noticeTexts == nullptr) m_ends.Take(lines, m_regions.LineCount());
        m_regions.Take(lines);
        if (!m_found.firstLine.empty()) return;
        const FirstLine first = FirstLineOf(lines);
        m_found.firstLine = first.text;
        m_found.firstNumber += first.number != 0 ? first.number : lines.size();
    }

    /// After the last line; `whole` gives the text where a closer look is needed.
    TextToEdit End(Session& session, const std::string& path, const std::function<std::string()>& whole) {
        m_found.ends = m_ends.End();
        m_found.hasRegions = m_regions.HasRegions();
        if (m_regions.IsSound()) return m_found;
        // It may be sound all the same, where markers are only mentioned.
        const std::string text = whole();
        if (const auto damage = DiagnosedDamage(text, m_noticeTexts)) Refuse(session, path, *damage);
        m_found.hasRegions = HasRegions(text);
        return m_found;
    }

  private:
    const NoticeTexts* m_noticeTexts;
    RegionScan m_regions;
    LineEndScan m_ends;
    TextToEdit m_found;
};

TextToEdit LookAtFile(Session& session, const std::string& path, const NoticeTexts* noticeTexts) {
    Look look(noticeTexts);
    ReadChunks(path, [&](std::string_view lines) { look.Take(lines); });
    return look.End(session, path, [&] { return ReadFileBytes(path); });
}

}  // namespace

std::optional<MarkerDamage> FindDamage(std::string_view text, const NoticeTexts* noticeTexts) {
    RegionScan scan(noticeTexts);
    scan.Take(text);
    return scan.IsSound() ? std::nullopt : DiagnosedDamage(text, noticeTexts);
}

TextToEdit LookAtBlocks(Session& session, const std::string& path) {
    return LookAtFile(session, path, nullptr);
}

TextToEdit LookAtBlocks(Session& session, const std::string& path, const std::string& text) {
    Look look(nullptr);
    look.Take(text);
    return look.End(session, path, [&] { return text; });
}

TextToEdit LookAtRegions(Session& session, const std::string& path) {
    const NoticeTexts noticeTexts = WrittenNoticeTexts(session);
    return LookAtFile(session, path, &noticeTexts);
}

}  // namespace ZET
