#include "Buffer.h"
#include "TextReader.h"

#include <cerrno>
#include <new>
#include <random>
#include <string>

#include "ModuleTest.h"
#include "SystemCalls.h"

namespace ZET {
namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

TEST(BufferTest, BytesStayWhileItGrowsFromSmallToMappedToLarger) {
    Buffer buffer;
    std::string expected;
    for (std::size_t i = 0; i < 100000; ++i) {
        const std::string piece = "some text " + std::to_string(i) + "\n";
        expected += piece;
        buffer.Append(piece);
    }
    while (expected.size() < 9 * kMebibyte)
        expected += expected;
    buffer.Append(std::string_view(expected).substr(buffer.Size()));
    EXPECT_TRUE(buffer.View() == expected);
}

TEST(BufferTest, MappingThatCannotGrowIsOutOfMemoryAndKeepsItsBytes) {
    const std::string text(3 * kMebibyte, 'x');
    Buffer buffer;
    buffer.Append(text);
    {
        const SystemCalls lies({.failing = {{"mremap", ENOMEM}}});
        EXPECT_THROW(buffer.Append(text), std::bad_alloc);
        EXPECT_EQ(lies.Record().counts.at("mremap"), 1U);
    }
    EXPECT_TRUE(buffer.View() == text);
    buffer.Append("y");
    EXPECT_TRUE(buffer.View() == text + "y");
}

TEST(BufferTest, SizeThatNoMemoryHoldsIsOutOfMemoryAndKeepsTheBytes) {
    Buffer buffer;
    buffer.Append("x");
    EXPECT_THROW(buffer.Reserve(std::size_t{1} << 62), std::bad_alloc);
    EXPECT_EQ(buffer.View(), "x");
    buffer.Append("y");
    EXPECT_EQ(buffer.View(), "xy");
}

std::string Letters(std::size_t size) {
    std::string letters(size, 'a');
    for (std::size_t i = 0; i < size; ++i)
        letters[i] = static_cast<char>('a' + (i * 7 + i / 26) % 26);
    return letters;
}

/// Pieces of a text made its own ones, beside the same done with copies.
class ArrangedText {
  public:
    explicit ArrangedText(std::size_t size) : m_expected(Letters(size)) { m_buffer.Append(m_expected); }

    void Arrange(const std::vector<TextPiece>& pieces, const std::string& others) {
        std::string made;
        std::size_t taken = 0;
        for (const TextPiece& piece : pieces) {
            made +=
                piece.IsOfText() ? m_expected.substr(piece.at, piece.size) : others.substr(taken, piece.size);
            taken += piece.IsOfText() ? 0 : piece.size;
        }
        m_buffer.Arrange(pieces, others, made.size());
        m_expected = made;
        ASSERT_TRUE(m_buffer.View() == m_expected);
    }

    /// Some pieces at random, about as many as are told, and others of about that size between them.
    void ArrangeAny(std::mt19937& random, std::size_t count, std::size_t otherSize) {
        std::vector<TextPiece> pieces;
        std::string others;
        for (std::size_t at = 0; at < m_expected.size();) {
            const std::size_t size =
                std::min(random() % (2 * m_expected.size() / count + 2), m_expected.size() - at);
            if (random() % 3 != 0) pieces.push_back({at, size});
            at += size;
            if (random() % 2 == 0) continue;
            pieces.push_back({TextPiece::kOthers, random() % (otherSize + 1)});
            others += std::string(pieces.back().size, static_cast<char>('A' + random() % 26));
        }
        Arrange(pieces, others);
    }

    std::size_t Size() const { return m_expected.size(); }
    const char* Begin() const { return m_buffer.View().data(); }

  private:
    Buffer m_buffer;
    std::string m_expected;
};

TEST(ArrangeTest, PiecesComeTogetherWhereverTheyGo) {
    std::mt19937 random(3);
    for (int i = 0; i < 2000; ++i) {
        ArrangedText text(random() % 300);
        for (int times = 0; times < 4; ++times)
            text.ArrangeAny(random, 1 + random() % 20, random() % 40);
    }
}

TEST(ArrangeTest, PiecesOfALargeTextComeTogether) {
    std::mt19937 random(4);
    for (int i = 0; i < 4; ++i) {
        ArrangedText text(2 * kMebibyte + random() % kMebibyte);
        for (int times = 0; times < 6; ++times)
            text.ArrangeAny(random, 5 + random() % 1000, random() % 5000);
    }
}

TEST(ArrangeTest, BeginningOfALargeTextComesAndGoesWithoutTheRest) {
    ArrangedText text(3 * kMebibyte);
    const char* const before = text.Begin();
    text.Arrange({{TextPiece::kOthers, 300}, {0, text.Size()}}, std::string(300, 'N'));
    EXPECT_EQ(text.Begin(), before - 300);
    text.Arrange({{299, text.Size() - 299}}, "");
    EXPECT_EQ(text.Begin(), before - 1);
}

TEST(ArrangeTest, WholeTextStays) {
    ArrangedText text(1000);
    const char* const before = text.Begin();
    text.Arrange({{0, 1000}}, "");
    EXPECT_EQ(text.Begin(), before);
}

TEST(ArrangeTest, TextForWhichThereIsNoMemoryStays) {
    const std::string text(3 * kMebibyte, 'x');
    const std::string others(kMebibyte * 2, 'y');
    Buffer buffer;
    buffer.Append(text);
    {
        const SystemCalls lies({.failing = {{"mremap", ENOMEM}}});
        EXPECT_THROW(buffer.Arrange({{0, 5}, {TextPiece::kOthers, others.size()}, {5, text.size() - 5}},
                                    others, text.size() + others.size()),
                     std::bad_alloc);
    }
    EXPECT_TRUE(buffer.View() == text);
}

/// A pass's text made in place and made anew, beside what it is to be.
TEST(TextBuilderTest, MakesTheSameTextOfManyPiecesAndOfFew) {
    std::mt19937 random(8);
    for (int i = 0; i < 3000; ++i) {
        const std::size_t lineSize = i % 2 == 0 ? 300 : 20;
        std::string bytes;
        for (std::size_t lines = random() % 200; lines > 0; --lines)
            bytes += Letters(random() % lineSize) + "\n";
        Buffer buffer;
        buffer.Append(bytes);
        TextReader text(std::move(buffer));
        TextBuilder result(text, Buffer());
        std::string expected;
        const std::size_t oneOf = 2 + random() % 5;
        for (std::string_view line; text.ReadLine(line);) {
            if (random() % oneOf != 0) {
                result.CopyLine(line);
                expected.append(line).append("\n");
            } else if (random() % 2 == 0) {
                result.AppendLine("other");
                expected += "other\n";
            }
            ASSERT_EQ(result.Size(), expected.size());
        }
        result.Install();
        ASSERT_EQ(text.Bytes(), expected);
        std::string_view line;
        EXPECT_EQ(text.ReadLine(line), !expected.empty());
    }
}

/// As a reader sees them who takes the text as it is.
TEST(TextReaderTest, LinesAreThoseBetweenTheLineFeeds) {
    std::mt19937 random(9);
    for (int i = 0; i < 2000; ++i) {
        std::string bytes;
        for (std::size_t lines = random() % 30; lines > 0; --lines)
            bytes += Letters(random() % (i % 10 == 0 ? 700 : 50)) + (random() % 8 == 0 ? "" : "\n");
        Buffer buffer;
        buffer.Append(bytes);
        TextReader text(std::move(buffer));
        std::string read;
        std::string_view line;
        while (!text.Rest().empty() && text.ReadLine(line)) {
            ASSERT_EQ(line.find('\n'), std::string_view::npos);
            read.append(line).append(text.EndedByEndOfText() ? "" : "\n");
            if (random() % 4 == 0) read += text.SkipLinesWithout(Letters(1 + random() % 3));
            if (random() % 50 == 0) {
                text.Rewind();
                read.clear();
            }
        }
        ASSERT_EQ(read, bytes);
    }
}

/// A file that outgrows its mapping.
class GrowingTextTest : public ModuleTest {};

TEST_F(GrowingTextTest, TextOutlivesALineForWhichItsMappingCannotGrow) {
    std::string text(3 * kMebibyte, 'x');
    text += '\n';
    CZETConfigFile file(m_core);
    ASSERT_TRUE(file.Open(Write("target", text), "", true));
    m_core.SetMatcher([](const std::string&, const std::string&) { return false; });
    {
        const SystemCalls lies({.failing = {{"mremap", ENOMEM}}});
        EXPECT_THROW(file.SetLine("^y", std::string(4 * kMebibyte, 'y')), std::bad_alloc);
        EXPECT_EQ(lies.Record().counts.at("mremap"), 1U);
    }
    file.Save(true);
    EXPECT_TRUE(Read("target") == text);
}

}  // namespace
}  // namespace ZET
