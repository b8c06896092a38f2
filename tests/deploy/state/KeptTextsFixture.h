#ifndef ZET_TEST_KEPT_TEXTS_FIXTURE_H
#define ZET_TEST_KEPT_TEXTS_FIXTURE_H

#include <string>
#include <vector>

#include "StoreFixture.h"
#include "deploy/state/store/PlainFrame.h"

namespace ZET::Deploy {

/// A store whose rows are changed directly in the database.
class KeptTextsFixture : public StoreFixture {
  protected:
    static std::string Long(char first) {
        std::string text(2 * kLongestPlainText, 'x');
        text.front() = first;
        return text;
    }

    std::int64_t Count(Statement statement) const {
        Database database(Name(), Database::Access::Write);
        return std::get<std::int64_t>(database.Run(statement));
    }

    void Change(const std::vector<Statement>& statements) const {
        Database database(Name(), Database::Access::Write);
        for (const Statement statement : statements)
            database.Run(statement);
    }

    /// Makes all texts have the same digest.
    void GiveAllOneDigest(const std::string& digest) const {
        Database database(Name(), Database::Access::Write);
        database.Run("UPDATE texts SET digest = ?", {Blob{digest}});
    }

    void GiveFrame(TextNumber text, const std::string& frame) const {
        Database database(Name(), Database::Access::Write);
        database.Run("UPDATE texts SET frame = ? WHERE id = ?", {Blob{frame}, text.value});
    }

    /// Flips one bit of a frame.
    void DamageFrame(TextNumber text, std::size_t place) const {
        std::string frame;
        {
            Database database(Name(), Database::Access::Write);
            frame = std::get<Blob>(database.Run("SELECT frame FROM texts WHERE id = ?", {text.value})).bytes;
        }
        frame[place % frame.size()] ^= 1;
        GiveFrame(text, frame);
    }

    /// Restores the tables of the version before texts had marks.
    void GoBackToVersion1() const {
        Change({"DROP INDEX texts_by_digest", "ALTER TABLE texts DROP COLUMN mark",
                "CREATE INDEX texts_by_digest ON texts(digest)", "DROP TABLE secret",
                "DROP INDEX texts_by_base", "ALTER TABLE texts DROP COLUMN made_from",
                "PRAGMA user_version = 1"});
    }
};

}  // namespace ZET::Deploy

#endif
