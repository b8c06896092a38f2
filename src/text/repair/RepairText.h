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

/// The regions of a file that a damage makes the module misjudge, so that it would take lines of others for
/// the system's or the other way round; none when the file only looks other than the module would have it.
enum class DamagedRegions { None, Blocks, Notices };

/// One thing that is wrong with the marker lines of a file.
struct MarkerDamage {
    std::size_t line = 0;   ///< of the file as it was read, from 1
    const char* kind = "";  ///< a word for programs
    std::string text;
    std::vector<std::string> remedies;  ///< one when the repair is certain; else the choices
    DamagedRegions regions = DamagedRegions::None;
    bool IsAmbiguous() const { return remedies.size() > 1; }
};

/// A text under repair. What is wrong is noted, and the certain repairs are noted with it; `Settle` carries
/// these out, after which the indexes are those of the new lines. Indexes are from 0. The text must outlive
/// the object, and has fewer lines than 32 bits count.
class RepairText {
  public:
    explicit RepairText(std::string_view text);

    std::size_t Size() const { return m_lines.size(); }
    std::string_view Text(std::size_t index) const { return m_lines[index].text; }
    std::size_t Number(std::size_t index) const { return m_lines[index].number; }
    bool HasLineFeed(std::size_t index) const { return m_lines[index].hasLineFeed; }
    bool IsEmpty(std::size_t index) const { return m_lines[index].text.empty(); }

    /// Of the lines from `first` to before `end`, or the last one.
    std::vector<std::string_view> Texts(std::size_t first, std::size_t end) const;

    /// The marker that the line begins with, or is taken to be.
    Marker MarkerAt(std::size_t index) const;

    /// Nothing but the marker is in the line, so that no text goes with it.
    bool IsOnlyMarker(std::size_t index) const;

    /// The line is no marker line as it stands, but everything is to be seen as if it were: what it should be
    /// was left to the reader.
    void TakeAs(std::size_t index, Marker marker) { m_lines[index].takenAs = marker; }

    /// What is noted from now on concerns these.
    void Concern(DamagedRegions regions) { m_regions = regions; }

    void Note(std::size_t index, const char* kind, const std::string& text, const std::string& remedy);
    void NoteAmbiguous(std::size_t index, const char* kind, const std::string& text,
                       const std::vector<std::string>& choices);

    /// Where a text is asked for, it must live as long as the object: a marker's, a part of a line's, or one
    /// that is kept here.
    std::string_view Keep(std::string text) { return m_kept.emplace_back(std::move(text)); }
    void Replace(std::size_t index, std::string_view text);
    void Drop(std::size_t index);
    void InsertBefore(std::size_t index, Marker marker);
    void InsertAfter(std::size_t index, Marker marker) { InsertAfter(index, MarkerText(marker)); }
    void InsertAfter(std::size_t index, std::string_view text);
    void Settle();

    /// Whether anything was settled since this was asked last.
    bool TakeChanged() { return std::exchange(m_isChanged, false); }

    /// All lines that end with a line feed have a carriage return before it. From now on it belongs to the
    /// line end, not to the text, and the lines that a repair puts in have it too.
    void KeepCarriageReturns();
    bool KeepsCarriageReturns() const { return m_keepsCarriageReturns; }

    /// What was ambiguous may be clear after the repairs.
    void LookAgain();

    /// In the order of the lines.
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
        std::size_t before = 0;  ///< the index of a line, or how many there are
        Line line;
    };

    std::vector<Line> m_lines;
    std::vector<Insertion> m_insertions;
    std::deque<std::string> m_kept;  ///< which does not move them
    std::vector<MarkerDamage> m_repaired;
    std::vector<MarkerDamage> m_ambiguous;
    bool m_hasDropped = false;
    bool m_isChanged = false;
    bool m_keepsCarriageReturns = false;
    DamagedRegions m_regions = DamagedRegions::None;
};

}  // namespace ZET::Text

#endif
