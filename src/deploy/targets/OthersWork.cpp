#include "deploy/targets/OthersWork.h"

#include <string>

#include "deploy/host/Words.h"
#include "deploy/state/LostOriginal.h"
#include "deploy/state/LostText.h"
#include "deploy/targets/TemplateFiles.h"
#include "deploy/targets/TemplateStates.h"
#include "text/ShellWord.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

std::string FateOfTarget(const PlannedLines& planned, bool isDryRun) {
    const char* const fate =
        isDryRun ? ZET_TEXT("%s; the edits would be overwritten") : ZET_TEXT("%s; the edits are overwritten");
    return Words(fate, planned.DescribeOthersWork());
}

std::string FateOfOthersWork(const PlannedTarget& planned, bool isDryRun) {
    if (!planned.before.exists) return DescribeOthersWork(planned);
    constexpr const char* kFates[2][2][2] = {
        {{ZET_TEXT("%s; they are overwritten"), ZET_TEXT("%s; they would be overwritten")},
         {ZET_TEXT("%s; they are merged"), ZET_TEXT("%s; they would be merged")}},
        {{ZET_TEXT("%s; the edits are overwritten"), ZET_TEXT("%s; the edits would be overwritten")},
         {ZET_TEXT("%s; the edits are merged"), ZET_TEXT("%s; the edits would be merged")}}};
    const bool isEdited = planned.foundAs == FoundAs::Edited;
    const char* const fate = kFates[isEdited ? 1 : 0][planned.isMerged ? 1 : 0][isDryRun ? 1 : 0];
    return Words(fate, DescribeOthersWork(planned));
}

/// Whether the working copy holds somebody's edits. One that cannot be read counts as holding none.
bool HoldsEdits(Host& host, const TemplateFiles& files) {
    try {
        if (!IsFileExist(files.workingCopy)) return false;
        const TemplateTexts texts = ReadTexts(host, files);
        return texts.IsEdited() || !texts.IsKnown();
    } catch (const Failure&) {
        return false;
    }
}

/// A real run reports the loss when it is done.
void TellLossToCome(Host& host, const std::string& path, const FileVersion& version) {
    if (host.Wanted().dryRun)
        WarnOfLostText(host, host.HostPaths().NameInside(path), static_cast<std::uint64_t>(version.size));
}

}  // namespace

std::string DescribeOthersWork(const PlannedTarget& planned) {
    if (!planned.before.exists) return _("was removed since the last commit");
    if (planned.foundAs == FoundAs::Edited) return _("was edited since the last commit");
    return planned.DropsMerge() ? _("holds edits that an earlier commit merged")
                                : _("holds changes that are kept nowhere");
}

void WarnOfOthersWork(Host& host, const PlannedTarget& planned) {
    if (planned.before.links > 1 && planned.IsChange()) {
        host.Out().Warning(Words("%s: has %s names (hard links); the others keep the former text",
                                 planned.path, std::to_string(planned.before.links)));
    }
    if (planned.isOriginalLost) WarnOfLostOriginal(host, planned.path);
    if (!planned.IsOthersWork()) return;
    const std::string text = planned.path + ": " + FateOfOthersWork(planned, host.Wanted().dryRun);
    if (planned.isMerged) return host.Out().Remark(text);
    host.Out().Warning(text);
    if (planned.before.exists && planned.hasCompanion) TellLossToCome(host, planned.path, planned.version);
}

void WarnOfOthersWork(Host& host, const PlannedLines& planned) {
    if (planned.isOriginalLost) WarnOfLostOriginal(host, planned.file.path);
    if (planned.isMerged) {
        host.Out().Remark(
            host.Wanted().dryRun
                ? Words("%s: a line that the last commit set was changed since; it would stay",
                        planned.Place())
                : Words("%s: a line that the last commit set was changed since; it stays", planned.Place()));
    }
    if (!planned.isEdited) return;
    const std::string& path = planned.file.path;
    if (planned.file.original)
        host.Out().Warning(path + ": " + FateOfTarget(planned, host.Wanted().dryRun));
    else if (host.Wanted().dryRun)
        host.Out().Warning(Words(
            "%s: a line that the last commit set was changed since; it would be set again", planned.Place()));
    else
        host.Out().Warning(
            Words("%s: a line that the last commit set was changed since; it is set again", planned.Place()));
    TellLossToCome(host, path, planned.file.version);
}

void WarnOfFormerTemplate(Deployment& product, const PlannedTarget& planned, const std::string& former) {
    const std::string& name = planned.target.templateName;
    const Target* const entry = product.Lists().EntryOf(former);
    if (former == name || (entry != nullptr && !entry->path.empty())) return;
    const TemplateFiles files = FilesOfTemplate(product, former);
    if (!HoldsEdits(product, files)) return;
    const Problem lost = {
        .file = planned.path,
        .text = Words("is made from the template [%s] now, without the edits of %s", name, files.workingCopy),
        .remedy = Words("take them over into %s", WorkingCopy(product, name))};
    product.Out().Warning(lost.Describe());
}

void TellWhereKept(Host& host, std::int64_t entry, const std::string& path, const FileVersion& version) {
    if (!host.HostHistory().KeepsEditOf(version)) return;
    host.Out().Remark(
        Words("\"history show %s %s\" shows what it held", std::to_string(entry), Text::ShellWord(path)));
}

}  // namespace ZET::Deploy
