// The session of one qelctl run: the service look-up, results, and the listening registrations
// that outlive their command. The embedded example service is in embedded_host.cpp.

#include <android/binder_manager.h>

#include <thread>

#include "halclient.h"
#include "qelctl.h"
#include "qelctl_internal.h"

namespace qelctl {
namespace {

// Lock-free so that a signal handler may set it.
std::atomic<bool> gStop{false};
static_assert(std::atomic<bool>::is_always_lock_free);

enum class ServiceState { kNotDeclared, kNotRunning, kRunning };

// Asks the service manager without ever waiting.
ServiceState lookUpService() {
    if (!AServiceManager_isDeclared(kInstance)) return ServiceState::kNotDeclared;
    ::ndk::SpAIBinder binder(AServiceManager_checkService(kInstance));
    return binder.get() != nullptr ? ServiceState::kRunning : ServiceState::kNotRunning;
}

}  // namespace

void requestStop() {
    gStop.store(true);
}

void clearStop() {
    gStop.store(false);
}

void waitOrStop(std::optional<double> seconds) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    // A wait of more than a year is taken as forever; the clock's range could not hold it.
    constexpr double kForever = 366.0 * 24 * 3600;
    const auto limit = seconds && *seconds < kForever
                               ? std::chrono::duration_cast<Clock::duration>(
                                         std::chrono::duration<double>(*seconds))
                               : Clock::duration::max();
    // Polls, because the stop flag is set from a signal handler, which cannot notify a
    // condition variable.
    while (!gStop.load()) {
        const auto elapsed = Clock::now() - start;
        if (elapsed >= limit) return;
        const auto step =
                std::chrono::duration_cast<Clock::duration>(std::chrono::milliseconds(20));
        std::this_thread::sleep_for(std::min(step, limit - elapsed));
    }
}

Session::Session(std::ostream& out, std::ostream& err, std::istream& input)
    : in(input), output_(std::make_shared<Output>(out, err)) {}

Session::~Session() {
    finish();
    output_->close();
}

void Session::ensureEmbedded() {
    if (!embeddedRequested || embedded_) return;
    startEmbedded();
}

bool Session::serviceAvailable(const std::string& command) {
    switch (lookUpService()) {
        case ServiceState::kRunning:
            return true;
        case ServiceState::kNotDeclared:
            fail(command, std::string("service not available: ") + kInstance +
                                  " is not declared here (on a host, add --embedded to run the "
                                  "example service in this process)");
            return false;
        case ServiceState::kNotRunning:
            fail(command, std::string("service not available: ") + kInstance +
                                  " is declared but not running");
            return false;
    }
    return false;
}

int Session::ok(const std::string& command, const std::vector<std::string>& lines,
                const JsonObject& fields) {
    if (json) {
        JsonObject object;
        object.str("command", command).boolean("ok", true).merge(fields);
        output_->line(object.text());
    } else {
        for (const std::string& line : lines) output_->line(line);
    }
    return kExitOk;
}

int Session::fail(const std::string& command, const std::string& message,
                  const JsonObject& fields) {
    if (json) {
        JsonObject object;
        object.str("command", command).boolean("ok", false).str("error", message).merge(fields);
        output_->line(object.text());
    }
    output_->error(command + ": " + message);
    return kExitFailure;
}

void Session::keep(Registration registration) {
    kept_.emplace_back(std::move(registration), json);
}

void Session::drop(const Registration& registration, bool asJson) {
    const std::string command = registration.thermal ? "thermal listen" : "listen";
    int answer = -1;
    // A registration whose service has gone went with it; the class API would wait for a
    // declared service that is not running, so it is not asked then.
    if (lookUpService() == ServiceState::kRunning) {
        answer = registration.thermal
                         ? drelHalclient::drelThermalListeningUnregister(registration.handle)
                         : drelHalclient::drelResListeningUnRegister(registration.handle);
    }
    const int reports = registration.reportCount();
    if (asJson) {
        JsonObject object;
        object.str("command", command)
                .str("event", "stopped")
                .num("handle", registration.handle)
                .num("reports", reports)
                .num("unregister", answer);
        output_->line(object.text());
    } else {
        output_->line("stopped listening to " + registration.label + " (handle " +
                      std::to_string(registration.handle) + "): " + std::to_string(reports) +
                      (reports == 1 ? " report" : " reports"));
    }
}

void Session::dropKept() {
    std::vector<std::pair<Registration, bool>> kept;
    kept.swap(kept_);
    for (const auto& [registration, asJson] : kept) drop(registration, asJson);
}

int Session::reportsOf(int handle) const {
    for (const auto& entry : kept_) {
        if (entry.first.handle == handle) return entry.first.reportCount();
    }
    return 0;
}

void Session::finish() {
    if (finished_) return;
    finished_ = true;
    dropKept();
    killEmbedded();
}

}  // namespace qelctl
