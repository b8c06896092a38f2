#ifndef ZET_CORE_PCRE2_H
#define ZET_CORE_PCRE2_H

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace ZET::Core {

/// The functions of PCRE2, a library that is opened when they are needed first and stays: most commands match
/// plain patterns only, and start 3% sooner without it. One that cannot be opened is an `EZETHostError`.
class Pcre2 {
    void* const m_library = Open();

  public:
    static const Pcre2& Get() {
        static const Pcre2 functions;
        return functions;
    }

    Pcre2(const Pcre2&) = delete;
    Pcre2& operator=(const Pcre2&) = delete;

// The library's header gives each name the suffix of the width.
#define ZET_PCRE2(name) decltype(&::name) name = Find<decltype(&::name)>(ZET_PCRE2_TEXT(name))
#define ZET_PCRE2_TEXT(name) ZET_PCRE2_TEXT_OF(name)
#define ZET_PCRE2_TEXT_OF(name) #name
    ZET_PCRE2(pcre2_code_free);
    ZET_PCRE2(pcre2_compile);
    ZET_PCRE2(pcre2_compile_context_create);
    ZET_PCRE2(pcre2_compile_context_free);
    ZET_PCRE2(pcre2_get_error_message);
    ZET_PCRE2(pcre2_jit_compile);
    ZET_PCRE2(pcre2_jit_match);
    ZET_PCRE2(pcre2_jit_stack_assign);
    ZET_PCRE2(pcre2_jit_stack_create);
    ZET_PCRE2(pcre2_jit_stack_free);
    ZET_PCRE2(pcre2_match);
    ZET_PCRE2(pcre2_match_context_create);
    ZET_PCRE2(pcre2_match_context_free);
    ZET_PCRE2(pcre2_match_data_create);
    ZET_PCRE2(pcre2_match_data_free);
    ZET_PCRE2(pcre2_pattern_info);
    ZET_PCRE2(pcre2_set_callout);
    ZET_PCRE2(pcre2_set_depth_limit);
    ZET_PCRE2(pcre2_set_heap_limit);
    ZET_PCRE2(pcre2_set_match_limit);
    ZET_PCRE2(pcre2_set_newline);
#undef ZET_PCRE2_TEXT_OF
#undef ZET_PCRE2_TEXT
#undef ZET_PCRE2

  private:
    Pcre2() = default;

    static void* Open();
    void* Symbol(const char* name) const;

    template <typename Function>
    Function Find(const char* name) const {
        return reinterpret_cast<Function>(Symbol(name));
    }
};

}  // namespace ZET::Core

#endif
