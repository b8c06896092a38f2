#include "deploy/edit/Edits.h"

#include <cerrno>

#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileName.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/Language.h"
#include "deploy/state/OwnText.h"
#include "deploy/targets/EditRules.h"
#include "posix/PathNames.h"
#include "text/Continuation.h"
#include "text/FirstLine.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

/// The module gives its reason in words only, so that one remedy has to fit all.
constexpr char kRemedyOfReading[] = ZET_TEXT("repair or replace the file or its file system");

}  // namespace

std::shared_ptr<IZETConfigFile> OpenedFile(Deployment& product, const std::string& path, bool noMarkers) {
    auto file = RemedyErrors(kRemedyOfReading, [&] {
        return product.Config().OpenConfigFile(path, NameOf(product.Role()), noMarkers);
    });
    if (!file)
        throw Failure(
            {.file = path, .text = _("cannot be read any more"), .remedy = _("run the command again")});
    return file;
}

std::string FileToRead(const Host& host, const std::string& file) {
    RequireFileName(file);
    std::string path = host.FilePath(file);
    try {
        RequireReadableFile(path);
    } catch (const Failure& failure) {
        const Paths& paths = host.HostPaths();
        if (failure.ErrorNumber() == ENOENT)
            RefuseLinkToNothing(paths.HasRoot() ? paths.FromInside(Normalised("/" + file)) : file);
        throw;
    }
    return path;
}

void RequireWholeFile(const EditOptions& options) {
    if (options.section)
        throw UsageError(_("this edit knows no sections (leave the option out, or edit a parameter)"));
}

std::string FileToEdit(const Host& host, const std::string& file) {
    std::string path = FileToRead(host, file);
    RequireNoCompanion(path);
    return path;
}

void RequireRoomForNotice(const std::string& path, const Text::TextToEdit& text, const EditOptions& options) {
    // The module puts no notice where it finds one.
    if (options.noMarkers || !Text::MustComeFirst(text.firstLine) ||
        text.firstLine.find(ZETNoticeMarker) != std::string::npos)
        return;
    throw Failure({.file = path,
                   .line = static_cast<int>(text.firstNumber),
                   .text = _("the programs that read the file need this line as its first, and a notice "
                             "would come before it"),
                   .remedy = _("--no-markers edits without notice and markers")});
}

void JudgeWholeLine(Observer& observer, const std::string& path, const std::string& text,
                    const std::string& what, bool isForced) {
    if (!Text::GoesOn(text)) return;
    if (!isForced)
        throw UsageError(Words(
            "%s ends with \"\\\", and the line after it would be a part of it (--force sets it)", what));
    observer.Warning(
        Words("%s: %s ends with \"\\\", and the line after it becomes a part of it", path, what));
}

std::string LineWithEnd(Observer& observer, const std::string& path, const Text::TextToEdit& text,
                        const std::string& line) {
    const Text::LineEnds& ends = text.ends;
    if (ends.otherLine != 0) {
        const char* const how =
            ends.isOtherCarriageReturn
                ? _("ends with a carriage return and a line feed, other lines with a line feed alone")
                : _("ends with a line feed alone, other lines with a carriage return before it");
        observer.Warning(Words("%s:%s: %s; the line that is set has none (give all lines the same end)", path,
                               std::to_string(ends.otherLine), how));
    }
    return Text::WithLineEnd(line, ends);
}

void SaveEdited(IZETConfigFile& file) {
    RemedyErrors(kRemedyOfSaving, [&] { file.Save(true); });
}

void EditFile(Deployment& product, const std::string& path, bool noMarkers,
              const std::function<void(IZETConfigFile& file)>& edit) {
    const auto file = OpenedFile(product, path, noMarkers);
    RemedyErrors(kSimplerExpression, [&] { edit(*file); });
    const WrittenLanguage language(product.Core());
    SaveEdited(*file);
}

}  // namespace ZET::Deploy
