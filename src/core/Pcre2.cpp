#include "Pcre2.h"

#include <dlfcn.h>

#include <string>

#include "Message.h"

namespace ZET::Core {

namespace {

constexpr char kFile[] = "libpcre2-8.so.0";

/// Throws if `found` is null: the library is at fault, not the pattern.
void* Required(void* found) {
    if (found != nullptr) return found;
    const std::string reason = ::dlerror();
    const ZETCause cause = {
        .path = kFile, .text = reason, .remedy = Message("install the package libpcre2-8-0")};
    FailKnowing(cause, "Failed to load library '%s': %s (install the package libpcre2-8-0)", kFile,
                reason.c_str());
}

}  // namespace

Pcre2::Pcre2() {
    void* const library = Required(::dlopen(kFile, RTLD_LAZY | RTLD_LOCAL));
    const auto find = [&](auto*& function, const char* name) {
        using Function = std::remove_reference_t<decltype(function)>;
        function = reinterpret_cast<Function>(Required(::dlsym(library, name)));
    };
    find(freeCode, "pcre2_code_free_8");
    find(compile, "pcre2_compile_8");
    find(createCompileContext, "pcre2_compile_context_create_8");
    find(freeCompileContext, "pcre2_compile_context_free_8");
    find(describe, "pcre2_get_error_message_8");
    find(translate, "pcre2_jit_compile_8");
    find(matchTranslated, "pcre2_jit_match_8");
    find(assignStack, "pcre2_jit_stack_assign_8");
    find(createStack, "pcre2_jit_stack_create_8");
    find(freeStack, "pcre2_jit_stack_free_8");
    find(match, "pcre2_match_8");
    find(createMatchContext, "pcre2_match_context_create_8");
    find(freeMatchContext, "pcre2_match_context_free_8");
    find(createResult, "pcre2_match_data_create_8");
    find(freeResult, "pcre2_match_data_free_8");
    find(tell, "pcre2_pattern_info_8");
    find(setCallout, "pcre2_set_callout_8");
    find(setDepthLimit, "pcre2_set_depth_limit_8");
    find(setHeapLimit, "pcre2_set_heap_limit_8");
    find(setMatchLimit, "pcre2_set_match_limit_8");
    find(setNewline, "pcre2_set_newline_8");
}

const Pcre2& ThePcre2() {
    static const Pcre2 functions;
    return functions;
}

}  // namespace ZET::Core
