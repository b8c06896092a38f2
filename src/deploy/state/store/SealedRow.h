#ifndef ZET_STORE_SEALED_ROW_H
#define ZET_STORE_SEALED_ROW_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "deploy/state/store/Database.h"
#include "deploy/state/store/Records.h"

/// Rows whose last column is a seal of the others.
namespace ZET::Deploy {

/// Runs the statement with the values of a row, its seal, and the number of the row if it has one already.
void RunSealed(Database& database, Statement statement, ValueViews row,
               const std::optional<std::int64_t>& id = std::nullopt);

/// Hands out the columns of the row at which `rows` stands, one after the other.
class RowReader {
  public:
    /// There are `columns` of them before the seal. Throws a `DamagedRow` if the seal is not theirs.
    RowReader(const Database::Rows& rows, int columns);

    std::int64_t Number() { return m_rows.Number(m_next++); }
    std::string Text() { return m_rows.Text(m_next++); }
    std::optional<std::int64_t> OptionalNumber() { return m_rows.OptionalNumber(m_next++); }
    std::optional<TextNumber> OptionalText();
    std::vector<std::string> Texts();

  private:
    const Database::Rows& m_rows;
    int m_next = 0;
};

}  // namespace ZET::Deploy

#endif
