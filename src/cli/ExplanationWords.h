#ifndef ZET_EXPLANATION_WORDS_H
#define ZET_EXPLANATION_WORDS_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "cli/Names.h"
#include "deploy/edit/FileExplanation.h"

namespace ZET::Cli {

/// The age of the newest of the lines; none if they are older than the history.
std::optional<LineAge> NewestAge(const FileExplanation& file, const Text::ExplainedLines& lines);

/// Puts into words where a file and its lines come from.
class ExplanationWords {
  public:
    /// `program` is named in a command that the reader may give. The arguments must outlive the object.
    ExplanationWords(const FileExplanation& file, const std::string& program)
        : m_file(file), m_path(file.path), m_origin(file.origin), m_program(program) {}

    std::string OfFile() const;

    /// `line` is the one that was asked for, or 0.
    std::string OfLines(const Text::ExplainedLines& lines, std::size_t line) const;

  private:
    std::string ReserveText() const;
    std::string TemplateName() const;
    std::string WhyUntraced() const;
    std::string Shown(std::string_view text) const;
    std::string Describe(const Text::ExplainedLines& lines, bool isOneLine) const;
    std::string DescribeBlock(const Text::ExplainedLines& lines) const;
    std::string ContentOf(const Text::ExplainedLines& lines) const;
    std::string FromTemplateLine(const Text::ExplainedLines& lines) const;

    /// The text about one line of the template, or about several.
    std::string OfTemplate(const Text::ExplainedLines& lines, const char* one, const char* several) const;
    std::string HowToRestore(std::string_view former) const;
    std::string Since(const Text::ExplainedLines& lines) const;

    const FileExplanation& m_file;
    const std::string& m_path;
    const FileOrigin& m_origin;
    const std::string& m_program;
};

}  // namespace ZET::Cli

#endif
