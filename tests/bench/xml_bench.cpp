// xml_bench.cpp - see xml_bench.hpp.
#include "bench/xml_bench.hpp"

#include "bench/sample_traffic.hpp"
#include "bench/xml_readers.hpp"

#include <benchmark/benchmark.h>
#include <string>

namespace
{

void run_reader(benchmark::State& state, const xml_reader& reader, const std::string& document)
{
    while (state.KeepRunning()) {
        template_values values;
        if (!reader.read(document, values))
            return state.SkipWithError("the document cannot be read");
        benchmark::DoNotOptimize(values);
    }
}

} // namespace

bool xml_benchmarks_add()
{
    for (const sample_document& sample : sample_documents()) {
        if (!xml_readers_agree(sample.text))
            return false;
        for (const xml_reader& reader : xml_readers()) {
            const std::string name = std::string{xml_bench_name} + sample.size + "/" + reader.name;
            benchmark::RegisterBenchmark(name.c_str(), run_reader, reader, sample.text)
                ->Unit(benchmark::kMicrosecond);
        }
    }
    return true;
}
