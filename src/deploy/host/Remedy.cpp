#include "deploy/host/Remedy.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "deploy/host/Words.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

/// The message catalogue of the C library.
constexpr char kSystemDomain[] = "libc";

constexpr struct {
    int error;
    const char* remedy;
} kRemedies[] = {
    {EACCES, ZET_TEXT("run the command as a user who may")},
    {EPERM, ZET_TEXT("run the command as a user who may")},
    {EROFS, ZET_TEXT("let the file system be writable")},
    {ENOSPC, ZET_TEXT("make room, then run the command again")},
    {EDQUOT, ZET_TEXT("make room, then run the command again")},
    {EFBIG, ZET_TEXT("allow larger files, then run the command again")},
    {ENOENT, ZET_TEXT("create it, or correct the path")},
    {ENOTDIR, ZET_TEXT("correct the path")},
    {EISDIR, ZET_TEXT("move the directory away, or name a file")},
    {ENXIO, ZET_TEXT("move it away, or name a file")},
    {ELOOP, ZET_TEXT("correct the links")},
    {ENAMETOOLONG, ZET_TEXT("choose a shorter name")},
    {EMFILE, ZET_TEXT("let the command open more files")},
    {ENFILE, ZET_TEXT("let the system open more files")},
    {EIO, ZET_TEXT("repair or replace the file or its file system")},
};

/// Empty if there is none to give.
std::string RemedyFor(int error) {
    if (error == EPERM && geteuid() == 0)
        return _(
            "take the attribute away that forbids it; lsattr shows those of a file and of its directory");
    for (const auto& entry : kRemedies) {
        if (entry.error == error) return _(entry.remedy);
    }
    return "";
}

const ZETCause* CauseOf(const EZETError& error) {
    const auto* known = dynamic_cast<const EZETHostError*>(&error);
    return known == nullptr ? nullptr : &known->GetCause();
}

Problem FactsOf(const EZETError& error) {
    Problem facts{.text = error.GetMessage(), .textNamesFile = true};
    const ZETCause* const cause = CauseOf(error);
    if (cause == nullptr) return facts;
    facts.file = cause->path;
    facts.line = static_cast<int>(cause->line);
    if (!cause->text.empty()) {
        facts.text = cause->text;
        facts.textNamesFile = false;
    }
    facts.remedy = cause->remedy;
    return facts;
}

Failure FailureOfCore(const EZETError& error, const std::string& otherwise) {
    const int number = ErrorNumberOf(error);
    const std::string remedy = RemedyFor(number);
    const Problem facts = FactsOf(error);
    // The message may be translated as a whole.
    if (!facts.remedy.empty()) return Failure(error.GetMessage(), facts, number);
    return FailureWith(error, remedy.empty() ? otherwise : remedy);
}

}  // namespace

std::string ReasonOf(int error) {
    const char* const text = strerrordesc_np(error);
    return text != nullptr ? Text::InReadersLanguage(kSystemDomain, text) : std::strerror(error);
}

Failure SystemFailure(Problem facts, int error) {
    facts.text += ": " + ReasonOf(error);
    if (facts.remedy.empty()) facts.remedy = RemedyFor(error);
    return Failure(facts, error);
}

void FailOfCall(const std::string& path, const std::string& what) {
    const int error = errno;
    throw SystemFailure({.file = path, .text = what}, error);
}

Failure FailureOf(const std::exception& error, const std::string& otherwise) {
    if (const auto* failure = dynamic_cast<const Failure*>(&error)) return *failure;
    if (const auto* end = dynamic_cast<const Interrupted*>(&error)) return Failure(end->Facts());
    if (const auto* ofCore = dynamic_cast<const EZETError*>(&error)) return FailureOfCore(*ofCore, otherwise);
    return Failure({.text = error.what()});
}

Failure FailureWith(const EZETError& error, const std::string& remedy) {
    Problem facts = FactsOf(error);
    facts.remedy = remedy;
    // The remedy goes into the same sentence.
    if (!remedy.empty() && facts.text.ends_with('.')) facts.text.pop_back();
    return Failure(facts, ErrorNumberOf(error));
}

int ErrorNumberOf(const EZETError& error) {
    const ZETCause* const cause = CauseOf(error);
    return cause == nullptr ? 0 : cause->errorNumber;
}

}  // namespace ZET::Deploy
