#include "Effort.h"

#include <dlfcn.h>
#include <sqlite3.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>

namespace ZET::Growth {

namespace {

std::atomic<std::uint64_t> theAllocations;
std::atomic<std::uint64_t> theComparisons;
std::atomic<std::uint64_t> theSteps;

int CountStep(void* /*nothing*/) {
    ++theSteps;
    return 0;
}

using ProgressHandler = decltype(&sqlite3_progress_handler);
ProgressHandler theProgressHandler = nullptr;

int CountStepsOf(sqlite3* database, char** /*message*/, const sqlite3_api_routines* /*routines*/) {
    theProgressHandler(database, 1, CountStep, nullptr);
    return SQLITE_OK;
}

/// Of each database that is opened from now on, by whomever.
bool CountSteps() {
    void* const library = dlopen("libsqlite3.so.0", RTLD_NOW);
    if (library == nullptr) return false;
    theProgressHandler = reinterpret_cast<ProgressHandler>(dlsym(library, "sqlite3_progress_handler"));
    const auto add =
        reinterpret_cast<decltype(&sqlite3_auto_extension)>(dlsym(library, "sqlite3_auto_extension"));
    return theProgressHandler != nullptr && add != nullptr &&
           add(reinterpret_cast<void (*)()>(CountStepsOf)) == SQLITE_OK;
}

}  // namespace

Effort EffortOf(const std::function<void()>& call) {
    static const bool countsSteps = CountSteps();
    if (!countsSteps) throw std::runtime_error("the steps of the database cannot be counted");
    const Effort before{theAllocations, theComparisons, theSteps};
    call();
    return {theAllocations - before.allocations, theComparisons - before.comparisons,
            theSteps - before.steps};
}

}  // namespace ZET::Growth

void* operator new(std::size_t size) {
    ++ZET::Growth::theAllocations;
    if (void* const memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

/// In the place of the C library's, for the libraries that the program loads, too.
extern "C" int memcmp(const void* one, const void* other, std::size_t size) noexcept {
    ++ZET::Growth::theComparisons;
    const auto* const first = static_cast<const unsigned char*>(one);
    const auto* const second = static_cast<const unsigned char*>(other);
    for (std::size_t i = 0; i < size; ++i)
        if (first[i] != second[i]) return first[i] - second[i];
    return 0;
}
