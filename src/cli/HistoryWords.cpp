#include "cli/HistoryWords.h"
#include "cli/FileReport.h"
#include "cli/Translation.h"

#include <ctime>
#include <utility>

#include "deploy/history/HistoryEntries.h"
#include "deploy/host/FileState.h"
#include "posix/Clock.h"

namespace ZET::Cli {

namespace {

/// The outcomes of entries as the library names them, marked for translation.
[[maybe_unused]] constexpr const char* kOutcomes[] = {ZET_TEXT("done"), ZET_TEXT("failed"),
                                                      ZET_TEXT("cut short"), ZET_TEXT("not ended")};

struct tm PartsOf(std::int64_t time, struct tm* (*takeApart)(const time_t*, struct tm*)) {
    const time_t seconds = time / kNanoseconds;
    struct tm parts = {};
    takeApart(&seconds, &parts);
    return parts;
}

Value TimeOrNull(std::int64_t time) {
    if (time == 0) return nullptr;
    char text[64];
    const struct tm parts = PartsOf(time, gmtime_r);
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

Value AttributeOrNull(const FileState& state, std::string (*textOf)(const FileState&)) {
    return state.exists ? Value(textOf(state)) : Value(nullptr);
}

Fields FieldsOfCommand(const HistoryEntry& entry) {
    return {{"entry", entry.number},
            {"begun", TimeOrNull(entry.begun)},
            {"ended", TimeOrNull(entry.ended)},
            {"outcome", entry.outcome},
            {"user", entry.userName},
            {"user_id", static_cast<std::int64_t>(entry.user)},
            {"login_user", TextOrNull(entry.loginUser)},
            {"sudo_user", TextOrNull(entry.sudoUser)},
            {"role", NameOf(entry.role)},
            {"words", List(entry.words.begin(), entry.words.end())},
            {"message", TextOrNull(entry.message)}};
}

/// The order of ages; an edit after an entry follows it.
std::pair<std::int64_t, bool> PlaceOf(const LineAge& age) {
    return {age.entry ? age.entry->number : age.editAfter.value_or(0), !age.entry};
}

}  // namespace

std::string LocalTime(std::int64_t time) {
    char text[64];
    const struct tm parts = PartsOf(time, localtime_r);
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    return text;
}

std::string WhoOf(const HistoryEntry& entry) {
    const std::string person = PersonOf(entry);
    return person == entry.userName ? person : Filled(_("%s as %s"), {person, entry.userName});
}

std::string LineOf(const HistoryEntry& entry) {
    std::string text = std::to_string(entry.number) + "  " + LocalTime(entry.begun) + "  " + WhoOf(entry) +
                       "  " + RoleName(entry.role) + "  ";
    if (entry.outcome != "done") text += std::string(_(entry.outcome.c_str())) + ": ";
    text += CommandOf(entry);
    return entry.message.empty() ? text : text + "  # " + entry.message;
}

std::string LineOf(const HistoryFile& file) {
    std::string text = file.path + ": " + ResultText(file.result, false);
    if (!file.isEnded) text += std::string(", ") + _("not ended");
    if (file.result == FileOutcome::Result::Changed) {
        const std::string attributes = DescribeChange(file.before, file.after);
        if (!attributes.empty()) text += ", " + attributes;
    }
    return file.isEdited ? text + ", " + _("over an edit of somebody else's") : text;
}

Fields FieldsOf(const HistoryFile& file) {
    return {{"path", file.path},
            {"kind", file.kind},
            {"template", TextOrNull(file.templateName)},
            {"result", NameOf(file.result)},
            {"edited", file.isEdited},
            {"secret", file.isSecret},
            {"mode_before", AttributeOrNull(file.before, ModeText)},
            {"mode_after", AttributeOrNull(file.after, ModeText)},
            {"owner_before", AttributeOrNull(file.before, OwnerText)},
            {"owner_after", AttributeOrNull(file.after, OwnerText)},
            {"kept_before", file.isTextKeptBefore},
            {"kept_after", file.isTextKeptAfter}};
}

Fields FieldsOf(const HistoryEntry& entry) {
    Fields fields = FieldsOfCommand(entry);
    List files;
    for (const HistoryFile& file : entry.files)
        files.emplace_back(FieldsOf(file));
    fields.emplace_back("files", std::move(files));
    return fields;
}

Fields FieldsOf(const HistoryDiff& diff) {
    Fields fields = FieldsOf(diff.file);
    AddDiff(fields, diff.diff);
    return fields;
}

std::string SinceText(const LineAge& age) {
    if (!age.entry)
        return Filled(_("since an edit of somebody else's after change %s"),
                      {std::to_string(age.editAfter.value_or(0))});
    const HistoryEntry& entry = *age.entry;
    return Filled(_("since change %s, %s, by %s: %s"),
                  {std::to_string(entry.number), LocalTime(entry.begun), WhoOf(entry), CommandOf(entry)});
}

Value SinceValue(const std::optional<LineAge>& age) {
    if (!age) return nullptr;
    if (age->entry) {
        Fields fields = FieldsOfCommand(*age->entry);
        fields.emplace_back("after_entry", nullptr);
        return fields;
    }
    return Fields{{"entry", nullptr}, {"after_entry", *age->editAfter}};
}

bool IsNewer(const LineAge& one, const LineAge& other) {
    return PlaceOf(one) > PlaceOf(other);
}

}  // namespace ZET::Cli
