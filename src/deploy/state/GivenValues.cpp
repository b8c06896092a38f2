#include "deploy/state/GivenValues.h"

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

namespace ZET::Deploy {

namespace {

constexpr char kOwnDirectory[] = "ZET_CFG_DIR";

bool IsValueName(const std::string& name) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz_";
    return kLetters.find(name.front()) != std::string_view::npos &&
           name.find_first_not_of(std::string(kLetters) + "0123456789") == std::string::npos;
}

}  // namespace

bool LeadsToFleet(const std::string& name) {
    return name == kMainFile || name == kOwnDirectory;
}

void GivenValuesReader::ReadFleet() {
    const Paths& paths = m_host.HostPaths();
    const std::string named = paths.FromInside(m_host.Param(kOwnDirectory));
    const std::string directory = paths.Resolved(m_host.Param(kOwnDirectory));
    try {
        if (directory != named) RequireWayTo(paths, named);
        for (const std::string& name : NamesInOwn(directory + "/defaults.d", ".conf")) {
            for (GivenParameter& given : ReadConf(directory + "/defaults.d/" + name))
                m_given.fleet.push_back(std::move(given));
        }
    } catch (const Failure& failure) {
        Miss(m_given.unread.params, failure.Facts());
    }
}

void GivenValuesReader::ReadMain() {
    const std::string main = m_host.Param(kMainFile);
    if (!main.empty()) m_given.main = GivenIn(main);
}

void GivenValuesReader::ReadShipped() {
    const std::string file = m_host.Param("ZET_CFG_TEMPL_DIR") + "/values.conf";
    try {
        if (RemedyErrors("", [&] { return IsFileExist(file); })) m_given.shipped = ReadConf(file);
    } catch (const Failure& failure) {
        Miss(m_given.unread.params, failure.Facts());
    }
}

void GivenValuesReader::ReadTexts() {
    const std::string directory = m_host.Param(kOwnDirectory) + "/values.d";
    try {
        for (const std::string& name : NamesInOwn(directory, ""))
            TakeText(name, directory + "/" + name);
    } catch (const Failure& failure) {
        Miss(m_given.unread.texts, failure.Facts());
    }
}

void GivenValuesReader::TakeText(const std::string& name, const std::string& file) {
    m_given.files.push_back(file);
    if (!IsValueName(name)) {
        m_given.problems.push_back(
            {.file = file,
             .text = Words("\"%s\" is no name of a value", name),
             .remedy = _("use small letters, digits and \"_\", no digit first; or move it away")});
        return;
    }
    const std::string placeholder = PlaceholderFor(name);
    m_given.textFiles.emplace(placeholder, file);
    if (std::optional<std::string> text = ReadText(file))
        m_given.texts.emplace(placeholder, std::move(*text));
}

void GivenValuesReader::Miss(std::vector<Problem>& unread, const Problem& problem) {
    unread.push_back(problem);
    m_given.problems.push_back(problem);
}

/// Lists the directory itself, too: whoever may write an empty one can also give the host values.
std::vector<std::string> GivenValuesReader::NamesInOwn(const std::string& directory,
                                                       const std::string& suffix) {
    std::vector<std::string> names = NamesIn(m_host.HostPaths(), directory, suffix);
    if (StateOf(directory).exists) m_given.files.push_back(directory);
    return names;
}

std::vector<GivenParameter> GivenValuesReader::ReadConf(const std::string& file) {
    m_given.files.push_back(file);
    try {
        ConfFile conf = ReadConfText(file, ReadInside(m_host.HostPaths(), file));
        Append(m_given.problems, std::move(conf.problems));
        return std::move(conf.given);
    } catch (const Failure& failure) {
        Miss(m_given.unread.params, ProblemOf(file, failure));
        return {};
    }
}

/// The last line feed does not belong to the value.
std::optional<std::string> GivenValuesReader::ReadText(const std::string& file) {
    try {
        std::string text = ReadInside(m_host.HostPaths(), file);
        if (text.find('\0') != std::string::npos)
            throw Failure({.file = file, .text = _("holds a NUL byte"), .remedy = _("take it out")});
        if (text.ends_with('\n')) text.pop_back();
        return text;
    } catch (const Failure& failure) {
        Miss(m_given.unread.texts, ProblemOf(file, failure));
        return std::nullopt;
    }
}

}  // namespace ZET::Deploy
