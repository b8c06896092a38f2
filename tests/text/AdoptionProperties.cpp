#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "text/Adoption.h"

namespace ZET::Text {

namespace {

/// A placeholder and its value.
using Gap = StringMap::value_type;

/// The line with placeholders in the place of their values, in each way in which they stand there in order.
std::vector<std::string> Ways(std::string_view line, const std::vector<Gap>& gaps, std::size_t next = 0) {
    if (next == gaps.size()) return {std::string(line)};
    const auto& [placeholder, value] = gaps[next];
    std::vector<std::string> ways;
    for (std::size_t place = line.find(value); place != std::string_view::npos;
         place = line.find(value, place + 1)) {
        for (const std::string& rest : Ways(line.substr(place + value.size()), gaps, next + 1))
            ways.push_back(std::string(line.substr(0, place)) + placeholder + rest);
    }
    return ways;
}

/// Of letters so few that values lie in each other, and in the text between them.
rc::Gen<std::string> Piece(int most) {
    return rc::gen::resize(most, rc::gen::container<std::string>(rc::gen::elementOf(std::string("ab"))));
}

StringMap SomeValues() {
    StringMap values;
    for (const char* placeholder : {"${a}", "${b}", "${c}"})
        values[placeholder] = *Piece(3);
    return values;
}

std::vector<Gap> SomeGaps(const StringMap& values) {
    const std::vector<Gap> all(values.begin(), values.end());
    return *rc::gen::resize(4,
                            rc::gen::nonEmpty(rc::gen::container<std::vector<Gap>>(rc::gen::elementOf(all))));
}

}  // namespace

RC_GTEST_PROP(AdoptionProperties, ChangedLineKeepsPlaceholdersThatStandThereInOneWay, ()) {
    const StringMap values = SomeValues();
    const std::vector<Gap> gaps = SomeGaps(values);
    std::string templateLine = "=";
    std::string rendered = "=";
    std::string edited;
    for (const auto& [placeholder, value] : gaps) {
        templateLine += placeholder;
        rendered += value;
        edited += *Piece(2) + value;
    }
    edited = *rc::gen::oneOf(rc::gen::just(edited + *Piece(2)), Piece(10));

    const Adoption adoption =
        AdoptEdit(templateLine + "\n", rendered + "\n", edited + "\n", {{1, 1, 1, 1}}, values);
    bool hasEmpty = false;
    for (const auto& [placeholder, value] : gaps)
        hasEmpty = hasEmpty || value.empty();
    const std::vector<std::string> ways = Ways(edited, gaps);
    const bool isKept = ways.size() == 1 && !hasEmpty;
    RC_CLASSIFY(isKept, "kept");
    RC_CLASSIFY(ways.size() > 1, "in several ways");
    RC_ASSERT(adoption.isTraceable);
    RC_ASSERT(adoption.refused.empty() == isKept);
    if (isKept) RC_ASSERT(adoption.templateText == ways.front() + "\n");
}

}  // namespace ZET::Text
