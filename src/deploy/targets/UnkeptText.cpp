#include "deploy/targets/UnkeptText.h"

#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Words.h"
#include "deploy/state/KnownFiles.h"
#include "text/WithoutBlocks.h"
#include "text/repair/TextToEdit.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

/// Whether the file is its reserve, except for the blocks that the product put into it.
bool IsMadeOfReserve(const std::string& path, const std::string& reserve) {
    if (!StateOf(reserve).IsRegular()) return false;
    const std::string text = ReadFileBytes(path);
    return !Text::FindDamage(text) && Text::WithoutBlocks(text) == ReadFileBytes(reserve);
}

}  // namespace

bool HoldsOthersWork(Deployment& product, const std::string& path) {
    if (!StateOf(path).IsRegular() || !HasCompanion(path)) return false;
    const KnownFiles known(product, KnownFiles::Unusable::IsTold);
    return !known.IsOwnWork(product.HostPaths().RealName(path)) &&
           !IsMadeOfReserve(path, path + ZETReserveSuffix);
}

void RequireKeptText(Deployment& product, const std::string& path, bool isRecorded) {
    const bool isKept = isRecorded && product.HostHistory().KeepsEditOf(VersionOf(path));
    if (isKept || !HoldsOthersWork(product, path)) return;
    throw Failure({.file = path,
                   .text = _("holds changes that are kept nowhere"),
                   .remedy = _("--force replaces it all the same")});
}

}  // namespace ZET::Deploy
