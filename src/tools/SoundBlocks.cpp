#include "SoundBlocks.h"

#include <algorithm>
#include <array>
#include <vector>

#include "ExitStatus.h"
#include "FileOrigin.h"
#include "MarkerDamage.h"
#include "Markers.h"
#include "NearMarker.h"

namespace ZET {

namespace {

/// Dashes, and what else a hand may leave around a marker; a part of a longer character may be either.
constexpr std::array<bool, 256> EdgeBytes() {
    std::array<bool, 256> isEdge = {};
    for (const char c : std::string_view(" \t\r#;/!\"'-"))
        isEdge[static_cast<unsigned char>(c)] = true;
    for (std::size_t c = 0x80; c < isEdge.size(); ++c)
        isEdge[c] = true;
    return isEdge;
}

constexpr std::array<bool, 256> kIsEdge = EdgeBytes();

bool CanBeDash(char c) {
    return c == '-' || static_cast<unsigned char>(c) >= 0x80;
}

template <typename Iterator>
bool BeginsWithDash(Iterator from, Iterator end) {
    for (; from != end && kIsEdge[static_cast<unsigned char>(*from)]; ++from)
        if (CanBeDash(*from)) return true;
    return false;
}

/// Cheap, and true of every line that is nearly a marker.
bool CanBeNearMarker(std::string_view line) {
    return BeginsWithDash(line.begin(), line.end()) || BeginsWithDash(line.rbegin(), line.rend());
}

/// Follows the regions of a text and gives up at the first line that may be out of order.
class RegionScan {
  public:
    explicit RegionScan(const NoticeTexts* noticeTexts) : m_noticeTexts(noticeTexts) {}

    /// Whether the text is in order for sure.
    bool IsSound(std::string_view text) {
        std::size_t mention = text.find(kMarkerStart);
        for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
            end = std::min(text.find('\n', begin), text.size());
            const std::string_view line = text.substr(begin, end - begin);
            ++m_number;
            if (mention < end) {
                if (!TakeMention(line)) return false;
                mention = text.find(kMarkerStart, end);
            } else if (CanBeNearMarker(line) && FindNearMarker(line)) {
                return false;
            }
            if (m_isInNotice) m_notice.push_back(line);
        }
        return m_blockBegin == 0 && !m_isInNotice;
    }

  private:
    bool TakeMention(std::string_view line) {
        if (FindNearMarker(line) || FindGluedMarker(line)) return false;
        switch (MarkerOf(line)) {
            case Marker::BlockBegin:
                return HasNothingBehind(line, Marker::BlockBegin) && TakeBegin();
            case Marker::BlockEnd:
                return HasNothingBehind(line, Marker::BlockEnd) && TakeEnd();
            case Marker::FormerLine:
                return m_blockBegin == 0;
            case Marker::Notice:
                return TakeNoticeBegin(line);
            case Marker::CommentEnd:
                return TakeCommentEnd(line);
            default:
                return true;
        }
    }

    static bool HasNothingBehind(std::string_view line, Marker marker) {
        return line.find_first_not_of(" \t\r", MarkerText(marker).size()) == std::string_view::npos;
    }

    bool TakeBegin() {
        if (m_blockBegin != 0) return false;
        m_blockBegin = m_number;
        return true;
    }

    /// The system writes one line into each block.
    bool TakeEnd() {
        const bool isWhole = m_blockBegin != 0 && m_number == m_blockBegin + 2;
        m_blockBegin = 0;
        return isWhole;
    }

    /// What is in a block is none.
    bool CountsAsComment() const { return m_noticeTexts != nullptr && m_blockBegin == 0; }

    bool TakeNoticeBegin(std::string_view line) {
        if (!CountsAsComment()) return true;
        if (m_isInNotice || !HasNothingBehind(line, Marker::Notice)) return false;
        m_isInNotice = true;
        m_notice.clear();
        return true;
    }

    bool TakeCommentEnd(std::string_view line) {
        if (!CountsAsComment() || !m_isInNotice) return true;
        m_isInNotice = false;
        return HasNothingBehind(line, Marker::CommentEnd) &&
               m_noticeTexts->ForeignLine(m_notice, 1, m_notice.size()) == m_notice.size();
    }

    const NoticeTexts* m_noticeTexts;
    std::size_t m_number = 0;
    std::size_t m_blockBegin = 0;  ///< 0: outside
    bool m_isInNotice = false;
    std::vector<std::string_view> m_notice;  ///< from its begin marker on
};

[[noreturn]] void Refuse(Session& session, const std::string& path, const MarkerDamage& damage) {
    const Request& asked = session.Asked();
    throw Failure(path + ":" + std::to_string(damage.line) + ": " + damage.text + " (\"" + asked.program +
                  " doctor " + asked.file + "\" tells a repair)");
}

}  // namespace

std::optional<MarkerDamage> FindDamage(std::string_view text, const NoticeTexts* noticeTexts) {
    if (RegionScan(noticeTexts).IsSound(text)) return std::nullopt;
    const Diagnosis diagnosis =
        DiagnoseMarkers(text, noticeTexts != nullptr ? *noticeTexts : NoticeTexts(), std::nullopt);
    for (const MarkerDamage& damage : diagnosis.damages) {
        if (damage.regions == DamagedRegions::Blocks ||
            (damage.regions == DamagedRegions::Notices && noticeTexts != nullptr))
            return damage;
    }
    return std::nullopt;
}

void RequireSoundBlocks(Session& session, const std::string& path, std::string_view text) {
    if (const auto damage = FindDamage(text)) Refuse(session, path, *damage);
}

void RequireSoundRegions(Session& session, const std::string& path, std::string_view text) {
    const NoticeTexts noticeTexts = WrittenNoticeTexts(session);
    if (const auto damage = FindDamage(text, &noticeTexts)) Refuse(session, path, *damage);
}

}  // namespace ZET
