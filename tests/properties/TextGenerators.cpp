#include "TextGenerators.h"

#include <utility>

namespace ZET {

namespace gen = rc::gen;
using rc::Gen;

Gen<std::string> OneOfWords(Words words) {
    return gen::elementOf(std::move(words));
}

namespace {

std::string Join(const Words& words, const std::string& between) {
    std::string text;
    for (std::size_t index = 0; index < words.size(); ++index)
        text += (index == 0 ? "" : between) + words[index];
    return text;
}

Gen<std::string> Joined(int most, Words words) {
    return gen::map(UpTo(most, OneOfWords(std::move(words))),
                    [](const Words& chosen) { return Join(chosen, ""); });
}

Gen<std::string> Setting() {
    return OneOfWords({"",        "kdc=old", "a",   "#kdc=old", "kdc=a=b", "  kdc=3", "kdc = 4", "##  kdc=5",
                       " #kdc=6", "kdc=",    "b=1", "a.c=2",    "abc=3",   "#",       "# note",  " ",
                       "\r",      "kdc=7\r", "\t",  "%s%n",     "ab",      "kdcs=8"});
}

Gen<std::string> FormerLine() {
    return gen::map(Setting(), [](const std::string& former) { return "# --PRE-ZET-- " + former; });
}

Gen<std::string> MarkerLine() {
    const auto before =
        gen::weightedElement<std::string>({{12, ""}, {1, " "}, {1, "a "}, {1, "#"}, {1, "\t"}});
    const auto after = gen::weightedElement<std::string>({{12, ""}, {1, " "}, {1, "trailing"}, {1, "\r"}});
    return gen::map(gen::tuple(before, OneOfWords(Markers()), after), [](const auto& parts) {
        return std::get<0>(parts) + std::get<1>(parts) + std::get<2>(parts);
    });
}

Words Scraps() {
    return {"${realm", "${rea", "lm}",  "${a}",     "x", "\n", "${b}", "$", "{",   "}",
            "${",      "a",     "${c}", "${realm}", "#", " ",  "${}",  "!", "{a}", "b}"};
}

// Scraps that may not have an end are rare elsewhere, so most texts of this kind can be expanded.
Gen<std::string> ClosedPlaceholderLine() {
    const auto before = gen::weightedElement<std::string>({{6, ""}, {1, "#"}, {1, "  # "}, {1, "\t#"}});
    const auto scraps =
        Joined(6, {"${a}", "x", "${b}", "${c}", "${max${realm}}", " ", "$", "}", "${nobody}", "${a${b}"});
    return gen::map(gen::tuple(before, scraps),
                    [](const auto& parts) { return std::get<0>(parts) + std::get<1>(parts); });
}

Gen<std::string> AnyBytes() {
    return gen::map(UpTo(12, gen::arbitrary<char>()), [](const std::vector<char>& bytes) {
        std::string line(bytes.begin(), bytes.end());
        for (char& byte : line)
            if (byte == '\n') byte = '\0';
        return line;
    });
}

Gen<std::string> LongLine() {
    return gen::map(
        gen::tuple(gen::inRange<std::size_t>(1, 2000), OneOfWords({"long", "${a}", "${a}x", "#", "kdc="})),
        [](const auto& parts) {
            std::string line;
            for (std::size_t count = 0; count < std::get<0>(parts); ++count)
                line += std::get<1>(parts);
            return line;
        });
}

Gen<std::string> TextOf(int most, Gen<std::string> line) {
    return gen::map(gen::tuple(UpTo(most, std::move(line)), gen::arbitrary<bool>()), [](const auto& parts) {
        return Join(std::get<0>(parts), "\n") + (std::get<1>(parts) ? "\n" : "");
    });
}

Gen<std::string> AnyLine() {
    const auto line = gen::weightedOneOf<std::string>({{8, Setting()},
                                                       {4, MarkerLine()},
                                                       {2, FormerLine()},
                                                       {2, ClosedPlaceholderLine()},
                                                       {1, PlaceholderScraps(7)},
                                                       {1, AnyBytes()}});
    return gen::weightedOneOf<std::string>({{200, line}, {1, LongLine()}});
}

/// Now and then, behind the first line, so many others that the engine makes a new text in another way.
Gen<std::string> SometimesLarge(Gen<std::string> text) {
    return gen::map(gen::pair(std::move(text), gen::weightedElement<std::size_t>({{14, 0}, {1, 600}})),
                    [](const auto& parts) {
                        const auto& [small, count] = parts;
                        const std::string others = Join(Words(count, "filler=0123456789abcdefghi\n"), "");
                        const std::size_t place = small.find('\n') + 1;
                        return small.substr(0, place) + others + small.substr(place);
                    });
}

}  // namespace

const Words& Markers() {
    static const Words markers = {"# ---ZET_BEGIN---",     "# ----ZET_END----",
                                  "# --PRE-ZET-- ",        "# --ZET_CONFIG_COMMENT--",
                                  "# --ZET_COMMENT_END--", "# --ZET_TEMPLATE_COMMENT--"};
    return markers;
}

Gen<std::string> AnyText() {
    static const auto kText = SometimesLarge(TextOf(14, AnyLine()));
    return kText;
}

Gen<std::string> MarkerText() {
    static const auto kText = SometimesLarge(
        TextOf(10, gen::weightedOneOf<std::string>({{4, MarkerLine()}, {1, FormerLine()}, {2, Setting()}})));
    return kText;
}

Gen<std::string> PlaceholderScraps(int most) {
    return Joined(most, Scraps());
}

Gen<StringMap> AnyValues() {
    static const auto kKey = gen::weightedElement<std::string>({{4, "${a}"},
                                                                {3, "${b}"},
                                                                {2, "${c}"},
                                                                {2, "${realm}"},
                                                                {1, "${}"},
                                                                {1, "${a${b}"},
                                                                {1, "${$"},
                                                                {1, "a"},
                                                                {1, "${x}"},
                                                                {1, "${a"},
                                                                {1, "${a}}"},
                                                                {1, "${a\nb}"}});
    static const auto kValue = gen::weightedOneOf<std::string>(
        {{2, OneOfWords({"v", "", "x", "#", "EXAMPLE.NET", "${b}", "${c}${c}", "x\ny", "\n", "${a\nb}"})},
         {2, PlaceholderScraps(6)},
         {1, AnyBytes()}});
    static const auto kValues = gen::map(UpTo(4, gen::pair(kKey, kValue)),
                                         [](const std::vector<std::pair<std::string, std::string>>& entries) {
                                             return StringMap(entries.begin(), entries.end());
                                         });
    return kValues;
}

Gen<std::string> AnyNewText() {
    return gen::weightedOneOf<std::string>({{6, Setting()},
                                            {1, MarkerLine()},
                                            {1, ClosedPlaceholderLine()},
                                            {1, AnyBytes()},
                                            {1, OneOfWords({"kdc=1\nkdc=2", "\n", "kdc=1\n", "\nb=2"})}});
}

}  // namespace ZET
