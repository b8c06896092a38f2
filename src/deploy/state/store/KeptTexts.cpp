#include "deploy/state/store/KeptTexts.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <variant>

#include "deploy/host/Words.h"
#include "deploy/state/store/Compression.h"
#include "deploy/state/store/Digest.h"
#include "deploy/state/store/PlainFrame.h"
#include "deploy/state/store/Rows.h"
#include "deploy/state/store/Schema.h"
#include "deploy/state/store/SealedFrame.h"
#include "deploy/state/store/TextDelta.h"
#include "deploy/state/store/TextMark.h"

namespace ZET::Deploy {

namespace {

constexpr Statement kFrameOfText = "SELECT size, frame FROM texts WHERE id = ?";
constexpr const char* kIsMissing = ZET_TEXT("a text is missing");
constexpr const char* kIsDamaged = ZET_TEXT("a text is not as it was written");

std::optional<std::string> ReadableTextAt(Database& database, TextNumber number) {
    try {
        return TextAt(database, number);
    } catch (const DamagedRow&) {
        return std::nullopt;
    }
}

/// A text that is found in the store.
struct KeptText {
    TextNumber number;
    bool isMarked = false;
    bool isSound = true;  ///< as far as the search had to look
};

/// The mark of a text that would have to be expanded to be compared; none for a short one.
std::optional<std::int64_t> MarkIn(Database& database, const std::string& text) {
    if (text.size() <= kLongestPlainText) return std::nullopt;
    const std::optional<std::string> key = MarkKey(database);
    if (!key) throw DamagedRow();
    return MarkOf(*key, text);
}

/// Somebody can make a text that has the digest of another one, so short texts are compared. A damaged one
/// counts if there is no other.
std::optional<KeptText> FindShort(Database& database, const std::string& text, const std::string& digest) {
    std::optional<KeptText> damaged;
    Database::Rows rows(database, "SELECT id, frame FROM texts WHERE digest = ? AND size = ?",
                        {BlobView(digest), static_cast<std::int64_t>(text.size())});
    while (rows.Next()) {
        const auto frame = FrameIn(rows.Bytes(1));
        const auto isSame = frame ? IsFrameOf(*frame, text) : std::nullopt;
        if (isSame == true) return KeptText{{rows.Number(0)}};
        if (!isSame) damaged = KeptText{.number = {rows.Number(0)}, .isSound = false};
    }
    return damaged;
}

/// A long text is recognised by its mark, or compared if the kept one has none.
std::optional<KeptText> FindLong(Database& database, const std::string& text, const std::string& digest,
                                 std::int64_t mark) {
    Database::Rows rows(database, "SELECT id, mark FROM texts WHERE digest = ? AND size = ?",
                        {BlobView(digest), static_cast<std::int64_t>(text.size())});
    while (rows.Next()) {
        const KeptText kept = {{rows.Number(0)}, rows.OptionalNumber(1).has_value()};
        if (kept.isMarked ? mark == rows.Number(1) : ReadableTextAt(database, kept.number) == text)
            return kept;
    }
    return std::nullopt;
}

/// A kept text: its number and its bytes.
struct FormerText {
    TextNumber number;
    const std::string& text;
};

/// The frame of a short text has a checksum already.
std::string FrameOfWhole(const std::string& text) {
    std::string frame = Compressed(text);
    return text.size() <= kLongestPlainText ? frame : SealedFrame(frame);
}

bool IsKnownSoundAt(Database& database, std::int64_t id) {
    Database::Rows rows(database, kFrameOfText, {id});
    return rows.Next() && SoundFrameIn(rows.Bytes(1)).has_value();
}

/// The delta of a kept text, or of itself if it is kept whole; none if it is not known to be sound.
std::optional<TextDelta> KeptDelta(Database& database, const FormerText& former) {
    Database::Rows rows(database, kFrameOfText, {former.number.value});
    if (!rows.Next()) throw DamagedRow(_(kIsMissing));
    if (rows.Number(0) != static_cast<std::int64_t>(former.text.size())) return std::nullopt;
    const auto frame = SoundFrameIn(rows.Bytes(1));
    if (!frame) return std::nullopt;
    return IsFrameOfDelta(*frame) ? DeltaOfFrame(*frame)
                                  : DeltaOfWhole(former.number.value, former.text.size());
}

/// None if the former text, or what it is made from, is not known to be sound: damage would spread to each
/// later text.
std::optional<TextDelta> DeltaAt(Database& database, const FormerText& former) {
    auto delta = KeptDelta(database, former);
    const bool isWhole = delta && delta->base == former.number.value;
    if (delta && !isWhole && !IsKnownSoundAt(database, delta->base)) return std::nullopt;
    return delta;
}

std::optional<TextDelta> DeltaOf(Database& database, const std::string& text,
                                 const std::optional<FormerText>& former) {
    if (!former || text.size() <= kLongestPlainText) return std::nullopt;
    const auto delta = DeltaAt(database, *former);
    return delta ? DeltaFrom(*delta, former->text, text) : std::nullopt;
}

/// Whether the checksums tell that the store can return the text; none if they do not tell.
std::optional<bool> IsSoundByChecksums(Database& database, std::int64_t id) {
    Database::Rows rows(database, kFrameOfText, {id});
    const auto frame = rows.Next() ? SoundFrameIn(rows.Bytes(1)) : std::nullopt;
    if (!frame) return std::nullopt;
    if (!IsFrameOfDelta(*frame)) return true;
    const auto delta = DeltaOfFrame(*frame);
    if (!delta) return false;
    Database::Rows base(database, "SELECT frame FROM texts WHERE id = ?", {delta->base});
    if (!base.Next()) return false;
    return SoundFrameIn(base.Bytes(0)) ? std::optional(true) : std::nullopt;
}

bool IsReadableAt(Database& database, std::int64_t id, const std::string& text) {
    const std::optional<bool> isSound = IsSoundByChecksums(database, id);
    return isSound ? *isSound : ReadableTextAt(database, {id}) == text;
}

/// That a text is found by its digest or its mark does not tell whether the store can still return it. If it
/// cannot, the text is kept anew in its place, for all who have it.
std::optional<TextNumber> Kept(Database& database, const std::string& text, const std::string& digest,
                               const std::optional<std::int64_t>& mark) {
    const auto kept = mark ? FindLong(database, text, digest, *mark) : FindShort(database, text, digest);
    if (!kept) return std::nullopt;
    const std::int64_t id = kept->number.value;
    if (mark && !kept->isMarked) database.Run("UPDATE texts SET mark = ? WHERE id = ?", {*mark, id});
    // `made_from` stays: its base is still released with it, and nothing else may have that any more.
    if (mark ? !IsReadableAt(database, id, text) : !kept->isSound)
        database.Run("UPDATE texts SET frame = ? WHERE id = ?", {BlobView(FrameOfWhole(text)), id});
    return kept->number;
}

TextNumber Keep(Database& database, const std::string& text, const std::string& digest,
                const std::optional<FormerText>& former = std::nullopt) {
    const auto mark = MarkIn(database, text);
    if (const auto kept = Kept(database, text, digest, mark)) return *kept;
    const auto delta = DeltaOf(database, text, former);
    database.Run("INSERT INTO texts(digest, size, frame, mark, made_from) VALUES(?,?,?,?,?)",
                 {BlobView(digest), static_cast<std::int64_t>(text.size()),
                  BlobView(delta ? SealedFrame(FrameOf(*delta)) : FrameOfWhole(text)), OptionalValue(mark),
                  delta ? ValueView(delta->base) : ValueView()});
    return {database.LastRow()};
}

void Take(Database& database, const StoreLimits& limits, RecordedState& state, const std::string& text,
          const std::optional<FormerText>& former = std::nullopt) {
    if (!state.exists || state.text) return;
    if (state.digest.empty()) {
        state.size = text.size();
        state.digest = DigestOf(text);
    }
    const bool isGiven = text.size() == state.size;
    if (isGiven && limits.Keep(state.size)) state.text = Keep(database, text, state.digest, former);
}

/// The text, if it is kept whole, else its delta.
using TextOrDelta = std::variant<std::string, TextDelta>;

TextOrDelta Read(Database& database, std::int64_t number, std::size_t& size) {
    Database::Rows rows(database, kFrameOfText, {number});
    if (!rows.Next()) throw DamagedRow(_(kIsMissing));
    if (rows.Number(0) < 0) throw DamagedRow(_(kIsDamaged));
    size = static_cast<std::size_t>(rows.Number(0));
    const auto frame = FrameIn(rows.Bytes(1));
    if (frame && IsFrameOfDelta(*frame)) {
        if (auto delta = DeltaOfFrame(*frame)) return std::move(*delta);
    } else if (auto text = frame ? Expanded(*frame, size) : std::nullopt) {
        return std::move(*text);
    }
    throw DamagedRow(_(kIsDamaged));
}

}  // namespace

RecordedFile WithTexts(Database& database, const StoreLimits& limits, const FileToRecord& file) {
    RecordedFile recorded = file.file;
    Take(database, limits, recorded.before, file.textBefore);
    recorded.after = AfterWithTexts(database, limits, file, std::move(recorded.after), recorded.before.text);
    return recorded;
}

RecordedState AfterWithTexts(Database& database, const StoreLimits& limits, const FileToRecord& file,
                             RecordedState after, std::optional<TextNumber> before) {
    std::optional<FormerText> former;
    if (before) former.emplace(FormerText{*before, file.textBefore});
    if (file.isPlanned) Take(database, limits, after, file.textAfter, former);
    // The base of an edit is not a file's text, but what a commit has set in the file and has to take back.
    if (file.base && (limits.keepsTexts || file.file.kind == FileKind::Edit)) {
        after.knowledge.ForgetBase();
        after.knowledge.base = Keep(database, *file.base, DigestOf(*file.base));
    }
    return after;
}

std::string TextAt(Database& database, TextNumber number) {
    std::size_t size = 0;
    TextOrDelta kept = Read(database, number.value, size);
    if (auto* const text = std::get_if<std::string>(&kept)) return std::move(*text);
    const auto& delta = std::get<TextDelta>(kept);
    std::size_t sizeOfBase = 0;
    const TextOrDelta base = Read(database, delta.base, sizeOfBase);
    const auto* const whole = std::get_if<std::string>(&base);
    auto text = whole != nullptr ? Made(delta, *whole, size) : std::nullopt;
    if (!text) throw DamagedRow(_(kIsDamaged));
    return std::move(*text);
}

void MakeWholeWithout(Database& database, TextNumber base) {
    for (const std::int64_t id : Numbers(database, "SELECT id FROM texts WHERE made_from = ?", {base.value}))
        if (const auto text = ReadableTextAt(database, {id}))
            database.Run("UPDATE texts SET frame = ?, made_from = NULL WHERE id = ?",
                         {BlobView(FrameOfWhole(*text)), id});
}

}  // namespace ZET::Deploy
