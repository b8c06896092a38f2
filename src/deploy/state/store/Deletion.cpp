#include "deploy/state/store/Deletion.h"

#include <optional>
#include <utility>

#include "deploy/state/store/Rows.h"

namespace ZET::Deploy {

namespace {

/// With it goes what it was made from, unless somebody else has that.
void ReleaseText(Database& database, const std::optional<std::int64_t>& text) {
    if (!text) return;
    const Value madeFrom = database.Run(
        "DELETE FROM texts WHERE id = ?1 AND NOT EXISTS (SELECT 1 FROM states WHERE text = ?1)"
        " AND NOT EXISTS (SELECT 1 FROM states WHERE base = ?1)"
        " AND NOT EXISTS (SELECT 1 FROM texts WHERE made_from = ?1) RETURNING made_from",
        {*text});
    if (const auto* const base = std::get_if<std::int64_t>(&madeFrom)) ReleaseText(database, *base);
}

using TextAndBase = std::pair<std::optional<std::int64_t>, std::optional<std::int64_t>>;

TextAndBase TextsOf(Database& database, std::int64_t state) {
    Database::Rows rows(database, "SELECT text, base FROM states WHERE id = ?", {state});
    return rows.Next() ? TextAndBase(rows.OptionalNumber(0), rows.OptionalNumber(1)) : TextAndBase();
}

/// The texts that the state has before the call, and those that nothing has after it.
template <typename Call>
void ReleaseTextsAround(Database& database, std::int64_t state, Call call) {
    const auto [text, base] = TextsOf(database, state);
    call();
    ReleaseText(database, text);
    ReleaseText(database, base);
}

void ReleaseState(Database& database, std::int64_t id) {
    ReleaseTextsAround(database, id, [&] { DeleteState(database, id); });
}

}  // namespace

void DeleteEntry(Database& database, std::int64_t number) {
    for (const std::int64_t state : Numbers(
             database,
             "SELECT before FROM files WHERE entry = ?1 UNION ALL SELECT after FROM files WHERE entry = ?1"
             " UNION ALL SELECT left_before FROM files WHERE entry = ?1 AND left_before IS NOT NULL",
             {number}))
        ReleaseState(database, state);
    database.Run("DELETE FROM files WHERE entry = ?", {number});
    database.Run("DELETE FROM entries WHERE number = ?", {number});
}

void DeleteFileOf(Database& database, std::int64_t number, const std::string& path) {
    for (const std::int64_t state :
         Numbers(database,
                 "SELECT before FROM files WHERE entry = ?1 AND path = ?2 UNION ALL"
                 " SELECT after FROM files WHERE entry = ?1 AND path = ?2 UNION ALL"
                 " SELECT left_before FROM files WHERE entry = ?1 AND path = ?2 AND left_before IS NOT NULL",
                 {number, path}))
        ReleaseState(database, state);
    database.Run("DELETE FROM files WHERE entry = ? AND path = ?", {number, path});
}

void DeleteKnown(Database& database, const std::string& path) {
    for (const std::int64_t state : Numbers(database, "SELECT state FROM known WHERE path = ?", {path}))
        ReleaseState(database, state);
    database.Run("DELETE FROM known WHERE path = ?", {path});
}

void ReplaceStateAndTexts(Database& database, std::int64_t id, const RecordedState& state) {
    ReleaseTextsAround(database, id, [&] { ReplaceState(database, id, state); });
}

void Prune(Database& database, const StoreLimits& limits) {
    const std::vector<std::int64_t> numbers = Numbers(
        database,
        "SELECT number FROM entries WHERE outcome <> 0 AND number NOT IN"
        " (SELECT number FROM entries ORDER BY number DESC LIMIT ?1) AND number NOT IN"
        " (SELECT DISTINCT entry FROM files WHERE was_edited & 1 ORDER BY entry DESC LIMIT ?2)",
        {static_cast<std::int64_t>(limits.entries), static_cast<std::int64_t>(limits.entriesWithEdits)});
    for (const std::int64_t number : numbers) {
        DeleteEntry(database, number);
        RememberPruned(database, number);
    }
}

void RememberPruned(Database& database, std::int64_t number) {
    database.Run(
        "INSERT INTO pruned(id, number) VALUES(0, ?1) ON CONFLICT(id) DO UPDATE SET number = max(number, ?1)",
        {number});
}

}  // namespace ZET::Deploy
