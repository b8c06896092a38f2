#include "deploy/history/Originals.h"

#include <set>

#include "deploy/history/HistoryReader.h"
#include "deploy/host/Companions.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

namespace {

/// Names inside the root. The history may know a file that it has no entries of any more, and the other way
/// round. A reserve that was made alone is recorded under its own name.
std::set<std::string> NamesOfFiles(Deployment& product) {
    std::set<std::string> names;
    const HistoryReader history(product);
    if (!history.HasAny()) return names;
    for (const KnownFile& file : product.HostHistory().ToLook()->KnownFiles())
        names.insert(FileBeside(file.path));
    for (const RecordedEntry& entry : history.Entries())
        for (const RecordedFile& file : history.FilesOf(entry.number))
            names.insert(FileBeside(file.path));
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
