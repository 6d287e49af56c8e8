// What ordering and comparing names costs, one operation at a time.

#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/Text.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

namespace text = ordovan::text;

namespace {

std::vector<std::string> names(std::size_t count) {
    std::mt19937 random(1);
    static const char* const stems[] = {"IMG_", "invoice ", "Report final ", "Überweisung ", "写真 ", "scan"};
    std::vector<std::string> list;
    for (std::size_t i = 0; i < count; ++i) {
        list.push_back(stems[random() % 6] + std::to_string(random() % 5000) + (random() % 2 == 0 ? ".pdf" : ".JPG"));
    }
    return list;
}

void sortNames(benchmark::State& state) {
    const std::vector<std::string> list = names(static_cast<std::size_t>(state.range(0)));
    const std::vector<std::string_view> views(list.begin(), list.end());
    text::StandardSorter sorter;
    for (auto _ : state) benchmark::DoNotOptimize(sorter.order(views).data());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(sortNames)->Arg(25)->Arg(50'000)->Unit(benchmark::kMicrosecond);

void compareNames(benchmark::State& state) {
    const std::vector<std::string> list = names(1000);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(text::Collation::system().compare(list[i % 1000], list[(i + 7) % 1000]));
        ++i;
    }
}
BENCHMARK(compareNames);

void canonicalPaths(benchmark::State& state) {
    const std::string path = "/home/somebody/Downloads/Client 7/Überweisung 2023-04.pdf";
    for (auto _ : state) benchmark::DoNotOptimize(OrdovanProposalPlanner::canonicalPath(path));
}
BENCHMARK(canonicalPaths);

}  // namespace
