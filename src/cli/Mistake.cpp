#include "cli/Mistake.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "cli/Translation.h"
#include "deploy/state/ParameterNames.h"

namespace ZET::Cli {

namespace {

constexpr std::size_t kFewestLetters = 3;  // of a word that may be the beginning of another

/// Whether the command that is missing may stand behind "--", where none is looked for.
bool IsCommandHidden(const Mistake& mistake) {
    return !mistake.behindMarker.empty() &&
           (mistake.unknown.empty() || IsIn(mistake.behindMarker, mistake.unknown.front()));
}

std::string WhatIsWrong(const Mistake& mistake) {
    if (!mistake.isCommandMissing) return mistake.message;
    return mistake.unknown.empty() || IsCommandHidden(mistake)
               ? _("a command is missing")
               : Filled(_("unknown command \"%s\""), {mistake.unknown.front()});
}

std::string SuggestedCommand(const Mistake& mistake) {
    if (IsCommandHidden(mistake)) return _("put \"--\" behind the command, or ");
    return mistake.unknown.empty() ? "" : DidYouMean(mistake.unknown.front(), mistake.commands);
}

std::string Suggestion(const Mistake& mistake) {
    if (mistake.isCommandMissing) return SuggestedCommand(mistake);
    const auto option = std::find_if(mistake.unknown.begin(), mistake.unknown.end(), IsOption);
    if (option == mistake.unknown.end()) return "";
    if (mistake.isRightBeforeMarker) return _("put it before \"--\", or ");
    const std::string name = option->substr(0, option->find('='));
    if (!IsIn(mistake.options, name)) return name.starts_with("--") ? DidYouMean(name, mistake.options) : "";
    return IsIn(mistake.behindMarker, *option) ? "" : _("put it behind its command, or ");
}

/// Whether a missing word may be present, but was taken for an option.
bool MayBeTakenForAnOption(const Mistake& mistake) {
    return !mistake.splitGroups.empty() ||
           (mistake.isWordMissing && !mistake.isCommandMissing &&
            (IsOption(mistake.lastWord) ||
             std::any_of(mistake.unknown.begin(), mistake.unknown.end(), IsOption)));
}

}  // namespace

bool IsIn(const std::vector<std::string>& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool IsOption(std::string_view word) {
    return word.starts_with('-');
}

std::string DidYouMean(const std::string& word, const std::vector<std::string>& names) {
    std::string nearest = Deploy::NearestName(word, names);
    if (nearest.empty() && word.size() >= kFewestLetters) {
        const auto begun = std::find_if(names.begin(), names.end(),
                                        [&](const std::string& name) { return name.starts_with(word); });
        if (begun != names.end()) nearest = *begun;
    }
    return nearest.empty() ? "" : Filled(_("did you mean \"%s\"? "), {nearest});
}

std::string Describe(const Mistake& mistake) {
    return WhatIsWrong(mistake) + " (" + Suggestion(mistake) +
           (MayBeTakenForAnOption(mistake) ? _("put \"--\" before a value that begins with \"-\", or ")
                                           : "") +
           Filled(_("see \"%s --help\""), {mistake.command}) + ")";
}

}  // namespace ZET::Cli
