#include "deploy/targets/WrittenFiles.h"

#include <map>
#include <optional>
#include <set>
#include <utility>

#include "deploy/host/FileBytes.h"
#include "deploy/host/FileName.h"
#include "deploy/host/Words.h"
#include "deploy/lists/Targets.h"
#include "deploy/state/LostOriginal.h"
#include "deploy/targets/FileOrigin.h"
#include "deploy/targets/LinesInPlace.h"

namespace ZET::Deploy {

namespace {

/// None if there is no list that can be used, but something on record, which goes back all the same.
std::optional<std::vector<Target>> ListedTargets(Deployment& product, const KnownFiles& known) {
    try {
        return SelectTargets(product, {});
    } catch (const Failure& failure) {
        if (known.PathsOf(product.Role()).empty() && known.EditedPaths().empty()) throw;
        product.Out().Error(failure.what(), failure.Lines());
        product.Out().Remark(_("only the files that are on record are put back"));
        return std::nullopt;
    }
}

bool IsKnownAsEdit(const KnownFiles& known, const std::string& path) {
    const KnownFile* const file = known.Find(path);
    return file != nullptr && file->kind == FileKind::Edit;
}

/// The first file at each path. Leaves out files whose place nobody can tell.
std::map<std::string, const WrittenFile*> ByCanonicalPath(const Paths& paths,
                                                          const std::vector<WrittenFile>& files) {
    std::map<std::string, const WrittenFile*> byPath;
    for (const WrittenFile& file : files) {
        try {
            byPath.emplace(paths.Canonical(paths.NameInside(file.path)), &file);
        } catch (const Failure&) {
            continue;
        }
    }
    return byPath;
}

}  // namespace

WrittenFile WrittenTarget(const Host& host, const Target& target) {
    WrittenFile file{.templateName = target.templateName,
                     .path = host.HostPaths().FromInside(target.path),
                     .services = target.ServicesFor(host.Role()),
                     .named = target.path,
                     .trusted = target.trusted,
                     .isOfBoth = target.roles.size() > 1};
    try {
        file.path = host.HostPaths().WithRealDirectory(host.FilePath(target.path));
    } catch (const Failure& failure) {
        file.trouble = failure;
    }
    return file;
}

static std::optional<WrittenFile> WrittenByList(Deployment& product, const std::string& path) {
    try {
        const Target* const target = product.Lists().TargetOf(path);
        if (target == nullptr || !target->IsFor(product.Role())) return std::nullopt;
        WrittenFile file = WrittenTarget(product, *target);
        return file.path == path ? std::optional(file) : std::nullopt;
    } catch (const Failure&) {
        return std::nullopt;  // the record is enough
    }
}

std::optional<WrittenFile> WrittenByRecord(Deployment& product, const std::string& path) {
    WrittenFile file{.path = path, .named = product.HostPaths().NameInside(path)};
    try {
        if (!product.HostPaths().StaysInside(path)) {
            product.Out().Warning(
                Words("%s: leads out of the root directory by a link, and is left alone", path));
            return std::nullopt;
        }
        if (std::optional<WrittenFile> listed = WrittenByList(product, path)) return listed;
    } catch (const Failure& failure) {
        file.trouble = failure;
    }
    return file;
}

WrittenFile WrittenLines(const Host& host, const std::string& path) {
    return {.path = path, .named = host.HostPaths().NameInside(path), .isEdit = true};
}

/// Beside what there was before, a notice that names the template tells what a commit made.
static bool IsMadeByCommit(Deployment& product, const WrittenFile& file) {
    return !file.trouble && file.MayGoBack() && IsUnseen(product, file.path) &&
           TemplateNamedIn(product.Core(), file.path).ends_with("/" + file.templateName);
}

/// The files of targets not in force that a commit made, though the history was lost since.
static std::vector<std::string> ForgottenPaths(Deployment& product, const KnownFiles& known) {
    if (!product.Lists().IsUsable()) return {};
    std::set<std::string> inForce;
    std::set<std::string> forgotten;
    const std::vector<Target>& targets = product.Lists().Targets().targets;
    for (const Target& target : targets)
        if (target.IsInForce()) inForce.insert(WrittenTarget(product, target).path);
    for (const Target& target : targets) {
        if (target.path.empty() || target.IsInForce() || !target.IsFor(product.Role())) continue;
        const WrittenFile file = WrittenTarget(product, target);
        const bool isUnknown = known.Find(file.path) == nullptr && !inForce.contains(file.path);
        if (isUnknown && IsMadeByCommit(product, file)) forgotten.insert(file.path);
    }
    return {forgotten.begin(), forgotten.end()};
}

WrittenFiles FindWrittenFiles(Deployment& product, const KnownFiles& known) {
    WrittenFiles written;
    const std::optional<std::vector<Target>> targets = ListedTargets(product, known);
    written.isListMissing = !targets;
    if (targets)
        for (const Target& target : *targets)
            written.files.push_back(WrittenTarget(product, target));
    // What was edited in place goes back that way, even if it is a target that nobody has committed yet.
    for (WrittenFile& file : written.files)
        file.isEdit = IsKnownAsEdit(known, file.path);
    std::set<std::string> listed;
    for (const WrittenFile& file : written.files)
        listed.insert(file.path);
    std::vector<std::string> others = known.PathsOf(product.Role());
    for (std::string& path : ForgottenPaths(product, known))
        others.push_back(std::move(path));
    for (const std::string& path : others) {
        if (listed.contains(path)) continue;
        if (std::optional<WrittenFile> file = WrittenByRecord(product, path))
            written.files.push_back(std::move(*file));
    }
    return written;
}

/// The files in which the lists ask for lines, in force or not, with the roles for which they do.
static std::map<std::string, std::set<Role>> RolesOfListedFiles(Deployment& product) {
    std::map<std::string, std::set<Role>> roles;
    if (!product.Lists().IsUsable()) return roles;
    for (const ListedEdit& edit : product.Lists().Targets().edits) {
        try {
            if (edit.path.empty()) continue;
            roles[product.HostPaths().WithRealDirectory(product.FilePath(edit.path))].insert(
                edit.roles.begin(), edit.roles.end());
        } catch (const Failure&) {
            continue;  // what no path leads to was not written
        }
    }
    return roles;
}

/// Beside a reserve, the blocks of a file are the product's, whatever became of the history, or a killed run
/// may have kept the original and done no more. What cannot be read is reported when it is decided what
/// becomes of the file.
static bool MayBeEdited(const WrittenFile& file) {
    if (!IsFileExist(file.Reserve()) || !StateOf(file.path).IsRegular()) return false;
    try {
        const std::string text = ReadFileBytes(file.path);
        return !BlockLinesOf(text).empty() || text == ReadFileBytes(file.Reserve());
    } catch (const Failure&) {
        return true;
    }
}

/// Blocks of which nobody knows who made them are left alone.
static bool MayHoldBlocks(const WrittenFile& file) {
    try {
        return StateOf(file.path).IsRegular() && !BlockLinesOf(ReadFileBytes(file.path)).empty();
    } catch (const Failure&) {
        return true;
    }
}

std::vector<WrittenFile> FindEditedFiles(Deployment& product, const KnownFiles& known,
                                         const std::vector<WrittenFile>& written, bool withUntouched) {
    std::map<std::string, std::set<Role>> listed = RolesOfListedFiles(product);
    std::set<std::string> paths;
    for (const auto& [path, roles] : listed)
        if (roles.contains(product.Role()) && known.Find(path) == nullptr) paths.insert(path);
    for (const std::string& path : known.EditedPaths())
        paths.insert(path);
    for (const WrittenFile& file : written)
        paths.erase(file.path);
    std::vector<WrittenFile> files;
    for (const std::string& path : paths) {
        std::optional<WrittenFile> file = WrittenByRecord(product, path);
        if (!file) continue;
        const bool isUntouched = known.Find(path) == nullptr && !MayBeEdited(*file);
        if (isUntouched && (!withUntouched || MayHoldBlocks(*file))) continue;
        file->isEdit = true;
        file->isOfBoth = listed[path].contains(OtherRole(product.Role()));
        files.push_back(std::move(*file));
    }
    return files;
}

std::vector<WrittenFile> Named(const Deployment& product, const std::vector<WrittenFile>& files,
                               const std::vector<std::string>& names) {
    const Paths& paths = product.HostPaths();
    const std::map<std::string, const WrittenFile*> byPath = ByCanonicalPath(paths, files);
    std::vector<WrittenFile> named;
    std::set<const WrittenFile*> taken;
    for (const std::string& name : names) {
        RequireFileName(name);
        const auto file = byPath.find(paths.Canonical(name));
        if (file == byPath.end()) {
            throw UsageError(
                Words("%s: is no target of the role %s (\"status\" lists them; \"file restore\" puts any "
                      "other file back)",
                      name, RoleInWords(product.Role())));
        }
        if (taken.insert(file->second).second) named.push_back(*file->second);
    }
    return named;
}

}  // namespace ZET::Deploy
