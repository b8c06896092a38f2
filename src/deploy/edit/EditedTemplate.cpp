#include "deploy/edit/EditedTemplate.h"

#include <functional>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Process.h"
#include "deploy/host/StagedFile.h"
#include "deploy/host/Words.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/Secrets.h"
#include "deploy/targets/TemplateFiles.h"
#include "text/Adoption.h"
#include "text/Joined.h"
#include "text/Lines.h"
#include "text/ManagedText.h"
#include "text/TemplateCheck.h"

namespace ZET::Deploy {

namespace {

/// The number of lines, at the beginning of a rendered text, that the module's notice takes.
std::size_t LengthOfNotice(const Text::ManagedText& text) {
    const bool hasNotice = text.LineCount() > 0 && text.RegionOf(1).kind == Text::RegionKind::Notice;
    return hasNotice ? text.RegionOf(1).last : 0;
}

std::string WithoutNotice(std::string_view text, std::size_t lengthOfNotice) {
    for (std::size_t i = 0; i < lengthOfNotice && !text.empty(); ++i)
        Text::TakeLine(text);
    return std::string(text);
}

void RequireSameNotice(const EditedTarget& target, const std::string& rendered, const std::string& edited,
                       const std::string& before, const std::string& after) {
    const std::size_t length = rendered.size() - before.size();
    if (edited.size() - after.size() == length && edited.compare(0, length, rendered, 0, length) == 0) return;
    throw Failure({.file = target.path,
                   .text = _("its notice was changed, too, which is not of the template"),
                   .remedy = _("put the notice back as it was")});
}

/// Their block would be in every file that is made from the template.
void RequireNoMarkers(const EditedTarget& target, const std::string& edited) {
    const Text::ManagedText text(edited);
    for (const Text::ManagedRegion& region : text.Regions()) {
        const bool isBlock = region.kind == Text::RegionKind::Block && region.isClosed;
        if (!isBlock && region.kind != Text::RegionKind::FormerLine) continue;
        throw Failure({.file = target.path,
                       .line = static_cast<int>(region.first),
                       .text = _("holds markers of an edit, which are not of the template"),
                       .remedy = _("make the edit with --no-markers, or take the markers and the kept former "
                                   "lines out")});
    }
}

std::vector<Text::Hunk> HunksBetween(const Staging& staging, const EditedTarget& target,
                                     const std::string& before, const std::string& after) {
    constexpr mode_t kPrivate = 0600;
    const std::string oldFile = staging.PathOf("before");
    const std::string newFile = staging.PathOf("after");
    WriteStagedFile(oldFile, before, kPrivate);
    WriteStagedFile(newFile, after, kPrivate);
    const ProcessResult result =
        RunProcess({"diff", "-a", "--", oldFile, newFile}, {.environment = {"LC_ALL=C"}});
    const auto hunks = result.status > 1 ? std::nullopt : Text::HunksOf(result.output);
    if (!hunks) FailToTrace(target);
    return *hunks;
}

[[noreturn]] void Refuse(const EditedTarget& target, const std::vector<Text::UnadoptableLine>& lines,
                         std::size_t linesBefore) {
    std::vector<Problem> problems;
    for (const Text::UnadoptableLine& line : lines) {
        const std::string names = Text::Joined(line.placeholders, ", ");
        problems.push_back(
            {.file = target.path,
             .line = static_cast<int>(line.line + linesBefore),
             .text = Words("the value of %s does not stand in it, or in more than one way", names),
             .remedy = Words("change the parameter, or edit %s by hand", target.workingCopy)});
    }
    throw Failure(WithOthersBelow(problems));
}

/// Refuses, before anything is rendered, a text that the module would never return from or that the next
/// commit would refuse.
void RequireGoodTemplate(Deployment& product, const EditedTarget& target, const std::string& text) {
    const auto lines = [&](const std::function<void(std::string_view)>& take) {
        for (std::string_view rest = text; !rest.empty();)
            take(Text::TakeLine(rest).text);
    };
    std::vector<Problem> problems = Text::CheckTemplate(target.workingCopy, lines, product.TemplateValues(),
                                                        nullptr, HasNotice(product, target.templateName));
    if (problems.empty()) return;
    Problem& first = problems.front();
    Secrets& secrets = product.HostSecrets();
    if (secrets.Hides(target.path)) first.HideQuoted(secrets.Excuse(target.path));
    throw Failure({.file = target.path,
                   .text = Words("its edit makes no template that can be committed: %s", first.text),
                   .remedy = Words("take that out, or edit %s by hand", target.workingCopy)});
}

}  // namespace

void FailToTrace(const EditedTarget& target) {
    throw Failure({.file = target.path,
                   .text = _("no template can be told from which it would be made"),
                   .remedy = Words("edit %s by hand, and commit", target.workingCopy)});
}

std::string TemplateWithEdit(Deployment& product, const Staging& staging, const EditedTarget& target,
                             const std::string& rendered, const std::string& edited) {
    const std::size_t notice = LengthOfNotice(Text::ManagedText(rendered));
    const std::string before = WithoutNotice(rendered, notice);
    const std::string after = WithoutNotice(edited, notice);
    RequireSameNotice(target, rendered, edited, before, after);
    RequireNoMarkers(target, edited);
    const Text::Adoption adoption =
        Text::AdoptEdit(ReadFileBytes(TemplateFile(product, target.templateName)), before, after,
                        HunksBetween(staging, target, before, after), product.TemplateValues());
    if (!adoption.isTraceable) FailToTrace(target);
    if (!adoption.refused.empty()) Refuse(target, adoption.refused, notice);
    RequireGoodTemplate(product, target, adoption.templateText);
    return adoption.templateText;
}

}  // namespace ZET::Deploy
