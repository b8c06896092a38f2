#ifndef ZET_BENCH_PASS_H
#define ZET_BENCH_PASS_H

#include <benchmark/benchmark.h>

#include <string>
#include <utility>

#include "BenchText.h"
#include "Passes.h"
#include "TextReader.h"

namespace ZET {

/// Runs a pass over the same text repeatedly, reusing the memory of the former result, as for a file that
/// goes through several passes.
template <typename Pass>
void RunPass(benchmark::State& state, const std::string& content, Pass pass) {
    TextReader text(BufferOf(content));
    const char* const original = text.Bytes().data();
    Buffer memory;
    for (auto _ : state) {
        text.Renew();
        TextBuilder result(text, std::move(memory));
        pass(text, result);
        memory = result.Install();
        benchmark::DoNotOptimize(text.Bytes().data());
        // The result replaced the text, unless nothing changed.
        if (text.Bytes().data() != original) memory = text.Replace(std::move(memory));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * content.size()));
}

}  // namespace ZET

#endif
