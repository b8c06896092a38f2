#include "deploy/targets/ClaimedFiles.h"

#include <dirent.h>

#include <cerrno>
#include <memory>
#include <set>
#include <string_view>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/targets/Render.h"
#include "posix/PathNames.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

ClaimedFiles::ClaimedFiles(Host& host) : m_host(host) {
    AddOwn(host.FilePath(host.ConfigFile()), _("the configuration file of the commands"));
    m_uses.try_emplace(Canonical(TargetListFile(host)), Use{_("the list of targets"), ""});
    for (const std::string& file : host.Values().Files())
        m_uses.try_emplace(Canonical(file), Use{_("a file of values"), ""});
    for (const std::string& file : host.State().Files())
        AddOwn(file, _("a file of the status"));
}

void ClaimedFiles::AddTemplate(const std::string& name) {
    const std::string copy = WorkingCopy(m_host, name);
    AddOf(name, copy, Words("the working copy of [%s]", name));
    AddOf(name, copy + ZETTemporarySuffix, Words("the temporary file of the working copy of [%s]", name));
    AddOf(name, m_host.Param("ZET_CFG_TEMPL_DIR") + "/" + name, Words("the template [%s]", name));
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
        if (target.path.empty() || !target.IsFor(m_host.Role()) || !target.IsInForce()) continue;
        try {
            AddTemplate(target.templateName);
            if (later.count(target.templateName) == 0) AddTarget(target);
        } catch (const Failure&) {
            // Where its files are cannot be told: whoever wants to write them is told why.
        }
    }
}

std::optional<Problem> ClaimedFiles::AddTarget(const Target& target) {
    return AddTarget(target, m_host.HostPaths().Canonical(target.path));
}

std::optional<Problem> ClaimedFiles::AddTarget(const Target& target, const std::string& file) {
    if (std::optional<Problem> clash = ClashOf(target.templateName)) return clash;
    Uses mine = CompanionsOf(file);
    mine[file] = {Words("made from [%s]", target.templateName), target.templateName};
    KnowBesideOwn(file);
    m_uses.merge(mine);
    if (mine.empty()) return std::nullopt;
    // What could not be merged has another use. The target comes first: its companions have longer names.
    const auto& [path, use] = *mine.begin();
    const Use& other = m_uses.at(path);
    if (!use.templateName.empty() && !other.templateName.empty()) {
        return Problem{path, 0, 0,
                       Words("is made from both [%s] and [%s]", other.templateName, use.templateName),
                       _("give each file to one template")};
    }
    return Problem{path, 0, 0, Words("is %s, and %s too", other.text, use.text),
                   _("give the target another path")};
}

std::string ClaimedFiles::UseBesideTargets(const std::string& path) {
    const std::string file = Canonical(path);
    KnowBesideOwn(file);
    const auto found = m_uses.find(file);
    const bool isFree = found == m_uses.end() || !found->second.templateName.empty();
    return isFree ? "" : found->second.text;
}

/// Of a path as the commands open it: with the root, if there is one.
std::string ClaimedFiles::Canonical(const std::string& path) const {
    return m_host.HostPaths().Canonical(m_host.HostPaths().NameInside(path));
}

/// The same of a file in a directory of templates or of the status, which are many: one listing instead of
/// three looks for each of them. A sixth of the looks of a commit that changes nothing.
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

/// What cannot be listed, or does not tell the kinds of its files, has each of them looked at.
ClaimedFiles::Listing ClaimedFiles::ListingOf(const std::string& directory) const {
    Listing listing;
    listing.path = Canonical(directory);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(listing.path.c_str()), closedir);
    if (!entries) return listing;
    errno = 0;
    while (const dirent* const entry = readdir(entries.get()))
        if (entry->d_type != DT_REG) listing.notPlain.emplace(entry->d_name);
    listing.isListed = errno == 0;
    return listing;
}

void ClaimedFiles::AddOwn(const std::string& path, const std::string& text) {
    const std::string file = CanonicalOfMany(path);
    m_uses.try_emplace(file, Use{text, ""});
    m_own.insert(file);
}

/// Of the names beside the product's own files, which are four for each, most runs ask for none: they have
/// their uses once somebody asks for one of them, or for such a file.
void ClaimedFiles::KnowBesideOwn(std::string_view file) {
    if (const auto own = m_own.find(file); own != m_own.end()) m_uses.merge(CompanionsOf(*own));
    for (const std::string_view suffix : {ZETReserveSuffix, ZETAbsenceSuffix, ZETTemporarySuffix})
        if (file.ends_with(suffix)) KnowBesideOwn(file.substr(0, file.size() - suffix.size()));
}

void ClaimedFiles::AddOf(const std::string& templateName, const std::string& path, const std::string& text) {
    const std::string file = CanonicalOfMany(path);
    KnowBesideOwn(file);
    const auto [known, isNew] = m_uses.try_emplace(file, Use{text, "", templateName});
    if (isNew || known->second.ofTemplate == templateName) return;
    m_clashes.try_emplace(templateName,
                          Problem{file, 0, 0, Words("is %s, and %s too", known->second.text, text),
                                  _("give the template another name")});
}

ClaimedFiles::Uses ClaimedFiles::CompanionsOf(const std::string& file) {
    const std::string reserve = file + ZETReserveSuffix;
    return {{reserve, {Words("the reserve of %s", file), ""}},
            {file + ZETAbsenceSuffix, {Words("the mark that there was no %s", file), ""}},
            {file + ZETTemporarySuffix, {Words("the temporary file of %s", file), ""}},
            {reserve + ZETTemporarySuffix, {Words("the temporary file of %s", reserve), ""}}};
}

}  // namespace ZET::Deploy
