#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>

#include "Expansion.h"
#include "Player.h"
#include "ScenarioGenerators.h"
#include "TextGenerators.h"

namespace ZET {
namespace {

RC_GTEST_PROP(EngineProperties, EveryOrdinarySequenceRunsAsInThePlainEngine, ()) {
    const Scenario scenario = *OrdinaryScenario();
    RC_ASSERT(Difference(scenario) == "");
}

RC_GTEST_PROP(EngineProperties, EveryMixOfMarkersIsTreatedAsInThePlainEngine, ()) {
    const Scenario scenario = *MarkerScenario();
    RC_ASSERT(Difference(scenario) == "");
}

RC_GTEST_PROP(EngineProperties, EveryTroubleOnTheWayEndsAsInThePlainEngine, ()) {
    const Scenario scenario = *TroubledScenario();
    RC_ASSERT(Difference(scenario) == "");
}

RC_GTEST_PROP(EngineProperties, WithoutMarkersAndEditsEveryTextIsWrittenBackByteForByte, ()) {
    const std::string text = *rc::gen::oneOf(AnyText(), rc::gen::arbitrary<std::string>());
    const auto written = TextWrittenBack(text);
    RC_ASSERT(written == text);
}

// Exactly `size` bytes of settings, blocks and placeholders.
std::string TextOfSize(std::size_t size) {
    std::string text;
    for (int number = 0; text.size() < size; ++number) {
        text += "name" + std::to_string(number) + " = ${a}\n";
        if (number % 7 == 0) text += "# --PRE-ZET-- kdc=1\n# ---ZET_BEGIN---\nkdc=2\n# ----ZET_END----\n\n";
        if (number % 50 == 0) text += "# --ZET_TEMPLATE_COMMENT--\n# note\n# --ZET_COMMENT_END--\n";
    }
    text.resize(size);
    if (text.ends_with("${") || text.ends_with("${a")) text.replace(size - 3, 3, "abc");
    return text;
}

// Whoever reads or writes in blocks goes wrong first where one ends.
TEST(EngineProperties, EveryTextAsLongAsABlockRunsAsInThePlainEngine) {
    using Kind = Operation::Kind;
    for (const std::size_t block : {512U, 4096U, 8192U, 65536U, 131072U}) {
        for (const std::size_t size : {block - 1, block, block + 1}) {
            Scenario scenario;
            scenario.opening = size % 2 == 0 ? Scenario::Opening::InPlace : Scenario::Opening::Template;
            scenario.source = {Place::Kind::Regular, TextOfSize(size), 0644};
            scenario.values = {{"${a}", std::string(size / 100, 'v')}};
            scenario.operations = {
                {Kind::SetParamValue, "kdc", "3", false},      {Kind::Save, "", "", false},
                {Kind::SetLine, "^name7 ", "name = 7", false}, {Kind::RestoreParamValue, "kdc", "", false},
                {Kind::ApplyTemplates, "", "", false},         {Kind::Save, "", "", false},
                {Kind::RemoveZETMarkers, "", "", false},       {Kind::Save, "", "", true}};
            ASSERT_TRUE(ExpansionEnds(scenario.source.bytes, scenario.values));
            ASSERT_TRUE(Difference(scenario).empty()) << size << " bytes";
        }
    }
}

// The generators have to meet what the properties are about, and not only in their dreams.
TEST(EngineProperties, TheGeneratorsMeetWhatMatters) {
    constexpr std::size_t kScenarios = 1000;
    constexpr int kSize = 100;
    Tally tally;
    for (std::size_t number = 0; number < kScenarios; ++number) {
        const auto generator = number % 2 == 0 ? OrdinaryScenario() : TroubledScenario();
        tally += PlayPlain(generator(rc::Random(number), kSize).value()).tally;
    }
    EXPECT_GT(tally.expansions, kScenarios / 3);
    EXPECT_LT(tally.endlessExpansions, tally.expansions / 3);
    EXPECT_GT(tally.exhaustedSteps, kScenarios / 6);
    EXPECT_GT(tally.exceptions, kScenarios / 5);
    EXPECT_GT(tally.warnings, kScenarios);
    EXPECT_GT(tally.foreignFiles, kScenarios / 6);
}

}  // namespace
}  // namespace ZET
