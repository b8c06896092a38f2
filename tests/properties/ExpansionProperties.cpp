#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <vector>

#include "Expansion.h"
#include "Player.h"
#include "ScenarioGenerators.h"

namespace ZET {
namespace {

Scenario ExpansionOf(const std::string& text, const StringMap& values) {
    Scenario scenario;
    scenario.noMarkers = true;
    scenario.source = {Place::Kind::Regular, text, 0644};
    scenario.values = values;
    scenario.operations = {{Operation::Kind::ApplyTemplates, "", "", false},
                           {Operation::Kind::Save, "", "", true}};
    return scenario;
}

// All lines of `length` scraps whose expansion ends.
std::string AllLines(const std::vector<std::string>& scraps, int length, const StringMap& values) {
    std::vector<std::string> lines = {""};
    for (int position = 0; position < length; ++position) {
        std::vector<std::string> longer;
        for (const std::string& line : lines)
            for (const std::string& scrap : scraps)
                longer.push_back(line + scrap);
        lines = std::move(longer);
    }
    std::string text;
    for (const std::string& line : lines)
        if (ExpansionEnds(line, values)) text += line + "\n";
    return text;
}

RC_GTEST_PROP(ExpansionProperties, EveryExpansionRunsAsInThePlainEngine, ()) {
    const Scenario scenario = *ExpansionScenario();
    RC_PRE(ExpansionEnds(scenario.source.bytes, scenario.values));
    RC_ASSERT(Difference(scenario) == "");
}

TEST(ExpansionProperties, AllShortLinesOfScrapsRunAsInThePlainEngine) {
    const std::vector<std::string> scraps = {"$", "{", "}", "a", "${b}"};
    const std::vector<StringMap> maps = {
        {},
        {{"${a}", "x"}, {"${b}", ""}},
        {{"${a}", "${b}"}, {"${b}", "a"}},
        {{"${a}", "$"}, {"${b}", "{a}"}},
        {{"${a}", "${"}, {"${b}", "}"}},
        {{"${a}", "}${b}{"}, {"${b}", "$"}},
        {{"${}", "${"}, {"${b}", "a}"}, {"${a}", "x\n"}},
        {{"${${b}", "1"}, {"${$}", "2"}, {"${b}", "$${"}, {"${a}", "#"}},
        {{"${aa}", "${a}${b}"}, {"${a}", "$b${b}b}"}, {"${b}", "\n"}},
    };
    for (const StringMap& values : maps) {
        for (int length = 0; length <= 6; ++length) {
            const Scenario scenario = ExpansionOf(AllLines(scraps, length, values), values);
            ASSERT_EQ(Difference(scenario), "") << "lines of " << length << " scraps";
        }
    }
}

}  // namespace
}  // namespace ZET
