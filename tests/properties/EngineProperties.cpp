#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

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

// The generators have to meet what the properties are about, and not only in their dreams.
TEST(EngineProperties, TheGeneratorsMeetWhatMatters) {
    for (const auto& generator : {OrdinaryScenario(), TroubledScenario()}) {
        for (int count = 0; count < 500; ++count)
            PlayPlain(generator(rc::Random(static_cast<std::uint64_t>(count)), 100).value());
    }
    const Tally& tally = TallySoFar();
    EXPECT_GT(tally.expansions, 400U);
    EXPECT_LT(tally.endlessExpansions * 3, tally.expansions);
    EXPECT_GT(tally.exhaustedSteps, 200U);
    EXPECT_GT(tally.exceptions, 200U);
    EXPECT_GT(tally.warnings, 500U);
}

}  // namespace
}  // namespace ZET
