#include "posix/OwnPlace.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace ZET {
namespace {

/// Something of this program.
int OfThisProgram() {
    return 1;
}

const void* const kOwn = reinterpret_cast<const void*>(&OfThisProgram);
const void* const kOfTheCLibrary = reinterpret_cast<const void*>(&std::puts);

TEST(OwnPlace, IsTheFileThatTheCodeWasLoadedFrom) {
    EXPECT_EQ(BaseNameOf(LoadedFrom(kOwn)), "zet-posix-tests");
    EXPECT_TRUE(BaseNameOf(LoadedFrom(kOfTheCLibrary)).starts_with("libc.so"));
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
