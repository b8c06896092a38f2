#include "PendingRecord.h"

#include <unistd.h>

#include "FileBytes.h"
#include "Staging.h"
#include "StateFile.h"
#include "TextStreams.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

std::vector<std::string> TemporariesOf(const std::string& path) {
    return {path + ZETTemporarySuffix, path + ZETReserveSuffix + ZETTemporarySuffix};
}

}  // namespace

PendingRecord::PendingRecord(Session& session, const std::vector<std::string>& paths)
    : m_file(FileOf(session)) {
    std::string text;
    for (const std::string& path : paths) {
        text += session.HostPaths().NameInside(path) + "\n";
        for (std::string& temporary : TemporariesOf(path))
            m_temporaries.push_back(std::move(temporary));
    }
    try {
        ReplaceStateFile(m_file, text);
    } catch (...) {
        unlink(m_file.c_str());
        throw;
    }
}

// A record that stays is harmless: the next run removes it.
PendingRecord::~PendingRecord() {
    for (const std::string& temporary : m_temporaries)
        unlink(temporary.c_str());
    unlink(m_file.c_str());
}

std::string PendingRecord::FileOf(Session& session) {
    return session.Param("ZET_VAR_LIB_DIR") + "/zet.pending";
}

std::set<std::string> PendingRecord::Read(Session& session) {
    std::set<std::string> paths;
    const std::string file = FileOf(session);
    RequireStateFile(file);
    if (!IsFileExist(file)) return paths;
    TextReader lines(ReadFileBytes(file));
    for (std::string line; std::getline(lines, line);) {
        const std::string path = session.HostPaths().FromInside(line);
        if (session.HostPaths().StaysInside(path)) paths.insert(path);
    }
    return paths;
}

std::set<std::string> PendingRecord::ClearLeftOvers(Session& session) {
    const std::set<std::string> paths = Read(session);
    for (const std::string& path : paths) {
        for (const std::string& leftOver : TemporariesOf(path)) {
            if (!IsFileExist(leftOver)) continue;
            RemoveFile(leftOver);
            session.Out().Remark("removed " + leftOver + ", which a run that was cut short left");
        }
    }
    ReplaceStateFile(FileOf(session), "");
    Staging::RemoveLeftOvers(session.Param("ZET_VAR_LIB_DIR"));
    return paths;
}

}  // namespace ZET
