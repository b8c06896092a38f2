#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "Passes.h"
#include "RecordingCore.h"
#include "text/WithoutBlocks.h"
#include "zet/ZETFormat.h"

namespace ZET::Text {

namespace {

constexpr char kName[] = "chosen";

Buffer BufferOf(const std::string& text) {
    Buffer buffer;
    buffer.Append(text);
    return buffer;
}

/// What one of the module's passes makes of the text.
template <typename Pass>
std::string Passed(const std::string& text, const std::string& pattern, Pass pass) {
    RecordingCore core;
    LineMatcher matches(core, pattern);
    TextReader reader(BufferOf(text));
    TextBuilder builder(reader, Buffer());
    pass(reader, builder, matches);
    builder.Install();
    return std::string(reader.Bytes());
}

std::string WithBlock(const std::string& text, const std::string& newLine) {
    return Passed(text, std::string("^") + kName, [&](auto& in, auto& out, auto& matches) {
        SetLinePass(in, out, matches, newLine, LineStyle::Marked);
    });
}

std::string Restored(const std::string& text) {
    const std::string pattern = std::string("^") + ZETFormerLinePrefix + kName;
    return Passed(text, pattern,
                  [](auto& in, auto& out, auto& matches) { RestoreLinePass(in, out, matches); });
}

rc::Gen<std::string> Scrap() {
    return rc::gen::element<std::string>("", "a=1", " ", "#", "# comment", "\r", "x\r", "name", "# --PRE",
                                         "\t", "\xff");
}

/// Lines of others, none of which is chosen, with or without a line feed at the end.
rc::Gen<std::string> OtherLines() {
    return rc::gen::map(rc::gen::container<std::vector<std::string>>(Scrap()),
                        [](const std::vector<std::string>& lines) {
                            std::string text;
                            for (const std::string& line : lines)
                                text += line + "\n";
                            return text;
                        });
}

rc::Gen<std::string> LineEnd() {
    return rc::gen::element<std::string>("\n", "\r\n", "");
}

}  // namespace

RC_GTEST_PROP(WithoutBlocksProperties, TheOnlyBlockGoesAsTheModuleRestoresItsLine, ()) {
    const std::string before = *OtherLines();
    const std::string end = *LineEnd();
    // Behind a line without an end, there is nothing.
    const std::string after = end.empty() ? "" : *OtherLines();
    const std::string former = kName + *Scrap();
    const std::string newLine = *rc::gen::element<std::string>("chosen=2", "", "other", "chosen=2\r", " ");
    const std::string text = WithBlock(before + former + end + after, newLine);
    RC_ASSERT(text.find(ZETBeginMarker) != std::string::npos);
    RC_ASSERT(WithoutBlocks(text) == Restored(text));
}

RC_GTEST_PROP(WithoutBlocksProperties, AnAppendedBlockGoesAsTheModuleRestoresItsLine, ()) {
    std::string lines = *OtherLines();
    if (!lines.empty() && *rc::gen::arbitrary<bool>()) lines.pop_back();
    const std::string text = WithBlock(lines, *rc::gen::element<std::string>("chosen=2", "", "chosen=2\r"));
    RC_ASSERT(text.find(ZETBeginMarker) != std::string::npos);
    RC_ASSERT(WithoutBlocks(text) == Restored(text));
}

RC_GTEST_PROP(WithoutBlocksProperties, AFileWithoutBlocksIsWhatItWasBeforeTheLineWasSet, ()) {
    const std::string text = *OtherLines() + kName + "=1\n" + *OtherLines();
    RC_ASSERT(WithoutBlocks(WithBlock(text, "chosen=2")) == text);
}

}  // namespace ZET::Text
