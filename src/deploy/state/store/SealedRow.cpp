#include "deploy/state/store/SealedRow.h"

#include <array>
#include <charconv>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>

#include "deploy/state/store/Digest.h"
#include "deploy/state/store/Packing.h"
#include "deploy/state/store/Rows.h"

namespace ZET::Deploy {

namespace {

/// The bytes of a row from which its seal is made.
class SealOfRow {
  public:
    SealOfRow() { m_bytes.reserve(kUsualSize); }

    void Add(const ValueView& value) {
        if (const auto* number = std::get_if<std::int64_t>(&value))
            Add(*number);
        else if (const auto* text = std::get_if<std::string_view>(&value))
            AppendPacked(m_bytes, "t", *text);
        else if (const auto* blob = std::get_if<BlobView>(&value))
            AppendPacked(m_bytes, "b", blob->bytes);
        else
            AppendPacked(m_bytes, "", "");
    }

    std::int64_t Number() const { return SealOf(m_bytes); }

  private:
    static constexpr std::size_t kUsualSize = 512;

    void Add(std::int64_t number) {
        char digits[std::numeric_limits<std::int64_t>::digits10 + 2];
        const char* const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
        AppendPacked(m_bytes, "i", {digits, static_cast<std::size_t>(end - digits)});
    }

    std::string m_bytes;
};

}  // namespace

void RunSealed(Database& database, Statement statement, ValueViews row,
               const std::optional<std::int64_t>& id) {
    constexpr std::size_t kMostColumns = 12;
    std::array<ValueView, kMostColumns + 2> values;
    SealOfRow seal;
    std::size_t count = 0;
    for (const ValueView& value : row) {
        seal.Add(value);
        values.at(count++) = value;
    }
    values.at(count++) = seal.Number();
    if (id) values.at(count++) = *id;
    database.RunWith(statement, std::span(values).first(count));
}

RowReader::RowReader(const Database::Rows& rows, int columns) : m_rows(rows) {
    SealOfRow seal;
    for (int column = 0; column < columns; ++column)
        seal.Add(rows.View(column));
    if (rows.OptionalNumber(columns) != seal.Number()) throw DamagedRow();
}

std::optional<TextNumber> RowReader::OptionalText() {
    const auto number = OptionalNumber();
    return number ? std::optional(TextNumber{*number}) : std::nullopt;
}

std::vector<std::string> RowReader::Texts() {
    auto texts = Unpacked(m_rows.Bytes(m_next++));
    if (!texts) throw DamagedRow();
    return std::move(*texts);
}

}  // namespace ZET::Deploy
