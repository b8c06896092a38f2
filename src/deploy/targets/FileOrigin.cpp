#include "deploy/targets/FileOrigin.h"

#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/state/Language.h"
#include "deploy/targets/Secrets.h"
#include "deploy/targets/TemplateFiles.h"
#include "posix/PathNames.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

void ReadTarget(Deployment& product, const std::string& file, FileOrigin& origin) {
    origin.isPrivate = product.HostSecrets().IsPrivate(product.FilePath(file));
    try {
        const Target* const target = product.Lists().TargetOf(product.FilePath(file));
        if (target != nullptr) origin.target = *target;
    } catch (const Failure&) {
        // Without a list that can be read, nothing is known to be a target.
    }
}

std::string TemplateInNotice(const Text::ManagedText& text, const Text::NoticeTexts& noticeTexts) {
    const auto notice = std::find_if(
        text.Regions().begin(), text.Regions().end(),
        [](const Text::ManagedRegion& region) { return region.kind == Text::RegionKind::Notice; });
    if (notice == text.Regions().end()) return "";
    std::vector<std::string_view> lines;
    for (std::size_t number = notice->first; number <= notice->last; ++number)
        lines.push_back(text.Line(number).text);
    return noticeTexts.TemplateIn(lines);
}

/// A template below the directory of the working copies has a name, any other one only a path.
void NameTemplate(Host& host, const std::string& path, FileOrigin& origin) {
    const std::string directory = host.Param("ZET_CFG_DIR");
    for (const std::string& known : {path, host.FilePath(path)}) {
        if (!IsBelow(known, directory)) continue;
        origin.templateName = known.substr(directory.size() + 1);
        origin.templateFile = TemplateFile(host, origin.templateName);
        return;
    }
    // A file that was made under another root names the path that its template has there.
    const std::string inside = host.HostPaths().NameInside(directory) + "/";
    if (origin.target && path.ends_with(inside + origin.target->templateName)) {
        origin.templateName = origin.target->templateName;
        origin.templateFile = TemplateFile(host, origin.templateName);
        return;
    }
    origin.templateName = path;
    const std::string file = host.FilePath(path);
    if (IsFileExist(file)) origin.templateFile = file;
}

/// The template that a commit made the file from, if the list keeps the notice out; empty: nobody can tell.
std::string TemplateOnRecord(Deployment& product, const std::string& file, const FileOrigin& origin) {
    if (!origin.target || origin.target->hasNotice) return "";
    try {
        HostLists& lists = product.Lists();
        const std::optional<KnownFile> known = lists.CommittedFile(lists.NameOf(product.FilePath(file)));
        return known && known->kind == FileKind::Target ? known->state.knowledge.templateName : "";
    } catch (const Failure&) {
        return "";
    }
}

/// The part that has the notice of a file made from a template, unless somebody put very much before it.
std::string HeadOf(const std::string& path) {
    constexpr std::size_t kSizeOfHead = std::size_t{64} << 10;
    // Whoever may not read the file must not see its notice either.
    return access(path.c_str(), R_OK) == 0 ? ReadFileHead(path, kSizeOfHead) : "";
}

bool HasWholeNotice(const Text::ManagedText& text) {
    return std::any_of(text.Regions().begin(), text.Regions().end(),
                       [](const Text::ManagedRegion& region) { return region.IsWholeNotice(); });
}

/// The head up to where a notice may end; what follows cannot change the notice.
std::string_view UpToNotice(std::string_view head) {
    const std::size_t end = head.find(ZETCommentEndMarker, head.find(ZETNoticeMarker));
    return end == std::string_view::npos ? head : head.substr(0, head.find('\n', end));
}

}  // namespace

FileOrigin FindOrigin(Deployment& product, const std::string& file, const Text::ManagedText& text,
                      const Text::NoticeTexts& noticeTexts) {
    FileOrigin origin;
    ReadTarget(product, file, origin);
    const std::string path = TemplateInNotice(text, noticeTexts);
    origin.isMade = !path.empty();
    if (origin.isMade) {
        NameTemplate(product, path, origin);
    } else {
        origin.templateName = TemplateOnRecord(product, file, origin);
        origin.isMade = !origin.templateName.empty();
        if (origin.isMade) origin.templateFile = TemplateFile(product, origin.templateName);
    }
    return origin;
}

std::string TemplateNamedIn(IZETCore& core, const std::string& path) {
    if (!StateOf(path).IsRegular()) return "";
    const std::string head = HeadOf(path);
    if (head.find(ZETNoticeMarker) == std::string::npos) return "";
    // The whole head may have thousands of lines, and is split only if its beginning is no whole notice: a
    // remembered edit of 10,000 lines takes 0.5 million instructions less.
    const Text::ManagedText start(UpToNotice(head));
    return TemplateInNotice(HasWholeNotice(start) ? start : Text::ManagedText(head),
                            WrittenNoticeTexts(core));
}

Text::NoticeTexts WrittenNoticeTexts(IZETCore& core) {
    const WrittenLanguage language(core);
    return Text::NoticeTexts();
}

}  // namespace ZET::Deploy
