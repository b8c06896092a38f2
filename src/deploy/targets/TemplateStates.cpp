#include "deploy/targets/TemplateStates.h"

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"
#include "deploy/lists/Targets.h"
#include "deploy/targets/TemplateHistory.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

constexpr char kUnknownCopy[] = "unknown";

std::optional<std::string> TextOf(const std::string& path, mode_t& mode) {
    if (!IsFileExist(path)) return std::nullopt;
    return ReadFileBytes(path, mode);
}

TemplateState Tell(Host& host, const TemplateFiles& files) {
    TemplateState result{files.name, files.workingCopy, files.shipped, kUnknownCopy, false, ""};
    try {
        const TemplateTexts texts = RemedyErrors("", [&] { return ReadTexts(host, files); });
        result.state = StateOf(texts);
        result.hasNewer = texts.HasNewer();
    } catch (const Failure& failure) {
        result.trouble = failure.what();
    }
    return result;
}

}  // namespace

TemplateTexts ReadTexts(Host& host, const TemplateFiles& files) {
    RequireInside(host, files);
    TemplateTexts texts;
    mode_t mode = 0;
    texts.copy = TextOf(files.workingCopy, mode);
    mode_t shippedMode = mode;
    texts.shipped = files.shipped == files.workingCopy ? texts.copy : TextOf(files.shipped, shippedMode);
    if (!texts.copy && !texts.shipped) throw MissingTemplate(files);
    texts.base = texts.IsCurrent() ? texts.shipped : MemoryOf(host, files.workingCopy).base;
    // A mode that somebody gave the working copy is an edit.
    const bool isOtherMode = texts.copy && texts.shipped && mode != shippedMode;
    if (isOtherMode && MemoryOf(host, files.workingCopy).mode == mode) texts.newerMode = shippedMode;
    return texts;
}

const char* StateOf(const TemplateTexts& texts) {
    if (!texts.copy) return "not installed";
    if (!texts.shipped && !texts.base) return "own";
    if (!texts.shipped) return "not shipped";
    if (!texts.IsKnown()) return kUnknownCopy;
    if (texts.HasNewer()) return texts.IsEdited() ? "edited, newer shipped" : "newer shipped";
    return texts.IsEdited() ? "edited" : "current";
}

std::vector<ListedTemplate> ListTemplates(Host& host) {
    SelectTargets(host, {});  // throws if the list is broken
    std::vector<ListedTemplate> listed;
    for (const Target& target : ReadTargetList(host).targets) {
        const TemplateFiles files = FilesOfTemplate(host, target.templateName);
        const bool isInstalled = RemedyErrors("", [&] { return IsFileExist(files.workingCopy); });
        listed.push_back({files.name, target.path, target.roles, files.workingCopy, isInstalled, target.file,
                          target.line, target.changedBy, target.WhyNot()});
    }
    return listed;
}

std::vector<TemplateState> TemplateStates(Host& host, const std::vector<std::string>& names) {
    std::vector<TemplateState> states;
    for (const TemplateFiles& files : FilesOfTemplates(host, names)) {
        host.RequireGoOn();
        states.push_back(Tell(host, files));
    }
    return states;
}

}  // namespace ZET::Deploy
