#ifndef ZET_REGIONS_H
#define ZET_REGIONS_H

#include <cstddef>
#include <cstdint>

#include "text/Markers.h"

namespace ZET::Text {

/// What a line is to the regions of one kind.
enum class RegionStep : std::uint8_t {
    Outside,
    StrayEnd,  ///< ends nothing; also outside
    Begin,
    Inside,
    NestedBegin,  ///< also inside: the region goes on
    End
};

inline bool IsOutside(RegionStep step) {
    return step == RegionStep::Outside || step == RegionStep::StrayEnd;
}

/// Follows the regions of one kind as the module does when it takes them out: from a line that begins with
/// their marker to the next one that begins with their end marker, whatever stands between.
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

    /// Takes the marker that the next line begins with. The line's number is only remembered.
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

    /// Of the region that is open; none and 0 when none is.
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

/// The region of all kinds that a line is in, and what it is to that.
struct RegionPlace {
    RegionKind kind = RegionKind::Ordinary;
    RegionStep step = RegionStep::Outside;
};

/// Follows the regions of all kinds as the module does when it takes its own lines out: managed blocks first,
/// then notices in what is left, and then, for a template, its comments.
class Regions {
  public:
    /// Takes the marker that the next line begins with, and its number.
    RegionPlace Take(Marker marker, std::size_t number);

    /// The line in which the region of that kind begins that is open, or 0.
    std::size_t OpenSince(RegionKind kind) const;

  private:
    RegionFollower m_blocks = RegionFollower::OfBlocks();
    RegionFollower m_notices = RegionFollower::OfNotices();
    RegionFollower m_templateComments = RegionFollower::OfTemplateComments();
};

}  // namespace ZET::Text

#endif
