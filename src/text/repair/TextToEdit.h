#ifndef ZET_TEXT_TO_EDIT_H
#define ZET_TEXT_TO_EDIT_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "text/LineEnds.h"
#include "text/NoticeTexts.h"
#include "text/RegionScan.h"
#include "text/repair/RepairText.h"
#include "zet/ZETProblem.h"

namespace ZET::Text {

/// The first damage that makes the module misjudge managed blocks or, if `noticeTexts` is given, notices. A
/// kept former line without its block, or blanks after a marker, are not such damage. A text without damage,
/// as most are, is scanned only once.
std::optional<MarkerDamage> FindDamage(std::string_view text, const NoticeTexts* noticeTexts = nullptr);

/// A problem for damage in a file; `program` shows more about the file, which the user knows as `named`.
Problem ProblemOf(const std::string& file, const MarkerDamage& damage, const std::string& program,
                  const std::string& named);

/// What an edit needs to know about the text of its file, found in one scan.
struct TextToEdit {
    LineEnds ends;
    std::string firstLine;  ///< the first non-empty line
    std::size_t firstNumber = 0;
    bool hasRegions = false;  ///< managed blocks or notices
};

/// Scans a text that may come in pieces of whole lines.
class LookAtText {
  public:
    /// `noticeTexts` is for an edit that removes notices, which does not need the line ends; it must outlive
    /// the object.
    explicit LookAtText(const NoticeTexts* noticeTexts) : m_noticeTexts(noticeTexts), m_scan(noticeTexts) {}

    void Take(std::string_view lines);

    /// The number of lines so far, unless notice texts were given.
    std::size_t LineCount() const { return m_lineCount; }

    /// Call it after the last line; `whole` returns the text if a closer look is needed.
    std::optional<MarkerDamage> Damage(const std::function<std::string()>& whole) const;
    TextToEdit Found();

  private:
    const NoticeTexts* m_noticeTexts;
    RegionScan m_scan;
    LineEndScan m_ends;
    std::size_t m_lineCount = 0;
    TextToEdit m_found;
};

}  // namespace ZET::Text

#endif
