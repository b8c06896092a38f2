#include "deploy/state/store/KeptTexts.h"

#include <cstdint>
#include <optional>
#include <utility>

#include "deploy/host/Words.h"
#include "deploy/state/store/Compression.h"
#include "deploy/state/store/Digest.h"
#include "deploy/state/store/PlainFrame.h"
#include "deploy/state/store/Rows.h"
#include "deploy/state/store/TextMark.h"

namespace ZET::Deploy {

namespace {

constexpr const char* kFrameOfText = "SELECT size, frame FROM texts WHERE id = ?";
constexpr const char* kIsMissing = ZET_TEXT("a text is missing");
constexpr const char* kIsDamaged = ZET_TEXT("a text is not as it was written");

bool IsTextAt(Database& database, std::int64_t id, const std::string& text) {
    Database::Rows rows(database, kFrameOfText, {id});
    if (!rows.Next()) throw DamagedRow(_(kIsMissing));
    const auto isSame = rows.Number(0) == static_cast<std::int64_t>(text.size())
                            ? IsFrameOf(rows.Bytes(1), text)
                            : std::nullopt;
    if (!isSame) throw DamagedRow(_(kIsDamaged));
    return *isSame;
}

/// Of a text that would have to be expanded to be compared.
std::optional<std::int64_t> MarkIn(Database& database, const std::string& text) {
    if (text.size() <= kLongestPlainText) return std::nullopt;
    Database::Rows rows(database, "SELECT key FROM secret");
    const bool isThere = rows.Next();
    if (!isThere || rows.Bytes(0).size() != kSizeOfMarkKey) throw DamagedRow();
    return MarkOf(rows.Text(0), text);
}

/// A digest like that of another text can be made, and so can a text be that has it: its mark tells, or it is
/// compared, as the texts of the first version of the tables are.
std::optional<TextNumber> Kept(Database& database, const std::string& text, const std::string& digest,
                               const std::optional<std::int64_t>& mark) {
    Database::Rows rows(database, "SELECT id, mark FROM texts WHERE digest = ? AND size = ?",
                        {Blob{digest}, static_cast<std::int64_t>(text.size())});
    while (rows.Next()) {
        const std::int64_t id = rows.Number(0);
        const auto itsMark = rows.OptionalNumber(1);
        if (mark && itsMark ? *mark == *itsMark : IsTextAt(database, id, text)) return TextNumber{id};
    }
    return std::nullopt;
}

TextNumber Keep(Database& database, const std::string& text, const std::string& digest) {
    const auto mark = MarkIn(database, text);
    if (const auto kept = Kept(database, text, digest, mark)) return *kept;
    database.Run(
        "INSERT INTO texts(digest, size, frame, mark) VALUES(?,?,?,?)",
        {Blob{digest}, static_cast<std::int64_t>(text.size()), Blob{Compressed(text)}, OptionalValue(mark)});
    return {database.LastRow()};
}

void Take(Database& database, const StoreLimits& limits, RecordedState& state, const std::string& text) {
    if (!state.exists || state.text) return;
    if (state.digest.empty()) {
        state.size = text.size();
        state.digest = DigestOf(text);
    }
    const bool isGiven = text.size() == state.size;
    if (isGiven && limits.keepsTexts && state.size <= limits.largestText)
        state.text = Keep(database, text, state.digest);
}

}  // namespace

RecordedFile WithTexts(Database& database, const StoreLimits& limits, const FileToRecord& file) {
    RecordedFile recorded = file.file;
    Take(database, limits, recorded.before, file.textBefore);
    recorded.after = AfterWithTexts(database, limits, file, std::move(recorded.after));
    return recorded;
}

RecordedState AfterWithTexts(Database& database, const StoreLimits& limits, const FileToRecord& file,
                             RecordedState after) {
    if (file.isPlanned) Take(database, limits, after, file.textAfter);
    // Of an edit, that is no text of a file but what a commit has set in it, and has to take back.
    if (file.base && (limits.keepsTexts || file.file.kind == FileKind::Edit)) {
        after.knowledge.ForgetBase();
        after.knowledge.base = Keep(database, *file.base, DigestOf(*file.base));
    }
    return after;
}

std::string TextAt(Database& database, TextNumber number) {
    Database::Rows rows(database, kFrameOfText, {number.value});
    if (!rows.Next()) throw DamagedRow(_(kIsMissing));
    const std::int64_t size = rows.Number(0);
    auto text = size < 0 ? std::nullopt : Expanded(rows.Bytes(1), static_cast<std::size_t>(size));
    if (!text) throw DamagedRow(_(kIsDamaged));
    return std::move(*text);
}

}  // namespace ZET::Deploy
