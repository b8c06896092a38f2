#include "text/ManagedText.h"

namespace ZET {

struct ManagedText::Bounds {
    Marker begin;
    Marker end;
    LineKind beginKind;
    LineKind contentKind;
    LineKind endKind;
};

namespace {

RegionKind RegionKindOf(LineKind kind) {
    switch (kind) {
        case LineKind::Ordinary:
            return RegionKind::Ordinary;
        case LineKind::FormerLine:
            return RegionKind::FormerLine;
        case LineKind::BlockBegin:
        case LineKind::BlockContent:
        case LineKind::BlockEnd:
            return RegionKind::Block;
        case LineKind::NoticeBegin:
        case LineKind::NoticeText:
        case LineKind::NoticeEnd:
            return RegionKind::Notice;
        case LineKind::TemplateCommentBegin:
        case LineKind::TemplateCommentText:
        case LineKind::TemplateCommentEnd:
            break;
    }
    return RegionKind::TemplateComment;
}

bool OpensRegion(LineKind kind) {
    return kind == LineKind::FormerLine || kind == LineKind::BlockBegin || kind == LineKind::NoticeBegin ||
           kind == LineKind::TemplateCommentBegin;
}

bool ClosesRegion(LineKind kind) {
    return kind == LineKind::BlockEnd || kind == LineKind::NoticeEnd || kind == LineKind::TemplateCommentEnd;
}

}  // namespace

ManagedText::ManagedText(std::string_view text) {
    for (const TextLine& line : SplitLines(text))
        m_lines.push_back({line.text});
    MarkRegions({Marker::BlockBegin, Marker::BlockEnd, LineKind::BlockBegin, LineKind::BlockContent,
                 LineKind::BlockEnd});
    MarkRegions({Marker::Notice, Marker::CommentEnd, LineKind::NoticeBegin, LineKind::NoticeText,
                 LineKind::NoticeEnd});
    MarkRegions({Marker::TemplateComment, Marker::CommentEnd, LineKind::TemplateCommentBegin,
                 LineKind::TemplateCommentText, LineKind::TemplateCommentEnd});
    MarkFormerLines();
    JoinRegions();
    LinkFormerLines();
}

std::string_view ManagedText::FormerText(std::size_t number) const {
    return Line(number).text.substr(MarkerText(Marker::FormerLine).size());
}

void ManagedText::MarkRegions(const Bounds& bounds) {
    bool isInside = false;
    std::size_t opener = 0;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        ManagedLine& line = m_lines[i];
        if (line.kind != LineKind::Ordinary) continue;
        const Marker marker = MarkerOf(line.text);
        if (isInside) {
            isInside = marker != bounds.end;
            line.kind = isInside ? bounds.contentKind : bounds.endKind;
        } else if (marker == bounds.begin) {
            isInside = true;
            opener = i;
            line.kind = bounds.beginKind;
        }
    }
    for (std::size_t i = opener; isInside && i < m_lines.size(); ++i) {
        const LineKind kind = m_lines[i].kind;
        if (kind == bounds.beginKind || kind == bounds.contentKind) m_lines[i].isClosed = false;
    }
}

void ManagedText::MarkFormerLines() {
    for (ManagedLine& line : m_lines) {
        if (line.kind == LineKind::Ordinary && MarkerOf(line.text) == Marker::FormerLine)
            line.kind = LineKind::FormerLine;
    }
}

void ManagedText::JoinRegions() {
    bool isNew = true;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const LineKind kind = m_lines[i].kind;
        if (isNew || OpensRegion(kind) || RegionKindOf(kind) != m_regions.back().kind) {
            m_regions.push_back({RegionKindOf(kind), i + 1, i + 1, m_lines[i].isClosed});
        }
        m_regions.back().last = i + 1;
        isNew = ClosesRegion(kind);
        m_lines[i].region = m_regions.size() - 1;
    }
}

void ManagedText::LinkFormerLines() {
    for (std::size_t i = 1; i < m_regions.size(); ++i) {
        if (m_regions[i].kind != RegionKind::Block || m_regions[i - 1].kind != RegionKind::FormerLine)
            continue;
        m_regions[i].formerLine = m_regions[i - 1].first;
        m_regions[i - 1].block = m_regions[i].first;
    }
}

}  // namespace ZET
