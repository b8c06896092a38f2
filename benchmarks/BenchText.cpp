#include "BenchText.h"

#include <array>
#include <cstdio>
#include <random>

#include "zet/ZETFormat.h"

namespace ZET {

namespace {

constexpr std::array kNames = {"realm",     "max_renewable_life", "max_life",         "server",
                               "server_id", "minimum_uid",        "ldap_domain",      "ldap_dc",
                               "domain",    "server_export_dir",  "valid_user_names", "valid_group_names",
                               "ldap_uris", "kdc_server",         "kadmin_server"};
constexpr std::size_t kLinesPerPlaceholder = 6;

class Words {
  public:
    std::string Next(std::size_t size) {
        std::string word(size, ' ');
        for (char& letter : word)
            letter = static_cast<char>('a' + m_letter(m_engine));
        return word;
    }

  private:
    std::mt19937 m_engine{20240229};
    std::uniform_int_distribution<int> m_letter{0, 25};
};

std::string Placeholder(std::size_t index) {
    return std::string("${").append(kNames[index % kNames.size()]).append("}");
}

std::string Numbered(const char* name, std::size_t number) {
    std::array<char, 40> text;
    std::snprintf(text.data(), text.size(), "%s_%08zu", name, number);
    return text.data();
}

std::string Block(const std::string& line) {
    return ZETFormerLinePrefix + line + ZETBeginMarker + "\n" + line + ZETEndMarker + "\n";
}

std::string ParameterLine(std::size_t number, Words& words) {
    return Numbered("parameter", number).append("=").append(words.Next(13)).append("\n");
}

}  // namespace

std::string ParameterLines(std::size_t count) {
    Words words;
    std::string text;
    for (std::size_t number = 0; number < count; ++number)
        text += ParameterLine(number, words);
    return text;
}

std::string ParameterText(std::size_t size, std::size_t blocks) {
    Words words;
    std::string text;
    std::size_t made = 0;
    for (std::size_t number = 0; text.size() < size || made < blocks; ++number) {
        const std::string line = ParameterLine(number, words);
        if (made < blocks && text.size() * blocks >= size * made) {
            text += Block(line);
            ++made;
        } else {
            text += line;
        }
    }
    return text;
}

std::string TemplateText(std::size_t size) {
    Words words;
    std::string text;
    for (std::size_t number = 0; text.size() < size; ++number) {
        text.append("    ").append(Numbered("option", number)).append(" = ");
        text.append(number % 4 == 3 ? Placeholder(number / 4) : words.Next(15)).append("\n");
    }
    return text;
}

std::string PlaceholderLine(std::size_t count) {
    Words words;
    std::string text;
    for (std::size_t index = 0; index < count; ++index)
        text += words.Next(12) + Placeholder(0);
    return text + "\n";
}

std::string SmallTemplate() {
    Words words;
    std::string text;
    for (std::size_t index = 0; index < kNames.size() * kLinesPerPlaceholder; ++index) {
        text.append("    ").append(words.Next(12)).append(" = ");
        const bool isPlace = index % kLinesPerPlaceholder == 0;
        text.append(isPlace ? Placeholder(index / kLinesPerPlaceholder) : words.Next(15)).append("\n");
    }
    return text;
}

StringMap TemplateValues() {
    StringMap values;
    for (std::size_t index = 0; index < kNames.size(); ++index)
        values[Placeholder(index)] = "value.of.example.org";
    return values;
}

Buffer BufferOf(const std::string& text) {
    Buffer bytes;
    bytes.Append(text);
    return bytes;
}

}  // namespace ZET
