#include "deploy/targets/TemplateFileCheck.h"

#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Words.h"
#include "deploy/state/Instructions.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/Secrets.h"
#include "deploy/targets/TemplateFiles.h"
#include "posix/ModeBits.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

namespace {

/// A problem says where it is. What it would quote is left out if the template, or a file that gives values,
/// is not for everybody.
void HideQuotes(Deployment& product, const std::string& file, std::vector<Problem>& problems) {
    if (problems.empty()) return;
    Secrets& secrets = product.HostSecrets();
    // A broken list is reported as a problem of its own.
    const auto isHidden = [&](const std::string& path) {
        return secrets.Hides(path) && secrets.Of(path) != Secrets::Audience::Unsure;
    };
    std::string source = product.Param("ZET_CFG");
    for (const std::string& each : product.Values().Files())
        if (!isHidden(source) && Secrets::IsClosed(each)) source = each;
    const bool isTemplateHidden = isHidden(file);
    if (!isTemplateHidden && !isHidden(source)) return;
    const std::string bytes = ReadFileBytes(file);
    for (Problem& problem : problems) {
        if (isTemplateHidden) {
            problem.HideQuoted(secrets.Excuse(file));
        } else if (bytes.find(problem.quoted) == std::string::npos) {
            problem.HideQuoted(secrets.Excuse(source));
        }
    }
}

/// The file as root finds it: one look tells both what it is and whether the way to it is safe. None for
/// other users, and if a link is on the path.
std::optional<FoundFile> FoundByRoot(const Paths& paths, const std::string& path) {
    if (geteuid() != 0) return std::nullopt;
    FoundFile found = paths.FindOpened(path);
    return found.status && !found.isThroughLink ? std::optional(std::move(found)) : std::nullopt;
}

/// None for a link, and for what cannot be looked at.
std::optional<mode_t> ModeOfPlainFile(const std::string& path, const std::optional<FoundFile>& found) {
    struct stat status = {};
    if (found) status = *found->status;
    const bool isPlain = (found || lstat(path.c_str(), &status) == 0) && S_ISREG(status.st_mode);
    return isPlain ? std::optional(status.st_mode & kModeBits) : std::nullopt;
}

/// What keeps root from rendering the file, which is the working copy or stands in for it.
std::optional<Problem> CheckSource(Deployment& product, const std::string& file, const std::string& copy,
                                   const std::optional<FoundFile>& foundCopy) {
    const Paths& paths = product.HostPaths();
    const bool isFound = foundCopy && file == copy;
    std::optional<Problem> problem = isFound ? CheckInstruction(*foundCopy) : CheckInstruction(paths, file);
    // The directory of working copies is judged by itself.
    if (!problem && copy != file && DirectoryOf(copy) != product.Param("ZET_CFG_DIR"))
        problem = CheckInstruction(paths, copy);
    if (problem || paths.StaysInside(file)) return problem;
    return Problem{file, 0, 0, _("the template is a link that leads out of the root directory"),
                   _("put the template itself there")};
}

}  // namespace

CheckedTemplate CheckTemplate(Deployment& product, const std::string& templateName,
                              Text::ValuesToCheck& values) {
    CheckedTemplate checked;
    std::string file = ShippedFile(product, templateName);
    try {
        const std::string copy = WorkingCopy(product, templateName);
        const std::optional<FoundFile> foundCopy = FoundByRoot(product.HostPaths(), copy);
        const std::optional<mode_t> modeOfCopy = ModeOfPlainFile(copy, foundCopy);
        const std::string found = modeOfCopy ? copy : TemplateFile(product, templateName);
        if (found.empty())
            return {.problems = {{file, 0, 0, _("the template is missing"),
                                  _("install it there, or correct its name in the list")}}};
        file = found;
        if (std::optional<Problem> problem = CheckSource(product, file, copy, foundCopy))
            return {.problems = {std::move(*problem)}};
        checked.isWorkingCopy = copy == file;
        checked.modeOfCopy = modeOfCopy;
        const auto read = [&](const auto& take) {
            ReadChunks(file, [&](std::string_view lines) {
                checked.size += lines.size();
                take(lines);
            });
        };
        checked.problems = Text::CheckTemplate(file, read, values, HasNotice(product, templateName));
        HideQuotes(product, file, checked.problems);
    } catch (const Failure& failure) {
        checked.problems = {ProblemOf(file, failure)};
    }
    return checked;
}

std::vector<Problem> CheckTemplateFile(Deployment& product, const std::string& templateName) {
    Text::ValuesToCheck values(product.TemplateValues());
    return CheckTemplate(product, templateName, values).problems;
}

bool CanBeRendered(Deployment& product, const std::string& templateName) {
    return CheckTemplateFile(product, templateName).empty();
}

}  // namespace ZET::Deploy
