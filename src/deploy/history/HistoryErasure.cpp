#include "deploy/history/HistoryErasure.h"

#include "deploy/history/HistoryReader.h"
#include "deploy/host/Words.h"
#include "deploy/state/CutShort.h"
#include "deploy/state/Lock.h"

namespace ZET::Deploy {

namespace {

void TellOfMerge(Deployment& product, const std::string& name) {
    const auto known = product.HostHistory().ToLook()->Known(name);
    if (!known || known->kind != FileKind::Target || !known->state.knowledge.base) return;
    product.Out().Warning(
        Words("%s: holds edits that a commit merged, and none can merge them again without its texts (put "
              "them into its template)",
              product.HostPaths().FromInside(name)));
}

}  // namespace

ErasedHistory EraseHistory(Deployment& product, const std::string& file) {
    const auto toErase = [&] { return HistoryReader(product).NameOf(file); };
    ErasedHistory result;
    if (product.Wanted().dryRun) {
        const std::string name = toErase();
        TellOfMerge(product, name);
        result.path = product.HostPaths().FromInside(name);
        result.texts = product.HostHistory().ToLook()->CountTexts(NamesBeside(name));
        return result;
    }
    const std::string name = toErase();  // so that a wrong name is reported before anybody waits for the lock
    const WriteLock lock(product.State(), product.Seeker());
    SettleCutShort(product, lock);
    TellOfMerge(product, name);
    const Erasure erased = product.HostHistory().ToRecord().Erase(NamesBeside(name));
    result.path = product.HostPaths().FromInside(name);
    result.texts = erased.texts;
    for (const std::string& other : erased.alsoHeld)
        result.alsoHeld.push_back(product.HostPaths().FromInside(other));
    return result;
}

}  // namespace ZET::Deploy
