#ifndef ZET_CORE_REG_EX_H
#define ZET_CORE_REG_EX_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Pcre2.h"
#include "posix/ShortText.h"

namespace ZET::Core {

/// Perl-compatible regular expressions on bytes. The most recently used patterns are kept compiled. A search
/// always ends: one that takes more work than a sensible pattern needs is an error.
class RegEx {
  public:
    RegEx();
    ~RegEx();
    RegEx(const RegEx&) = delete;
    RegEx& operator=(const RegEx&) = delete;

    /// Whether `pattern` matches anywhere in `subject`. Throws `EZETError` naming a pattern that does not
    /// compile, or that needs too much time or memory.
    bool Match(const std::string& pattern, const std::string& subject) {
        // The usual case makes no calls and saves no registers: 71 instead of 106 instructions.
        if (m_last == nullptr || !m_last->isShort || !IsSameShort(m_last->pattern, pattern))
            return MatchOther(pattern, subject);
        return m_last->IsFoundIn(subject, IsSameShort);
    }

  private:
    template <auto function>
    struct Free {
        template <typename T>
        void operator()(T* object) const {
            (ThePcre2().*function)(object);
        }
    };
    using Code = std::unique_ptr<pcre2_code, Free<&Pcre2::freeCode>>;
    using Result = std::unique_ptr<pcre2_match_data, Free<&Pcre2::freeResult>>;
    using MatchContext = std::unique_ptr<pcre2_match_context, Free<&Pcre2::freeMatchContext>>;
    using CompileContext = std::unique_ptr<pcre2_compile_context, Free<&Pcre2::freeCompileContext>>;
    using JitStack = std::unique_ptr<pcre2_jit_stack, Free<&Pcre2::freeStack>>;

    /// The number of searches that cost about as much as `LookAtFirstBytes`.
    static constexpr std::uint64_t kUsesBeforeLook = 1024;

    /// A pattern in the form that the system uses most: "^", then optionally "#*" and "\s*", then literal
    /// text that begins with neither. There is only one way to match it, in a few steps, so it is not
    /// compiled; for 1,000 parameters in 20 files that was half of the instructions.
    struct Plain {
        bool hasSigns = false;
        bool hasBlanks = false;
        std::size_t literalSize = 0;  ///< size of the literal end of the pattern
    };

    struct Entry {
        std::string pattern;
        Code code;                  ///< null for a plain pattern
        bool isTranslated = false;  ///< whether `code` is translated to machine code
        Code guarded;               ///< the pattern with a call of the guard before each item; made on demand
        std::uint64_t lastUse = 0;
        std::uint64_t untilLook = kUsesBeforeLook;
        std::array<bool, 256> isHopeless = {};  ///< bytes that begin no match; all false before the look
        std::optional<Plain> plain;
        bool isShort = false;  ///< plain, and short enough for `IsSameShort`

        template <typename Same>
        bool IsFoundIn(std::string_view subject, const Same& isSame) const {
            if (plain->hasSigns)
                while (subject.starts_with('#'))
                    subject.remove_prefix(1);
            if (plain->hasBlanks)
                while (!subject.empty() && IsBlank(subject.front()))
                    subject.remove_prefix(1);
            const std::size_t size = plain->literalSize;
            return subject.size() >= size &&
                   isSame({pattern.data() + pattern.size() - size, size}, subject.substr(0, size));
        }
    };

    /// For subjects up to this size, even a pattern whose work grows with the cube of the size ends quickly.
    static constexpr std::size_t kShortSubject = 1024;

    static bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
    static std::optional<Plain> PlainOf(std::string_view pattern);

    static PCRE2_SPTR Bytes(const std::string& text) { return reinterpret_cast<PCRE2_SPTR>(text.data()); }

    bool MatchOther(const std::string& pattern, const std::string& subject);
    void Prepare();
    Code Compile(const std::string& pattern, std::uint32_t options) const;
    Entry& Find(const std::string& pattern);
    Entry& Add(Entry entry);
    void LookAtFirstBytes(Entry& entry) const;
    void PrepareGuard(Entry& entry);
    bool MatchGuarded(Entry& entry, const std::string& subject);

    CompileContext m_compile;
    MatchContext m_fast;
    MatchContext m_guard;
    JitStack m_stack;
    Result m_result;
    std::vector<Entry> m_entries;
    Entry* m_last = nullptr;
    std::uint64_t m_uses = 0;
};

}  // namespace ZET::Core

#endif
