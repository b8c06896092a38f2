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
/// at the end of the text; only a line that is not empty can be ended by the end of the text.
///
/// A read that runs through the whole text exhausts it: from then on it yields no line, rewound or not, until
/// its bytes are replaced.
class TextReader {
  public:
    TextReader() = default;
    explicit TextReader(Buffer bytes) : m_bytes(std::move(bytes)) {}

    /// Back to the first line. Does not revive an exhausted text.
    void Rewind();

    /// The next line, without its line feed, valid as long as the text is not changed. False when there is
    /// none: the text is exhausted.
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

    /// Passes over the whole lines before the next one that holds `bytes`, and returns them with their line
    /// feeds; the last line is left when it has none. For a pass that lets such lines be: it need not look at
    /// each.
    std::string_view SkipLinesWithout(std::string_view bytes);

    /// Of the line read last: whether the end of the text ended it instead of a line feed; and its number,
    /// from 1.
    bool EndedByEndOfText() const {
        return m_position == m_bytes.Size() && m_position > 0 && !m_bytes.View().ends_with('\n');
    }
    std::size_t LineNumber();

    /// What has not been read yet.
    std::string_view Rest() const {
        std::string_view rest = m_exhausted ? std::string_view() : m_bytes.View();
        if (!m_exhausted) rest.remove_prefix(m_position);
        return rest;
    }

    std::string_view Bytes() const { return m_bytes.View(); }

    /// Makes the bytes ones of pieces of themselves and others, to be read from their start.
    void Arrange(const std::vector<TextPiece>& pieces, std::string_view others, std::size_t size);

    /// Reads afresh from the start, exhausted or not: for a text whose bytes were replaced by the same bytes.
    void Renew();

    bool IsExhausted() const { return m_exhausted; }

    /// Takes over new bytes, to be read from their start, and gives the old ones back.
    Buffer Replace(Buffer bytes);

  private:
    Buffer m_bytes;
    std::size_t m_position = 0;
    std::size_t m_countedTo =
        0;  ///< line feeds are counted only up to here, since few passes ask for a number
    std::size_t m_lineFeeds = 0;
    bool m_exhausted = false;
};

/// Builds the text that a pass makes out of another one. What is taken over unchanged is collected into runs.
/// As long as these are few and long, nothing is copied: at the end, the text is made in its own place, where
/// the longest run stays: half of the memory for an edit of a large text, and no first touch of a second one.
/// A small text is copied at once, which takes less than the list of its pieces.
/// Without `Install` the source is left as it was, and not exhausted by having been read.
class TextBuilder {
  public:
    /// `memory` is used for a new text that is not made in place.
    TextBuilder(TextReader& source, Buffer memory);
    ~TextBuilder();
    TextBuilder(const TextBuilder&) = delete;
    TextBuilder& operator=(const TextBuilder&) = delete;

    /// Takes over a piece of the source.
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

    /// Takes over the line of the source that was read last, or its end, and ends it.
    void CopyLine(std::string_view line) {
        if (!m_source.EndedByEndOfText()) {
            Copy({line.data(), line.size() + 1});
        } else {
            Copy(line);
            EndLine(line.empty());
        }
    }

    /// Adds other bytes; inline for the values of templates, of which a call is an eighth of the
    /// instructions.
    [[gnu::always_inline]] void Append(std::string_view bytes) {
        if (bytes.empty()) return;
        FlushRun();
        m_size += bytes.size();
        if (m_isCopied) return m_bytes.Append(bytes);
        AddOthers(bytes);
    }
    void AppendLine(std::string_view line);

    /// Ends a line that stands for the one read last: with a line feed, unless the end of the text ended that
    /// one and the new one is not empty.
    void EndLine(bool isEmpty);

    /// Bytes added so far.
    std::size_t Size() const { return m_size; }

    /// Puts the new text in the place of the source, to be read from its start. Returns memory for the next
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
    bool m_mayRevive;  ///< the source was not exhausted before, and is not replaced yet
    std::size_t m_size = 0;
    std::string_view m_run;  ///< a piece of the source that follows what is below, and is not in it yet

    std::vector<TextPiece> m_pieces;
    std::size_t m_taken = 0;  ///< of the source, by the pieces
    std::string m_others;     ///< the bytes between the pieces
    bool m_isCopied = false;
    Buffer m_bytes;  ///< instead of both, once all is copied
};

}  // namespace ZET

#endif
