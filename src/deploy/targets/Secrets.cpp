#include "deploy/targets/Secrets.h"

#include <sys/stat.h>

#include <algorithm>
#include <new>
#include <string_view>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Words.h"
#include "deploy/lists/HostLists.h"
#include "deploy/state/Host.h"
#include "deploy/targets/FileOrigin.h"
#include "deploy/targets/TemplateFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

constexpr char kClosed[] = ZET_TEXT("the file is not for everybody");
constexpr char kLeftList[] = ZET_TEXT("it was committed, and is in no list any more");

/// Turns the name of a copy, which holds the same text, into the file's. Returns false if it is not one.
bool NameOriginal(std::string& name) {
    for (const std::string_view suffix : {ZETReserveSuffix, ZETTemporarySuffix, kKeptSuffix}) {
        if (!name.ends_with(suffix)) continue;
        name.resize(name.size() - suffix.size());
        return true;
    }
    return false;
}

bool IsAnyClosed(const std::set<std::string>& names) {
    return std::any_of(names.begin(), names.end(),
                       [](const std::string& name) { return Secrets::IsClosed(name); });
}

}  // namespace

Secrets::Secrets(Host& host, HostLists& lists) : m_host(host), m_lists(lists) {}

bool Secrets::Hides(const std::string& path) {
    return !m_host.Wanted().showsSecrets && IsPrivate(path);
}

std::string Secrets::Excuse(const std::string& path) {
    const Verdict& verdict = Judged(path);
    if (verdict.audience == Audience::Unsure && !m_trouble.empty()) {
        m_host.Out().Warning(Words("%s; so no text is shown", m_trouble));
        m_trouble.clear();
    }
    // What a text is made from may be private though the file that it is going to be is not.
    const char* const reason = verdict.audience == Audience::Everybody ? _(kClosed) : verdict.reason;
    return Words("text not shown: %s; --show-secrets shows it", reason);
}

std::string Secrets::ExcuseOfWhatLeftList() {
    return Words("text not shown: %s; --show-secrets shows it", _(kLeftList));
}

void Secrets::RequireShown(const std::string& path) {
    if (m_host.Wanted().showsSecrets || Of(path) != Audience::Nobody) return;
    throw Failure({.file = path,
                   .text = Words("its text is not shown: %s", Judged(path).reason),
                   .remedy = _("--show-secrets shows it")});
}

void Secrets::Wrote(const std::string& path) {
    if (!m_listed || !m_listed->HasLooked()) return;
    try {
        for (const std::string& name : NamesOfText(path))
            m_listed->Wrote(name);
    } catch (const Failure&) {
        m_listed.reset();  // all are looked at again for the next question
    }
}

bool Secrets::IsClosed(const FileState& state) {
    return state.IsRegular() && (state.mode & S_IROTH) == 0;
}

bool Secrets::IsClosed(const std::string& file) {
    struct stat status = {};
    if (stat(file.c_str(), &status) == 0) return S_ISREG(status.st_mode) && (status.st_mode & S_IROTH) == 0;
    return IsClosed(StateOf(file));  // throws the reason if nobody can tell
}

/// A verdict stays: what a command makes of a private file is no less private.
const Secrets::Verdict& Secrets::Judged(const std::string& path) {
    const auto known = m_verdicts.find(path);
    return known != m_verdicts.end() ? known->second : m_verdicts.emplace(path, Judge(path)).first->second;
}

Secrets::Verdict Secrets::Judge(const std::string& path) {
    bool isClosed = false;
    try {
        std::set<std::string> names = NamesOfText(path);
        isClosed = IsAnyClosed(names);
        RequireReliableList();
        if (HasLeftList(names)) return {Audience::Nobody, _(kLeftList)};
        const std::set<std::string> templates = NamesOfTemplates(path);
        isClosed = isClosed || IsAnyClosed(templates);
        if (IsListed(names) || IsListed(templates) || IsCopyOfListed(path))
            return {Audience::Nobody, _("the list of targets calls it secret")};
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        m_trouble = error.what();
        if (!isClosed) return {Audience::Unsure, _("nobody can tell whether it is secret")};
    }
    return isClosed ? Verdict{Audience::Readers, _(kClosed)} : Verdict{Audience::Everybody, ""};
}

void Secrets::RequireReliableList() {
    const TargetList& list = m_lists.Targets();
    if (list.problems.empty()) return;
    throw Failure(
        {.file = list.file, .text = _("the list of targets is broken"), .remedy = _("see check-config")});
}

/// The names of the file, and of those that it may be a copy of.
std::set<std::string> Secrets::NamesOfText(const std::string& path) const {
    std::string name = m_lists.NameOf(path);
    std::set<std::string> names;
    do {
        names.insert(name);
    } while (NameOriginal(name));
    return names;
}

/// The templates from which the file, its reserve, or what it is a copy of, says that it was made.
std::set<std::string> Secrets::NamesOfTemplates(const std::string& path) {
    std::set<std::string> files = NamesOfText(path);
    files.insert(m_lists.NameOf(path + ZETReserveSuffix));
    std::set<std::string> names;
    for (const std::string& file : files) {
        const std::string named = TemplateNamedIn(m_host.Core(), file);
        if (!named.empty()) names.insert(m_lists.NameOf(named));
    }
    return names;
}

bool Secrets::HasLeftList(const std::set<std::string>& names) {
    return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
        return m_lists.HasLeft(name) || IsTemplateThatLeftList(name);
    });
}

/// Whether it is the working copy or the pristine template of a target that no list has any more, even if the
/// target is gone.
bool Secrets::IsTemplateThatLeftList(const std::string& name) {
    for (const char* const directory : {"ZET_CFG_DIR", "ZET_CFG_TEMPL_DIR"}) {
        const std::string place = m_lists.NameOf(m_host.Param(directory)) + "/";
        if (!name.starts_with(place)) continue;
        const std::string templateName = name.substr(place.size());
        if (m_lists.EntryOf(templateName) == nullptr && m_lists.WasCommittedBy(templateName)) return true;
    }
    return false;
}

bool Secrets::IsListed(const std::set<std::string>& names) {
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& name) { return Listed().IsOf(name); });
}

bool Secrets::IsCopyOfListed(const std::string& path) {
    return !Listed().IsEmpty() && Listed().IsIn(m_lists.NameOf(path));
}

/// The targets that the list calls secret, with their working copies and pristine templates.
SecretTexts& Secrets::Listed() {
    if (m_listed) return *m_listed;
    std::set<std::string> listed;
    for (const Target& target : m_lists.Targets().targets) {
        if (!target.isSecret) continue;
        const std::string pristine = ShippedFile(m_host, target.templateName);
        for (const std::string& file : {target.path, WorkingCopy(m_host, target.templateName), pristine})
            listed.insert(m_lists.NameOf(file));
    }
    return m_listed.emplace(std::move(listed));
}

}  // namespace ZET::Deploy
