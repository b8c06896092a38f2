#include "deploy/targets/ClaimedFiles.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/targets/TemplateFiles.h"
#include "posix/DirectoryStream.h"
#include "posix/PathNames.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

constexpr char kTemporary[] = ZET_TEXT("the temporary file of %s");
constexpr char kValues[] = ZET_TEXT("a file of values");
constexpr char kShipped[] = ZET_TEXT("the template [%s]");
constexpr char kWorkingCopy[] = ZET_TEXT("the working copy of [%s]");
constexpr char kKept[] = ZET_TEXT("the kept working copy of [%s]");

struct Companion {
    std::string suffix;
    const char* use;
    std::size_t suffixSize;  ///< of what follows the name that `use` mentions
};

/// Sorted by suffix.
const std::vector<Companion>& CompanionsOfFiles() {
    const std::string reserve = ZETReserveSuffix;
    const std::string absence = ZETAbsenceSuffix;
    const std::string temporary = ZETTemporarySuffix;
    static const std::vector<Companion> companions = {
        {reserve, ZET_TEXT("the reserve of %s"), reserve.size()},
        {reserve + temporary, kTemporary, temporary.size()},
        {absence, ZET_TEXT("the mark that there was no %s"), absence.size()},
        {temporary, kTemporary, temporary.size()}};
    return companions;
}

bool MayBeCompanion(const std::string& file) {
    const auto& suffixes = CompanionsOfFiles();
    return std::any_of(suffixes.begin(), suffixes.end(),
                       [&](const Companion& each) { return file.ends_with(each.suffix); });
}

}  // namespace

std::string ClaimedFiles::Use::TextOf(const std::string& path) const {
    if (suffixSize > 0) return Words(text, path.substr(0, path.size() - suffixSize));
    if (!templateName.empty()) return Words(text, templateName);
    return ofTemplate.empty() ? _(text) : Words(text, ofTemplate);
}

ClaimedFiles::ClaimedFiles(Host& host) : m_host(host) {
    AddOwn(host.FilePath(host.ConfigFile()), ZET_TEXT("the configuration file of the commands"));
    m_uses.try_emplace(Canonical(TargetListFile(host)), Use{ZET_TEXT("the list of targets")});
    for (const std::string& file : host.Values().Files())
        m_uses.try_emplace(Canonical(file), Use{kValues});
    for (const std::string& file : host.State().Files())
        AddOwn(file, ZET_TEXT("a file of the status"));
}

void ClaimedFiles::AddTemplate(const std::string& name) {
    const std::string copy = WorkingCopy(m_host, name);
    AddOf(name, copy, kWorkingCopy);
    AddOf(name, copy + ZETTemporarySuffix, ZET_TEXT("the temporary file of the working copy of [%s]"));
    AddOf(name, ShippedFile(m_host, name), kShipped);
}

std::optional<Problem> ClaimedFiles::ClashOf(const std::string& templateName) const {
    const auto found = m_clashes.find(templateName);
    return found == m_clashes.end() ? std::nullopt : std::optional<Problem>(found->second);
}

void ClaimedFiles::AddListed(const std::vector<Target>& listed, const std::vector<Target>& notYet) {
    std::set<std::string> later;
    for (const Target& target : notYet)
        later.insert(target.templateName);
    for (const Target& target : listed) {
        if (target.path.empty() || !target.IsInForceFor(m_host.Role())) continue;
        try {
            AddTemplate(target.templateName);
            if (later.count(target.templateName) == 0) AddTarget(target);
        } catch (const Failure&) {
            // Whoever wants to write this target's files gets the reason.
        }
    }
}

void ClaimedFiles::AddTargetsOfOtherRole(const std::vector<Target>& listed) {
    for (const Target& target : listed) {
        if (target.path.empty() || !target.IsInForce() || target.IsFor(m_host.Role())) continue;
        try {
            AddTarget(target);
        } catch (const Failure&) {
            // The other role's check reports it.
        }
    }
}

/// Only a file with a companion's suffix can stand beside a target, and finding out where a target is takes
/// two system calls.
void ClaimedFiles::AddListedBeside(const std::string& path, const std::vector<Target>& listed) {
    const std::string file = Canonical(path);
    AddListed(listed, MayBeCompanion(file) ? std::vector<Target>() : listed);
}

std::optional<Problem> ClaimedFiles::AddTarget(const Target& target) {
    return AddTarget(target, m_host.HostPaths().Canonical(target.path));
}

std::optional<Problem> ClaimedFiles::AddTarget(const Target& target, const std::string& file) {
    if (std::optional<Problem> clash = ClashOf(target.templateName)) return clash;
    AddRead(file);
    std::optional<Problem> problem = Claim(file, {ZET_TEXT("made from [%s]"), target.templateName});
    for (const Companion& companion : CompanionsOfFiles()) {
        std::optional<Problem> ofCompanion =
            Claim(file + companion.suffix, {.text = companion.use, .suffixSize = companion.suffixSize});
        if (!problem) problem = std::move(ofCompanion);
    }
    return problem;
}

/// Returns a problem if the file has another use: then nothing is moved.
std::optional<Problem> ClaimedFiles::Claim(std::string path, Use use) {
    const auto [known, isNew] = m_uses.try_emplace(std::move(path), std::move(use));
    if (isNew) return std::nullopt;
    const Use& other = known->second;
    if (!use.templateName.empty() && !other.templateName.empty()) {
        return Problem{path, 0, 0,
                       Words("is made from both [%s] and [%s]", other.templateName, use.templateName),
                       _("give each file to one template")};
    }
    return Problem{path, 0, 0, Words("is %s, and %s too", other.TextOf(path), use.TextOf(path)),
                   _("give the target another path")};
}

std::string ClaimedFiles::UseBesideTargets(const std::string& path) const {
    const auto found = m_uses.find(Canonical(path));
    const bool isFree = found == m_uses.end() || !found->second.templateName.empty();
    return isFree ? "" : found->second.TextOf(found->first);
}

/// `path` is as the commands open it: with the root, if there is one.
std::string ClaimedFiles::Canonical(const std::string& path) const {
    return m_host.HostPaths().Canonical(m_host.HostPaths().NameInside(path));
}

/// The same for a file in a directory of templates, which are many: one listing replaces three looks at each
/// of them. Saves a sixth of the looks of a commit that changes nothing.
std::string ClaimedFiles::CanonicalOfMany(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos || slash == 0) return Canonical(path);
    const std::string_view directory(path.data(), slash);
    const std::string_view name = std::string_view(path).substr(slash + 1);
    auto listing = m_listings.find(directory);
    if (listing == m_listings.end())
        listing = m_listings.emplace(directory, ListingOf(std::string(directory))).first;
    const bool isPlain =
        listing->second.isListed && !name.empty() && !listing->second.notPlain.contains(name);
    return isPlain ? PathIn(listing->second.path, name) : Canonical(path);
}

/// If the directory cannot be listed, or does not tell the kinds of its files, each of them is looked at.
ClaimedFiles::Listing ClaimedFiles::ListingOf(const std::string& directory) const {
    Listing listing;
    listing.path = Canonical(directory);
    const DirectoryStream entries(opendir(listing.path.c_str()));
    if (!entries) return listing;
    errno = 0;
    while (const dirent* const entry = readdir(entries.get()))
        if (entry->d_type != DT_REG) listing.notPlain.emplace(entry->d_name);
    listing.isListed = errno == 0;
    return listing;
}

/// The same for one of the product's own files. Others beside it are not looked at, which took 70 ms where
/// there were 100,000.
std::string ClaimedFiles::CanonicalOfOwn(const std::string& path) {
    const std::string directory = DirectoryOf(path) + "/";  // the slash lets the root of a tree be recognised
    auto known = m_ownDirectories.find(directory);
    if (known == m_ownDirectories.end())
        known = m_ownDirectories.emplace(directory, Canonical(directory)).first;
    const std::string file = PathIn(known->second, BaseNameOf(path));
    struct stat status = {};
    const bool isPlain = lstat(file.c_str(), &status) == 0 ? S_ISREG(status.st_mode) : errno == ENOENT;
    return isPlain ? file : Canonical(path);
}

void ClaimedFiles::AddOwn(const std::string& path, const char* text) {
    const std::string file = CanonicalOfOwn(path);
    m_uses.try_emplace(file, Use{text});
    for (const Companion& companion : CompanionsOfFiles())
        m_uses.try_emplace(file + companion.suffix,
                           Use{.text = companion.use, .suffixSize = companion.suffixSize});
}

/// Claims a file that the product would read, whether it is there yet or not.
void ClaimedFiles::AddRead(const std::string& file) {
    if (std::optional<Use> use = ReadAs(file)) m_uses.try_emplace(file, std::move(*use));
}

std::optional<ClaimedFiles::Use> ClaimedFiles::ReadAs(const std::string& file) {
    const std::string directory = DirectoryOf(file);
    const std::string name = BaseNameOf(file);
    for (const ReadDirectory& read : ReadDirectories())
        if (directory == read.path && name.ends_with(read.suffix) && !name.starts_with('.'))
            return Use{read.text};
    if (directory == m_shippedDirectory && !MayBeCompanion(name))
        return name == "values.conf" ? Use{kValues} : Use{.text = kShipped, .ofTemplate = name};
    if (!name.ends_with(kKeptSuffix)) return std::nullopt;
    const auto copy =
        m_uses.find(Canonical(file.substr(0, file.size() - std::string_view(kKeptSuffix).size())));
    const bool isOfCopy = copy != m_uses.end() && copy->second.text == kWorkingCopy;
    return isOfCopy ? std::optional(Use{.text = kKept, .ofTemplate = copy->second.ofTemplate}) : std::nullopt;
}

const std::vector<ClaimedFiles::ReadDirectory>& ClaimedFiles::ReadDirectories() {
    if (!m_readDirectories.empty()) return m_readDirectories;
    m_shippedDirectory = Canonical(m_host.Param("ZET_CFG_TEMPL_DIR"));
    const std::string own = m_host.Param("ZET_CFG_DIR");
    m_readDirectories = {{Canonical(own + "/values.d"), "", kValues},
                         {Canonical(own + "/defaults.d"), ".conf", kValues},
                         {Canonical(own + "/targets.d"), ".toml", ZET_TEXT("a list of targets")}};
    return m_readDirectories;
}

void ClaimedFiles::AddOf(const std::string& templateName, const std::string& path, const char* text) {
    std::string file = CanonicalOfMany(path);
    Use use{.text = text, .ofTemplate = templateName};
    const auto [known, isNew] = m_uses.try_emplace(std::move(file), std::move(use));
    if (isNew || known->second.ofTemplate == templateName) return;
    m_clashes.try_emplace(
        templateName,
        Problem{file, 0, 0, Words("is %s, and %s too", known->second.TextOf(file), use.TextOf(file)),
                _("give the template another name")});
}

}  // namespace ZET::Deploy
