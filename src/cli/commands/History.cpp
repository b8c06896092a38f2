#include <ostream>

#include "cli/ChangeNumber.h"
#include "cli/ExitStatus.h"
#include "cli/FileReport.h"
#include "cli/HistoryWords.h"
#include "cli/Translation.h"
#include "cli/commands/Registrations.h"
#include "deploy/history/HistoryDiffs.h"
#include "deploy/history/HistoryEntries.h"
#include "deploy/history/HistoryErasure.h"
#include "deploy/history/HistoryExport.h"
#include "deploy/history/HistoryReader.h"
#include "deploy/host/FileState.h"
#include "zet/deploy/Failure.h"

namespace ZET::Cli {

namespace {

/// The kinds of files as the library names them, marked for translation.
[[maybe_unused]] constexpr const char* kKinds[] = {
    ZET_TEXT("target"),    ZET_TEXT("edit"),   ZET_TEXT("template"),  ZET_TEXT("option"),
    ZET_TEXT("companion"), ZET_TEXT("status"), ZET_TEXT("rendering"), ZET_TEXT("original")};

struct ListWords {
    std::string file;
    std::size_t count = SIZE_MAX;
};

struct ShowWords {
    std::string number;
    std::string file;
    bool after = false;
};

struct DiffWords {
    std::string number;
    std::string to;  ///< a number, or the file if there is no number
    std::string file;
};

struct EraseWords {
    std::string file;
};

const char* WhyNone(Session& session, const std::string& file) {
    if (!file.empty()) return _("no change of it is kept any more");
    return HistoryReader(session.Product()).LastNumber() == 0 ? _("nothing was recorded yet")
                                                              : _("no change is kept any more");
}

int Tell(Session& session, const ListWords& asked) {
    Report& out = session.Out();
    out.Set("file", TextOrNull(asked.file));
    out.AddList("entries");
    const std::vector<HistoryEntry> entries = ListHistory(session.Product(), asked.file, asked.count);
    out.UsePager();
    for (const HistoryEntry& entry : entries) {
        out.Add("entries", FieldsOf(entry));
        out.Line(LineOf(entry));
        if (session.Asked().quiet) continue;
        for (const HistoryFile& file : entry.files)
            out.Line("    " + LineOf(file));
    }
    if (entries.empty()) out.Remark(WhyNone(session, asked.file));
    return kDone;
}

void TellUser(Report& out, const HistoryEntry& entry) {
    std::string text = Filled(_("user: %s"), {entry.userName});
    if (!entry.loginUser.empty() && entry.loginUser != entry.userName)
        text += Filled(_(", logged in as %s"), {entry.loginUser});
    if (!entry.sudoUser.empty() && entry.sudoUser != entry.userName)
        text += Filled(_(", by sudo of %s"), {entry.sudoUser});
    out.Line(text);
}

std::string WhatIsNotKept(const HistoryFile& file) {
    const bool lacksBefore = file.before.exists && !file.isTextKeptBefore;
    const bool lacksAfter = file.after.exists && !file.isTextKeptAfter;
    if (lacksBefore && lacksAfter) return std::string("; ") + _("not kept: its text before and after");
    if (lacksBefore) return std::string("; ") + _("not kept: its text before");
    return lacksAfter ? std::string("; ") + _("not kept: its text after") : "";
}

void TellEntry(Report& out, const HistoryEntry& entry) {
    out.Line(Filled(_("change: %s"), {std::to_string(entry.number)}));
    out.Line(Filled(_("time: %s"), {LocalTime(entry.begun)}));
    TellUser(out, entry);
    out.Line(Filled(_("role: %s"), {RoleName(entry.role)}));
    out.Line(Filled(_("command: %s"), {CommandOf(entry)}));
    if (!entry.message.empty()) out.Line(Filled(_("why: %s"), {entry.message}));
    out.Line(Filled(_("outcome: %s"), {_(entry.outcome.c_str())}));
    for (const HistoryFile& file : entry.files) {
        const std::string kind = _(file.kind.c_str());
        const std::string made =
            file.templateName.empty() ? kind : Filled(_("%s of [%s]"), {kind, file.templateName});
        const std::string attributes = file.before.exists ? "" : DescribeChange(file.before, file.after);
        out.Line(LineOf(file) + (attributes.empty() ? "" : ", " + attributes) + " (" + made + ")" +
                 WhatIsNotKept(file));
    }
}

int Show(Session& session, const ShowWords& asked) {
    Report& out = session.Out();
    out.AddList("entries");
    out.Set("file", TextOrNull(asked.file));
    out.Set("text", nullptr);
    if (asked.after && asked.file.empty())
        throw UsageError(_("--after is about the text of a file (name the file behind the number)"));
    const std::int64_t number = ChangeNumber(asked.number);
    const HistoryEntry entry = ShowEntry(session.Product(), number);
    out.Add("entries", FieldsOf(entry));
    out.UsePager();
    if (asked.file.empty()) {
        TellEntry(out, entry);
        return kDone;
    }
    const std::string text =
        TextOf(session.Product(), number, asked.file, asked.after ? Side::After : Side::Before);
    out.Set("text", text);
    out.Bytes(text);
    return kDone;
}

/// False if the diff could not be made.
bool TellDiffOf(Session& session, const HistoryDiff& diff) {
    Report& out = session.Out();
    out.Add("files", FieldsOf(diff));
    if (!DescribeChange(diff.file.before, diff.file.after).empty() && diff.file.before.exists)
        out.Line(LineOf(diff.file));
    TellDiff(out, diff.diff);
    if (!diff.trouble.empty()) out.Error(diff.file.path + ": " + diff.trouble + _(" (look into a backup)"));
    return diff.trouble.empty();
}

int Diff(Session& session, const DiffWords& asked) {
    Report& out = session.Out();
    const bool hasTo = IsNumber(asked.to);
    const std::string& file = hasTo ? asked.file : asked.to;
    for (const char* field : {"entry", "to_entry"})
        out.Set(field, nullptr);
    out.Set("file", TextOrNull(file));
    out.AddList("files");
    // A word before a file must be a number.
    const auto to = hasTo || !asked.file.empty() ? std::optional(ChangeNumber(asked.to)) : std::nullopt;
    const std::int64_t number = ChangeNumber(asked.number);
    out.Set("entry", number);
    if (to) out.Set("to_entry", *to);
    const std::vector<HistoryDiff> diffs = DiffHistory(session.Product(), number, to, file);
    out.UsePager();
    bool isComplete = true;
    for (const HistoryDiff& diff : diffs)
        isComplete = TellDiffOf(session, diff) && isComplete;
    return isComplete ? kDone : kFailed;
}

/// A stream that writes into the report; for the document it collects everything.
class ReportStream : public std::streambuf {
  public:
    explicit ReportStream(Report& report, bool isKept) : m_report(report), m_isKept(isKept) {}

    const std::string& Kept() const { return m_kept; }

  protected:
    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        const std::string_view text(bytes, static_cast<std::size_t>(count));
        if (m_isKept)
            m_kept += text;
        else
            m_report.Bytes(text);
        return count;
    }

    int overflow(int byte) override {
        const char one = static_cast<char>(byte);
        xsputn(&one, 1);
        return byte;
    }

  private:
    Report& m_report;
    bool m_isKept;
    std::string m_kept;
};

int Export(Session& session, const NoWords&) {
    Report& out = session.Out();
    out.Set("text", nullptr);
    ReportStream buffer(out, session.Asked().json);
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::badbit);
    ExportHistory(session.Product(), stream);
    if (session.Asked().json) out.Set("text", buffer.Kept());
    return kDone;
}

std::string ErasedText(const ErasedHistory& erased, bool isDryRun) {
    const std::string text = isDryRun ? Counted("%s text would be erased from the history",
                                                "%s texts would be erased from the history", erased.texts)
                                      : Counted("%s text was erased from the history",
                                                "%s texts were erased from the history", erased.texts);
    return erased.path + ": " + text;
}

int Erase(Session& session, const EraseWords& asked) {
    Report& out = session.Out();
    const bool isDryRun = session.Asked().dryRun;
    out.Set("dry_run", isDryRun);
    out.Set("file", asked.file);
    for (const char* field : {"path", "erased"})
        out.Set(field, nullptr);
    out.AddList("also_in");
    const ErasedHistory erased = EraseHistory(session.Product(), asked.file);
    out.Set("path", erased.path);
    out.Set("erased", static_cast<std::int64_t>(erased.texts));
    out.Line(ErasedText(erased, isDryRun));
    for (const std::string& path : erased.alsoHeld) {
        out.Add("also_in", path);
        out.Warning(path + ": " +
                    _("the history has one of these texts of this file, too (erase it as well)"));
    }
    return StatusAfter(session, erased.texts != 0);
}

}  // namespace

void RegisterHistory(CommandLine& line) {
    auto family = line.Family("history", "Tell what was done on this host", Subject::AnyFile);
    family.Alone<ListWords>(Tell)
        .Maybe("FILE", &ListWords::file, "Only what was done to this file")
        .Number("-N,--count", &ListWords::count, "Only the last ones");
    family
        .Add<ShowWords>("show", "Show one change, or print the text that it replaced", Show)(
            "NUMBER", &ShowWords::number, "The change")
        .Maybe("FILE", &ShowWords::file, "Print the text that this file had before it")
        .Flag("--after", &ShowWords::after, "The text that it had after it");
    family
        .Add<DiffWords>("diff", "Show what a change, or several, did to the texts", Diff)(
            "NUMBER", &DiffWords::number, "The change")
        .Maybe("TO", &DiffWords::to, "Up to this change, from the first one on")
        .Maybe("FILE", &DiffWords::file, "Only of this file");
    family.Add<NoWords>("export", "Print it as a stream for \"git fast-import\"", Export);
    family.Add<EraseWords>("erase", "Take the texts of a file out for good", Erase)("FILE", &EraseWords::file,
                                                                                    "The file");
}

}  // namespace ZET::Cli
