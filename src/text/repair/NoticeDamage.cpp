#include <algorithm>
#include <utility>

#include "text/Regions.h"
#include "text/Words.h"
#include "text/repair/MarkerDamage.h"

namespace ZET::Text {

namespace {

bool IsCommentMarker(Marker marker) {
    return marker == Marker::Notice || marker == Marker::TemplateComment || marker == Marker::CommentEnd;
}

/// Calls `take` with each marker of a notice or template comment and its index; markers inside blocks do not
/// count.
template <typename Take>
void ForEachCommentMarker(const RepairText& repair, const Take& take) {
    RegionFollower blocks = RegionFollower::OfBlocks();
    for (std::size_t i = 0; i < repair.Size(); ++i) {
        const Marker marker = repair.MarkerAt(i);
        blocks.Take(marker);
        if (IsCommentMarker(marker) && !blocks.IsInside()) take(i, marker);
    }
}

/// Tracks notices and template comments from their begin to their end.
class CommentCheck {
  public:
    CommentCheck(RepairText& repair, const NoticeTexts& noticeTexts)
        : m_repair(repair), m_noticeTexts(noticeTexts) {}

    void Check() {
        ForEachCommentMarker(m_repair, [&](std::size_t index, Marker marker) {
            if (marker == Marker::CommentEnd) {
                TakeEnd(index);
            } else {
                TakeBegin(index, marker);
            }
        });
        TakeMissingEnd();
        m_repair.Settle();
    }

  private:
    void TakeBegin(std::size_t index, Marker marker) {
        if (m_begin != kNoLine && m_lastBegin + 1 == index) {
            TakeDoubledBegin(m_repair, index);
            m_lastBegin = index;
            return;
        }
        TakeMissingEnd();
        m_begin = m_lastBegin = index;
        m_marker = marker;
    }

    void TakeEnd(std::size_t index) {
        if (m_begin == kNoLine && m_end != kNoLine && m_end + 1 == index) {
            TakeDoubledEnd(m_repair, index);
        } else if (m_begin == kNoLine) {
            TakeMissingBegin(index);
        } else if (m_marker == Marker::Notice) {
            CheckText(index);
        }
        m_begin = kNoLine;
        m_end = index;
    }

    /// Reports lines in a notice that the system did not write, since they would be removed with it.
    void CheckText(std::size_t end) {
        const std::size_t first = m_lastBegin + 1;
        const std::size_t foreign = first + m_noticeTexts.ForeignLine(m_repair.Texts(first, end));
        if (foreign == end) return;
        m_repair.Concern(DamagedRegions::Notices);
        m_repair.NoteAmbiguous(
            foreign, "foreign-line-in-notice",
            _("a line stands in the notice that the system did not write, and would go with it"),
            {_("move it, and what else there is yours, below the notice"),
             _("take it out, if nobody wants it")});
        m_repair.Concern(DamagedRegions::None);
    }

    void TakeMissingBegin(std::size_t end) {
        const std::size_t length =
            m_noticeTexts.LengthBefore(m_repair.Texts(end - std::min(end, m_noticeTexts.MostLines()), end));
        if (length == 0) {
            m_repair.NoteAmbiguous(
                end, "stray-comment-end", _("an end marker ends no notice and no template comment"),
                {_("put the begin marker of the notice or template comment where that begins"),
                 _("take it out, if there is none")});
            return;
        }
        m_repair.Note(
            end, "stray-comment-end",
            _("an end marker ends no notice and no template comment: the notice's begin marker was lost"),
            Words("put it before line %s", std::to_string(m_repair.Number(end - length))));
        m_repair.InsertBefore(end - length, Marker::Notice);
    }

    void TakeMissingEnd() {
        const std::size_t begin = std::exchange(m_begin, kNoLine);
        if (begin == kNoLine) return;
        if (m_marker == Marker::TemplateComment) {
            m_repair.NoteAmbiguous(begin, "template-comment-without-end",
                                   _("a template comment has no end marker, and in a template would take all "
                                     "lines after it with it"),
                                   {_("put one after its last line"), _("take the begin marker out")});
            return;
        }
        m_repair.Concern(DamagedRegions::Notices);
        const std::string what = _("a notice has no end marker, and takes all lines after it with it");
        const std::size_t length = m_noticeTexts.LengthFrom(
            m_repair.Texts(m_lastBegin + 1, m_lastBegin + 1 + m_noticeTexts.MostLines()));
        if (length == 0) {
            m_repair.NoteAmbiguous(begin, "notice-without-end", what,
                                   {_("put one after the last line of the notice"),
                                    _("take the whole notice out; the next change writes a new one")});
            m_repair.Concern(DamagedRegions::None);
            return;
        }
        const std::size_t last = m_lastBegin + length;
        m_repair.Note(begin, "notice-without-end", what,
                      Words("put one after line %s", std::to_string(m_repair.Number(last))));
        m_repair.InsertAfter(last, Marker::CommentEnd);
        m_repair.Concern(DamagedRegions::None);
    }

    RepairText& m_repair;
    const NoticeTexts& m_noticeTexts;
    Marker m_marker = Marker::None;
    std::size_t m_begin = kNoLine;
    std::size_t m_lastBegin = kNoLine;
    std::size_t m_end = kNoLine;
};

struct Notice {
    std::size_t first = 0;
    std::size_t last = 0;
};

/// The notices that have an end.
std::vector<Notice> WholeNotices(const RepairText& repair) {
    std::vector<Notice> notices;
    RegionFollower follower = RegionFollower::OfNotices();
    ForEachCommentMarker(repair, [&](std::size_t index, Marker marker) {
        const std::size_t first = follower.OpenedAt();
        if (follower.Take(marker, index) == RegionStep::End) notices.push_back({first, index});
    });
    return notices;
}

bool HaveSameText(const RepairText& repair, const Notice& one, const Notice& other) {
    const std::size_t count = one.last - one.first;
    if (other.last - other.first != count) return false;
    for (std::size_t i = 0; i <= count; ++i) {
        if (repair.Text(one.first + i) != repair.Text(other.first + i)) return false;
    }
    return true;
}

void CheckPlace(RepairText& repair, const Notice& notice) {
    std::size_t top = 0;
    while (repair.IsEmpty(top))
        ++top;
    // The module finds the marker anywhere in that line.
    if (repair.Text(top).find(MarkerText(Marker::Notice)) != std::string_view::npos) return;
    repair.NoteAmbiguous(
        notice.first, "misplaced-notice",
        _("lines stand above the notice, so that the next change writes a second one above them"),
        {_("move those lines below it"),
         _("leave it, if the first line of this file has to be another one")});
}

/// Whether the notice contains only what the system writes.
bool IsOnlyTheSystems(const RepairText& repair, const NoticeTexts& noticeTexts, const Notice& notice) {
    const std::vector<std::string_view> lines = repair.Texts(notice.first + 1, notice.last);
    return repair.IsOnlyMarker(notice.first) && repair.IsOnlyMarker(notice.last) &&
           noticeTexts.ForeignLine(lines) == lines.size();
}

void CheckDoubledNotices(RepairText& repair, const NoticeTexts& noticeTexts) {
    const std::vector<Notice> notices = WholeNotices(repair);
    if (notices.empty()) return;
    CheckPlace(repair, notices.front());
    for (auto notice = notices.begin() + 1; notice != notices.end(); ++notice) {
        const std::string first = std::to_string(repair.Number(notices.front().first));
        if (!HaveSameText(repair, notices.front(), *notice)) {
            repair.NoteAmbiguous(
                notice->first, "doubled-notice",
                Words("a second notice; the first is in line %s and says something else", first),
                {_("take this one out"), _("take the first one out")});
            continue;
        }
        if (!IsOnlyTheSystems(repair, noticeTexts, *notice)) {
            repair.NoteAmbiguous(
                notice->first, "doubled-notice",
                Words("a second notice; the first is in line %s, and both hold other text", first),
                {_("take this one out but for what is yours in it"), _("take it out as it is")});
            continue;
        }
        repair.Note(notice->first, "doubled-notice", Words("a second notice; the first is in line %s", first),
                    _("take it out"));
        for (std::size_t i = notice->first; i <= notice->last; ++i)
            repair.Drop(i);
    }
    repair.Settle();
}

}  // namespace

void CheckNotices(RepairText& repair, const NoticeTexts& noticeTexts) {
    repair.Concern(DamagedRegions::None);
    CommentCheck(repair, noticeTexts).Check();
    CheckDoubledNotices(repair, noticeTexts);
}

}  // namespace ZET::Text
