#include "deploy/host/Failure.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <type_traits>

#include "deploy/host/Remedy.h"
#include "zet/ZETFiles.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {
namespace {

const std::string kMissing = "/no-such-directory/file";

/// What the core throws when it removes the file.
Failure FailureToRemove(const std::string& path, const std::string& otherwise) {
    try {
        RemoveFile(path);
    } catch (const EZETError& error) {
        return FailureOf(error, otherwise);
    }
    return Failure({.text = "was removed"});
}

TEST(Failure, SaysWhatItKnowsAndKeepsIt) {
    const Failure failure({.file = "/f", .line = 3, .column = 7, .text = "is bad", .remedy = "mend it"}, EIO);
    EXPECT_STREQ(failure.what(), "/f:3:7: is bad (mend it)");
    EXPECT_EQ(failure.Facts().file, "/f");
    EXPECT_EQ(failure.Facts().line, 3);
    EXPECT_EQ(failure.Facts().column, 7);
    EXPECT_EQ(failure.Facts().text, "is bad");
    EXPECT_EQ(failure.Facts().remedy, "mend it");
    EXPECT_EQ(failure.ErrorNumber(), EIO);
    EXPECT_EQ(failure.Lines(), "");
}

TEST(Failure, EndThatWasAskedForIsNoneAndIsToldLikeOne) {
    static_assert(!std::is_base_of_v<Failure, Interrupted>);
    const Interrupted end({.text = "was ended", .remedy = "call it again"});
    EXPECT_STREQ(end.what(), "was ended (call it again)");
    EXPECT_EQ(end.Facts().text, "was ended");
    const Failure told = FailureOf(end);
    EXPECT_STREQ(told.what(), end.what());
    EXPECT_EQ(told.Facts().remedy, "call it again");
}

TEST(Failure, SaysNothingOfWhatItDoesNotKnow) {
    EXPECT_STREQ(Failure({.text = "is bad"}).what(), "is bad");
    EXPECT_STREQ(Failure({.file = "/f", .text = "is bad"}).what(), "/f: is bad");
    EXPECT_STREQ(Failure({.text = "is bad", .remedy = "mend it"}).what(), "is bad (mend it)");
    EXPECT_EQ(Failure({.text = "is bad"}).ErrorNumber(), 0);
}

TEST(Failure, DoesNotNameTheFileTwice) {
    const Failure failure({.file = "/f", .line = 3, .text = "'/f' is bad", .textNamesFile = true});
    EXPECT_STREQ(failure.what(), "'/f' is bad");
    EXPECT_EQ(failure.Facts().file, "/f");
}

TEST(Failure, OtherWordsLeaveTheFacts) {
    const Failure failure("so: /f: is bad", {.file = "/f", .text = "is bad", .output = "a\nb\n"}, ENOENT);
    EXPECT_STREQ(failure.what(), "so: /f: is bad");
    EXPECT_EQ(failure.Facts().text, "is bad");
    EXPECT_EQ(failure.Lines(), "a\nb\n");
    EXPECT_EQ(failure.ErrorNumber(), ENOENT);
}

TEST(Failure, OfTheSystemHasItsReasonAndTheRemedyForIt) {
    const Failure failure = SystemFailure({.file = "/f", .text = "cannot be read"}, ENOSPC);
    EXPECT_STREQ(failure.what(),
                 "/f: cannot be read: No space left on device (make room, then run the command again)");
    EXPECT_EQ(failure.Facts().remedy, "make room, then run the command again");
    EXPECT_EQ(failure.ErrorNumber(), ENOSPC);
}

TEST(Failure, OfTheSystemKeepsARemedyOfItsOwn) {
    const Failure failure =
        SystemFailure({.file = "/f", .text = "cannot be read", .remedy = "mend it"}, ENOSPC);
    EXPECT_STREQ(failure.what(), "/f: cannot be read: No space left on device (mend it)");
}

TEST(Failure, OfTheSystemMayHaveNoRemedy) {
    const Failure failure = SystemFailure({.file = "/f", .text = "cannot be read"}, EBADF);
    EXPECT_STREQ(failure.what(), "/f: cannot be read: Bad file descriptor");
    EXPECT_EQ(failure.Facts().remedy, "");
}

TEST(Failure, OfTheCoreHasTheRemedyOfItsNumber) {
    const Failure failure = FailureToRemove(kMissing, "mend it");
    EXPECT_STREQ(failure.what(),
                 "Failed to open directory '/no-such-directory': No such file or directory (create it, or "
                 "correct the path)");
    EXPECT_EQ(failure.Facts().file, "/no-such-directory");
    EXPECT_EQ(failure.Facts().remedy, "create it, or correct the path");
    EXPECT_EQ(failure.ErrorNumber(), ENOENT);
}

TEST(Failure, OfTheCoreHasAnotherRemedyOnlyWhereItsNumberHasNone) {
    const EZETHostError unknown("Failed.", "", {.path = "/f", .errorNumber = EBADF});
    EXPECT_STREQ(FailureOf(unknown, "mend it").what(), "Failed (mend it)");
    EXPECT_STREQ(FailureOf(unknown).what(), "Failed.");
    EXPECT_EQ(FailureOf(unknown).Facts().file, "/f");
}

TEST(Failure, RemedyDoesNotDependOnTheWords) {
    const EZETError words("Failed: No space left on device.", "");
    EXPECT_STREQ(FailureOf(words, "mend it").what(), "Failed: No space left on device (mend it)");
    EXPECT_EQ(FailureOf(words).ErrorNumber(), 0);
    const EZETHostError number("Mißlungen.", "", {.path = "/f", .errorNumber = ENOSPC});
    EXPECT_STREQ(FailureOf(number).what(), "Mißlungen (make room, then run the command again)");
}

TEST(Failure, OfTheCoreWithARemedyOfItsOwnIsToldAsTheCoreTellsIt) {
    const EZETHostError error("/f:3: so (Abhilfe)", "",
                              {.path = "/f", .line = 3, .errorNumber = ENOSPC, .text = "so", .remedy = "do"});
    const Failure failure = FailureOf(error, "mend it");
    EXPECT_STREQ(failure.what(), "/f:3: so (Abhilfe)");
    EXPECT_EQ(failure.Facts().Describe(), "/f:3: so (do)");
    EXPECT_EQ(failure.Facts().line, 3);
}

TEST(Failure, GivenRemedyWinsOverThatOfTheNumber) {
    const EZETHostError error("Failed.", "", {.path = "/f", .errorNumber = ENOSPC});
    EXPECT_STREQ(FailureWith(error, "mend it").what(), "Failed (mend it)");
    EXPECT_EQ(FailureWith(error, "mend it").ErrorNumber(), ENOSPC);
}

TEST(Failure, OfAnotherExceptionHasItsWords) {
    EXPECT_STREQ(FailureOf(std::runtime_error("so it is")).what(), "so it is");
    const Failure failure({.file = "/f", .text = "is bad"}, EIO);
    EXPECT_EQ(FailureOf(failure, "mend it").Facts().file, "/f");
    EXPECT_EQ(FailureOf(failure, "mend it").ErrorNumber(), EIO);
}

TEST(Failure, AsAProblemOfItsFileHasTheSameFacts) {
    const Failure failure({.file = "/f", .line = 3, .text = "is (very) bad", .remedy = "mend (all of) it"});
    const Problem problem = ProblemOf("/f", failure);
    EXPECT_EQ(problem.Describe(), "/f:3: is (very) bad (mend (all of) it)");
    EXPECT_EQ(problem.line, 3);
    EXPECT_EQ(problem.remedy, "mend (all of) it");
}

TEST(Failure, AsAProblemOfAnotherFileNamesItsOwn) {
    const Problem problem = ProblemOf("/t", Failure({.file = "/f", .line = 3, .text = "is bad"}));
    EXPECT_EQ(problem.Describe(), "/t: /f:3: is bad (repair or replace the file)");
    EXPECT_EQ(problem.file, "/t");
    EXPECT_EQ(problem.line, 0);
    EXPECT_EQ(ProblemOf("/t", FailureToRemove(kMissing, "")).Describe(),
              "/t: Failed to open directory '/no-such-directory': No such file or directory (create it, or "
              "correct the path)");
}

}  // namespace
}  // namespace ZET::Deploy
