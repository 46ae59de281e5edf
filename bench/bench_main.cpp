// qel_bench: the client library's overhead over the binder call it makes. Each family runs as a
// pair in the same process: floor/<family> calls the IDrel proxy directly with a parcel built
// beforehand, library/<family> makes the same call through the library.

#include <android/log.h>
#include <benchmark/benchmark.h>

#include "bench_data.h"
#include "bench_service.h"

int main(int argc, char** argv) {
    // As on a device whose log level hides the library's lines: they are dropped before being
    // formatted, so what remains is the cost of the call that asks.
    __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
    qel_bench::benchService();

    qel_bench::registerFlatBenchmarks();
    qel_bench::registerClassBenchmarks();
    qel_bench::registerScalingBenchmarks();

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
