#ifndef ZET_REPAIR_TEXT_H
#define ZET_REPAIR_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Markers.h"

namespace ZET {

/// One thing that is wrong with the marker lines of a file.
struct MarkerDamage {
    std::size_t line = 0;  ///< of the file as it was read, from 1
    std::string kind;      ///< a word for programs
    std::string text;
    std::vector<std::string> remedies;  ///< one when the repair is certain; else the choices
    bool IsAmbiguous() const { return remedies.size() > 1; }
};

/// A text under repair. What is wrong is noted, and the certain repairs are noted with it; `Settle` carries
/// these out, after which the indexes are those of the new lines. Indexes are from 0.
class RepairText {
  public:
    explicit RepairText(std::string_view text);

    std::size_t Size() const { return m_lines.size(); }
    const std::string& Text(std::size_t index) const { return m_lines[index].text; }
    std::size_t Number(std::size_t index) const { return m_lines[index].number; }
    bool HasLineFeed(std::size_t index) const { return m_lines[index].hasLineFeed; }
    bool IsEmpty(std::size_t index) const;
    std::vector<std::string_view> Texts() const;

    /// The marker that the line begins with, or is taken to be.
    Marker MarkerAt(std::size_t index) const;

    /// The line is no marker line as it stands, but everything is to be seen as if it were: what it should be
    /// was left to the reader.
    void TakeAs(std::size_t index, Marker marker) { m_lines[index].takenAs = marker; }

    void Note(std::size_t index, const std::string& kind, const std::string& text, const std::string& remedy);
    void NoteAmbiguous(std::size_t index, const std::string& kind, const std::string& text,
                       const std::vector<std::string>& choices);

    void Replace(std::size_t index, const std::string& text) { m_lines[index].text = text; }
    void Drop(std::size_t index) { m_lines[index].isDropped = true; }
    void InsertBefore(std::size_t index, Marker marker);
    void InsertAfter(std::size_t index, Marker marker);
    void InsertAfter(std::size_t index, const std::string& text) { m_lines[index].after = {text}; }
    void Settle();

    /// All lines end with a carriage return, and keep it; so do the lines that a repair puts in.
    void KeepCarriageReturns() { m_lineEnd.assign(1, '\r'); }
    const std::string& LineEnd() const { return m_lineEnd; }

    /// What was ambiguous may be clear after the repairs.
    void LookAgain();

    /// In the order of the lines.
    std::vector<MarkerDamage> Damages() const;
    std::string Bytes() const;

  private:
    struct Line {
        std::string text;
        bool hasLineFeed = true;
        std::size_t number = 0;
        Marker takenAs = Marker::None;
        bool isDropped = false;
        std::vector<std::string> before = {};
        std::vector<std::string> after = {};
    };

    std::vector<Line> m_lines;
    std::vector<MarkerDamage> m_repaired;
    std::vector<MarkerDamage> m_ambiguous;
    std::string m_lineEnd;
};

}  // namespace ZET

#endif
