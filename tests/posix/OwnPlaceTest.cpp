#include "posix/OwnPlace.h"

#include <gnu/libc-version.h>
#include <gtest/gtest.h>

namespace ZET {
namespace {

/// Something of this program.
int OfThisProgram() {
    return 1;
}

const void* const kOwn = reinterpret_cast<const void*>(&OfThisProgram);
/// One that nothing that looks for bad memory use stands before.
const void* const kOfTheCLibrary = reinterpret_cast<const void*>(&gnu_get_libc_version);

TEST(OwnPlace, IsTheFileThatTheCodeWasLoadedFrom) {
    EXPECT_EQ(BaseNameOf(LoadedFrom(kOwn)), "zet-posix-tests");
    EXPECT_TRUE(BaseNameOf(LoadedFrom(kOfTheCLibrary)).starts_with("libc.so"));
}

TEST(OwnPlace, ProgramIsNamedFromTheRootOn) {
    EXPECT_TRUE(OwnProgram().starts_with('/'));
    EXPECT_EQ(BaseNameOf(OwnProgram()), "zet-posix-tests");
}

TEST(OwnPlace, IsNowhereForWhatIsNoCode) {
    const int onTheStack = 0;
    EXPECT_EQ(LoadedFrom(&onTheStack), "");
}

TEST(OwnPlace, IsTheDirectoryOfTheLibraryThatTheCodeIsAPartOf) {
    EXPECT_EQ(LibraryDirectory(kOfTheCLibrary, "libc.so"), DirectoryOf(LoadedFrom(kOfTheCLibrary)));
    EXPECT_EQ(LibraryDirectory(kOfTheCLibrary, "libother.so"), "");
    EXPECT_EQ(LibraryDirectory(kOwn, "libc.so"), "");
}

}  // namespace
}  // namespace ZET
