#include "deploy/state/ConfFile.h"

#include <algorithm>
#include <optional>

#include "deploy/host/FileBytes.h"
#include "deploy/host/Words.h"
#include "deploy/state/ParameterNames.h"
#include "text/Lines.h"

namespace ZET::Deploy {

namespace {

/// What is wrong with a line, without its place; none if it gives a parameter.
std::optional<Problem> ProblemOfConfLine(std::string_view line) {
    const auto problem = [](const std::string& text, const std::string& remedy) {
        return Problem{.text = text, .remedy = remedy};
    };
    if (line.find('\0') != std::string_view::npos)
        return problem(_("the line holds a NUL byte"), _("remove it"));
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos)
        return problem(_("no \"=\" in the line"), _("write NAME=value, or \"#\" before a comment"));
    if (equals > 0 && Text::kBlanks.find(line[equals - 1]) != std::string_view::npos)
        return problem(_("a blank before \"=\""), _("write NAME=value without it"));
    const std::string name(line.substr(0, equals));
    if (!IsParameterName(name))
        return problem(Words("\"%s\" is no name of a parameter", name),
                       _("use letters, digits and \"_\", no digit first"));
    return std::nullopt;
}

}  // namespace

ConfFile ReadConfText(const std::string& file, std::string_view text) {
    ConfFile conf;
    int number = 0;
    for (const Text::TextLine& line : Text::SplitLines(text)) {
        ++number;
        const std::size_t start = line.text.find_first_not_of(Text::kBlanks);
        if (start == std::string_view::npos || line.text[start] == '#') continue;
        const std::string_view given = line.text.substr(start);
        if (std::optional<Problem> problem = ProblemOfConfLine(given)) {
            problem->file = file;
            problem->line = number;
            conf.problems.push_back(std::move(*problem));
            continue;
        }
        const std::size_t equals = given.find('=');
        conf.given.push_back({number, static_cast<int>(start + equals) + 2,
                              std::string(given.substr(0, equals)), std::string(given.substr(equals + 1)),
                              file});
    }
    return conf;
}

std::vector<GivenParameter> GivenIn(const std::string& mainFile) {
    return ReadConfText("", ReadFileBytes(mainFile)).given;
}

const GivenParameter* FindGiven(const std::vector<GivenParameter>& given, const std::string& name) {
    const auto last = std::find_if(given.rbegin(), given.rend(),
                                   [&](const GivenParameter& parameter) { return parameter.name == name; });
    return last == given.rend() ? nullptr : &*last;
}

}  // namespace ZET::Deploy
