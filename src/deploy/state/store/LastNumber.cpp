#include "deploy/state/store/LastNumber.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <string_view>

#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/store/StoreNames.h"
#include "posix/CreationMask.h"
#include "posix/Descriptor.h"

namespace ZET::Deploy {

namespace {

constexpr std::size_t kDigits = 20;
constexpr std::size_t kSize = 2 * kDigits + 2;

/// Writes it twice, so that a broken byte is noticed.
std::string TextOf(std::int64_t number) {
    std::string digits = std::to_string(number);
    digits.insert(0, kDigits - digits.size(), '0');
    return digits + ' ' + digits + '\n';
}

}  // namespace

std::int64_t LastNumberBeside(const std::string& file) {
    // Anything else in its place is refused by whoever opens the store: a pipe there must not block this.
    constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const Descriptor kept(open((file + kLastNumberSuffix).c_str(), kFlags));
    char text[kSize];
    if (kept < 0 || pread(kept, text, kSize, 0) != static_cast<ssize_t>(kSize)) return 0;
    std::int64_t number = 0;
    std::from_chars(text, text + kDigits, number);
    return number > 0 && TextOf(number) == std::string_view(text, kSize) ? number : 0;
}

void KeepLastNumber(const std::string& file, std::int64_t number) {
    const std::string name = file + kLastNumberSuffix;
    const CreationMask mask(kOfOwnerAlone);
    const Descriptor kept(open(name.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    const std::string text = TextOf(number);
    // On a full disk the former number stays, which tells less, but nothing wrong.
    if (kept >= 0) static_cast<void>(pwrite(kept, text.data(), text.size(), 0) == 0);
}

void ForgetLastNumber(const std::string& file) {
    const std::string name = file + kLastNumberSuffix;
    if (unlink(name.c_str()) == 0 || errno == ENOENT) return;
    FailOfCall(name, _("cannot be removed"));
}

}  // namespace ZET::Deploy
