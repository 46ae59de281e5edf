// Action wrapper families: QelEventAcquireWrapper for the names at positions 1 and 198,
// QelNotifyWapper for sources 130, 9000 and 14; and, alone with no service call, the action
// look-up, the scenario builders and the string utilities on inputs of 10 B, 1 KB and 1 MB.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "QelWrapper.h"
#include "alloc_counter.h"
#include "bench_data.h"
#include "stringUtils.h"
#include "wrapper/action_index.h"

namespace qel_bench {

namespace {

const std::string kScene = "com.android.camera";
const std::string kCameraIdentity = "camera_open";
constexpr int kTimeout = 2000;

struct Action {
    const char* family;
    int position;
    std::string eventId;
};

const Action kActions[] = {{"pos1", 1, "PRAXEL_ACTION_COLD_LAUNCH"},
                           {"pos198", 198, "PRAXEL_ACTION_CAMERA_APS_INNER_THDR_CAPTURE_L1"}};

void floorAcquireWrapper(benchmark::State& state, const Action* action) {
    std::shared_ptr<IDrel> proxy = benchProxy();
    const DrelRequestParcel parcel =
            eventParcel(action->position, kScene, kCameraIdentity, kTimeout, {});
    floorRequests(state, *proxy, parcel);
}

void libraryAcquireWrapper(benchmark::State& state, const Action* action) {
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int handle = QelEventAcquireWrapper(action->eventId, kScene, kCameraIdentity, kTimeout);
        if (handle < 0) {
            state.SkipWithError("QelEventAcquireWrapper failed");
            break;
        }
        benchmark::DoNotOptimize(handle);
    }
    reportAllocations(state, allocations);
}

// Scenario reports as callers send them, each with the rule and list it turns into.
struct Report {
    const char* family;
    const char* name;
    int src;
    int param;
    std::string text;
    std::vector<QelClient::Resource> (*list)(const Report&);
};

const Report kReports[] = {
        {"130", "TARGET_LOAD", 130, 0, "85,90,95",
         [](const Report& r) { return getTargetLoadList(r.text); }},
        {"9000", "GAME_ADP", 9000, 0, "0,1,2,1;-1,-1,4,-1;1200000,1500000,-1,-1;-1,-1,2400000,-1",
         [](const Report& r) { return getGameAdpList(r.text); }},
        {"14", "GAME_UPGRADE", 14, 2, "com.kivane.game",
         [](const Report& r) { return getGameUpgradeList(0, 0, r.param, 0, 0, r.text); }},
};

void floorNotifyWapper(benchmark::State& state, const Report* report) {
    std::shared_ptr<IDrel> proxy = benchProxy();
    // The records the report turns into, made beforehand.
    const std::vector<DrelRequestData> records = toWire(report->list(*report));
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int32_t answer = -1;
        if (!checkOk(state, proxy->ruleCtl(report->src, 1, records, &answer))) break;
        benchmark::DoNotOptimize(answer);
    }
    reportAllocations(state, allocations);
}

void libraryNotifyWapper(benchmark::State& state, const Report* report) {
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int result =
                QelNotifyWapper(report->name, report->src, 1, report->param, 0, 0, report->text);
        benchmark::DoNotOptimize(result);
    }
    reportAllocations(state, allocations);
}

// The look-up alone: an index of the exported catalogue, made as the library makes its own.
void lookup(benchmark::State& state, const Action* action) {
    static const qel_wrapper::ActionIndex index(gActionList);
    if (index.commandIdOf(action->eventId) != action->position) {
        state.SkipWithError("the look-up found another position");
        return;
    }
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        int position = index.commandIdOf(action->eventId);
        benchmark::DoNotOptimize(position);
    }
    reportAllocations(state, allocations);
}

// A text of exactly `bytes` bytes: `unit` repeated and cut.
std::string textOf(const std::string& unit, size_t bytes) {
    std::string text;
    text.reserve(bytes + unit.size());
    while (text.size() < bytes) text += unit;
    text.resize(bytes);
    return text;
}

// Each builder with the form of text it is made for.
struct Builder {
    const char* function;
    const char* unit;
    std::vector<QelClient::Resource> (*build)(const std::string&);
};

const Builder kBuilders[] = {
        {"getTargetLoadList", "85,90,95,",
         [](const std::string& t) { return getTargetLoadList(t); }},
        {"getColocationList", "colocation:1,groupmigrate:6-3,",
         [](const std::string& t) { return getColocationList(t); }},
        {"getGameAdpList", "0,1,2,1;-1,-1,4,-1;1200000,1500000,-1,-1;-1,-1,2400000,-1;",
         [](const std::string& t) { return getGameAdpList(t); }},
        {"getGameUpgradeList", "com.kivane.game;",
         [](const std::string& t) { return getGameUpgradeList(0, 0, 2, 0, 0, t); }},
};

constexpr size_t kSizes[] = {10, 1024, 1024 * 1024};

void builder(benchmark::State& state, const Builder* builder, size_t bytes) {
    const std::string text = textOf(builder->unit, bytes);
    const uint64_t allocations = threadAllocations();
    for (auto _ : state) {
        // The text is passed as callers pass theirs: copied into the by-value parameter.
        std::vector<QelClient::Resource> list = builder->build(text);
        benchmark::DoNotOptimize(list.data());
    }
    reportAllocations(state, allocations);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void split(benchmark::State& state, size_t bytes) {
    const std::string text = textOf("85,90,95,", bytes);
    for (auto _ : state) {
        std::vector<std::string> fields = stringUtils::split(text, ",");
        benchmark::DoNotOptimize(fields.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void trim(benchmark::State& state, size_t bytes) {
    // Blanks at both ends around a field.
    std::string text = textOf("85,90,95,", bytes);
    text.replace(0, 2, " \t");
    text.replace(text.size() - 2, 2, "\r\n");
    for (auto _ : state) {
        std::string trimmed = stringUtils::trim(text, stringUtils::WHITESPACE);
        benchmark::DoNotOptimize(trimmed.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

}  // namespace

void registerWrapperBenchmarks() {
    for (const Action& action : kActions) {
        std::string family = std::string("QelEventAcquireWrapper/") + action.family;
        benchmark::RegisterBenchmark(("floor/" + family).c_str(), floorAcquireWrapper, &action);
        benchmark::RegisterBenchmark(("library/" + family).c_str(), libraryAcquireWrapper, &action);
    }
    for (const Report& report : kReports) {
        std::string family = std::string("QelNotifyWapper/") + report.family;
        benchmark::RegisterBenchmark(("floor/" + family).c_str(), floorNotifyWapper, &report);
        benchmark::RegisterBenchmark(("library/" + family).c_str(), libraryNotifyWapper, &report);
    }
    for (const Action& action : kActions) {
        benchmark::RegisterBenchmark((std::string("lookup/") + action.family).c_str(), lookup,
                                     &action);
    }
    for (const Builder& b : kBuilders) {
        for (size_t bytes : kSizes) {
            std::string name = std::string("builder/") + b.function + "/" + std::to_string(bytes);
            benchmark::RegisterBenchmark(name.c_str(), builder, &b, bytes);
        }
    }
    for (size_t bytes : kSizes) {
        benchmark::RegisterBenchmark(("stringUtils/split/" + std::to_string(bytes)).c_str(), split,
                                     bytes);
        benchmark::RegisterBenchmark(("stringUtils/trim/" + std::to_string(bytes)).c_str(), trim,
                                     bytes);
    }
}

}  // namespace qel_bench
