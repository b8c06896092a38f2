#include "deploy/state/Recording.h"

#include <unistd.h>

#include <memory>
#include <utility>

#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Words.h"
#include "deploy/state/EntryToOpen.h"
#include "deploy/state/History.h"
#include "deploy/state/LostText.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

bool HasCompanion(const ExpectedFile& file, const std::string& suffix) {
    return (file.place == nullptr ? StateOf(file.path + suffix) : file.place->State(suffix)).exists;
}

}  // namespace

Recording::Recording(Host& host, Use use, bool isLocked, Purpose purpose)
    : m_host(host), m_purpose(purpose), m_limits(host.HostHistory().Limits()) {
    const History& history = host.HostHistory();
    if (use == Use::OfFiles && !history.KeepsTexts()) return;
    const bool isRecorded = isLocked && history.CanRecord();
    if (host.Wanted().dryRun) {
        if (use == Use::OfFiles && !isRecorded) TellWhyNot();
        return;
    }
    if (isRecorded)
        OpenStore();
    else
        TellWhyNot();
}

void Recording::OpenStore() {
    OrGoOnWithout([&] { m_store = &m_host.HostHistory().ToRecord(); });
}

void Recording::TellWhyNot() const {
    Observer& out = m_host.Out();
    if (geteuid() == 0 && m_host.HostHistory().CanRecord())
        out.Warning(
            Words("what is changed is not recorded: %s cannot be locked (let it be a regular "
                  "file that can be written)",
                  m_host.State().Lock()));
    else if (geteuid() == 0)
        out.Warning(
            _("what is changed is not recorded: ZET_VAR_LIB_DIR cannot be written (create it, or "
              "make it writable)"));
    else
        out.Detail(_("what is changed is not recorded: ZET_VAR_LIB_DIR cannot be written"));
}

template <typename Call>
void Recording::OrGoOnWithout(Call call) {
    try {
        call();
    } catch (const Failure& failure) {
        if (m_host.HostHistory().IsNeeded(m_purpose)) throw;
        if (m_host.HostHistory().IsOfStore(failure))
            m_host.HostHistory().TellUnusable(failure);
        else
            m_host.Out().Warning(Words("what is changed is not recorded: %s", failure.what()));
        m_store = nullptr;
        m_open.reset();
        m_number.reset();
        m_rows.clear();
    }
}

Recording::~Recording() {
    if (!m_open) return;
    try {
        Close(EntryOutcome::Failed, Ending::Unknown);
    } catch (...) {
        // What ended the command is being reported. The entry stays open, and the next run finds out by
        // content what was done.
    }
}

void Recording::Expect(ExpectedFile file) {
    if (m_host.Wanted().dryRun && file.wasEdited) WarnOfLossToCome(m_host, file.path, file.after);
    if (!IsOn()) return;
    OrGoOnWithout([&] { ExpectWithCompanions(std::move(file)); });
}

void Recording::ExpectTogether(const std::function<void()>& call) {
    std::unique_ptr<Database::Transaction> look;
    if (IsOn()) OrGoOnWithout([&] { look = m_store->Look(); });
    call();
}

void Recording::ExpectWithCompanions(ExpectedFile file) {
    m_rows.push_back(RowOf(file, file.suffix));
    IsMadeFrom(file.path);
    file.before.reset();
    file.after.reset();
    file.base.reset();
    file.knowledge.reset();
    file.kind = FileKind::Companion;
    if (file.companions == ExpectedFile::Companions::MayGo) ExpectCompanionsToGo(file);
    // Without texts, files go back by their companions, and not by the history.
    if (file.companions == ExpectedFile::Companions::MayCome && m_limits.keepsTexts)
        ExpectCompanionToCome(file);
}

void Recording::ExpectCompanionsToGo(ExpectedFile& companion) {
    for (const char* const suffix : kCompanionSuffixes) {
        Row row = RowOf(companion, suffix);
        if (row.record.file.before.exists) m_rows.push_back(std::move(row));
    }
}

void Recording::ExpectCompanionToCome(ExpectedFile& companion) {
    FileToRecord& original = m_rows.back().record;
    const bool hasReserve = original.file.before.exists;
    // A reserve is a copy, so it need not be read to know its text.
    if (hasReserve) companion.after = CapturedFile{original.file.before, ""};
    Row row = RowOf(companion, hasReserve ? ZETReserveSuffix : ZETAbsenceSuffix);
    if (row.record.file.before.exists) return;
    if (!hasReserve) return m_rows.push_back(std::move(row));
    // What the product itself made gets no reserve, however often it is written.
    if (!HasCompanion(companion, ZETAbsenceSuffix)) original.reserve = std::move(row.record.file);
}

void Recording::IsMadeFrom(const std::string& path) {
    m_isPrivate = m_isPrivate || (HasTexts(m_host.Wanted()) && m_host.IsPrivate(path));
}

/// Moves the texts out of `file`, as the caller does not need them any more.
Recording::Row Recording::RowOf(ExpectedFile& file, const std::string& suffix) const {
    Row row;
    row.path = file.path + suffix;
    row.suffix = suffix;
    row.place = file.place;
    CapturedFile before = file.before ? std::move(*file.before) : Before(row);
    FileToRecord& record = row.record;
    // A file is known by one name, whatever way led to it.
    record.file.path = m_host.HostPaths().NameOfReal(row.path);
    record.file.kind = file.kind;
    record.file.wasEdited = file.wasEdited;
    record.file.isPutBack = file.isPutBack;
    const std::optional<KnownFile> known = m_store->Known(record.file.path);
    if (known) {
        before.state.knowledge = known->state.knowledge;
        record.file.kindBefore = known->kind;
        if (!HaveSameTextAndMode(known->state, before.state)) record.file.knownAsBefore = known->state;
        if (known->kind == FileKind::Target && file.kind == FileKind::Edit && !file.knowledge)
            record.file.kind = FileKind::Target;
    }
    record.file.before = std::move(before.state);
    record.textBefore = std::move(before.text);
    record.isPlanned = file.after.has_value();
    record.file.after.exists = true;
    if (file.after) {
        record.file.after = file.after->state;
        record.textAfter = std::move(file.after->text);
    }
    record.base = std::move(file.base);
    record.knownAs = file.knownAs;
    record.file.staysKnown =
        record.knownAs && HaveSameTextAndMode(*record.knownAs, record.file.KnownBefore());
    record.isKnownAnew = file.knowledge.has_value();
    record.file.after.knowledge = file.knowledge.value_or(record.file.before.knowledge);
    return row;
}

Recording::Row Recording::RowOfReserve(const Row& file) {
    Row row;
    row.record.file = *file.record.reserve;
    row.path = file.path + ZETReserveSuffix;
    row.suffix = ZETReserveSuffix;
    row.place = file.place;
    return row;
}

/// Moves their texts along; `Announce` takes back the former ones of what is yet to be planned.
std::vector<FileToRecord> Recording::NewFiles() {
    std::vector<FileToRecord> files;
    files.reserve(m_rows.size());
    for (Row& row : m_rows) {
        if (!std::exchange(row.isNew, false)) continue;
        std::string textBefore = std::exchange(row.record.textBefore, {});
        std::string textAfter = std::exchange(row.record.textAfter, {});
        FileToRecord& file = files.emplace_back(row.record);
        file.textBefore = std::move(textBefore);
        file.textAfter = std::move(textAfter);
    }
    return files;
}

void Recording::Announce() {
    if (!IsOn()) return;
    OrGoOnWithout([&] {
        std::vector<FileToRecord> files = NewFiles();
        m_number = m_open = m_store->Announce(EntryToOpen(m_host, m_isPrivate), files);
        for (std::size_t i = 0; i < files.size(); ++i)
            if (!files[i].isPlanned) m_rows[i].record.textBefore = std::move(files[i].textBefore);
    });
}

void Recording::Plan(const std::string& path, CapturedFile after, Attributes attributes) {
    for (Row& row : m_rows) {
        if (row.path != path) continue;
        FileToRecord& record = row.record;
        const Knowledge knowledge = record.file.after.knowledge;
        const RecordedState& before = record.file.before;
        if (attributes == Attributes::OfTheFileBefore && before.exists) {
            after.state.owner = before.owner;
            after.state.group = before.group;
            after.state.attributes = before.attributes;
        }
        record.file.after = std::move(after.state);
        record.file.after.knowledge = knowledge;
        record.textAfter = std::move(after.text);
        record.isPlanned = true;
        row.isNew = true;
        return;
    }
}

void Recording::Begin() {
    if (!IsOn() || m_rows.empty()) return;
    OrGoOnWithout([&] {
        if (m_open)
            m_store->Plan(*m_open, NewFiles());
        else
            m_number = m_open = m_store->Open(EntryToOpen(m_host, m_isPrivate), NewFiles());
    });
}

CapturedFile Recording::Now(const Row& row) const {
    return row.place == nullptr ? Capture(row.path, m_limits.largestText)
                                : CaptureIn(*row.place, row.suffix, m_limits.largestText);
}

/// A file that goes back also takes the place of a link, which has no text to record: nothing can restore it.
CapturedFile Recording::Before(const Row& row) const {
    try {
        return Now(row);
    } catch (const Failure&) {
        if (m_purpose == Purpose::Writes) throw;
        return CapturedWithoutText(StateOf(row.path));
    }
}

/// Does not read a file that was written as planned, as its text is known.
CapturedFile Recording::AfterSuccess(const Row& row) const {
    const RecordedState& planned = row.record.file.after;
    if (!row.record.isPlanned || !planned.exists) return Now(row);
    CapturedFile after;
    after.state =
        row.place == nullptr ? CaptureWithoutText(row.path) : CaptureWithoutTextIn(*row.place, row.suffix);
    after.state.size = planned.size;
    after.state.digest = planned.digest;
    return after.state.exists ? after : Now(row);
}

Settlement Recording::Settled(Ending ending) const {
    Settlement settlement;
    const auto settle = [&](const Row& row) {
        const Written written = m_writes.MayHold(row.path) ? Written::Maybe : Written::No;
        SettleFile(row.record, ending == Ending::Done ? AfterSuccess(row) : Now(row), ending, written,
                   settlement);
    };
    for (const Row& row : m_rows) {
        settle(row);
        if (row.record.reserve) settle(RowOfReserve(row));
    }
    return settlement;
}

void Recording::Discard() {
    if (m_open) m_store->Drop(*std::exchange(m_open, std::nullopt));
    m_number.reset();
}

void Recording::Complete(Ending ending) {
    if (!m_open) return;
    try {
        Close(EntryOutcome::Done, ending);
    } catch (const Failure& failure) {
        if (m_host.HostHistory().IsOfStore(failure)) return m_host.HostHistory().TellUnusable(failure);
        m_host.Out().Warning(
            Words("%s: the next command ends the change: %s", m_host.State().Store(), failure.what()));
    }
}

void Recording::Close(EntryOutcome outcome, Ending ending) {
    const std::int64_t number = *std::exchange(m_open, std::nullopt);
    Settlement settlement = Settled(ending);
    settlement.keepsEntry = m_host.HostHistory().KeepsTexts();
    if (m_store->Close(number, outcome, settlement)) m_host.Out().Recorded(number);
    for (const Row& row : m_rows)
        TellUnkept(m_host, m_limits, row.record.file, row.path, settlement.untouched);
}

}  // namespace ZET::Deploy
