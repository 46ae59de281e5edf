// qel_bench: the client library's overhead over the binder call it makes. Each family runs as a
// pair in the same process: floor/<family> calls the IDrel proxy directly with a parcel built
// beforehand, library/<family> makes the same call through the library.

#include <android/binder_process.h>
#include <android/log.h>
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <vector>

#include "bench_data.h"
#include "bench_service.h"

namespace {

// The console output, remembering whether any case stopped with an error, so that the exit
// status tells a smoke run that a case no longer works.
class CheckingReporter : public benchmark::ConsoleReporter {
public:
    // Colours only on a terminal, so that a log or a pipe gets plain text.
    CheckingReporter() : ConsoleReporter(isatty(STDOUT_FILENO) ? OO_ColorTabular : OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) failed = failed || run.error_occurred;
        ConsoleReporter::ReportRuns(runs);
    }
    bool failed = false;
};

}  // namespace

int main(int argc, char** argv) {
    // As on a device whose log level hides the library's lines: they are dropped before being
    // formatted, so what remains is the cost of the call that asks.
    __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
    ABinderProcess_startThreadPool();
    qel_bench::benchService();

    qel_bench::registerFlatBenchmarks();
    qel_bench::registerClassBenchmarks();
    qel_bench::registerWrapperBenchmarks();
    qel_bench::registerScalingBenchmarks();

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    CheckingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return reporter.failed ? 1 : 0;
}
