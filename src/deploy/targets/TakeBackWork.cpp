#include "deploy/targets/TakeBackWork.h"

#include <string>

#include "deploy/host/FileInPlace.h"
#include "deploy/host/FileState.h"
#include "deploy/state/Replacement.h"

namespace ZET::Deploy {

namespace {

using Action = TakeBackStep::Action;

bool IsText(const TakeBackStep& step) {
    return step.action == Action::TakeOutBlocks || step.action == Action::NameOtherRole;
}

bool IsEditedSince(const KnownFiles& known, const std::string& path) {
    return known.Find(path) != nullptr && StateOf(path).IsRegular() && !known.IsAsLeft(path);
}

/// What somebody makes of the file meanwhile is not the product's work.
void ExpectToStay(Deployment& product, const KnownFiles& known, const TakeBackStep& step,
                  ExpectedFile& file) {
    file.after = Capture(product, file.path);
    if (!step.others && !known.Has(file.path, OtherRole(product.Role()))) return;
    if (!step.others) file.kind = FileKind::Target;
    // Somebody may have edited the file since.
    file.knownAs = known.Find(file.path)->state;
}

void ExpectText(Deployment& product, const TakeBackStep& step, ExpectedFile& file) {
    file.after = Capture(product, file.path);
    file.after->SetText(step.text);
    if (step.action == Action::NameOtherRole) {
        file.kind = FileKind::Target;
        file.knowledge->namedRole = OtherRole(product.Role());
    } else if (step.isKept) {
        file.kind = FileKind::Edit;
        file.knowledge->ForgetBase();
    }
}

void ExpectReserve(Deployment& product, const KnownFiles& known, const TakeBackStep& step,
                   ExpectedFile& file) {
    file.after = step.hasReserve ? Capture(product, step.file.Reserve()) : CapturedFile();
    file.companions = ExpectedFile::Companions::MayGo;
    file.wasEdited = step.isForced && IsEditedSince(known, file.path);
}

}  // namespace

ExpectedFile ExpectedOf(Deployment& product, const KnownFiles& known, const TakeBackStep& step) {
    ExpectedFile file;
    file.path = step.file.path;
    file.kind = step.others ? FileKind::Edit : FileKind::Original;
    file.base = step.others;
    if (const KnownFile* const former = known.Find(file.path)) file.knowledge = former->state.knowledge;
    if (file.knowledge) file.knowledge->roles.erase(product.Role());
    if (step.action == Action::OnlyRecord)
        ExpectToStay(product, known, step, file);
    else if (IsText(step))
        ExpectText(product, step, file);
    else
        ExpectReserve(product, known, step, file);
    return file;
}

void DoStep(Deployment& product, const TakeBackStep& step) {
    if (!step.IsChange()) return;
    const FileInPlace place = step.file.PlaceIn(product.HostPaths());
    if (step.action == Action::PutBack) return PutBackAsItWas(product, place, step.version);
    if (IsText(step)) {
        Replacement replacement(product, place, step.version);
        return replacement.MakeOfText(step.text, replacement.Former().mode);
    }
    // What cannot be replaced, like a mount point, can still be as it was.
    place.Within([&](const std::string& name) { product.Config().RemoveConfigFileReserve(name); });
}

}  // namespace ZET::Deploy
