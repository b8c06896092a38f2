#include "deploy/targets/Secrets.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/lists/HostLists.h"
#include "deploy/targets/DiscreetLog.h"
#include "zet/ZETFormat.h"
#include "zet/ZETHost.h"
#include "zet/ZETLogProvider.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using Audience = Secrets::Audience;

/// A host with one target that is secret, "hidden", and one that is not, "open".
class SecretsTest : public HostFixture {
  protected:
    SecretsTest() {
        AddTarget("hidden", "secret = true");
        AddTarget("open");
    }

    /// Whose eyes the file is for, in a run of its own.
    Audience AudienceOf(const std::string& name) {
        HostLists lists(TheHost());
        return Secrets(TheHost(), lists).Of(At(name));
    }

    /// One that stays the same to the end of the test.
    Secrets& OneRun() {
        if (!m_secrets) {
            m_lists.emplace(TheHost());
            m_secrets.emplace(TheHost(), *m_lists);
        }
        return *m_secrets;
    }

    /// The notice of a file that was made from the template.
    std::string NoticeOf(const std::string& templateFile) const {
        std::string notice = ZETMadeNotice;
        notice.replace(notice.find("%s"), 2, At(templateFile));
        notice.replace(notice.find("%s"), 2, "zet-client");
        return std::string(ZETNoticeMarker) + "\n" + notice + "\n" + ZETCommentEndMarker + "\n";
    }

    void WriteMadeFrom(const std::string& name, const std::string& templateFile, mode_t mode = 0644) {
        Write(name, NoticeOf(templateFile) + "made\n", mode);
    }

    /// What was written up to now is older than what is looked at from now on, by the clock of files.
    static void SettleTimes() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }

  private:
    std::optional<HostLists> m_lists;
    std::optional<Secrets> m_secrets;
};

TEST_F(SecretsTest, WarningsAboutASecretTemplateAreKeptFromTheLog) {
    for (const char* const name : {"hidden", "open"})
        Write(std::string("templates/") + name, std::string(name) + "\n");
    std::vector<std::string> seen;
    SetLogObserver([&](ZETLogLevel, const std::string& text) { seen.push_back(text); });
    for (const char* const name : {"hidden", "open"}) {
        const std::string templateName = name;
        const DiscreetLog discreet(TheHost(), OneRun(), templateName);
        CZETLogProvider& log = CZETLogProvider::GetLogProvider();
        log.Put(ZETLogWarning, 1, (templateName + " has ${x}").c_str());
        log.Put(ZETLogError, 1, (templateName + " failed").c_str());
    }
    CZETLogProvider::GetLogProvider().Put(ZETLogWarning, 1, "afterwards");
    SetLogObserver({});
    EXPECT_THAT(seen, testing::ElementsAre("hidden failed", "open has ${x}", "open failed", "afterwards"));
}

TEST_F(SecretsTest, OrdinaryFileIsForEverybody) {
    Write("out/file", "text\n");
    Write("out/open", "text\n");
    for (const char* name : {"out/file", "out/open", "out/missing", "etc/open", "templates/open"})
        EXPECT_EQ(AudienceOf(name), Audience::Everybody) << name;
}

TEST_F(SecretsTest, TargetThatTheListCallsSecretIsForNobodyWhetherItIsThereOrNot) {
    EXPECT_EQ(AudienceOf("out/hidden"), Audience::Nobody);
    Write("out/hidden", "secret\n");
    EXPECT_EQ(AudienceOf("out/hidden"), Audience::Nobody);
}

TEST_F(SecretsTest, TemplateOfASecretTargetIsSecret) {
    EXPECT_EQ(AudienceOf("templates/hidden"), Audience::Nobody) << "the pristine one";
    EXPECT_EQ(AudienceOf("etc/hidden"), Audience::Nobody) << "the working copy, which is to come";
}

TEST_F(SecretsTest, WhatWasMadeFromASecretTemplateIsSecret) {
    WriteMadeFrom("out/made", "etc/hidden");
    WriteMadeFrom("out/made-of-pristine", "templates/hidden");
    WriteMadeFrom("out/made-of-open", "etc/open");
    EXPECT_EQ(AudienceOf("out/made"), Audience::Nobody);
    EXPECT_EQ(AudienceOf("out/made-of-pristine"), Audience::Nobody);
    EXPECT_EQ(AudienceOf("out/made-of-open"), Audience::Everybody);
}

TEST_F(SecretsTest, NoticeCountsWhereverItStands) {
    const std::string lines = std::string(ZETCommentEndMarker) + "\na line with " + ZETNoticeMarker + "\n";
    const std::string block = std::string(ZETBeginMarker) + "\n" + NoticeOf("etc/open") + ZETEndMarker + "\n";
    for (const std::string& before : {std::string("a line\n"), lines, block, lines + block}) {
        Write("out/made", before + NoticeOf("etc/hidden") + "made\n");
        EXPECT_EQ(AudienceOf("out/made"), Audience::Nobody) << before;
        Write("out/made", before + NoticeOf("etc/open") + NoticeOf("etc/hidden") + "made\n");
        EXPECT_EQ(AudienceOf("out/made"), Audience::Everybody) << before;
    }
}

TEST_F(SecretsTest, WhoseReserveWasMadeFromASecretTemplateIsSecret) {
    WriteMadeFrom("out/file.before_zet", "etc/hidden");
    Write("out/file", "text\n");
    EXPECT_EQ(AudienceOf("out/file"), Audience::Nobody);
}

TEST_F(SecretsTest, CopyOfASecretFileIsSecretByItsName) {
    for (const char* suffix : {".before_zet", ".tmp", ".old", ".before_zet.tmp"}) {
        EXPECT_EQ(AudienceOf(std::string("out/hidden") + suffix), Audience::Nobody) << suffix;
        EXPECT_EQ(AudienceOf(std::string("etc/hidden") + suffix), Audience::Nobody) << suffix;
    }
    EXPECT_EQ(AudienceOf("out/hidden.bak"), Audience::Everybody);
}

TEST_F(SecretsTest, CopyOfASecretFileIsSecretByItsBytes) {
    Write("out/hidden", "secret\n");
    Write("out/copy", "secret\n");
    Write("out/other", "public\n");
    fs::create_hard_link(At("out/hidden"), At("out/link"));
    EXPECT_EQ(AudienceOf("out/copy"), Audience::Nobody);
    EXPECT_EQ(AudienceOf("out/link"), Audience::Nobody);
    EXPECT_EQ(AudienceOf("out/other"), Audience::Everybody);
}

TEST_F(SecretsTest, CopyOfTheTemplateOrOfAReserveIsSecretByItsBytes) {
    Write("out/of-template", Read("templates/hidden"));
    Write("out/hidden.before_zet", "former\n");
    Write("out/of-reserve", "former\n");
    Write("etc/hidden.old", "older\n");
    Write("out/of-old", "older\n");
    for (const char* name : {"out/of-template", "out/of-reserve", "out/of-old"})
        EXPECT_EQ(AudienceOf(name), Audience::Nobody) << name;
}

TEST_F(SecretsTest, CopyThatIsMadeInTheRunIsSecret) {
    Write("out/hidden", "secret\n");
    Write("out/file", "public\n");
    EXPECT_EQ(OneRun().Of(At("out/file")), Audience::Everybody);
    Write("out/copy", "secret\n");
    fs::create_hard_link(At("out/hidden"), At("out/link"));
    for (const char* name : {"out/copy", "out/link"})
        EXPECT_EQ(OneRun().Of(At(name)), Audience::Nobody) << name;
    EXPECT_EQ(OneRun().Of(At("out/file")), Audience::Everybody) << "once judged, it stays";
}

TEST_F(SecretsTest, CopyOfASecretFileThatIsWrittenInTheRunIsSecret) {
    Write("out/file", "public\n");
    EXPECT_EQ(OneRun().Of(At("out/file")), Audience::Everybody);
    Write("out/hidden", "a secret of its own\n");
    Write("out/copy", "a secret of its own\n");
    EXPECT_EQ(OneRun().Of(At("out/copy")), Audience::Nobody);
    fs::remove(At("out/hidden"));
    Write("out/hidden", "another\n");
    fs::create_hard_link(At("out/hidden"), At("out/link"));
    EXPECT_EQ(OneRun().Of(At("out/link")), Audience::Nobody);
}

TEST_F(SecretsTest, FileOfBeforeIsTheCopyOfASecretOneThatTheRunWrote) {
    Write("out/file", "public\n");
    Write("out/early", "a secret of its own\n");
    SettleTimes();
    EXPECT_EQ(OneRun().Of(At("out/file")), Audience::Everybody);
    Write("out/hidden", "a secret of its own\n");
    Write("out/hidden.before_zet", "public too\n");
    OneRun().Wrote(At("out/hidden"));
    EXPECT_EQ(OneRun().Of(At("out/early")), Audience::Nobody);
}

TEST_F(SecretsTest, WhatTheRunWroteIsJudgedByWhatItHolds) {
    Write("out/hidden", "secret\n");
    Write("out/file", "public\n");
    EXPECT_EQ(OneRun().Of(At("out/file")), Audience::Everybody);
    Write("out/own", "public as well\n");
    Write("out/copy", "secret\n");
    for (const char* name : {"out/own", "out/copy"})
        OneRun().Wrote(At(name));
    EXPECT_EQ(OneRun().Of(At("out/own")), Audience::Everybody);
    EXPECT_EQ(OneRun().Of(At("out/copy")), Audience::Nobody);
}

TEST_F(SecretsTest, CopyIsFoundAmongSecretsOfOneSize) {
    for (const char* name : {"one", "two", "six"}) {
        AddTarget(name, "secret = true");
        Write(std::string("out/") + name, std::string("secret ") + name + "\n");
    }
    Write("out/copy", "secret two\n");
    Write("out/other", "secret ten\n");
    EXPECT_EQ(OneRun().Of(At("out/copy")), Audience::Nobody);
    EXPECT_EQ(OneRun().Of(At("out/other")), Audience::Everybody);
}

TEST_F(SecretsTest, EmptyFileIsNoCopyOfAnEmptyOne) {
    Write("out/hidden", "");
    Write("out/empty", "");
    EXPECT_EQ(AudienceOf("out/empty"), Audience::Everybody);
}

TEST_F(SecretsTest, LinkLeadsToWhatIsSecret) {
    Write("out/hidden", "secret\n");
    fs::create_symlink(At("out/hidden"), At("etc/link"));
    EXPECT_EQ(AudienceOf("etc/link"), Audience::Nobody);
}

TEST_F(SecretsTest, TargetThatLeftTheListIsSecret) {
    Write("out/left", "text\n");
    Commit("out/left", Role::Server);
    EXPECT_EQ(AudienceOf("out/left"), Audience::Nobody);
    EXPECT_EQ(AudienceOf("out/left.before_zet"), Audience::Nobody);
    AddTarget("left");
    EXPECT_EQ(AudienceOf("out/left"), Audience::Everybody) << "the list has it, and does not call it secret";
}

TEST_F(SecretsTest, FileThatOthersMayNotReadIsForItsReaders) {
    Write("out/private", "text\n", 0640);
    EXPECT_EQ(AudienceOf("out/private"), Audience::Readers);
    fs::create_symlink(At("out/private"), At("out/link"));
    EXPECT_EQ(AudienceOf("out/link"), Audience::Readers);
}

TEST_F(SecretsTest, CopyOfAPrivateFileIsPrivateByItsName) {
    Write("out/private", "text\n", 0600);
    Write("out/private.before_zet", "former\n", 0644);
    EXPECT_EQ(AudienceOf("out/private.before_zet"), Audience::Readers);
    EXPECT_EQ(AudienceOf("out/private.before_zet.tmp"), Audience::Readers) << "it is to come";
}

TEST_F(SecretsTest, WhatIsMadeFromAPrivateTemplateIsPrivate) {
    Write("etc/open", "text\n", 0600);
    WriteMadeFrom("out/made", "etc/open");
    EXPECT_EQ(AudienceOf("out/made"), Audience::Readers);
}

TEST_F(SecretsTest, WithoutAListThatCanBeReliedOnNobodyCanTell) {
    Write("out/file", "text\n");
    Write("out/private", "text\n", 0600);
    for (const char* list : {"[templates\n", "[templates.x]\nroles = \"both\"\n"}) {
        Write("templates/targets.toml", list);
        EXPECT_EQ(AudienceOf("out/file"), Audience::Unsure) << list;
        EXPECT_EQ(AudienceOf("out/private"), Audience::Readers) << list;
    }
}

TEST_F(SecretsTest, WithoutRecordsThatCanBeReadNobodyCanTell) {
    Write("state/state.db", "nonsense\n");
    for (const char* const file : {"out/edited", "out/open"}) {
        Write(file, "text");
        Write(file + std::string(".before_zet"), "text");
    }
    EXPECT_EQ(AudienceOf("out/edited"), Audience::Unsure) << "it may have been in the list";
    EXPECT_EQ(AudienceOf("out/open"), Audience::Everybody) << "it is in the list";
}

TEST_F(SecretsTest, WithoutAListThereIsNothingSecret) {
    fs::remove(At("templates/targets.toml"));
    EXPECT_EQ(AudienceOf("out/hidden"), Audience::Everybody);
}

TEST_F(SecretsTest, OnceJudgedItStays) {
    Write("out/private", "text\n", 0600);
    EXPECT_EQ(OneRun().Of(At("out/private")), Audience::Readers);
    fs::permissions(At("out/private"), fs::perms(0644));
    EXPECT_EQ(OneRun().Of(At("out/private")), Audience::Readers);
    EXPECT_EQ(AudienceOf("out/private"), Audience::Everybody) << "in another run";
}

TEST_F(SecretsTest, ReportHidesWhatIsNotForEverybody) {
    Write("out/file", "text\n");
    Write("out/private", "text\n", 0600);
    EXPECT_FALSE(OneRun().Hides(At("out/file")));
    EXPECT_TRUE(OneRun().Hides(At("out/private")));
    EXPECT_TRUE(OneRun().Hides(At("out/hidden")));
    EXPECT_TRUE(OneRun().IsPrivate(At("out/private")));
}

TEST_F(SecretsTest, ReaderWhoAsksForSecretsSeesAll) {
    m_options.showsSecrets = true;
    EXPECT_FALSE(OneRun().Hides(At("out/hidden")));
    EXPECT_NO_THROW(OneRun().RequireShown(At("out/hidden")));
    EXPECT_TRUE(OneRun().IsPrivate(At("out/hidden"))) << "it is no less private for that";
}

TEST_F(SecretsTest, ExcuseSaysWhyAndHowToSeeIt) {
    Write("out/private", "text\n", 0600);
    EXPECT_EQ(OneRun().Excuse(At("out/private")),
              "text not shown: the file is not for everybody; --show-secrets shows it");
    EXPECT_EQ(OneRun().Excuse(At("out/hidden")),
              "text not shown: the list of targets calls it secret; --show-secrets shows it");
    EXPECT_EQ(OneRun().Excuse(At("out/file")),
              "text not shown: the file is not for everybody; --show-secrets shows it")
        << "what it is made of may be private";
    EXPECT_THAT(m_told.warnings, IsEmpty());
}

TEST_F(SecretsTest, ThatNobodyCanTellIsWarnedOfOnce) {
    Write("templates/targets.toml", "[templates\n");
    EXPECT_EQ(OneRun().Excuse(At("out/one")),
              "text not shown: nobody can tell whether it is secret; --show-secrets shows it");
    OneRun().Excuse(At("out/one"));
    ASSERT_THAT(m_told.warnings, SizeIs(1));
    EXPECT_EQ(m_told.warnings[0],
              At("templates/targets.toml") +
                  ": the list of targets is broken (see check-config); so no text is shown");
}

TEST_F(SecretsTest, WhoAsksForTheTextOfOneFileHasToAskForSecretsOnlyWhereItIsSecret) {
    Write("out/private", "text\n", 0600);
    EXPECT_NO_THROW(OneRun().RequireShown(At("out/private")));
    EXPECT_EQ(MessageOf<Failure>([&] { OneRun().RequireShown(At("out/hidden")); }),
              At("out/hidden") +
                  ": its text is not shown: the list of targets calls it secret (--show-secrets shows it)");
}

TEST_F(SecretsTest, ClosedIsARegularFileThatOthersMayNotRead) {
    Write("out/private", "text\n", 0640);
    Write("out/file", "text\n", 0604);
    fs::permissions(At("etc"), fs::perms(0700));
    EXPECT_TRUE(Secrets::IsClosed(At("out/private")));
    EXPECT_TRUE(Secrets::IsClosed(StateOf(At("out/private"))));
    EXPECT_FALSE(Secrets::IsClosed(At("out/file")));
    EXPECT_FALSE(Secrets::IsClosed(At("etc"))) << "a directory has no text";
    EXPECT_FALSE(Secrets::IsClosed(At("out/missing")));
}

}  // namespace
}  // namespace ZET::Deploy
