#include "cli/commands/Commands.h"
#include "deploy/edit/EditRules.h"
#include "deploy/edit/Edits.h"
#include "deploy/edit/FileChange.h"
#include "deploy/edit/RestoreRules.h"
#include "deploy/host/FileBytes.h"
#include "text/LineEnds.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

// What stands before the name in the expressions by which the module selects parameter lines.
constexpr char kLookupOpening[] = "^\\s*";
constexpr char kEditOpening[] = "^#*\\s*";
constexpr char kRestoreOpening[] = "#*\\s*";

}  // namespace

int RunParamGet(Session& session) {
    const std::string& name = session.Asked().name;
    RequireParamName(name);
    session.Out().Set("file", session.Asked().file);
    session.Out().Set("name", name);
    session.Out().Set("found", nullptr);  // as long as nobody could look
    session.Out().Set("value", nullptr);
    const std::string path = FileToShow(session, session.Asked().file);
    if (!IsLiteralName(name)) RequireLiteralName(session, path, ReadFileBytes(path), kLookupOpening, name);
    // The lookup by name cannot tell an empty value from a parameter that is not there.
    const std::string line = OpenedFile(session, path, true)->GetLine(kLookupOpening + name + "=");
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
        RequireLiteralName(session, change.Path(), ReadFileBytes(change.Path()), kEditOpening, asked.name);
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
    RequireLiteralName(session, change.Path(), bytes,
                       std::string("^") + ZETFormerLinePrefix + kRestoreOpening, asked.name);
    if (!HasSomethingToRestore(session, {change.Path(), bytes, kRestoreOpening + asked.name + "=",
                                         kEditOpening + asked.name + "=", asked.allBlocks})) {
        return change.LeaveUnchanged("nothing to restore for \"" + asked.name + "\"");
    }
    RequireRoomForNotice(session, change.Path(), text);
    return change.Make(Edit(session, [&](IZETConfigFile& file) { file.RestoreParamValue(asked.name); }),
                       asked.noBackup);
}

}  // namespace ZET
