#include "deploy/edit/CommitGuard.h"

#include <algorithm>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Words.h"
#include "deploy/lists/HostLists.h"
#include "deploy/state/LostOriginal.h"
#include "deploy/targets/EditRules.h"
#include "deploy/targets/LinesInPlace.h"
#include "deploy/targets/TemplateFiles.h"
#include "text/ShellWord.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

/// Why the lists do not tell all; empty: they do.
std::string TroubleOfLists(Host& host) {
    try {
        for (const Problem& problem : ReadTargetList(host).problems)
            if (!problem.isOfUser) return problem.Describe();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "";
}

/// The lines of a file that an edit of the lists is about, wherever they stand.
std::vector<std::pair<std::string, bool>> SelectedLinesOf(const RememberedLine& edit,
                                                          const std::vector<LineInPlace>& places,
                                                          IZETCore& core) {
    const std::string pattern = edit.Pattern();
    std::vector<std::pair<std::string, bool>> lines;
    for (const LineInPlace& place : places)
        if (Selects(core, pattern, place.text)) lines.emplace_back(place.text, place.isInBlock);
    return lines;
}

/// The command that takes the file back, which is that of a role that has it.
std::string WordsOfRollback(const Host& host, const std::string& path, const KnownFile& known,
                            const std::string& command = "rollback-config ") {
    const std::string words = command + Text::ShellWord(host.HostPaths().NameInside(path));
    const std::set<Role>& roles = known.state.knowledge.roles;
    if (roles.contains(host.Role())) return words;
    return ProgramOf(OtherRole(host.Role())) + (" " + words);
}

}  // namespace

CommitGuard::CommitGuard(Deployment& product, const std::string& path, const EditOptions& options,
                         Scope scope)
    : m_product(product), m_path(path) {
    if (options.force) return;
    const std::optional<KnownFile> known = CommittedFile();
    if (!known) return;
    if (known->state.knowledge.IsCommitted()) RequireNoTarget(*known, scope);
    m_lines = LinesSetIn(*product.HostHistory().ToLook(), known->kind, known->state.knowledge);
}

void CommitGuard::RequireNoCommit(Deployment& product, const std::string& path, const EditOptions& options) {
    CommitGuard(product, path, options, Scope::WholeFile).RequireNoLines();
}

/// Without a history that can be used, nobody can tell: who goes back needs none.
void CommitGuard::RequireNoMark(Deployment& product, const std::string& path, const EditOptions& options) {
    if (options.force) return;
    std::optional<KnownFile> known;
    try {
        known = product.Lists().CommittedFile(product.Lists().NameOf(path));
    } catch (const Failure&) {
        return;
    }
    if (!known || !known->state.knowledge.IsCommitted()) return;
    throw Failure({.file = path,
                   .text = _("was made by a commit, and there was no such file before"),
                   .remedy = Words("take it back with \"%s\", or use --force",
                                   WordsOfRollback(product, path, *known))});
}

/// Without a history that can be used, nobody can tell; the edit keeps its reserve.
std::optional<KnownFile> CommitGuard::CommittedFile() const {
    try {
        return m_product.Lists().CommittedFile(m_product.Lists().NameOf(m_path));
    } catch (const Failure& failure) {
        m_product.Out().Warning(
            Words("%s; so nobody can tell whether the next commit overwrites %s", failure.what(), m_path));
        return std::nullopt;
    }
}

void CommitGuard::RequireNoTarget(const KnownFile& known, Scope scope) const {
    HostLists& lists = m_product.Lists();
    const Target* const target = lists.IsUsable() ? lists.TargetOf(m_path) : nullptr;
    if (target == nullptr) {
        RequireTellingLists();
        const std::string remedy =
            IsOriginalLost(m_product, m_path)
                ? Words(
                      "put it into the lists again, give up what was there before with \"%s\", or use "
                      "--force",
                      WordsOfRollback(m_product, m_path, known, "rollback-config --force "))
                : Words("put it into the lists again, take it back with \"%s\", or use --force",
                        WordsOfRollback(m_product, m_path, known));
        Refuse(_("was made by a commit, and no list has it any more"), remedy);
    }
    const std::set<Role>& roles = known.state.knowledge.roles;
    const bool isInForce =
        std::any_of(roles.begin(), roles.end(), [&](Role role) { return target->IsInForceFor(role); });
    if (!isInForce)
        Refuse(Words("was made from [%s], which is not in force any more: the next commit takes it back",
                     target->templateName),
               _("commit first, or use --force"));
    // Markers, and a notice that is gone, are not of the template, and "adopt" refuses them.
    const bool canBeAdopted = scope == Scope::Lines && IsFileExist(m_path);
    Refuse(Words("is made from [%s] and the next commit overwrites it", target->templateName),
           Words(canBeAdopted
                     ? ZET_TEXT("edit %s and commit, or use --force --no-markers and \"adopt\" the file")
                     : ZET_TEXT("edit %s and commit, or use --force"),
                 WorkingCopy(m_product, target->templateName)));
}

void CommitGuard::RequireTellingLists() const {
    const std::string trouble = TroubleOfLists(m_product);
    if (trouble.empty()) return;
    const std::string words =
        Words("%s; so nobody can tell whether the next commit overwrites %s (--force edits it all the same)",
              trouble, m_path);
    throw Failure(words, {.file = m_path, .text = words});
}

void CommitGuard::RequireNoLines() const {
    if (m_lines.empty()) return;
    RequireTellingLists();
    for (const RememberedLine& line : m_lines)
        if (const ListedEdit* const edit = EntryOf(m_product, m_path, line))
            Refuse(
                _("has lines that the lists set, and the next commit sets them again"),
                Words("edit %s and commit, or use --force", edit->file + ":" + std::to_string(edit->line)));
    Refuse(_("has lines that a commit set, and the next one takes them back"),
           _("commit first, or use --force"));
}

FileEdit::Inspection CommitGuard::OfLines() const {
    if (m_lines.empty()) return nullptr;
    return [this](const std::string& made) { RequireKept(made); };
}

void CommitGuard::RequireKept(const std::string& made) const {
    const std::vector<LineInPlace> before = LinesIn(Text::ManagedText(ReadFileBytes(m_path)));
    const std::vector<LineInPlace> after = LinesIn(Text::ManagedText(ReadFileBytes(made)));
    for (const RememberedLine& line : m_lines) {
        if (SelectedLinesOf(line, before, m_product.Core()) == SelectedLinesOf(line, after, m_product.Core()))
            continue;
        RequireTellingLists();
        const ListedEdit* const edit = EntryOf(m_product, m_path, line);
        if (edit == nullptr)
            Refuse(Words("its line %s was set by a commit, and the next one takes it back", line.Chosen()),
                   _("commit first, or use --force"));
        Refuse(Words("its line %s is set by the lists, and the next commit sets it again", line.Chosen()),
               Words("edit %s and commit, or use --force", edit->file + ":" + std::to_string(edit->line)));
    }
}

void CommitGuard::Refuse(const std::string& text, const std::string& remedy) const {
    throw Failure({.file = m_path, .text = text, .remedy = remedy});
}

}  // namespace ZET::Deploy
