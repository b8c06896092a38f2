#include "deploy/edit/ParamEdits.h"

#include "deploy/edit/Edits.h"
#include "deploy/edit/FileEdit.h"
#include "deploy/edit/RestoreRules.h"
#include "deploy/host/FileBytes.h"
#include "deploy/targets/EditRules.h"
#include "text/LineEnds.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

std::optional<std::string> GetParam(Deployment& product, const std::string& path, const std::string& name) {
    if (!IsLiteralName(name))
        RequireLiteralName(product.Core(), path, ReadFileBytes(path), ZETLookupOpening, name);
    // The lookup by name cannot tell an empty value from a parameter that is not there.
    const std::string line = OpenedFile(product, path, true)->GetLine(ZETLookupOpening + name + "=");
    if (line.empty()) return std::nullopt;
    return Text::WithoutLineEnd(line.substr(line.find('=') + 1));
}

FileOutcome SetParam(Deployment& product, const std::string& file, const std::string& name,
                     const std::string& value, const EditOptions& options) {
    RequireParamName(name);
    RequireOneLine(value, "VALUE");
    FileEdit edit(product, file);
    RequireNoTarget(product, edit.Path(), options);
    const Text::TextToEdit text = LookAtBlocks(product, {file, edit.Path()});
    if (!IsLiteralName(name))
        RequireLiteralName(product.Core(), edit.Path(), ReadFileBytes(edit.Path()), ZETEditOpening, name);
    RequireRoomForNotice(edit.Path(), text, options);
    const std::string line = LineToSet(product.Out(), edit.Path(), text, value);
    return edit.Make(
        Edit(product, options, [&](IZETConfigFile& opened) { opened.SetParamValue(name, line); }),
        options.noBackup);
}

FileOutcome RestoreParam(Deployment& product, const std::string& file, const std::string& name,
                         const EditOptions& options) {
    RequireParamName(name);
    FileEdit edit(product, file);
    RequireNoTarget(product, edit.Path(), options);
    const std::string bytes = ReadFileBytes(edit.Path());
    const Text::TextToEdit text = LookAtBlocks(product, {file, edit.Path()}, bytes);
    RequireLiteralName(product.Core(), edit.Path(), bytes,
                       std::string("^") + ZETFormerLinePrefix + ZETRestoreOpening, name);
    if (!HasSomethingToRestore(product.Core(), {edit.Path(), bytes, ZETRestoreOpening + name + "=",
                                                ZETEditOpening + name + "=", options.allBlocks}))
        return edit.LeaveUnchanged("nothing to restore for \"" + name + "\"");
    RequireRoomForNotice(edit.Path(), text, options);
    return edit.Make(Edit(product, options, [&](IZETConfigFile& opened) { opened.RestoreParamValue(name); }),
                     options.noBackup);
}

}  // namespace ZET::Deploy
