#include "deploy/state/HostValues.h"

#include <string_view>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/ListedDirectory.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/Host.h"
#include "deploy/state/ParameterNames.h"
#include "zet/ZETFiles.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

constexpr char kMainFile[] = "ZET_CFG";
constexpr char kOwnDirectory[] = "ZET_CFG_DIR";
constexpr std::string_view kOwnPrefix = "ZET_";

/// The product's parameter that has this name in capital letters; empty if there is none.
std::string ParameterSpelled(const std::string& name) {
    std::string upper = name;
    for (char& c : upper)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return IsKnownParameter(upper) ? upper : "";
}

bool IsValueName(const std::string& name) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz_";
    return kLetters.find(name.front()) != std::string_view::npos &&
           name.find_first_not_of(std::string(kLetters) + "0123456789") == std::string::npos;
}

}  // namespace

void HostValues::TakeDefaults() {
    ReadFleet();
    if (m_fleet.empty()) return;
    const std::string main = m_host.Param(kMainFile);
    if (!main.empty()) m_main = GivenIn(main);
    for (const GivenParameter& given : m_fleet) {
        const bool isBroken = IsOwnDirectory(given.name) && ProblemOfParam(given.name, given.value);
        if (IsFixed(given.name) || isBroken || FindGiven(m_main, given.name) != nullptr) continue;
        m_host.Core().UpdateParam(given.name, given.value);
    }
}

bool HostValues::IsFixed(const std::string& name) const {
    return name == kMainFile || name == kOwnDirectory || m_host.Wanted().directories.contains(name);
}

/// Called before the parameters of directories are those of a tree.
void HostValues::ReadFleet() {
    const Paths& paths = m_host.HostPaths();
    const std::string named = paths.FromInside(m_host.Param(kOwnDirectory));
    const std::string directory = paths.Resolved(m_host.Param(kOwnDirectory));
    try {
        if (directory != named) RequireWayTo(paths, named);
        for (const std::string& name : NamesInOwn(directory + "/defaults.d", ".conf")) {
            for (GivenParameter& given : ReadConf(directory + "/defaults.d/" + name))
                m_fleet.push_back(std::move(given));
        }
    } catch (const Failure& failure) {
        Miss(m_unread.params, failure.Facts());
    }
}

/// Reads what most commands do not ask for.
void HostValues::ReadRest() {
    if (std::exchange(m_isRead, true)) return;
    const std::string main = m_host.Param(kMainFile);
    if (!main.empty()) m_main = GivenIn(main);
    ReadShipped();
    ReadTexts();
    CheckFleet();
    CheckShipped();
    CheckMain();
    for (const auto& [placeholder, file] : m_textFiles)
        CheckText(NameOfPlaceholder(placeholder), file);
}

void HostValues::ReadShipped() {
    const std::string file = m_host.Param("ZET_CFG_TEMPL_DIR") + "/values.conf";
    try {
        if (RemedyErrors("", [&] { return IsFileExist(file); })) m_shipped = ReadConf(file);
    } catch (const Failure& failure) {
        Miss(m_unread.params, failure.Facts());
    }
}

void HostValues::ReadTexts() {
    const std::string directory = m_host.Param(kOwnDirectory) + "/values.d";
    try {
        for (const std::string& name : NamesInOwn(directory, ""))
            TakeText(name, directory + "/" + name);
    } catch (const Failure& failure) {
        Miss(m_unread.texts, failure.Facts());
    }
}

void HostValues::TakeText(const std::string& name, const std::string& file) {
    m_files.push_back(file);
    if (!IsValueName(name)) {
        m_problems.push_back(
            {.file = file,
             .text = Words("\"%s\" is no name of a value", name),
             .remedy = _("use small letters, digits and \"_\", no digit first; or move it away")});
        return;
    }
    const std::string placeholder = PlaceholderFor(name);
    m_textFiles.emplace(placeholder, file);
    if (std::optional<std::string> text = ReadText(file)) m_texts.emplace(placeholder, std::move(*text));
}

void HostValues::Miss(std::vector<Problem>& unread, const Problem& problem) {
    unread.push_back(problem);
    m_problems.push_back(problem);
}

/// Lists the directory itself, too: whoever may write an empty one can also give the host values.
std::vector<std::string> HostValues::NamesInOwn(const std::string& directory, const std::string& suffix) {
    std::vector<std::string> names = NamesIn(m_host.HostPaths(), directory, suffix);
    if (StateOf(directory).exists) m_files.push_back(directory);
    return names;
}

std::vector<GivenParameter> HostValues::ReadConf(const std::string& file) {
    m_files.push_back(file);
    try {
        ConfFile conf = ReadConfText(file, ReadInside(m_host.HostPaths(), file));
        Append(m_problems, std::move(conf.problems));
        return std::move(conf.given);
    } catch (const Failure& failure) {
        Miss(m_unread.params, ProblemOf(file, failure));
        return {};
    }
}

/// The last line feed does not belong to the value.
std::optional<std::string> HostValues::ReadText(const std::string& file) {
    try {
        std::string text = ReadInside(m_host.HostPaths(), file);
        if (text.find('\0') != std::string::npos)
            throw Failure({.file = file, .text = _("holds a NUL byte"), .remedy = _("take it out")});
        if (text.ends_with('\n')) text.pop_back();
        return text;
    } catch (const Failure& failure) {
        Miss(m_unread.texts, ProblemOf(file, failure));
        return std::nullopt;
    }
}

void HostValues::CheckFleet() {
    for (const GivenParameter& given : m_fleet) {
        if (given.name == kMainFile || given.name == kOwnDirectory) {
            AddOf(given, Words("%s has no effect here", given.name),
                  _("set it in the main configuration file"));
        } else if (const auto problem = ProblemOfParam(given.name, given.value);
                   problem && IsOwnDirectory(given.name)) {
            AddOf(given, problem->text, problem->remedy);
        } else {
            CheckName(given, false);
        }
    }
}

void HostValues::CheckShipped() {
    std::erase_if(m_shipped, [&](const GivenParameter& given) {
        if (!IsKnownParameter(given.name)) return !CheckName(given, true);
        AddOf(given, Words("%s is a parameter of the product, which has a default", given.name),
              _("remove the line; defaults of your own belong into defaults.d"));
        return true;
    });
}

void HostValues::CheckMain() {
    for (const GivenParameter& given : m_main)
        CheckName(given, false);
}

/// What keeps a name from being a placeholder of the host's own, without its place.
std::optional<Problem> HostValues::ClashOf(const std::string& name) const {
    const auto clash = [](const std::string& text, const std::string& remedy) {
        return Problem{.text = text, .remedy = remedy};
    };
    const std::string placeholder = PlaceholderFor(name);
    if (name.starts_with(kOwnPrefix)) {
        const std::string nearest = NearestName(name, NamesOfTheProduct());
        return clash(Words("the product has no parameter %s", name),
                     nearest.empty() ? _("names of your own must not begin with ZET_")
                                     : Words("did you mean %s?", nearest));
    }
    if (const std::string own = ParameterBehind(placeholder); !own.empty())
        return clash(Words("%s would be %s, which the product makes of %s", name, placeholder, own),
                     Words("set %s, or give it another name", own));
    if (const std::string own = ParameterSpelled(name); !own.empty())
        return clash(Words("the product has the parameter %s", own),
                     _("write it in capital letters, or use another name"));
    const auto known = m_spelled.find(placeholder);
    if (known != m_spelled.end() && known->second.name != name)
        return clash(Words("%s and %s are both %s", name, known->second.name, placeholder),
                     _("use one spelling of the name"));
    return std::nullopt;
}

/// Objects if a value of several lines has this name, too.
std::optional<Problem> HostValues::ClashWithText(const std::string& name) const {
    const auto text = m_textFiles.find(PlaceholderFor(name));
    if (text == m_textFiles.end()) return std::nullopt;
    return Problem{.text = Words("%s is the file %s, too", name, text->second),
                   .remedy = _("keep one of the two")};
}

/// Whether the name can be a placeholder of the host's own. If not, adds the problem.
bool HostValues::CheckName(const GivenParameter& given, bool isShipped) {
    if (IsKnownParameter(given.name)) return true;
    const std::string placeholder = PlaceholderFor(given.name);
    std::optional<Problem> clash = ClashOf(given.name);
    if (clash) {
        m_clashing.insert(placeholder);
    } else {
        m_spelled.emplace(placeholder, given);
        if (!isShipped) clash = ClashWithText(given.name);
    }
    if (clash) AddOf(given, clash->text, clash->remedy);
    return !clash;
}

std::optional<Problem> HostValues::ProblemOfName(const std::string& name) {
    ReadRest();
    if (IsKnownParameter(name)) return std::nullopt;
    const std::optional<Problem> clash = ClashOf(name);
    return clash ? clash : ClashWithText(name);
}

void HostValues::CheckText(const std::string& name, const std::string& file) {
    const std::string placeholder = PlaceholderFor(name);
    const std::string own = ParameterBehind(placeholder);
    const std::string spelled = ParameterSpelled(name);
    if (own.empty() && spelled.empty() && !name.starts_with("zet_")) return;
    m_clashing.insert(placeholder);
    const std::string text = !own.empty()
                                 ? Words("%s is made of the product's parameter %s", placeholder, own)
                             : !spelled.empty() ? Words("the product has the parameter %s", spelled)
                                                : _("names that begin with zet_ are the product's");
    m_problems.push_back({.file = file, .text = text, .remedy = _("give the value another name")});
}

void HostValues::AddOf(const GivenParameter& given, const std::string& text, const std::string& remedy) {
    const std::string file = given.file.empty() ? m_host.Param(kMainFile) : given.file;
    m_problems.push_back({file, given.line, 0, text, remedy});
}

const StringMap& HostValues::Own() {
    if (m_own) return *m_own;
    ReadRest();
    StringMap own;
    for (const GivenParameter& given : m_shipped)
        own[PlaceholderFor(given.name)] = given.value;
    for (const auto& [name, value] : m_host.CoreParams())
        if (!IsKnownParameter(name)) own[PlaceholderFor(name)] = value;
    for (const auto& [placeholder, text] : m_texts)
        own[placeholder] = text;
    std::erase_if(own, [&](const auto& value) {
        const bool isUnread = m_textFiles.contains(value.first) && !m_texts.contains(value.first);
        return isUnread || m_clashing.contains(value.first);
    });
    m_own = std::move(own);
    return *m_own;
}

StringMap HostValues::Params() {
    ReadRest();
    StringMap params = m_host.CoreParams();
    StringMap shipped;
    for (const GivenParameter& given : m_shipped)
        shipped[given.name] = given.value;
    params.merge(shipped);
    return params;
}

std::optional<HostValues::Source> HostValues::SourceOfParam(const std::string& name) {
    ReadRest();
    if (const GivenParameter* const given = FindGiven(m_main, name))
        return Source{m_host.Param(kMainFile), given->line};
    if (const auto below = GivenBelowMain(name)) return Source{below->file, below->line};
    const std::string maker = ParameterThatMakes(name);
    return maker.empty() ? std::nullopt : SourceOfParam(maker);
}

std::optional<GivenParameter> HostValues::GivenBelowMain(const std::string& name) {
    ReadRest();
    for (const auto* source : {&m_fleet, &m_shipped})
        if (const GivenParameter* const given = FindGiven(*source, name)) return *given;
    return std::nullopt;
}

std::optional<HostValues::Source> HostValues::SourceOfPlaceholder(const std::string& placeholder) {
    ReadRest();
    if (const std::string own = ParameterBehind(placeholder); !own.empty()) return SourceOfParam(own);
    if (const auto text = m_textFiles.find(placeholder); text != m_textFiles.end())
        return Source{text->second, 0};
    const auto spelled = m_spelled.find(placeholder);
    return spelled == m_spelled.end() ? std::nullopt : SourceOfParam(spelled->second.name);
}

std::vector<Problem> HostValues::Problems() {
    ReadRest();
    return m_problems;
}

const HostValues::Unread& HostValues::UnreadSources() {
    ReadRest();
    return m_unread;
}

const std::vector<GivenParameter>& HostValues::GivenByMain() {
    ReadRest();
    return m_main;
}

const std::set<std::string>& HostValues::Clashing() {
    ReadRest();
    return m_clashing;
}

const std::map<std::string, std::string>& HostValues::ValueFiles() {
    ReadRest();
    return m_textFiles;
}

std::vector<std::string> HostValues::Files() {
    ReadRest();
    return m_files;
}

}  // namespace ZET::Deploy
