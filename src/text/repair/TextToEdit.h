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

/// The first damage that makes the module misjudge which lines are a managed block's; of notices too, if
/// their texts are given. A kept former line without its block is none, nor are blanks behind a marker. A
/// text without damage, as most are, is only looked through once.
std::optional<MarkerDamage> FindDamage(std::string_view text, const NoticeTexts* noticeTexts = nullptr);

/// Damage in a file, about which `program` tells more of the file as it is `named`.
Problem ProblemOf(const std::string& file, const MarkerDamage& damage, const std::string& program,
                  const std::string& named);

/// What an edit has to know of the text of its file, seen in one look.
struct TextToEdit {
    LineEnds ends;
    std::string firstLine;  ///< that is not empty
    std::size_t firstNumber = 0;
    bool hasRegions = false;  ///< managed blocks or notices
};

/// The look, at a text that may come in pieces of whole lines.
class LookAtText {
  public:
    /// With the texts of notices, for an edit that takes these out; it does not ask how the lines end. The
    /// texts must outlive the object.
    explicit LookAtText(const NoticeTexts* noticeTexts) : m_noticeTexts(noticeTexts), m_scan(noticeTexts) {}

    void Take(std::string_view lines);

    /// How many there were so far, unless the texts of notices were given.
    std::size_t LineCount() const { return m_lineCount; }

    /// After the last line; `whole` gives the text where a closer look is needed.
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
