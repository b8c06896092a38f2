#include "deploy/state/KeptEntries.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "deploy/state/History.h"
#include "deploy/state/StateDirectory.h"

namespace ZET::Deploy {

namespace {

[[noreturn]] void FailOfNothingRecorded(std::int64_t number) {
    throw UsageError(
        Words("there is no change %s: nothing was recorded yet on this host", std::to_string(number)));
}

}  // namespace

std::int64_t LastNumberOf(Store& store) {
    const std::vector<RecordedEntry> newest = store.Entries(1);
    // Kept edits may be older than what was pruned.
    return std::max(newest.empty() ? 0 : newest.front().number, store.LastPruned());
}

void FailOfNoHistory(Host& host, const std::optional<std::int64_t>& number) {
    const bool hasCommitted =
        std::any_of(std::begin(kRoles), std::end(kRoles), [&](Role role) { return host.HasCommitted(role); });
    if (number && !hasCommitted) FailOfNothingRecorded(*number);
    throw Failure({.file = host.State().Store(),
                   .text = _("is not there: nothing was recorded on this host that could be put back"),
                   .remedy = _("\"rollback-config\" and \"file restore\" need no history")});
}

RecordedEntry KeptEntry(Store& store, std::int64_t number) {
    if (auto entry = store.Find(number)) return std::move(*entry);
    const std::int64_t last = LastNumberOf(store);
    if (last == 0) FailOfNothingRecorded(number);
    if (number < 1 || number > last)
        throw UsageError(Words("there is no change %s: the last one is %s (\"history\" tells them)",
                               std::to_string(number), std::to_string(last)));
    throw UsageError(
        Words(number <= store.LastPruned()
                  ? ZET_TEXT("change %s is no longer kept (\"history\" tells those that are; "
                             "ZET_HISTORY_KEEP says how many)")
                  : ZET_TEXT("change %s changed nothing after all (\"history\" tells those that did)"),
              std::to_string(number)));
}

void RequireAllKeptAfter(Store& store, std::int64_t number, const char* remedy) {
    if (number >= store.LastPruned()) return;
    throw Failure(
        {.file = store.File(),
         .text = Words("not all changes after %s are kept any more, so nobody knows what was there then",
                       std::to_string(number)),
         .remedy = Words(remedy, std::to_string(store.LastPruned() + 1))});
}

std::vector<Problem> UntoldAfter(Host& host, Store& store, std::int64_t number) {
    std::vector<Problem> problems;
    for (const std::string& name : store.WrittenUntoldAfter(number))
        problems.push_back(
            {.file = host.HostPaths().FromInside(name),
             .text = Words("was written after change %s while ZET_HISTORY was no", std::to_string(number)),
             .remedy = _("\"rollback-config\" and \"file restore\" need no history")});
    return problems;
}

void RequireLastTold(Host& host) {
    if (host.HostHistory().KeepsTexts()) return;
    throw Failure({.file = host.State().Store(),
                   .text = _("nobody knows whether it has the last change, as ZET_HISTORY is no"),
                   .remedy = _("name one that \"history\" tells")});
}

}  // namespace ZET::Deploy
