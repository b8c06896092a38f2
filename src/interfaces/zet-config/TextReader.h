#ifndef ZET_TEXT_H
#define ZET_TEXT_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Buffer.h"
#include "posix/ShortText.h"

namespace ZET {

/// The text of a file: its bytes and how far they have been read, line by line. A line ends at a line feed or
/// at the end of the text; there is no empty line after the last line feed.
///
/// A read that reaches the end of the text exhausts it: from then on it yields no line, even after `Rewind`,
/// until its bytes are replaced.
class TextReader {
  public:
    TextReader() = default;
    explicit TextReader(Buffer bytes) : m_bytes(std::move(bytes)) {}

    /// Returns to the first line. Does not revive an exhausted text.
    void Rewind();

    /// Reads the next line, without its line feed; it is valid until the text changes. False if there is
    /// none: the text is then exhausted.
    bool ReadLine(std::string_view& line) {
        const std::string_view rest = Rest();
        if (rest.empty()) {
            m_exhausted = true;
            return false;
        }
        line = {rest.data(), std::min(FindNear(rest, '\n'), rest.size())};
        m_position += std::min(line.size() + 1, rest.size());
        return true;
    }

    /// Skips the whole lines before the next one that contains `bytes`, and returns them with their line
    /// feeds; a last line without a line feed is not skipped. For a pass that leaves such lines unchanged.
    std::string_view SkipLinesWithout(std::string_view bytes);

    /// Whether the line read last was ended by the end of the text instead of a line feed; and that line's
    /// number, from 1.
    bool EndedByEndOfText() const {
        return m_position == m_bytes.Size() && m_position > 0 && !m_bytes.View().ends_with('\n');
    }
    std::size_t LineNumber();

    /// The text that has not been read yet.
    std::string_view Rest() const {
        std::string_view rest = m_exhausted ? std::string_view() : m_bytes.View();
        if (!m_exhausted) rest.remove_prefix(m_position);
        return rest;
    }

    std::string_view Bytes() const { return m_bytes.View(); }

    /// Rearranges the bytes as `Buffer::Arrange`, and reads them from the start.
    void Arrange(const std::vector<TextPiece>& pieces, std::string_view others, std::size_t size);

    /// Starts again from the first line, exhausted or not: for a text whose bytes were replaced by the same
    /// bytes.
    void Renew();

    bool IsExhausted() const { return m_exhausted; }

    /// Takes new bytes, to be read from the start, and returns the old ones.
    Buffer Replace(Buffer bytes);

  private:
    Buffer m_bytes;
    std::size_t m_position = 0;
    std::size_t m_countedTo =
        0;  ///< line feeds are counted only up to here, and on demand, since few passes need a line number
    std::size_t m_lineFeeds = 0;
    bool m_exhausted = false;
};

/// Builds the text that a pass makes from another one. Unchanged text is collected into runs. While these are
/// few and long, nothing is copied: the final text is made in place, around the longest run, which halves the
/// memory for an edit of a large text and avoids first touching a second one. A small text is copied at once,
/// which is cheaper than a list of pieces. Without `Install` the source is left as it was, and reading it
/// does not exhaust it.
class TextBuilder {
  public:
    /// `memory` is used if the new text is not made in place.
    TextBuilder(TextReader& source, Buffer memory);
    ~TextBuilder();
    TextBuilder(const TextBuilder&) = delete;
    TextBuilder& operator=(const TextBuilder&) = delete;

    /// Copies a piece of the source.
    void Copy(std::string_view piece) {
        if (piece.empty()) return;
        m_size += piece.size();
        if (!m_run.empty() && m_run.data() + m_run.size() == piece.data()) {
            m_run = {m_run.data(), m_run.size() + piece.size()};
            return;
        }
        FlushRun();
        m_run = piece;
    }

    /// Copies the source line that was read last, or its end, and ends the line.
    void CopyLine(std::string_view line) {
        if (!m_source.EndedByEndOfText()) {
            Copy({line.data(), line.size() + 1});
        } else {
            Copy(line);
            EndLine(line.empty());
        }
    }

    /// Adds other bytes. Inline because a call would take an eighth of the instructions for the values of
    /// templates.
    [[gnu::always_inline]] void Append(std::string_view bytes) {
        if (bytes.empty()) return;
        FlushRun();
        m_size += bytes.size();
        if (m_isCopied) return m_bytes.Append(bytes);
        AddOthers(bytes);
    }
    void AppendLine(std::string_view line);

    /// Ends a line that replaces the one read last: with a line feed, unless the end of the text ended that
    /// one and the new line is not empty.
    void EndLine(bool isEmpty);

    /// The number of bytes added so far.
    std::size_t Size() const { return m_size; }

    /// Replaces the source's text with the new one, to be read from its start. Returns memory for the next
    /// pass.
    Buffer Install();

  private:
    void FlushRun() {
        if (m_run.empty()) return;
        const std::string_view run = std::exchange(m_run, {});
        if (m_isCopied) return m_bytes.Append(run);
        AddRun(run);
    }
    void AddRun(std::string_view run);
    void AddOthers(std::string_view bytes);
    void Add(TextPiece piece);
    bool IsWorthCollecting() const;
    void CopyCollected();

    TextReader& m_source;
    bool m_mayRevive;  ///< the source was not exhausted before and has not been replaced yet
    std::size_t m_size = 0;
    std::string_view m_run;  ///< a piece of the source that is to be added next

    std::vector<TextPiece> m_pieces;
    std::size_t m_taken = 0;  ///< how far the pieces reach into the source
    std::string m_others;     ///< the bytes between the pieces
    bool m_isCopied = false;
    Buffer m_bytes;  ///< replaces both once everything is copied
};

}  // namespace ZET

#endif
