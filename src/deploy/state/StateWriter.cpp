#include "deploy/state/StateWriter.h"

#include <cstdint>

#include "deploy/state/RecordedText.h"
#include "deploy/state/Replacement.h"
#include "deploy/state/Writes.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

bool Comes(const std::optional<CapturedFile>& now, const std::optional<CapturedFile>& wanted) {
    return IsThere(wanted) && !(now && now->IsAs(wanted->state));
}

bool Goes(const std::optional<CapturedFile>& now, const std::optional<CapturedFile>& wanted) {
    return IsThere(now) && wanted && !wanted->state.exists;
}

bool Stays(const std::optional<CapturedFile>& now, const std::optional<CapturedFile>& wanted) {
    return IsThere(now) && !Goes(now, wanted);
}

/// Whether nothing stands beside the file afterwards, as before the product came.
bool NothingStaysBeside(const FileWithCompanions& now, const FileWithCompanions& wanted) {
    return !Stays(now.reserve, wanted.reserve) && !Stays(now.absence, wanted.absence) &&
           !IsThere(wanted.reserve) && !IsThere(wanted.absence);
}

}  // namespace

bool GoesBackToReserve(const FileWithCompanions& now, const FileWithCompanions& wanted) {
    return IsThere(wanted.file) && IsThere(now.reserve) && NothingStaysBeside(now, wanted) &&
           now.reserve->IsAs(wanted.file->state);
}

bool IsReserveMadeOfFile(const FileWithCompanions& now, const FileWithCompanions& wanted) {
    if (!IsThere(now.file) || !IsThere(wanted.reserve) || IsThere(now.reserve) || IsThere(now.absence))
        return false;
    if (now.file->IsAs(wanted.reserve->state)) return true;
    // With other attributes, the reserve is wrong for an instant. That is accepted only if its text is not
    // held, so that it cannot be written at once.
    const bool isHeld = wanted.reserve->text.size() == wanted.reserve->state.size;
    return !isHeld && HaveSameText(now.file->state, wanted.reserve->state);
}

StateWriter::StateWriter(HostProduct& product, const FileInPlace& place, const FileVersion& version)
    : m_product(product), m_place(place), m_version(version) {}

void StateWriter::Bring(const FileWithCompanions& now, const FileWithCompanions& wanted) {
    RequireUnchanged();
    if (GoesBackToReserve(now, wanted)) return RestoreOriginal(m_product, m_place, m_version);
    MakeCompanions(now, wanted);
    WriteFile(now, wanted);
    RemoveCompanions(now, wanted);
}

void StateWriter::RequireUnchanged() const {
    RequireVersion(m_place, m_version);
}

void StateWriter::MakeCompanions(const FileWithCompanions& now, const FileWithCompanions& wanted) {
    const bool isAbsenceKept = IsThere(wanted.absence) && !IsThere(now.file) && !IsThere(now.absence);
    if (isAbsenceKept || IsReserveMadeOfFile(now, wanted)) KeepOriginal();
    if (Comes(now.reserve, wanted.reserve)) MakeUp(ZETReserveSuffix, *wanted.reserve);
    if (Comes(now.absence, wanted.absence)) MakeUp(ZETAbsenceSuffix, *wanted.absence);
}

/// What this makes stays, whatever happens to the file: it is the original, and recorded.
void StateWriter::KeepOriginal() {
    Replacement replacement(m_product, m_place, m_version);
    replacement.KeepOriginal();
    replacement.LeaveFile();
}

/// Makes what the module has not made as it was.
void StateWriter::MakeUp(const char* suffix, const CapturedFile& wanted) {
    if (CaptureIn(m_place, suffix, UINT64_MAX).IsAs(wanted.state)) return;
    RecordedText(m_product, m_place, suffix).Put(wanted, [&] { RequireUnchanged(); });
}

void StateWriter::WriteFile(const FileWithCompanions& now, const FileWithCompanions& wanted) {
    if (Goes(now.file, wanted.file)) {
        RequireUnchanged();
        IsAboutToWrite(m_place.Path());
        m_place.Within([](const std::string& name) { RemoveFile(name); });
    } else if (Comes(now.file, wanted.file)) {
        RecordedText(m_product, m_place, "").Put(*wanted.file, [&] { RequireUnchanged(); });
    }
}

void StateWriter::RemoveCompanions(const FileWithCompanions& now, const FileWithCompanions& wanted) {
    const bool isReserveToGo = Goes(now.reserve, wanted.reserve);
    const bool isAbsenceToGo = Goes(now.absence, wanted.absence);
    if (!isReserveToGo && !isAbsenceToGo) return;
    m_place.Within([&](const std::string& name) {
        if (NothingStaysBeside(now, wanted)) return m_product.Config().RemoveConfigFileReserve(name);
        RemoveFile(name + (isReserveToGo ? ZETReserveSuffix : ZETAbsenceSuffix));
    });
}

}  // namespace ZET::Deploy
