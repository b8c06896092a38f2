#include "deploy/targets/StateTeller.h"

#include <sys/stat.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/StagedOwner.h"
#include "deploy/host/StagedText.h"
#include "deploy/host/Staging.h"
#include "deploy/targets/EditMerge.h"
#include "deploy/targets/FileOrigin.h"
#include "deploy/targets/ListedEditStates.h"
#include "deploy/targets/Render.h"
#include "deploy/targets/ShownDiff.h"
#include "deploy/targets/TemplateFileCheck.h"
#include "deploy/targets/TemplateFiles.h"

namespace ZET::Deploy {

namespace {

/// Throws a `Failure` if this user cannot read the template: what a commit would make of it is unknown then.
void RequireReadableTemplate(Host& host, const std::string& templateName) {
    const std::string file = RemedyErrors("", [&] { return TemplateFile(host, templateName); });
    if (!file.empty() && host.HostPaths().StaysInside(file)) RequireReadableFile(file);
}

/// Throws a `Failure` if some values cannot be read: what a commit would make of any template is unknown
/// then.
void RequireReadValues(Host& host) {
    const HostValues::Unread& unread = host.Values().UnreadSources();
    for (const auto* sources : {&unread.params, &unread.texts})
        if (!sources->empty()) throw Failure(sources->front());
}

bool HasStagedMode(const std::string& path, const StagedText& staged) {
    return StateOf(path).mode == (S_IFREG | staged.Mode());
}

bool IsAsStaged(const std::string& path, const StagedText& staged) {
    return HasStagedMode(path, staged) && staged.IsIn(path);
}

template <typename Call>
void TellTrouble(TargetState& result, Call call) {
    try {
        call();
    } catch (const Failure& failure) {
        result.trouble = failure.what();
    } catch (const EZETError& error) {
        result.trouble = FailureOf(error).what();
    }
}

/// What was found out about a target's file.
struct Told {
    std::string state;
    std::string reason{};                        ///< for the state
    std::shared_ptr<const StagedText> staged{};  ///< the rendering; null: none, or it is what is there
};

class StateTeller {
  public:
    StateTeller(Deployment& product, const KnownFiles& known)
        : m_product(product),
          m_known(known),
          m_isUntold(known.IsUnusable() && product.HasCommitted(product.Role())) {}

    std::vector<TargetState> Tell(const std::vector<Target>& targets) {
        for (const Target& target : targets) {
            m_product.RequireGoOn();
            m_product.Out().Progress(m_states.size(), targets.size());
            m_states.push_back(StateOfTarget(target));
        }
        AddDiffs();
        return std::move(m_states);
    }

  private:
    TargetState StateOfTarget(const Target& target) {
        TargetState result;
        result.templateName = target.templateName;
        result.path = m_product.HostPaths().FromInside(target.path);
        result.state = kUnknown;
        result.file = target.path;
        TellTrouble(result, [&] {
            result.path = m_product.HostPaths().WithRealDirectory(m_product.FilePath(target.path));
            const Told told = StateOfFile(target.templateName, result.path);
            result.state = told.state;
            result.reason = told.reason;
            result.isMerged = HoldsMerge(result.path, told.staged.get());
            if (told.state == kPending || told.state == kEdited) Compare(target, told.staged, result);
        });
        return result;
    }

    /// If the template cannot be rendered, the target is not as committed: a commit would have to report
    /// that.
    Told StateOfFile(const std::string& templateName, const std::string& path) const {
        if (!m_isUntold && !m_known.Has(path, m_product.Role())) return {kNotCommitted};
        const SeenFile there(path);
        if (!there.State().exists) return {m_known.IsUnusable() ? kDiffers : kMissing};
        if (!CanBeRendered(m_product, templateName)) return StateOfUnrendered(templateName, there);
        const ComparedRendering rendering = Render(templateName, there);
        if (IsInSync(rendering, templateName, path)) return {kInSync, "", rendering.staged};
        RequireReadValues(m_product);
        const bool isOfOtherRoot = IsMadeUnderOtherRoot(*rendering.staged, templateName, path);
        return {StateIfOther(there), isOfOtherRoot ? "made under another root" : "", rendering.staged};
    }

    /// The check may object to the template only because this user cannot read it.
    Told StateOfUnrendered(const std::string& templateName, const SeenFile& there) const {
        RequireReadableTemplate(m_product, templateName);
        RequireReadValues(m_product);
        // The reason is shown in place of a diff.
        return {StateIfOther(there), m_product.Wanted().wantsDiffs ? "template refused" : ""};
    }

    /// The state of a file that is not as a commit would leave it.
    const char* StateIfOther(const SeenFile& there) const {
        if (m_known.IsUnusable()) return kDiffers;
        return m_known.IsAsLeft(there) ? kPending : kEdited;
    }

    /// Renders for the role whose command the notice names.
    ComparedRendering Render(const std::string& templateName, const SeenFile& there) const {
        const KnownFile* const known = m_known.Find(there.Path());
        const bool isMerge = known != nullptr && known->HoldsMerge();
        return RenderUnlessThere(
            m_product, {m_staging, templateName, RoleToName(known, m_product.Role()), isMerge}, there);
    }

    bool IsInSync(const ComparedRendering& rendering, const std::string& templateName,
                  const std::string& path) const {
        if (rendering.staged == nullptr) return true;
        const StagedText& staged = *rendering.staged;
        if (!rendering.isOther && IsAsStaged(path, staged)) return true;
        const KnownFile* const known = m_known.Find(path);
        if (known != nullptr && IsMergedWith(m_product, *known, staged.Text()))
            return m_known.IsAsLeft(path) && HasStagedMode(path, staged);
        if (!m_known.IsUnusable()) return false;
        const Role other = OtherRole(m_product.Role());
        return HaveSameModeAndBytes(RenderQuietly(m_product, m_staging, templateName, other), path);
    }

    /// Whether the file is as it would be, but for the path of its template in the notice.
    bool IsMadeUnderOtherRoot(const StagedText& staged, const std::string& templateName,
                              const std::string& path) const {
        const std::string own = WorkingCopy(m_product, templateName);
        const std::string former = TemplateNamedIn(m_product.Core(), path);
        if (former == own || !former.ends_with(m_product.HostPaths().NameInside(own))) return false;
        std::string text = ReadFileBytes(path);
        const std::size_t place = text.find(former);
        return place != std::string::npos && HasStagedMode(path, staged) &&
               text.replace(place, former.size(), own) == staged.Text();
    }

    /// If the template makes the same text by now, it is nobody's edit any more.
    bool HoldsMerge(const std::string& path, const StagedText* staged) const {
        const KnownFile* const known = m_known.Find(path);
        if (known == nullptr || !known->HoldsMerge() || !StateOf(path).exists) return false;
        return staged == nullptr || !IsAsStaged(path, *staged);
    }

    /// Compares the file with what a commit would write, which nobody knows for a template that it would
    /// refuse.
    void Compare(const Target& target, const std::shared_ptr<const StagedText>& staged, TargetState& result) {
        if (staged == nullptr || !m_product.Wanted().wantsDiffs) return;
        PlannedTarget planned{{.path = result.path}, target};
        planned.staged = staged;
        planned.version = VersionOf(result.path);
        planned.before = StateOf(result.path);
        if (!planned.before.IsRegular()) {
            result.reason = "no regular file";
            return;
        }
        planned.after = GiveOwnerInPlace(result.path, *staged, planned.before);
        planned.change = FileOutcome::Result::Changed;
        if (result.state == kEdited) planned.foundAs = FoundAs::Edited;
        const EditMerge merge(m_product, m_staging, m_known);
        merge.KeepMerged(planned);
        // If the merge conflicts, the commit would be refused, and what the template makes is shown.
        if (ConfiguredOnEdit(m_product) == OnEdit::Merge && planned.IsOthersWork()) merge.Merge(planned);
        result.before = planned.before;
        result.after = planned.after;
        m_compared.push_back({result.path, planned.staged->File()});
        m_places.push_back(m_states.size());
    }

    void AddDiffs() {
        const DiffSet diffs(m_compared);
        for (std::size_t pair = 0; pair < m_compared.size(); ++pair) {
            TargetState& target = m_states[m_places[pair]];
            TellTrouble(target, [&] { target.diff = DiffToShow(m_product, diffs, pair, target.path); });
        }
    }

    Deployment& m_product;
    const KnownFiles& m_known;
    const bool m_isUntold;  ///< which targets the role has committed
    const Staging m_staging;
    std::vector<TargetState> m_states;
    std::vector<FilePair> m_compared;   ///< the files that get a diff
    std::vector<std::size_t> m_places;  ///< the indices of their states
};

}  // namespace

std::vector<TargetState> TellStates(Deployment& product, const KnownFiles& known,
                                    const std::vector<Target>& targets) {
    return StateTeller(product, known).Tell(targets);
}

}  // namespace ZET::Deploy
