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

/// The values that contain no further placeholder.
class PlainValues {
  public:
    /// The placeholders that are looked up are added to `used`, unless it is null. The values must outlive
    /// the object.
    PlainValues(const StringMap& values, std::set<std::string>* used);

    /// The value of the placeholder at that place of a text; null if it has none, or if the value may lead to
    /// another placeholder.
    const std::string* Find(std::string_view text, const PlaceholderRange& range);

    /// Whether any of the values contains this byte.
    bool Have(char byte) const;

  private:
    struct Value {
        const StringMap::value_type* value = nullptr;
        bool canBeginOther = false;  ///< together with the text after it
        bool isUsed = false;         ///< whether it was added to `m_used`
    };

    // Kept out of `Find`, which then saves fewer registers: 59 instead of 69 instructions for a placeholder.
    [[gnu::noinline]] Value* Look(std::string_view placeholder);
    [[gnu::noinline]] void Note(Value& value) const;

    std::set<std::string>* m_used;
    std::unordered_map<std::string_view, Value> m_values;

    /// The values found last, by hash: a template uses few values, again and again. A quarter of the time for
    /// a line of many placeholders.
    std::array<Value*, 64> m_recent = {};
};

}  // namespace ZET::Text

#endif
