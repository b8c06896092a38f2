#include "Text.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ZET {

void Text::Rewind() {
    m_position = m_lineStart = m_countedTo = m_lineFeeds = 0;
    m_endedByEnd = false;
}

void Text::Renew() {
    Rewind();
    m_exhausted = false;
}

Buffer Text::Replace(Buffer bytes) {
    std::swap(m_bytes, bytes);
    Renew();
    return bytes;
}

std::string_view Text::Rest() const {
    return m_exhausted ? std::string_view() : m_bytes.View().substr(m_position);
}

bool Text::ReadLine(std::string_view& line) {
    const std::string_view rest = Rest();
    if (rest.empty()) {
        m_exhausted = true;
        return false;
    }
    const void* lineFeed = std::memchr(rest.data(), '\n', rest.size());
    m_endedByEnd = lineFeed == nullptr;
    line = m_endedByEnd
               ? rest
               : rest.substr(0, static_cast<std::size_t>(static_cast<const char*>(lineFeed) - rest.data()));
    m_lineStart = m_position;
    m_position += line.size() + (m_endedByEnd ? 0 : 1);
    return true;
}

std::size_t Text::LineNumber() {
    const std::string_view uncounted = m_bytes.View().substr(m_countedTo, m_lineStart - m_countedTo);
    m_lineFeeds += static_cast<std::size_t>(std::count(uncounted.begin(), uncounted.end(), '\n'));
    m_countedTo = m_lineStart;
    return m_lineFeeds + 1;
}

TextBuilder::TextBuilder(const Text& source, Buffer memory) : m_source(source), m_bytes(std::move(memory)) {
    m_bytes.Clear();
}

void TextBuilder::Copy(std::string_view piece) {
    if (!m_run.empty() && m_run.data() + m_run.size() == piece.data()) {
        m_run = {m_run.data(), m_run.size() + piece.size()};
        return;
    }
    FlushRun();
    m_run = piece;
}

void TextBuilder::CopyLine(std::string_view line) {
    if (!m_source.EndedByEndOfText()) {
        Copy({line.data(), line.size() + 1});
    } else {
        Copy(line);
        EndLine(line.empty());
    }
}

void TextBuilder::Append(std::string_view bytes) {
    FlushRun();
    m_bytes.Append(bytes);
}

void TextBuilder::AppendLine(std::string_view line) {
    Append(line);
    m_bytes.Append("\n");
}

void TextBuilder::EndLine(bool isEmpty) {
    if (!m_source.EndedByEndOfText() || isEmpty) Append("\n");
}

Buffer TextBuilder::Install(Text& source) {
    if (m_bytes.Size() == 0 && m_run.size() == source.Bytes().size()) {
        source.Renew();
        return std::move(m_bytes);
    }
    FlushRun();
    return source.Replace(std::move(m_bytes));
}

void TextBuilder::FlushRun() {
    if (m_run.empty()) return;
    // Most passes change little: room for the whole source at once saves growing step by step.
    m_bytes.Reserve(m_source.Bytes().size() + m_source.Bytes().size() / 8);
    m_bytes.Append(m_run);
    m_run = {};
}

}  // namespace ZET
