#ifndef ZET_REGIONS_H
#define ZET_REGIONS_H

#include <cstddef>
#include <cstdint>

#include "text/Markers.h"

namespace ZET::Text {

/// The relation of a line to the regions of one kind.
enum class RegionStep : std::uint8_t {
    Outside,
    StrayEnd,  ///< an end marker outside of any region
    Begin,
    Inside,
    NestedBegin,  ///< a begin marker inside; the region goes on
    End
};

inline bool IsOutside(RegionStep step) {
    return step == RegionStep::Outside || step == RegionStep::StrayEnd;
}

/// Tracks the regions of one kind as the module does when it removes them: from a line that begins with their
/// begin marker to the next one that begins with their end marker, whatever is in between.
class RegionFollower {
  public:
    static RegionFollower OfBlocks() { return {Marker::BlockBegin, Marker::BlockBegin, Marker::BlockEnd}; }
    static RegionFollower OfNotices() { return {Marker::Notice, Marker::Notice, Marker::CommentEnd}; }
    static RegionFollower OfTemplateComments() {
        return {Marker::TemplateComment, Marker::TemplateComment, Marker::CommentEnd};
    }

    /// Notices and template comments, which share their end marker.
    static RegionFollower OfComments() {
        return {Marker::Notice, Marker::TemplateComment, Marker::CommentEnd};
    }

    /// Takes the marker that the next line begins with. The line's number is only stored.
    RegionStep Take(Marker marker, std::size_t number = 0) {
        const bool isBegin = marker == m_begin || marker == m_otherBegin;
        if (isBegin && !IsInside()) {
            m_opener = marker;
            m_openedAt = number;
            return RegionStep::Begin;
        }
        if (marker == m_end) {
            const RegionStep step = IsInside() ? RegionStep::End : RegionStep::StrayEnd;
            m_opener = Marker::None;
            return step;
        }
        if (!IsInside()) return RegionStep::Outside;
        return isBegin ? RegionStep::NestedBegin : RegionStep::Inside;
    }

    bool IsInside() const { return m_opener != Marker::None; }

    /// For the open region; `None` and 0 if none is open.
    Marker Opener() const { return m_opener; }
    std::size_t OpenedAt() const { return IsInside() ? m_openedAt : 0; }

  private:
    RegionFollower(Marker begin, Marker otherBegin, Marker end)
        : m_begin(begin), m_otherBegin(otherBegin), m_end(end) {}

    Marker m_begin;
    Marker m_otherBegin;
    Marker m_end;
    Marker m_opener = Marker::None;
    std::size_t m_openedAt = 0;
};

enum class RegionKind : std::uint8_t { Ordinary, FormerLine, Block, Notice, TemplateComment };

/// The region, of any kind, that a line is in, and the line's relation to it.
struct RegionPlace {
    RegionKind kind = RegionKind::Ordinary;
    RegionStep step = RegionStep::Outside;
};

/// Tracks the regions of all kinds as the module does when it removes its own lines: first managed blocks,
/// then notices in the rest, and then, for a template, its comments.
class Regions {
  public:
    /// Takes the marker that the next line begins with, and its number.
    RegionPlace Take(Marker marker, std::size_t number);

    /// The line where the open region of that kind begins, or 0.
    std::size_t OpenSince(RegionKind kind) const;

  private:
    RegionFollower m_blocks = RegionFollower::OfBlocks();
    RegionFollower m_notices = RegionFollower::OfNotices();
    RegionFollower m_templateComments = RegionFollower::OfTemplateComments();
};

}  // namespace ZET::Text

#endif
