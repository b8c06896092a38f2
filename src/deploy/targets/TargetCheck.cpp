#include "deploy/targets/TargetCheck.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <map>
#include <optional>

#include "deploy/host/Accounts.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Rights.h"
#include "deploy/host/Words.h"
#include "deploy/state/CutShort.h"
#include "deploy/state/Instructions.h"
#include "deploy/state/ParameterCheck.h"
#include "deploy/state/StateDirectory.h"
#include "deploy/targets/ClaimedFiles.h"
#include "deploy/targets/ConditionCheck.h"
#include "deploy/targets/EditedTargets.h"
#include "deploy/targets/NewOwner.h"
#include "deploy/targets/PlaceCheck.h"
#include "deploy/targets/TemplateFileCheck.h"
#include "deploy/targets/TemplateFiles.h"
#include "posix/Descriptor.h"
#include "posix/PathNames.h"
#include "text/Placeholders.h"
#include "text/TemplateCheck.h"

namespace ZET::Deploy {

namespace {

/// For a file that is written through its name, which must be its only one.
std::vector<Problem> CheckSingle(const std::string& path) {
    std::vector<Problem> problems = CheckRegular(path);
    if (problems.empty() && StateOf(path).links > 1)
        problems.push_back({path, 0, 0, _("has other names (hard links)"), _("move it away")});
    return problems;
}

/// Whether a commit can record what it does. A user who may not read the history does not write it either.
std::vector<Problem> CheckHistory(Host& host) {
    try {
        host.HostHistory().ToLookForWriting();
        return {};
    } catch (const Failure& failure) {
        return {failure.Facts()};
    }
}

/// Checks the product's own directories, and the files in them that a commit writes.
std::vector<Problem> CheckOwnFiles(Deployment& product) {
    const StateDirectory state = product.State();
    std::vector<Problem> problems =
        CheckOwnDirectory(product.HostPaths(), "ZET_CFG_DIR", product.Param("ZET_CFG_DIR"));
    std::vector<Problem> ofStatus =
        CheckOwnDirectory(product.HostPaths(), "ZET_VAR_LIB_DIR", product.Param("ZET_VAR_LIB_DIR"));
    Append(problems, CheckModule(product));
    Append(problems, CheckInstruction(product.HostPaths(), product.Param("ZET_CFG")));
    Append(problems, CheckInstruction(product.HostPaths(), product.Param("ZET_CFG_TEMPL_DIR")));
    for (const std::string& file : product.Values().Files())
        Append(problems, CheckInstruction(product.HostPaths(), file));
    if (ofStatus.empty()) {
        for (const std::string& file : {state.Lock(), state.Status(product.Role()), state.FileServerStatus()})
            Append(ofStatus, CheckSingle(file));
        Append(ofStatus, CheckHistory(product));
    }
    Append(problems, std::move(ofStatus));
    TakeOutRepeats(problems);
    return problems;
}

/// Whether this user may not read the file; `path` is what to open to find out.
bool IsDenied(const std::string& path, int flags) {
    const Descriptor opened(open(path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    return opened < 0 && errno == EACCES;
}

/// What keeps the user in whose directory a target lies from rendering it: its template, or the directory in
/// which root is going to install the working copy. Empty if nothing does.
std::string DeniedToHolder(Host& host, const Target& target, const FoundFile& found) {
    if (!found.judge.Holder()) return "";
    const std::string file = TemplateFile(host, target.templateName);
    if (file.empty()) return "";
    const std::string directory = DirectoryOf(WorkingCopy(host, target.templateName));
    const std::string entry = directory + "/.";
    const RightsOf rights(*found.judge.Holder(), found.status->st_gid);
    rights.Take();
    const bool isFileDenied = IsDenied(file, O_RDONLY);
    const bool isEntryDenied = IsDenied(entry, O_PATH);
    rights.Drop();
    return isFileDenied ? file : isEntryDenied ? directory : "";
}

/// Checks targets one by one; holds what the checks have in common.
class TargetChecker {
  public:
    TargetChecker(Deployment& product, const TargetList& list, const std::vector<Target>& checked,
                  SeenTemplates& seen)
        : m_product(product),
          m_cutShort(FilesOfCutShort(product)),
          m_claimed(product),
          m_seen(seen),
          m_result(CheckOwnFiles(product)),
          m_values(product.TemplateValues(), &seen.used) {
        m_claimed.AddListed(list.targets, checked);
        if (product.HasCommitted(OtherRole(product.Role()))) m_claimed.AddTargetsOfOtherRole(list.targets);
        for (const Target& target : checked)
            m_targetsIn[DirectoryOf(target.path)]++;
    }

    /// The place has no path if that cannot be told, which is a problem.
    CheckedPlace Check(const Target& target) {
        CheckedTemplate checked = CheckTemplate(m_product, target.templateName, m_values);
        Append(m_result, std::move(checked.problems));
        m_seen.size += checked.size;
        try {
            if (!checked.isWorkingCopy) CheckWorkingCopy(target);
            CheckedPlace place;
            place.hasWorkingCopy = checked.isWorkingCopy;
            place.modeOfCopy = checked.modeOfCopy;
            CheckFile(target, place);
            return place;
        } catch (const Failure& failure) {
            m_result.push_back(ProblemOf(target.path, failure));
            return {};
        }
    }

    std::vector<Problem> Result() { return std::move(m_result); }

  private:
    /// A working copy that is missing is going to be installed.
    void CheckWorkingCopy(const Target& target) {
        const std::string copy = WorkingCopy(m_product, target.templateName);
        if (StateOf(copy).exists) return;
        if (DirectoryOf(copy) != m_product.Param("ZET_CFG_DIR"))
            Append(m_result, CheckDirectory(DirectoryOf(copy), Words("the working copy %s", copy),
                                            _("the template's name")));
        Append(m_result, CheckTemporary(copy, m_cutShort.contains(copy)));
    }

    void CheckFile(const Target& target, CheckedPlace& place) {
        const FoundFile found = m_product.HostPaths().Find(target.path, target.trusted);
        const std::string path = m_product.HostPaths().Resolved(target.path, found);
        place.path = found.path;
        place.status = found.status;
        Append(m_result, CheckPlace(target, path, found));
        FileToWrite file = CheckFileToWrite(found, path, ZET_TEXT("the target"), m_cutShort.contains(path),
                                            NamesBeside(target, found));
        Append(m_result, std::move(file.problems));
        place.hasCompanion = file.hasCompanion;
        Append(m_result, m_claimed.AddTarget(target, found.path));
    }

    /// Checks the target's directory, and the way there.
    std::vector<Problem> CheckPlace(const Target& target, const std::string& path, const FoundFile& found) {
        std::vector<Problem> problems = CheckDirectoryOf(path);
        if (!target.trusted.empty() && !UserNamed(m_product.HostPaths(), target.trusted)) {
            problems.push_back({path, 0, 0,
                                Words("this host has no user \"%s\", whom its entry trusts", target.trusted),
                                _("correct trust in the list, or make the user")});
        }
        Append(problems, OwnerProblem(m_product.HostPaths(), target));
        const bool isRoots = !found.judge.Objection() && !found.judge.Holder();
        if (!problems.empty() || isRoots || geteuid() != 0) return problems;
        if (found.judge.Objection()) {
            problems.push_back(*found.judge.Objection());
        } else if (const std::string denied = DeniedToHolder(m_product, target, found); !denied.empty()) {
            problems.push_back({path, 0, 0,
                                Words("is rendered with the rights of %s, who may not read the template [%s]",
                                      NameOfUser(*found.judge.Holder()), target.templateName),
                                Words("let him read %s, or trust him in the list", denied)});
        }
        return problems;
    }

    /// A directory in which nothing is wrong is looked at once, however many targets are in it.
    std::vector<Problem> CheckDirectoryOf(const std::string& path) {
        const std::string directory = DirectoryOf(path);
        if (m_soundDirectories.contains(directory)) return {};
        std::vector<Problem> problems = CheckDirectory(directory, path, _("the target in the list"));
        if (problems.empty()) m_soundDirectories.insert(directory);
        return problems;
    }

    /// In a directory with many targets, one listing replaces each target's looks at what is not there: two
    /// of the 25 system calls for a target that does not change.
    const Names* NamesBeside(const Target& target, const FoundFile& found) {
        constexpr std::size_t kMany = 16;
        constexpr std::size_t kNamesForOne = 16;
        const std::size_t count = m_targetsIn[DirectoryOf(target.path)];
        if (count < kMany || !found.directory) return nullptr;
        const auto [listing, isNew] = m_listings.try_emplace(found.directory->name);
        if (isNew) listing->second = AllNamesIn(found.directory->descriptor, count * kNamesForOne);
        return listing->second ? &*listing->second : nullptr;
    }

    Deployment& m_product;
    const std::set<std::string> m_cutShort;
    ClaimedFiles m_claimed;
    SeenTemplates& m_seen;
    std::set<std::string> m_soundDirectories;
    std::map<std::string, std::size_t> m_targetsIn;  ///< by directory, as the list has it
    std::map<std::string, std::optional<Names>> m_listings;
    std::vector<Problem> m_result;
    Text::ValuesToCheck m_values;
};

}  // namespace

CheckedTargets CheckTargets(Deployment& product, const std::vector<std::string>& templateNames) {
    CheckedTargets checked;
    const TargetList& list = product.Lists().TargetsAnew();
    WarnOfStrays(product.Out(), list);
    if (list.isUnderstood) checked.targets = SelectTargets(product.Role(), list, templateNames);
    TargetChecker checker(product, list, checked.targets, checked.templates);
    checked.problems = list.problems;
    for (const Target& target : checked.targets) {
        checked.places.push_back(target.path.empty() ? CheckedPlace() : checker.Check(target));
    }
    for (const ListedEdit& edit : list.edits) {
        if (!templateNames.empty() || !edit.IsInForceFor(product.Role())) continue;
        for (std::string& placeholder : Text::PlaceholdersOfValue(edit.value + edit.text))
            checked.templates.used.insert(std::move(placeholder));
    }
    if (list.isUnderstood) Append(checked.problems, EditsOfTargets(product, templateNames));
    Append(checked.problems, checker.Result());
    HostValues& values = product.Values();
    Append(checked.problems, values.Problems());
    Append(checked.problems, CheckLineEnds(values, UsedOrAskedFor(product, checked.templates.used)));
    Append(checked.problems,
           CheckParameterValues(product.Core(), product.TemplateValues(), checked.templates.used,
                                values.GivenByFleet(), values.Assumed()));
    if (product.Wanted().onlyLooks) WarnOfRights(product.Out(), checked.problems);
    return checked;
}

}  // namespace ZET::Deploy
