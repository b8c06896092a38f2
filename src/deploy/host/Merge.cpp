#include "deploy/host/Merge.h"

#include <charconv>

#include "deploy/host/Failure.h"
#include "deploy/host/Process.h"
#include "deploy/host/StagedFile.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "text/Lines.h"

namespace ZET::Deploy {

namespace {

constexpr int kConflicts = 1;
constexpr mode_t kModeOfTexts = 0600;

/// The three texts as files, and the program that compares them.
class TextComparison {
  public:
    TextComparison(const std::string& mine, const std::string& base, const std::string& yours)
        : m_files{Staged("mine", mine), Staged("base", base), Staged("yours", yours)} {}

    /// In the C locale, as the program's messages would be in the reader's language.
    ProcessResult Run(const std::vector<std::string>& options, const std::string& path) const {
        std::vector<std::string> words = {"diff3"};
        words.insert(words.end(), options.begin(), options.end());
        words.insert(words.end(), m_files.begin(), m_files.end());
        ProcessResult result = RunProcess(words, {.environment = {"LC_ALL=C"}});
        if (result.status > kConflicts) {
            throw Failure({.file = path,
                           .text = Words("cannot be merged, as diff3 ends with status %s",
                                         std::to_string(result.status)),
                           .remedy = _("run the command again"),
                           .output = result.output});
        }
        return result;
    }

  private:
    /// The program does not count a last line that lacks its line feed.
    std::string Staged(const char* name, const std::string& text) {
        const bool isWhole = text.empty() || text.ends_with('\n');
        WriteStagedFile(m_staging.PathOf(name), isWhole ? text : text + "\n", kModeOfTexts);
        return m_staging.PathOf(name);
    }

    Staging m_staging;
    std::vector<std::string> m_files;
};

/// The number in "1:12,15c" or "1:12a".
std::size_t LineIn(std::string_view hunk) {
    std::size_t line = 0;
    std::from_chars(hunk.data() + 2, hunk.data() + hunk.size(), line);
    return line;
}

/// The places in the first file of those hunks in which all three texts differ.
std::vector<std::size_t> ConflictsIn(const std::string& hunks) {
    std::vector<std::size_t> lines;
    bool isConflict = false;
    for (const Text::TextLine& line : Text::SplitLines(hunks)) {
        if (line.text.starts_with("====")) isConflict = line.text == "====";
        if (!isConflict || !line.text.starts_with("1:")) continue;
        lines.push_back(LineIn(line.text));
        isConflict = false;
    }
    return lines;
}

bool LacksLineFeed(const std::string& text) {
    return !text.empty() && !text.ends_with('\n');
}

/// Whether the merged text lacks the last line feed: as whoever changed that left it.
bool EndsWithout(const std::string& mine, const std::string& base, const std::string& yours) {
    return LacksLineFeed(mine) == LacksLineFeed(base) ? LacksLineFeed(yours) : LacksLineFeed(mine);
}

void RequireText(const std::string& text, const std::string& path, const std::string& otherWay) {
    if (text.find('\0') == std::string::npos) return;
    throw Failure({.file = path,
                   .text = _("holds a NUL byte, so it cannot be merged"),
                   .remedy = Words("look at it; %s", otherWay)});
}

}  // namespace

Merged Merge(const std::string& mine, const std::string& base, const std::string& yours,
             const std::string& path, const std::string& otherWay) {
    for (const std::string* const text : {&mine, &base, &yours})
        RequireText(*text, path, otherWay);
    const TextComparison comparison(mine, base, yours);
    Merged merged;
    // Without -E, a change that both made alike would be marked, too.
    const ProcessResult result = comparison.Run({"-m", "-E", "-a"}, path);
    if (result.status == kConflicts) {
        merged.conflicts = ConflictsIn(comparison.Run({"-a"}, path).output);
        return merged;
    }
    merged.text = result.output;
    if (EndsWithout(mine, base, yours) && merged.text.ends_with('\n')) merged.text.pop_back();
    return merged;
}

}  // namespace ZET::Deploy
