#define PCRE2_CODE_UNIT_WIDTH 8
#include "RecordingCoreMatch.h"

#include <pcre2.h>

#include <memory>

#include "zet/ZETErrors.h"

namespace ZET {

bool IsFound(const std::string& pattern, const std::string& subject) {
    int error = 0;
    std::size_t offset = 0;
    const std::unique_ptr<pcre2_code, decltype(&pcre2_code_free)> code(
        pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.data()), pattern.size(), PCRE2_NEVER_UTF, &error,
                      &offset, nullptr),
        &pcre2_code_free);
    if (!code) throw EZETError("Broken pattern " + pattern, "");
    const std::unique_ptr<pcre2_match_data, decltype(&pcre2_match_data_free)> match(
        pcre2_match_data_create_from_pattern(code.get(), nullptr), &pcre2_match_data_free);
    return pcre2_match(code.get(), reinterpret_cast<PCRE2_SPTR>(subject.data()), subject.size(), 0, 0,
                       match.get(), nullptr) >= 0;
}

}  // namespace ZET
