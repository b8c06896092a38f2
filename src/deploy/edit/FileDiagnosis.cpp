#include "deploy/edit/FileDiagnosis.h"

#include <optional>

#include "deploy/edit/Edits.h"
#include "deploy/host/Companions.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/StagedFile.h"
#include "deploy/host/Staging.h"
#include "deploy/host/UnifiedDiff.h"
#include "deploy/targets/FileOrigin.h"
#include "deploy/targets/ShownDiff.h"
#include "text/RegionScan.h"

namespace ZET::Deploy {

namespace {

/// Whether the file's lines ended with carriage returns before the system wrote it, by its template or its
/// reserve. None if it has neither.
std::optional<bool> HadCarriageReturns(const std::string& path, const FileOrigin& origin) {
    const std::string source = origin.isMade ? origin.templateFile : ReserveOf(path);
    if (source.empty()) return std::nullopt;
    return ReadFileBytes(source).find('\r') != std::string::npos;
}

std::string RepairDiff(const std::string& path, const std::string& read, const std::string& repaired) {
    const Staging staging;
    const std::string before = staging.PathOf("before");
    const std::string after = staging.PathOf("after");
    WriteStagedFile(before, read, 0600);
    WriteStagedFile(after, repaired, 0600);
    return UnifiedDiff(before, after, ShownPath(path));
}

/// Reads the file in pieces: most files are in order, and need not be in memory as a whole.
bool IsSpotless(const std::string& path, const Text::NoticeTexts& noticeTexts) {
    Text::RegionScan scan(&noticeTexts);
    ReadChunks(path, [&](std::string_view lines) { scan.Take(lines); });
    return scan.IsSpotless();
}

}  // namespace

FileDiagnosis DiagnoseFile(Deployment& product, const std::string& file) {
    FileDiagnosis result;
    result.path = FileToRead(product, file);
    const Text::NoticeTexts noticeTexts = WrittenNoticeTexts(product.Core());
    if (IsSpotless(result.path, noticeTexts)) {
        result.isPrivate = product.HostSecrets().IsPrivate(product.FilePath(file));
        return result;
    }
    const std::string bytes = ReadFileBytes(result.path);
    const FileOrigin origin = FindOrigin(product, file, Text::ManagedText(bytes), noticeTexts);
    result.isPrivate = origin.isPrivate;
    const bool hasCarriageReturns = bytes.find('\r') != std::string::npos;
    result.diagnosis = Text::DiagnoseMarkers(
        bytes, noticeTexts, hasCarriageReturns ? HadCarriageReturns(result.path, origin) : std::nullopt);
    const std::string& repaired = result.diagnosis.repaired;
    if (!result.diagnosis.damages.empty() && repaired != bytes)
        result.repair = RepairDiff(result.path, bytes, repaired);
    return result;
}

}  // namespace ZET::Deploy
