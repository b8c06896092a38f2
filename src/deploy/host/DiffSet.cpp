#include "deploy/host/DiffSet.h"

#include <unistd.h>

#include <charconv>
#include <string_view>
#include <system_error>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/Process.h"
#include "deploy/host/Staging.h"
#include "deploy/host/UnifiedDiff.h"
#include "text/Lines.h"

namespace ZET::Deploy {

namespace {

using Pairs = std::vector<FilePair>;
using Changes = std::optional<std::vector<std::string>>;

/// Makes links to the files of one side, named by their numbers, in a directory of that side.
bool Link(const Staging& staging, const std::string& side, const Pairs& pairs, std::string FilePair::*file) {
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const std::string link = staging.PathOf(side + "/" + std::to_string(i));
        const std::string& linked = pairs[i].*file;
        if (!linked.empty() && symlink(linked.c_str(), link.c_str()) != 0) return false;
    }
    return true;
}

/// The number that ends the line by which `diff` introduces two files.
std::optional<std::size_t> PairIn(std::string_view line) {
    const std::string_view name = line.substr(line.rfind('/') + 1);
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

/// Takes the next line; returns whether it begins with `begin`.
bool TakesLine(std::string_view& output, std::string_view begin) {
    return !output.empty() && Text::TakeLine(output).text.starts_with(begin);
}

/// None if the output is not as expected. Each line of a diff begins with a sign, so that none is taken for a
/// line between two diffs.
Changes ByPair(std::string_view output, std::size_t count) {
    constexpr std::string_view kSigns = "@ +-\\";
    std::vector<std::string> changes(count);
    std::string* present = nullptr;
    while (!output.empty()) {
        const Text::TextLine line = Text::TakeLine(output);
        if (line.text.starts_with("diff ")) {
            const std::optional<std::size_t> pair = PairIn(line.text);
            if (!pair || *pair >= count || !TakesLine(output, "--- ") || !TakesLine(output, "+++ "))
                return std::nullopt;
            present = &changes[*pair];
        } else if (present != nullptr && !line.text.empty() &&
                   kSigns.find(line.text.front()) != kSigns.npos) {
            present->append(line.text).append("\n");
        } else {
            return std::nullopt;
        }
    }
    return changes;
}

Changes ChangesBetween(const Pairs& pairs) {
    const Staging staging;
    if (!Link(staging, "old", pairs, &FilePair::oldFile) || !Link(staging, "new", pairs, &FilePair::newFile))
        return std::nullopt;
    const ProcessResult result = RunProcess({"diff", "-u", "-a", "-r", "-N", "old", "new"},
                                            {.environment = {"LC_ALL=C"}, .directory = staging.PathOf("")});
    return result.status > 1 ? std::nullopt : ByPair(result.output, pairs.size());
}

}  // namespace

DiffSet::DiffSet(std::vector<FilePair> pairs) : m_pairs(std::move(pairs)) {
    if (m_pairs.size() < 2) return;
    try {
        m_changes = ChangesBetween(m_pairs);
    } catch (const Failure&) {
        // `Of` then compares the pair by itself, and reports the failure.
    }
}

std::string DiffSet::Of(std::size_t pair, const std::string& shownPath) const {
    const auto& [oldFile, newFile] = m_pairs[pair];
    if (!m_changes) return UnifiedDiff(oldFile, newFile, shownPath);
    const std::string& changes = (*m_changes)[pair];
    return changes.empty() ? "" : DiffLabels(oldFile, newFile, shownPath) + changes;
}

}  // namespace ZET::Deploy
