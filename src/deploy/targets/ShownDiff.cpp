#include "deploy/targets/ShownDiff.h"

#include <filesystem>
#include <utility>

#include "deploy/host/UnifiedDiff.h"
#include "posix/PathNames.h"
#include "text/ChangedLines.h"

namespace ZET::Deploy {

ShownDiff WithoutText(ShownDiff diff, const std::string& path, const std::string& excuse) {
    const std::string lines = Text::ChangedLines(diff.text);
    diff.text.clear();
    diff.excuse = excuse;
    if (!lines.empty()) diff.places.emplace_back(path + ": " + lines);
    return diff;
}

ShownDiff WithoutFormerSecrets(Deployment& product, ShownDiff diff, const RecordedFile& file,
                               const std::string& path) {
    const bool wasCommitted = file.before.knowledge.IsCommitted() || file.after.knowledge.IsCommitted();
    if (diff.text.empty() || product.Wanted().showsSecrets || !wasCommitted) return diff;
    if (product.Lists().TargetOf(path) != nullptr) return diff;
    diff.isPrivate = true;
    return WithoutText(std::move(diff), path, Secrets::ExcuseOfWhatLeftList());
}

std::string ShownPath(const std::string& path) {
    if (!HasStepUp(path)) return path;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path)).string();
}

/// `text` is the whole diff; `shown` is `path` as its labels have it.
static ShownDiff Shown(Deployment& product, const FilePair& files, const std::string& path,
                       const std::string& shown, std::string text) {
    const auto isClosed = [](const std::string& file) { return !file.empty() && Secrets::IsClosed(file); };
    ShownDiff diff;
    diff.text = std::move(text);
    diff.isPrivate =
        product.HostSecrets().IsPrivate(path) || isClosed(files.oldFile) || isClosed(files.newFile);
    if (!diff.isPrivate || product.Wanted().showsSecrets) return diff;
    return WithoutText(std::move(diff), shown, product.HostSecrets().Excuse(path));
}

ShownDiff DiffToShow(Deployment& product, const std::string& oldFile, const std::string& newFile,
                     const std::string& path, const std::string& shownPath) {
    if (!product.Wanted().wantsDiffs) return {};
    const std::string shown = ShownPath(shownPath.empty() ? path : shownPath);
    return Shown(product, {oldFile, newFile}, path, shown, UnifiedDiff(oldFile, newFile, shown));
}

ShownDiff DiffToShow(Deployment& product, const DiffSet& diffs, std::size_t pair, const std::string& path) {
    const std::string shown = ShownPath(path);
    return Shown(product, diffs.Files(pair), path, shown, diffs.Of(pair, shown));
}

bool IsPrivate(Deployment& product, const FileOutcome& outcome) {
    return outcome.diff.isPrivate || Secrets::IsClosed(outcome.before) || Secrets::IsClosed(outcome.after) ||
           product.HostSecrets().IsPrivate(outcome.path);
}

}  // namespace ZET::Deploy
