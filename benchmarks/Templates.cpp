// Renders templates from working copies to targets, on a file system in memory.

#include <benchmark/benchmark.h>

#include "BenchHost.h"
#include "BenchText.h"
#include "ZETConfig.h"

namespace ZET {

namespace {

/// Renders several templates in sequence: the first run creates the targets, later ones replace them.
void ProcessTemplates(benchmark::State& state) {
    BenchHost host;
    CZETConfig config(host.Core());
    const std::string text = SmallTemplate();
    for (int64_t number = 0; number < state.range(0); ++number)
        host.WriteTemplate(std::to_string(number), text);
    for (auto _ : state) {
        for (int64_t number = 0; number < state.range(0); ++number) {
            const std::string name = std::to_string(number);
            config.ProcessConfigFileTemplate(name, host.Directory() / name, "client", nullptr);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(ProcessTemplates)->Arg(1)->Arg(1000)->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace ZET
