#ifndef ZET_COMMIT_GUARD_H
#define ZET_COMMIT_GUARD_H

#include <optional>
#include <string>
#include <vector>

#include "deploy/edit/FileEdit.h"
#include "deploy/targets/Deployment.h"
#include "deploy/targets/RememberedLines.h"
#include "zet/deploy/EditOptions.h"

namespace ZET::Deploy {

/// What commits of either role wrote in a file, which an edit of it is kept from unless the caller wants it
/// all the same. What wrote it is known by the history, whatever became of the lists.
class CommitGuard {
  public:
    /// For an edit of lines. A `Failure` with the remedy where a commit made the file from a template.
    CommitGuard(Deployment& product, const std::string& path, const EditOptions& options)
        : CommitGuard(product, path, options, Scope::Lines) {}

    /// The same for an edit of the whole file, also where commits have set lines in it.
    static void RequireNoCommit(Deployment& product, const std::string& path, const EditOptions& options);

    /// The same of a command that drops the mark of a file that was not there before: without it, no rollback
    /// removes what a commit made.
    static void RequireNoMark(Deployment& product, const std::string& path, const EditOptions& options);

    /// The same where an edit makes another one of a line that commits have set; null: there are none.
    FileEdit::Inspection OfLines() const;

  private:
    enum class Scope { Lines, WholeFile };

    CommitGuard(Deployment& product, const std::string& path, const EditOptions& options, Scope scope);

    std::optional<KnownFile> CommittedFile() const;
    void RequireNoTarget(const KnownFile& known, Scope scope) const;
    void RequireNoLines() const;
    void RequireKept(const std::string& made) const;
    void RequireTellingLists() const;
    [[noreturn]] void Refuse(const std::string& text, const std::string& remedy) const;

    Deployment& m_product;
    std::string m_path;
    std::vector<RememberedLine> m_lines;
};

}  // namespace ZET::Deploy

#endif
