#ifndef ZET_REPAIR_TEXT_H
#define ZET_REPAIR_TEXT_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/Markers.h"

namespace ZET::Text {

/// The regions of a file that the module misjudges because of a damage, so that it would confuse its own
/// lines with others; `None` if the damage only affects the file's appearance.
enum class DamagedRegions { None, Blocks, Notices };

/// One defect in the marker lines of a file.
struct MarkerDamage {
    std::size_t line = 0;   ///< in the file as it was read, from 1
    const char* kind = "";  ///< a fixed word for programs
    std::string text;
    std::vector<std::string> remedies;  ///< a single one if the repair is certain; else the choices
    DamagedRegions regions = DamagedRegions::None;
    bool IsAmbiguous() const { return remedies.size() > 1; }
};

/// A text under repair. Damage is noted, together with the certain repairs; `Settle` makes these, after which
/// indexes refer to the new lines. Indexes start at 0. The text must outlive the object and have fewer than
/// 2^32 lines.
class RepairText {
  public:
    explicit RepairText(std::string_view text);

    std::size_t Size() const { return m_lines.size(); }
    std::string_view Text(std::size_t index) const { return m_lines[index].text; }
    std::size_t Number(std::size_t index) const { return m_lines[index].number; }
    bool HasLineFeed(std::size_t index) const { return m_lines[index].hasLineFeed; }
    bool IsEmpty(std::size_t index) const { return m_lines[index].text.empty(); }

    /// The texts of the lines from `first` to before `end`, or to the last one.
    std::vector<std::string_view> Texts(std::size_t first, std::size_t end) const;

    /// The marker that the line begins with, or is treated as.
    Marker MarkerAt(std::size_t index) const;

    /// Whether the line contains only the marker, so that dropping it loses no text.
    bool IsOnlyMarker(std::size_t index) const;

    /// Treats a line that is not a marker as one from now on, although its repair is left to the user.
    void TakeAs(std::size_t index, Marker marker) { m_lines[index].takenAs = marker; }

    /// Sets the regions that the following notes concern.
    void Concern(DamagedRegions regions) { m_regions = regions; }

    void Note(std::size_t index, const char* kind, const std::string& text, const std::string& remedy);
    void NoteAmbiguous(std::size_t index, const char* kind, const std::string& text,
                       const std::vector<std::string>& choices);

    /// Stores a text that a repair uses. Other texts must live as long as the object: those of markers and
    /// parts of lines do.
    std::string_view Keep(std::string text) { return m_kept.emplace_back(std::move(text)); }
    void Replace(std::size_t index, std::string_view text);
    void Drop(std::size_t index);
    void InsertBefore(std::size_t index, Marker marker);
    void InsertAfter(std::size_t index, Marker marker) { InsertAfter(index, MarkerText(marker)); }
    void InsertAfter(std::size_t index, std::string_view text);
    void Settle();

    /// Whether anything changed since the last call.
    bool TakeChanged() { return std::exchange(m_isChanged, false); }

    /// For a text in which all lines that end with a line feed have a carriage return before it. From now on
    /// that belongs to the line end, not to the text, and inserted lines have it too.
    void KeepCarriageReturns();
    bool KeepsCarriageReturns() const { return m_keepsCarriageReturns; }

    /// Forgets what was ambiguous, for another pass: it may be clear after the repairs.
    void LookAgain();

    /// All damages, in the order of the lines.
    std::vector<MarkerDamage> Damages() const;
    std::string Bytes() const;

  private:
    struct Line {
        std::string_view text;
        std::uint32_t number = 0;
        bool hasLineFeed = true;
        bool isDropped = false;
        Marker takenAs = Marker::None;
    };

    struct Insertion {
        std::size_t before = 0;  ///< the index of a line, or the number of lines
        Line line;
    };

    std::vector<Line> m_lines;
    std::vector<Insertion> m_insertions;
    std::deque<std::string> m_kept;  ///< a deque does not move its elements
    std::vector<MarkerDamage> m_repaired;
    std::vector<MarkerDamage> m_ambiguous;
    bool m_hasDropped = false;
    bool m_isChanged = false;
    bool m_keepsCarriageReturns = false;
    DamagedRegions m_regions = DamagedRegions::None;
};

}  // namespace ZET::Text

#endif
