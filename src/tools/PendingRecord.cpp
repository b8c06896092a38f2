#include "PendingRecord.h"

#include <cstdio>
#include <sstream>

#include "FileBytes.h"
#include "Staging.h"
#include "StateFile.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

std::string RecordFile(Session& session) {
    return session.Param("ZET_VAR_LIB_DIR") + "/zet-" + session.Role() + ".pending";
}

}  // namespace

PendingRecord::PendingRecord(Session& session, const std::vector<std::string>& paths)
    : m_file(RecordFile(session)) {
    std::string text;
    for (const std::string& path : paths)
        text += path + "\n";
    ReplaceStateFile(m_file, text);
}

// A record that stays names files without a temporary companion: harmless, and the next run removes it.
PendingRecord::~PendingRecord() {
    std::remove(m_file.c_str());
}

std::set<std::string> PendingRecord::Read(Session& session) {
    std::set<std::string> paths;
    const std::string file = RecordFile(session);
    if (!IsFileExist(file)) return paths;
    std::istringstream lines(ReadFileBytes(file));
    for (std::string line; std::getline(lines, line);)
        paths.insert(line);
    return paths;
}

void PendingRecord::ClearLeftOvers(Session& session) {
    for (const std::string& path : Read(session)) {
        for (const std::string& leftOver :
             {path + ZETTemporarySuffix, path + ZETReserveSuffix + ZETTemporarySuffix}) {
            if (!IsFileExist(leftOver)) continue;
            RemoveFile(leftOver);
            session.Out().Remark("removed " + leftOver + ", which a run that was cut short left");
        }
    }
    ReplaceStateFile(RecordFile(session), "");
    Staging::RemoveLeftOvers(session.Param("ZET_VAR_LIB_DIR"));
}

}  // namespace ZET
