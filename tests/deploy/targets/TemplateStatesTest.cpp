#include "deploy/targets/TemplateStates.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/targets/TemplateHistory.h"

namespace ZET::Deploy {
namespace {

using testing::HasSubstr;
using testing::SizeIs;

class TemplateStatesTest : public HostFixture {
  protected:
    TemplateStatesTest() { AddTarget("one"); }

    /// As an installation leaves it: made from the shipped text of then.
    void Install(const std::string& text) {
        Write("etc/one", text);
        Write("templates/one", text);
        RememberShippedBase(TheHost(), FilesOfTemplate(TheHost(), "one"));
    }

    TemplateState State() { return TemplateStates(AnotherRun(), {"one"}).front(); }
};

TEST_F(TemplateStatesTest, CopyThatIsMissingIsNotInstalled) {
    EXPECT_EQ(State().state, "not installed");
    EXPECT_FALSE(ListTemplates(TheHost()).front().isInstalled);
    EXPECT_EQ(ListTemplates(TheHost()).front().workingCopy, At("etc/one"));
}

TEST_F(TemplateStatesTest, CopyThatIsTheShippedTextIsCurrent) {
    Write("etc/one", Read("templates/one"));
    EXPECT_EQ(State().state, "current");
}

TEST_F(TemplateStatesTest, CopyThatDiffersIsUnknownWhenNobodyKnowsWhatItWasMadeFrom) {
    Write("etc/one", "mine\n");
    const TemplateState state = State();
    EXPECT_EQ(state.state, "unknown");
    EXPECT_FALSE(state.hasNewer);
    EXPECT_EQ(state.trouble, "");
}

TEST_F(TemplateStatesTest, EditsAreToldFromWhatIsNewer) {
    Install("text\n");
    EXPECT_EQ(State().state, "current");
    Write("etc/one", "mine\n");
    EXPECT_EQ(State().state, "edited");
    EXPECT_FALSE(State().hasNewer);
    Write("templates/one", "newer\n");
    EXPECT_EQ(State().state, "edited, newer shipped");
    Write("etc/one", "text\n");
    EXPECT_EQ(State().state, "newer shipped");
    EXPECT_TRUE(State().hasNewer);
    Write("etc/one", "newer\n");
    EXPECT_EQ(State().state, "current");
}

TEST_F(TemplateStatesTest, CopyWhoseTemplateIsNotShippedAnyMoreIsToldFromACurrentOne) {
    Install("text\n");
    unlink(At("templates/one").c_str());
    EXPECT_EQ(State().state, "not shipped");
    Write("etc/one", "mine\n");
    EXPECT_EQ(State().state, "not shipped");
}

TEST_F(TemplateStatesTest, TemplateThatWasNeverShippedIsTheHostsOwn) {
    unlink(At("templates/one").c_str());
    Write("etc/one", "mine\n");
    EXPECT_EQ(State().state, "own");
    EXPECT_FALSE(State().hasNewer);
}

TEST_F(TemplateStatesTest, TemplateThatCannotBeLookedAtKeepsNoOtherFromBeingTold) {
    AddTarget("two");
    unlink(At("templates/one").c_str());
    const std::vector<TemplateState> states = TemplateStates(TheHost(), {});
    ASSERT_THAT(states, SizeIs(2));
    EXPECT_EQ(states[0].state, "unknown");
    EXPECT_THAT(states[0].trouble, HasSubstr(At("templates/one") + ": the template is missing"));
    EXPECT_EQ(states[1].state, "not installed");
}

TEST_F(TemplateStatesTest, BaseIsRememberedOnlyOfACopyThatIsTheShippedText) {
    Write("etc/one", "mine\n");
    RememberShippedBase(TheHost(), FilesOfTemplate(TheHost(), "one"));
    EXPECT_FALSE(MemoryOf(TheHost(), At("etc/one")).base);
    Install("text\n");
    EXPECT_EQ(MemoryOf(TheHost(), At("etc/one")).base, "text\n");
    EXPECT_EQ(MemoryOf(TheHost(), At("etc/one")).mode, mode_t{0644});
}

TEST_F(TemplateStatesTest, TextThatIsNotKeptIsNoBase) {
    Write("zet.conf", Directories() + "ZET_HISTORY_MAX_FILE=3\n");
    Install("text\n");
    EXPECT_FALSE(MemoryOf(TheHost(), At("etc/one")).base);
    ExpectedFile file;
    SetShipped(file, Capture(At("etc/one"), 3));
    EXPECT_FALSE(file.base);
    SetShipped(file, Capture(At("etc/one"), 5));
    EXPECT_EQ(file.base, "text\n");
}

TEST_F(TemplateStatesTest, NameThatLeavesTheDirectoryIsWrongUse) {
    EXPECT_THROW(TemplateStates(TheHost(), {"../one"}), UsageError);
}

TEST_F(TemplateStatesTest, TwoTemplatesOfOneFileAreWrongUse) {
    Host& host = TheHost();
    EXPECT_THAT(AllToWrite(host, {{"one", {At("etc/one")}}, {"two", {At("etc/two")}}}), SizeIs(2));
    EXPECT_THROW(AllToWrite(host, {{"one", {At("etc/one")}}, {"./one", {At("etc/./one")}}}), UsageError);
    EXPECT_THROW(AllToWrite(host, {{"list", {At("templates/targets.toml")}}}), UsageError);
}

}  // namespace
}  // namespace ZET::Deploy
