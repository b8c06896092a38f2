#include <algorithm>
#include <cstdint>
#include <utility>

#include "text/Lines.h"
#include "text/Regions.h"
#include "text/Words.h"
#include "text/repair/MarkerDamage.h"
#include "text/repair/NearMarker.h"

namespace ZET::Text {

namespace {

constexpr std::uint32_t kNoToken = static_cast<std::uint32_t>(-1);

/// A place where a marker is, or may be meant.
struct Token {
    enum class Form : std::uint8_t { Exact, Near, Glued };

    std::uint32_t line = 0;
    std::uint32_t position = 0;
    Marker marker = Marker::None;
    Form form = Form::Exact;
    bool counts = true;  ///< it is a marker, or completes a region if taken as one

    // The indexes of the next two tokens of the same family: blocks, or notices and template comments.
    std::uint32_t nextGlued = kNoToken;
    std::uint32_t nextOther = kNoToken;
};

bool IsBlockMarker(Marker marker) {
    return marker == Marker::BlockBegin || marker == Marker::BlockEnd || marker == Marker::FormerLine;
}

void AddTokens(std::uint32_t line, std::string_view text, std::vector<Token>& tokens) {
    const Marker marker = MarkerOf(text);
    if (marker != Marker::None) tokens.push_back({line, 0, marker});
    if (const auto near = FindNearMarker(text)) {
        tokens.push_back({line, 0, near->marker, Token::Form::Near});
        return;
    }
    std::size_t position = 0;
    while (const auto glued = FindGluedMarker(text.substr(position))) {
        position += glued->position;
        tokens.push_back({line, static_cast<std::uint32_t>(position), glued->marker, Token::Form::Glued});
    }
}

void LinkTokens(std::vector<Token>& tokens) {
    struct Next {
        std::uint32_t glued = kNoToken;
        std::uint32_t other = kNoToken;
    };
    Next ofBlocks;
    Next ofComments;
    for (std::size_t at = tokens.size(); at-- > 0;) {
        Token& token = tokens[at];
        Next& next = IsBlockMarker(token.marker) ? ofBlocks : ofComments;
        token.nextGlued = next.glued;
        token.nextOther = next.other;
        (token.form == Token::Form::Glued ? next.glued : next.other) = static_cast<std::uint32_t>(at);
    }
}

/// Decides in order which of the tokens that are not exact markers are meant to be markers: those that
/// complete a region, or end one that has no other end.
class TokenJudge {
  public:
    explicit TokenJudge(std::vector<Token>& tokens) : m_tokens(tokens) {}

    void Judge() {
        for (std::size_t at = 0; at < m_tokens.size(); ++at) {
            Token& token = m_tokens[at];
            token.counts = token.form == Token::Form::Exact || Fits(at);
            if (token.counts) Follow(token.marker);
        }
    }

  private:
    bool Fits(std::size_t at) const {
        const Marker next = NextMarker(m_tokens[at]);
        switch (m_tokens[at].marker) {
            case Marker::BlockBegin:
                return !m_blocks.IsInside() && next == Marker::BlockEnd && CanBeginAt(at);
            case Marker::BlockEnd:
                return m_blocks.IsInside() && next != Marker::BlockEnd;
            case Marker::FormerLine:
                return !m_blocks.IsInside() && HasBlockBehind(at);
            case Marker::Notice:
            case Marker::TemplateComment:
                return !m_comments.IsInside() && next == Marker::CommentEnd;
            case Marker::CommentEnd:
                return m_comments.IsInside();
            case Marker::None:
                break;
        }
        return false;
    }

    /// A block is preceded by a kept former line, another block or an empty line.
    bool CanBeginAt(std::size_t at) const {
        return m_tokens[at].form != Token::Form::Glued ||
               (at > 0 && m_tokens[at - 1].line == m_tokens[at].line);
    }

    bool HasBlockBehind(std::size_t at) const {
        const std::size_t next = at + 1;
        if (next >= m_tokens.size() || m_tokens[next].marker != Marker::BlockBegin) return false;
        if (m_tokens[next].line > m_tokens[at].line + 1) return false;
        return m_tokens[next].form == Token::Form::Exact || Fits(next);
    }

    /// The next marker of the same family. A marker at the end of other text counts only nearby: it may just
    /// be mentioned.
    Marker NextMarker(const Token& token) const {
        const bool isClose = token.nextGlued != kNoToken && m_tokens[token.nextGlued].line <= token.line + 1;
        const std::uint32_t next = isClose ? std::min(token.nextGlued, token.nextOther) : token.nextOther;
        return next == kNoToken ? Marker::None : m_tokens[next].marker;
    }

    void Follow(Marker marker) {
        m_blocks.Take(marker);
        m_comments.Take(marker);
    }

    std::vector<Token>& m_tokens;
    RegionFollower m_blocks = RegionFollower::OfBlocks();
    RegionFollower m_comments = RegionFollower::OfComments();
};

std::vector<Token> JudgedTokens(const RepairText& repair) {
    std::vector<Token> tokens;
    for (std::uint32_t i = 0; i < repair.Size(); ++i)
        AddTokens(i, repair.Text(i), tokens);
    LinkTokens(tokens);
    TokenJudge(tokens).Judge();
    return tokens;
}

DamagedRegions RegionsOf(Marker marker) {
    return IsBlockMarker(marker) ? DamagedRegions::Blocks : DamagedRegions::Notices;
}

std::string Quoted(Marker marker) {
    std::string_view text = MarkerText(marker);
    if (text.ends_with(' ')) text.remove_suffix(1);
    return "\"" + std::string(text) + "\"";
}

bool IsWholeMarker(std::string_view text) {
    const Marker marker = MarkerOf(text);
    return marker != Marker::None && marker != Marker::FormerLine &&
           text.find_first_not_of(kUsualBlanks, MarkerText(marker).size()) == std::string_view::npos;
}

/// Whether the text before the marker is certain. A trailing blank may be the joining editor's or the line's
/// own, which matters unless the line is a marker itself.
bool CanEndLine(std::string_view before) {
    return kUsualBlanks.find(before.back()) == std::string_view::npos || IsWholeMarker(before);
}

/// Splits lines that lost the line feeds between them.
class JoinedLine {
  public:
    JoinedLine(RepairText& repair, std::size_t line)
        : m_repair(repair), m_line(line), m_rest(repair.Text(line)) {}

    void SplitAt(const Token& token) {
        const std::string_view before = m_rest.substr(0, token.position - m_taken);
        if (!CanEndLine(before)) return;
        m_repair.Concern(RegionsOf(token.marker));
        m_repair.Note(m_line, "joined-lines",
                      Words("%s stands behind other text, where it is no marker", Quoted(token.marker)),
                      _("begin a line with it"));
        Put(before);
        m_rest.remove_prefix(before.size());
        m_taken = token.position;
    }

    void End() {
        if (m_taken != 0) Put(m_rest);
    }

  private:
    void Put(std::string_view text) {
        if (IsWholeMarker(text)) text = MarkerText(MarkerOf(text));
        if (std::exchange(m_isFirst, false)) {
            m_repair.Replace(m_line, text);
        } else {
            m_repair.InsertAfter(m_line, text);
        }
    }

    RepairText& m_repair;
    std::size_t m_line;
    std::string_view m_rest;
    std::size_t m_taken = 0;
    bool m_isFirst = true;
};

void SplitJoinedLines(RepairText& repair) {
    const std::vector<Token> tokens = JudgedTokens(repair);
    for (auto token = tokens.begin(); token != tokens.end();) {
        const std::uint32_t line = token->line;
        JoinedLine joined(repair, line);
        for (; token != tokens.end() && token->line == line; ++token)
            if (token->form == Token::Form::Glued && token->counts) joined.SplitAt(*token);
        joined.End();
    }
    repair.Settle();
}

void FixNear(RepairText& repair, const Token& token) {
    repair.Concern(RegionsOf(token.marker));
    const std::string marker = Quoted(token.marker);
    if (token.counts) {
        repair.Note(token.line, "hand-edited-marker", Words("this is nearly %s, but no marker", marker),
                    _("write the marker as it was"));
        repair.Replace(token.line, repair.Keep(FindNearMarker(repair.Text(token.line))->line));
        return;
    }
    repair.NoteAmbiguous(
        token.line, "hand-edited-marker",
        Words("this is nearly %s, but no marker, and no whole region comes from taking it for one", marker),
        {_("write the marker as it was, with the other markers of its region"),
         _("take the line out, if nothing belongs to it")});
}

std::string WhatStandsBehind(const std::string& marker, const std::string& rest) {
    if (rest == "\r") return Words("a carriage return stands behind %s", marker);
    const bool isBlank = rest.find_first_not_of(kUsualBlanks) == std::string::npos;
    return isBlank ? Words("white space stands behind %s", marker)
                   : Words("a needless \"%s\" stands behind %s", rest, marker);
}

void FixExact(RepairText& repair, const Token& token) {
    if (token.marker == Marker::FormerLine) return;
    const std::string rest(repair.Text(token.line).substr(MarkerText(token.marker).size()));
    if (rest.empty()) return;
    const bool isBlank = rest.find_first_not_of(kUsualBlanks) == std::string::npos;
    repair.Concern(isBlank ? DamagedRegions::None : RegionsOf(token.marker));
    if (IsOnlySurroundings(rest)) {
        repair.Note(token.line, "hand-edited-marker", WhatStandsBehind(Quoted(token.marker), rest),
                    _("take it out"));
        repair.Replace(token.line, MarkerText(token.marker));
    } else {
        repair.NoteAmbiguous(token.line, "text-after-marker",
                             Words("text stands behind %s: it has no effect, and goes when the marker goes",
                                   Quoted(token.marker)),
                             {_("give it a line of its own, outside of the region"), _("take it out")});
    }
}

void LeaveJoined(RepairText& repair, const Token& token) {
    repair.Concern(RegionsOf(token.marker));
    repair.NoteAmbiguous(
        token.line, "joined-lines",
        Words("%s stands behind other text and blanks, where it is no marker", Quoted(token.marker)),
        {_("begin a line with it, and take the blanks before it out"),
         _("begin a line with it, and keep the blanks in the line before")});
    repair.TakeAs(token.line, token.marker);
}

}  // namespace

void CheckHandEdits(RepairText& repair) {
    SplitJoinedLines(repair);
    const std::vector<Token> tokens = JudgedTokens(repair);
    for (const Token& token : tokens) {
        if (token.form == Token::Form::Near) FixNear(repair, token);
        if (token.form == Token::Form::Exact) FixExact(repair, token);
        if (token.form == Token::Form::Glued && token.counts) LeaveJoined(repair, token);
    }
    repair.Settle();
}

}  // namespace ZET::Text
