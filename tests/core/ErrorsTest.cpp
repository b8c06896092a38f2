#include <gtest/gtest.h>

#include <exception>
#include <type_traits>

#include "zet/ZETErrors.h"
#include "zet/ZETInterface.h"

namespace ZET {
namespace {

TEST(Errors, ErrorCarriesMessageAndDetailAndNoPlace) {
    const EZETError error("message", "detail");
    EXPECT_STREQ(error.what(), "message");
    EXPECT_EQ(error.GetMessage(), "message");
    EXPECT_EQ(error.GetDetail(), "detail");
    EXPECT_EQ(error.GetSource(), "");
    EXPECT_EQ(error.GetFunction(), "");
    EXPECT_EQ(error.GetLine(), 0U);
}

TEST(Errors, InternalErrorCarriesItsPlace) {
    const EZETInternalError error("message", "detail", "src/file", "Function", 17);
    EXPECT_STREQ(error.what(), "message");
    EXPECT_EQ(error.GetDetail(), "detail");
    EXPECT_EQ(error.GetSource(), "src/file");
    EXPECT_EQ(error.GetFunction(), "Function");
    EXPECT_EQ(error.GetLine(), 17U);
}

TEST(Errors, EveryClassIsCaughtAsErrorAndAsStandardException) {
    EXPECT_THROW(throw EZETCheckError("m", ""), EZETError);
    EXPECT_THROW(throw EZETInternalError("m", "", "", "", 0), EZETError);
    EXPECT_THROW(throw EZETError("m", ""), std::exception);
}

TEST(Errors, CheckErrorAndInternalErrorAreNotEachOther) {
    static_assert(!std::is_base_of_v<EZETCheckError, EZETInternalError>);
    static_assert(!std::is_base_of_v<EZETInternalError, EZETCheckError>);
    EXPECT_EQ(EZETCheckError("check", "d").GetMessage(), "check");
    EXPECT_EQ(EZETCheckError("check", "d").GetDetail(), "d");
}

TEST(Errors, CopyOutlivesTheOriginal) {
    std::exception_ptr kept;
    try {
        throw EZETInternalError("message", "detail", "source", "function", 3);
    } catch (...) {
        kept = std::current_exception();
    }
    try {
        std::rethrow_exception(kept);
    } catch (const EZETInternalError& error) {
        const EZETInternalError copy = error;
        kept = nullptr;
        EXPECT_EQ(copy.GetFunction(), "function");
    }
}

TEST(Interface, KeepsTheNameItWasGiven) {
    const CZETInterface interface("some-name");
    EXPECT_EQ(interface.GetName(), "some-name");
}

}  // namespace
}  // namespace ZET
