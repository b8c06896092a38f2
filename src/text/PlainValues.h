#ifndef ZET_PLAIN_VALUES_H
#define ZET_PLAIN_VALUES_H

#include <array>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

#include "text/Placeholders.h"
#include "zet/ZETTypes.h"

namespace ZET::Text {

/// Of the values of placeholders those that lead to no other one.
class PlainValues {
  public:
    /// The placeholders that are asked for are added to `used`, unless it is null. The values must outlive
    /// the object.
    PlainValues(const StringMap& values, std::set<std::string>* used);

    /// Of the placeholder that stands there in a text; null when it has none, or one that may lead to
    /// another.
    const std::string* Find(std::string_view text, const PlaceholderRange& range);

    /// Whether one of the values has this byte.
    bool Have(char byte) const;

  private:
    struct Value {
        const StringMap::value_type* value = nullptr;
        bool canBeginOther = false;  ///< with what comes behind it
        bool isUsed = false;         ///< and noted
    };

    // Apart from `Find`, which then keeps fewer registers: 59 instead of 69 instructions for a placeholder.
    [[gnu::noinline]] Value* Look(std::string_view placeholder);
    [[gnu::noinline]] void Note(Value& value) const;

    std::set<std::string>* m_used;
    std::unordered_map<std::string_view, Value> m_values;

    /// Those found last, by hash: a template names few values, and those again and again. A quarter of the
    /// time for a line of many placeholders.
    std::array<Value*, 64> m_recent = {};
};

}  // namespace ZET::Text

#endif
