#include "deploy/history/Originals.h"

#include <set>
#include <string_view>

#include "deploy/history/HistoryReader.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

/// The name of the file that it stands beside, or is. A reserve that was made alone is in the history itself.
std::string WithoutSuffix(const std::string& name) {
    for (const std::string_view suffix : {ZETReserveSuffix, ZETAbsenceSuffix})
        if (name.ends_with(suffix)) return name.substr(0, name.size() - suffix.size());
    return name;
}

/// Inside the root. What is known of a file outlives the entries that wrote it, and the other way round.
std::set<std::string> NamesOfFiles(Deployment& product) {
    std::set<std::string> names;
    const HistoryReader history(product);
    if (!history.HasAny()) return names;
    for (const KnownFile& file : product.HostHistory().ToLook()->KnownFiles())
        names.insert(WithoutSuffix(file.path));
    for (const RecordedEntry& entry : history.Entries())
        for (const RecordedFile& file : history.FilesOf(entry.number))
            names.insert(WithoutSuffix(file.path));
    return names;
}

}  // namespace

std::vector<KeptOriginal> ListOriginals(Deployment& product) {
    std::vector<KeptOriginal> originals;
    for (const std::string& name : NamesOfFiles(product)) {
        const std::string path = product.HostPaths().FromInside(name);
        for (const bool existed : {true, false}) {
            const std::string reserve = path + (existed ? ZETReserveSuffix : ZETAbsenceSuffix);
            if (IsFileExist(reserve)) originals.push_back({path, reserve, existed});
        }
    }
    return originals;
}

}  // namespace ZET::Deploy
