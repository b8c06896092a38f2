#include "deploy/targets/TargetWriting.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "deploy/host/Failure.h"
#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Words.h"
#include "deploy/targets/OthersWork.h"
#include "deploy/targets/PlannedTarget.h"
#include "deploy/targets/TargetRendering.h"
#include "deploy/targets/TemplateFiles.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

class TargetWriting {
  public:
    TargetWriting(Deployment& product, const CommitPlan& plan, const CommitRecord& record)
        : m_product(product), m_plan(plan), m_record(record) {}

    /// A group is small enough that the directory of each of its targets can be held.
    void Run() {
        constexpr std::size_t kGroup = 64;
        const std::vector<PlannedTarget>& targets = m_plan.Targets();
        for (std::size_t first = 0; first < targets.size(); first += kGroup)
            WriteGroup(first, std::min(first + kGroup, targets.size()));
    }

  private:
    using Renderings = std::vector<std::unique_ptr<TargetRendering>>;  ///< null: nothing to be written

    void WriteGroup(std::size_t first, std::size_t end) {
        const std::span<const PlannedTarget> targets = m_plan.Targets();
        // Diffs have to be made before one of their sides is gone.
        std::vector<FileOutcome> outcomes = OutcomesOf(m_product, targets.subspan(first, end - first));
        const FileInPlace::Start start;
        Renderings renderings;
        CZETBatch batch;
        for (std::size_t i = first; i < end; ++i)
            renderings.push_back(WithOriginalKept(targets[i], batch));
        batch.NameFiles();
        for (std::size_t i = first; i < end; ++i) {
            m_product.RequireGoOn();
            m_product.Out().Progress(i, targets.size());
            batch.SetSubject(targets[i].path);
            Write(targets[i], renderings[i - first].get(), outcomes[i - first]);
            renderings[i - first].reset();
        }
        batch.Finish();
    }

    std::unique_ptr<TargetRendering> WithOriginalKept(const PlannedTarget& planned, CZETBatch& batch) {
        if (!planned.IsChange()) return nullptr;
        m_product.RequireGoOn();
        batch.SetSubject(planned.path);
        FoundFile found = m_product.HostPaths().Find(planned.target.path, planned.target.trusted);
        if (found.path != planned.path)
            throw Failure({.file = planned.target.path,
                           .text = Words("leads to %s by now, and to %s when it was looked at", found.path,
                                         planned.path),
                           .remedy = _("run the command again")});
        FileInPlace place(std::move(found), planned.path);
        auto rendering = std::make_unique<TargetRendering>(m_product, std::move(place), planned);
        rendering->KeepOriginal();
        return rendering;
    }

    void Write(const PlannedTarget& planned, TargetRendering* rendering, FileOutcome& outcome) {
        WarnOfOthersWork(m_product, planned);
        if (planned.IsOthersWork() && planned.before.exists && m_record.Number())
            TellWhereKept(m_product, *m_record.Number(), planned.target.path, planned.version);
        if (rendering != nullptr) {
            rendering->Write();
        } else if (!planned.hasWorkingCopy) {
            // The notice in the file asks its reader to edit the working copy.
            InstallMissingCopy(m_product, planned.target.templateName);
        }
        if (!planned.IsChange() && VersionOf(planned.path) != planned.version) {
            throw Failure({.file = planned.path,
                           .text = _("another program wrote it after it was looked at"),
                           .remedy = _("look at it, and run the command again")});
        }
        if (planned.change == FileOutcome::Result::Changed) outcome.reserve = rendering->Reserve();
        m_product.Out().Done(outcome);
    }

    Deployment& m_product;
    const CommitPlan& m_plan;
    const CommitRecord& m_record;
};

}  // namespace

void WriteTargets(Deployment& product, const CommitPlan& plan, const CommitRecord& record) {
    TargetWriting(product, plan, record).Run();
}

}  // namespace ZET::Deploy
