#include "text/repair/TextToEdit.h"

#include "text/FirstLine.h"
#include "text/Lines.h"
#include "text/ShellWord.h"
#include "text/Words.h"
#include "text/repair/MarkerDamage.h"

namespace ZET::Text {

namespace {

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

}  // namespace

std::optional<MarkerDamage> FindDamage(std::string_view text, const NoticeTexts* noticeTexts) {
    RegionScan scan(noticeTexts);
    scan.Take(text);
    return scan.IsSound() ? std::nullopt : DiagnosedDamage(text, noticeTexts);
}

Problem ProblemOf(const std::string& file, const MarkerDamage& damage, const std::string& program,
                  const std::string& named) {
    return {.file = file,
            .line = static_cast<int>(damage.line),
            .text = damage.text,
            .remedy = Words("\"%s doctor %s\" tells a repair", program, ShellPath(named))};
}

void LookAtText::Take(std::string_view lines) {
    // An edit that removes notices sets no line.
    if (m_noticeTexts == nullptr) {
        m_ends.Take(lines, m_lineCount);
        m_lineCount += CountLines(lines);
    }
    m_scan.Take(lines);
    if (!m_found.firstLine.empty()) return;
    const FirstLine first = FirstLineOf(lines);
    m_found.firstLine = first.text;
    m_found.firstNumber += first.number != 0 ? first.number : lines.size();
}

std::optional<MarkerDamage> LookAtText::Damage(const std::function<std::string()>& whole) const {
    // It may be sound nevertheless, if markers are only mentioned.
    return m_scan.IsSound() ? std::nullopt : DiagnosedDamage(whole(), m_noticeTexts);
}

TextToEdit LookAtText::Found() {
    m_found.ends = m_ends.End();
    m_found.hasRegions = m_scan.HasRegions();
    return m_found;
}

}  // namespace ZET::Text
