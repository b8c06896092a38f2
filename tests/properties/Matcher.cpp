#define PCRE2_CODE_UNIT_WIDTH 8
#include "Matcher.h"

#include <pcre2.h>

#include <memory>
#include <unordered_map>

#include "zet/ZETErrors.h"

namespace ZET {

namespace {

struct FreeCode {
    void operator()(pcre2_code* code) const { pcre2_code_free(code); }
};
struct FreeMatchData {
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
};

// Patterns that cannot be compiled are kept as null.
using Compiled = std::unique_ptr<pcre2_code, FreeCode>;

Compiled Compile(const std::string& pattern) {
    int error = 0;
    std::size_t offset = 0;
    return Compiled(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.data()), pattern.size(),
                                  PCRE2_NEVER_UTF, &error, &offset, nullptr));
}

// No pattern, however twisted, takes longer than this; with the limit met it counts as broken.
pcre2_match_context* LimitedContext() {
    static pcre2_match_context* context = [] {
        pcre2_match_context* limited = pcre2_match_context_create(nullptr);
        pcre2_set_match_limit(limited, 100'000);
        pcre2_set_depth_limit(limited, 10'000);
        return limited;
    }();
    return context;
}

const pcre2_code* CompiledOnce(const std::string& pattern) {
    constexpr std::size_t kKept = 1000;
    static std::unordered_map<std::string, Compiled> known;
    auto found = known.find(pattern);
    if (found == known.end()) {
        if (known.size() >= kKept) known.clear();
        found = known.emplace(pattern, Compile(pattern)).first;
    }
    return found->second.get();
}

}  // namespace

bool IsFoundQuickly(const std::string& pattern, const std::string& subject) {
    const pcre2_code* code = CompiledOnce(pattern);
    if (code == nullptr) throw EZETError("Broken pattern " + pattern, "");
    static const std::unique_ptr<pcre2_match_data, FreeMatchData> data(pcre2_match_data_create(1, nullptr));
    const int result = pcre2_match(code, reinterpret_cast<PCRE2_SPTR>(subject.data()), subject.size(), 0, 0,
                                   data.get(), LimitedContext());
    if (result < 0 && result != PCRE2_ERROR_NOMATCH) throw EZETError("Broken pattern " + pattern, "");
    return result >= 0;
}

}  // namespace ZET
