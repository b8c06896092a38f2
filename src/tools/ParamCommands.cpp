#include "Commands.h"
#include "EditRules.h"
#include "Edits.h"
#include "FileBytes.h"
#include "FileChange.h"
#include "LineEnds.h"
#include "RestoreRules.h"
#include "zet/ZETFormat.h"

namespace ZET {

int RunParamGet(Session& session) {
    const std::string& name = session.Asked().name;
    RequireParamName(name);
    session.Out().Set("file", session.Asked().file);
    session.Out().Set("name", name);
    session.Out().Set("found", nullptr);  // as long as nobody could look
    session.Out().Set("value", nullptr);
    const std::string path = FileToShow(session, session.Asked().file);
    if (!IsLiteralName(name))
        RequireLiteralName(session.Core(), path, ReadFileBytes(path), ZETLookupOpening, name);
    // The lookup by name cannot tell an empty value from a parameter that is not there.
    const std::string line = OpenedFile(session, path, true)->GetLine(ZETLookupOpening + name + "=");
    std::optional<std::string> value;
    if (!line.empty()) value = WithoutLineEnd(line.substr(line.find('=') + 1));
    return ReportLookup(session, path + ": has no parameter \"" + name + "\"", "value", value);
}

int RunParamSet(Session& session) {
    const Request& asked = session.Asked();
    RequireParamName(asked.name);
    RequireOneLine(asked.text, "VALUE");
    FileChange change(session, asked.file);
    RequireNoTarget(session, change.Path());
    const TextToEdit text = LookAtBlocks(session, change.Path());
    if (!IsLiteralName(asked.name)) {
        RequireLiteralName(session.Core(), change.Path(), ReadFileBytes(change.Path()), ZETEditOpening,
                           asked.name);
    }
    RequireRoomForNotice(session, change.Path(), text);
    const std::string value = LineToSet(session, change.Path(), text, asked.text);
    return change.Make(Edit(session, [&](IZETConfigFile& file) { file.SetParamValue(asked.name, value); }),
                       asked.noBackup);
}

int RunParamRestore(Session& session) {
    const Request& asked = session.Asked();
    RequireParamName(asked.name);
    FileChange change(session, asked.file);
    RequireNoTarget(session, change.Path());
    const std::string bytes = ReadFileBytes(change.Path());
    const TextToEdit text = LookAtBlocks(session, change.Path(), bytes);
    RequireLiteralName(session.Core(), change.Path(), bytes,
                       std::string("^") + ZETFormerLinePrefix + ZETRestoreOpening, asked.name);
    if (!HasSomethingToRestore(session.Core(), {change.Path(), bytes, ZETRestoreOpening + asked.name + "=",
                                                ZETEditOpening + asked.name + "=", asked.allBlocks})) {
        return change.LeaveUnchanged("nothing to restore for \"" + asked.name + "\"");
    }
    RequireRoomForNotice(session, change.Path(), text);
    return change.Make(Edit(session, [&](IZETConfigFile& file) { file.RestoreParamValue(asked.name); }),
                       asked.noBackup);
}

}  // namespace ZET
