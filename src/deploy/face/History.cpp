#include "zet/deploy/History.h"

#include "deploy/face/Parts.h"
#include "deploy/history/HistoryDiffs.h"
#include "deploy/history/HistoryEntries.h"
#include "deploy/history/HistoryErasure.h"
#include "deploy/history/HistoryExport.h"

namespace ZET::Deploy {

std::vector<HistoryEntry> ListHistory(Product& product, const std::string& file, std::size_t count) {
    return Use(product, [&](Deployment& deployment) { return ListHistory(deployment, file, count); });
}

HistoryEntry ShowEntry(Product& product, std::int64_t number) {
    return Use(product, [&](Deployment& deployment) { return ShowEntry(deployment, number); });
}

std::string TextBefore(Product& product, std::int64_t number, const std::string& file) {
    return Use(product,
               [&](Deployment& deployment) { return TextOf(deployment, number, file, Side::Before); });
}

std::string TextAfter(Product& product, std::int64_t number, const std::string& file) {
    return Use(product,
               [&](Deployment& deployment) { return TextOf(deployment, number, file, Side::After); });
}

std::vector<HistoryDiff> DiffHistory(Product& product, std::int64_t number, std::optional<std::int64_t> to,
                                     const std::string& file) {
    return Use(product, [&](Deployment& deployment) { return DiffHistory(deployment, number, to, file); });
}

void ExportHistory(Product& product, std::ostream& stream) {
    Use(product, [&](Deployment& deployment) { ExportHistory(deployment, stream); });
}

ErasedHistory EraseHistory(Product& product, const std::string& file) {
    return Use(product, [&](Deployment& deployment) { return EraseHistory(deployment, file); });
}

}  // namespace ZET::Deploy
