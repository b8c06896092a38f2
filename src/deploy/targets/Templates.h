#ifndef ZET_TEMPLATES_H
#define ZET_TEMPLATES_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "deploy/lists/Targets.h"
#include "deploy/state/Recording.h"
#include "deploy/state/Replacement.h"
#include "deploy/state/Writing.h"
#include "deploy/targets/Deployment.h"
#include "zet/ZETProblem.h"
#include "zet/deploy/FileOutcome.h"

/// Commands about single templates.
namespace ZET::Deploy {

/// Installs the working copies of these templates from the pristine ones, and reports each to the observer.
/// Throws a `Failure` if a copy differs, unless `isForced`, which keeps the differing one beside it, and a
/// `UsageError` for a name that leaves the directory of the templates. Returns whether anything was, or would
/// be, changed.
bool InstallTemplates(Deployment& product, const std::vector<std::string>& names, bool isForced);

/// A template to be rendered by itself.
struct Rendering {
    std::string templateName;
    StringMap values;  ///< by placeholder; they win over the template values
};

/// What keeps the template from being rendered. Warns of values that the template does not use.
std::vector<Problem> CheckRendering(Deployment& product, const Rendering& rendering);

/// The text that the template renders to. The template must have been checked.
std::string RenderedText(Deployment& product, const Rendering& rendering);

/// Renders the template into any file. From the constructor on, nobody else writes. Refuses a file that has
/// another use.
class TemplateProcess {
  public:
    /// With `isForced`, also replaces changes of the file that are kept nowhere, so that without a history
    /// nothing has to be recorded to recognise them.
    TemplateProcess(Deployment& product, const Rendering& rendering, const std::string& target,
                    bool isForced);

    /// The template must have been checked. Returns what became of the file, and of the working copy if that
    /// is installed.
    std::vector<FileOutcome> Run();

  private:
    std::optional<FileOutcome> CopyToInstall() const;
    FileOutcome Planned(const std::string& made, const FileState& after);
    ShownDiff DiffOf(const std::string& before, const std::string& made);
    void JudgeEdits();
    mode_t ModeToGive() const;
    std::optional<FileOwner> OwnerToGive() const;
    const Target* TargetOfFile() const;
    FileOutcome RunInTrial();
    FileOutcome RunInPlace();
    bool IsRecorded() const;
    void Expect(Recording& recording, const FileInPlace& place);

    Deployment& m_product;
    const Rendering& m_rendering;
    std::string m_target;
    std::string m_path;
    const bool m_isForced;
    std::unique_ptr<Writing> m_writing;
};

}  // namespace ZET::Deploy

#endif
