#include <utility>

#include "text/Words.h"
#include "text/repair/MarkerDamage.h"
#include "text/repair/NearMarker.h"

namespace ZET::Text {

namespace {

constexpr char kBeginWithoutEnd[] = "begin-without-end";

/// Tracks the blocks of a text. These facts help to find the place of a lost marker: the module writes one
/// line into a block, a kept former line directly before its block, and one empty line before an appended
/// block.
class BlockCheck {
  public:
    explicit BlockCheck(RepairText& repair) : m_repair(repair) {}

    void Check() {
        m_repair.Concern(DamagedRegions::Blocks);
        for (std::size_t i = 0; i < m_repair.Size(); ++i) {
            switch (m_repair.MarkerAt(i)) {
                case Marker::FormerLine:
                    TakeFormerLine(i);
                    break;
                case Marker::BlockBegin:
                    TakeBegin(i);
                    break;
                case Marker::BlockEnd:
                    TakeEnd(i);
                    break;
                default:
                    break;
            }
        }
        if (m_begin != kNoLine) TakeMissingEnd(m_repair.Size());
        TakeLoneFormerLine();
        m_repair.Settle();
    }

  private:
    std::string LineName(std::size_t index) const {
        return Words("line %s", std::to_string(m_repair.Number(index)));
    }

    bool IsBegin(std::size_t index) const {
        return index < m_repair.Size() && m_repair.MarkerAt(index) == Marker::BlockBegin;
    }

    void TakeFormerLine(std::size_t index) {
        if (m_begin == kNoLine) {
            TakeLoneFormerLine();
            m_formerLine = index;
        } else if (!IsBegin(index + 1)) {
            m_isContentTold = true;
            m_repair.NoteAmbiguous(
                index, "former-line-in-block",
                Words("a kept former line stands inside the block that begins in %s, with which it would go",
                      LineName(m_begin)),
                {_("end that block before it, and begin its own block after it"), _("take the line out")});
        } else {
            TakeMissingEnd(index);
            m_formerLine = index;
        }
    }

    void TakeBegin(std::size_t index) {
        if (m_begin != kNoLine && m_lastBegin + 1 == index) {
            TakeDoubledBegin(m_repair, index);
            m_lastBegin = index;
            return;
        }
        if (m_begin != kNoLine) TakeMissingEnd(index);
        if (m_formerLine != kNoLine && m_formerLine + 1 == index) m_formerLine = kNoLine;
        TakeLoneFormerLine();
        m_begin = m_lastBegin = index;
        m_isContentTold = false;
    }

    void TakeEnd(std::size_t index) {
        if (m_begin == kNoLine && m_end + 1 == index && m_end != kNoLine) {
            TakeDoubledEnd(m_repair, index);
        } else if (m_begin == kNoLine) {
            TakeMissingBegin(index);
        } else if (!m_isContentTold) {
            CheckContent(index);
        }
        m_begin = kNoLine;
        m_end = index;
    }

    /// Reports a block that is empty or has several lines, for example because a line changed places with a
    /// marker.
    void CheckContent(std::size_t end) {
        // Text joined to a marker was reported already.
        if (MarkerOf(m_repair.Text(end)) == Marker::None || MarkerOf(m_repair.Text(m_begin)) == Marker::None)
            return;
        const std::size_t first = m_lastBegin + 1;
        const std::size_t count = end - first;
        if (count == 0) NoteEmpty(end);
        if (count == 1) CheckJoined(first);
        if (count < 2) return;
        m_repair.NoteAmbiguous(
            m_begin, "several-lines-in-block",
            Words("a block holds %s lines, and the system writes one into each: the others may be yours",
                  std::to_string(count)),
            {Words("put the end marker after %s, if only that line is the system's", LineName(first)),
             Words("put the begin marker before %s, if only that one is", LineName(end - 1)),
             _("give each of them a block of its own, if all are the system's")});
    }

    /// Reports a marker joined to the block's line: a former line there would be removed with the block.
    void CheckJoined(std::size_t index) {
        if (m_repair.MarkerAt(index) != Marker::None || !FindGluedMarker(m_repair.Text(index))) return;
        m_repair.NoteAmbiguous(
            index, "joined-lines", _("a marker stands behind the text of a block's line"),
            {_("begin a line with it, outside of the block"), _("take it out, and what stands behind it")});
    }

    void NoteEmpty(std::size_t end) {
        const bool hasFormerLine = m_begin > 0 && m_repair.MarkerAt(m_begin - 1) == Marker::FormerLine;
        const bool mayStandBefore = m_begin > 0 && m_repair.MarkerAt(m_begin - 1) == Marker::None;
        std::vector<std::string> choices;
        if (mayStandBefore)
            choices.push_back(
                Words("put the begin marker before %s, if that line is the system's", LineName(m_begin - 1)));
        if (end + 1 < m_repair.Size() && m_repair.MarkerAt(end + 1) == Marker::None)
            choices.push_back(
                Words(mayStandBefore ? ZET_TEXT("put the end marker after %s, if that one is")
                                     : ZET_TEXT("put the end marker after %s, if that line is the system's"),
                      LineName(end + 1)));
        choices.emplace_back(_("write the block's line between the markers"));
        choices.push_back(hasFormerLine ? Words("take both markers out, and bring back the former line in %s",
                                                LineName(m_begin - 1))
                                        : _("take both markers out, if it is not wanted any more"));
        m_repair.NoteAmbiguous(m_begin, "empty-block",
                               _("a block holds no line, and the system writes one into each: it was lost, "
                                 "or changed places with a marker"),
                               choices);
    }

    void TakeMissingBegin(std::size_t end) {
        if (m_formerLine == kNoLine) {
            const std::string choice =
                end == 0 ? _("put a begin marker before it")
                         : Words("put a begin marker before %s, the system's blocks having one line each",
                                 LineName(end - 1));
            m_repair.NoteAmbiguous(end, "stray-end", _("an end marker ends no block"),
                                   {choice, _("take it out, if nothing before it is the system's")});
        } else if (end - m_formerLine <= 2) {
            m_repair.Note(end, "stray-end", _("an end marker ends no block: its begin marker was lost"),
                          Words("put one after the kept former line in %s", LineName(m_formerLine)));
            m_repair.InsertAfter(m_formerLine, Marker::BlockBegin);
        } else {
            m_repair.NoteAmbiguous(
                end, "stray-end", _("an end marker ends no block: its begin marker was lost"),
                {Words("put one after the kept former line in %s, if all lines between are the system's",
                       LineName(m_formerLine)),
                 Words("put one before %s, if those before it are not; what has become of the kept former "
                       "line is then open",
                       LineName(end - 1))});
        }
        m_formerLine = kNoLine;
    }

    /// `limit` is the first line that cannot belong to the block.
    void TakeMissingEnd(std::size_t limit) {
        const std::size_t begin = m_lastBegin;
        const std::size_t noted = std::exchange(m_begin, kNoLine);
        const bool hadEmptyLine = IsBegin(limit) && limit > begin + 1 && m_repair.IsEmpty(limit - 1);
        const std::size_t count = limit - begin - 1 - (hadEmptyLine ? 1 : 0);
        const std::string what = _("a begin marker has no end marker");
        if (count == 1 || (count == 0 && !hadEmptyLine)) {
            m_repair.Note(noted, kBeginWithoutEnd, what, Words("put one after %s", LineName(begin + count)));
            m_repair.InsertAfter(begin + count, Marker::BlockEnd);
            return;
        }
        m_repair.NoteAmbiguous(
            noted, kBeginWithoutEnd, what,
            {Words("put one after %s, the system's blocks having one line each", LineName(begin + 1)),
             Words("put one after the last of the system's lines, which is %s at the latest",
                   LineName(limit - 1)),
             _("take the begin marker out, if none of them is the system's")});
    }

    void TakeLoneFormerLine() {
        if (m_formerLine == kNoLine) return;
        const std::size_t index = std::exchange(m_formerLine, kNoLine);
        // The module does not treat such a line as part of a block.
        m_repair.Concern(DamagedRegions::None);
        m_repair.NoteAmbiguous(
            index, "former-line-without-block",
            _("a kept former line has no block after it: the block was taken out, or lost"),
            {_("bring the former line back with \"param restore\" or \"line restore\""),
             _("take it out, if what it holds is not wanted any more")});
        m_repair.Concern(DamagedRegions::Blocks);
    }

    RepairText& m_repair;
    std::size_t m_begin = kNoLine;       ///< of the open block
    std::size_t m_lastBegin = kNoLine;   ///< its last begin marker
    std::size_t m_end = kNoLine;         ///< the last end marker
    std::size_t m_formerLine = kNoLine;  ///< the last kept former line, until it has a block
    bool m_isContentTold = false;        ///< the lines of the open block were reported already
};

struct Doubled {
    const char* kind;
    const char* alone;
    const char* withText;
};

void TakeDoubled(RepairText& repair, std::size_t index, const Doubled& marker) {
    if (!repair.IsOnlyMarker(index)) {
        repair.NoteAmbiguous(index, marker.kind, marker.withText,
                             {_("take the marker out, and leave the text as a line of its own"),
                              _("take the whole line out")});
        return;
    }
    repair.Note(index, marker.kind, marker.alone, _("take it out"));
    repair.Drop(index);
}

}  // namespace

void TakeDoubledBegin(RepairText& repair, std::size_t index) {
    TakeDoubled(repair, index,
                {"doubled-begin", _("a second begin marker follows right after the first"),
                 _("a second begin marker follows right after the first, with text in its line")});
}

void TakeDoubledEnd(RepairText& repair, std::size_t index) {
    TakeDoubled(repair, index,
                {"doubled-end", _("a second end marker follows right after the first"),
                 _("a second end marker follows right after the first, with text in its line")});
}

void CheckBlocks(RepairText& repair) {
    BlockCheck(repair).Check();
}

}  // namespace ZET::Text
