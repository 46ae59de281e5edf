// qelctl's pieces: argument parsing, output (text and JSON), the session that owns the service
// look-up, the embedded service and the listening registrations, and the command table.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "qel.h"
#include "qelctl.h"

namespace aidl::vendor::quarn::hardware::drel {
class DrelService;
}

namespace qelctl {

inline constexpr const char* kInstance = "vendor.quarn.hardware.drel.IDrel/default";

// A command line that cannot be run as written; the message says why.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// ---- arguments ----

struct OptionSpec {
    std::string name;  // with the leading "--"
    bool takesValue;
    bool repeatable;
};

// Options by name (a flag has one empty value per use) and the positional arguments in order.
struct ParsedArgs {
    std::vector<std::string> positionals;
    std::map<std::string, std::vector<std::string>> options;

    bool has(const std::string& name) const { return options.count(name) != 0; }
    std::optional<std::string> value(const std::string& name) const;
    std::vector<std::string> values(const std::string& name) const;
};

// Splits args by specs. "--name=value" and "--name value" are both accepted; "--" ends the
// options; a token such as "-2" is a (negative number) positional. The global flags --json,
// --embedded and --help are accepted everywhere.
ParsedArgs parseArgs(const std::vector<std::string>& args, const std::vector<OptionSpec>& specs);

// Strict numbers: the whole text, decimal or 0x-hex. `what` names the argument in the message.
int32_t parseInt32(const std::string& text, const std::string& what);
// An opcode: like parseInt32, but hex up to 0xffffffff (read as its 32-bit pattern).
int32_t parseOpcode(const std::string& text);
// Seconds, fractions allowed, not negative.
double parseSeconds(const std::string& text, const std::string& what);
// OPCODE=VALUE; the value is free text, passed as it is (empty allowed), and must be UTF-8.
QelClient::Resource parseResource(const std::string& text);
// Texts sent to the service travel as UTF-16, so they must be valid UTF-8; `what` names the
// argument in the message.
void checkUtf8(const std::string& text, const std::string& what);

// Cuts a script line into words: blanks separate, '...' and "..." group (\" and \\ inside double
// quotes), a # starting a word begins a comment.
std::vector<std::string> splitLine(const std::string& line);

// ---- output ----

// The length of the valid UTF-8 sequence at text[i], or 0 when none starts there.
size_t utf8SequenceAt(const std::string& text, size_t i);
// The offset of the first byte that is not part of valid UTF-8.
std::optional<size_t> firstInvalidUtf8(const std::string& text);
// A JSON string; bytes that are not valid UTF-8 become U+FFFD, so every output line is UTF-8.
std::string jsonString(const std::string& text);
std::string jsonArray(const std::vector<std::string>& rawItems);

// A JSON object built field by field, in order.
class JsonObject {
public:
    JsonObject& str(const std::string& key, const std::string& value);
    JsonObject& num(const std::string& key, long long value);
    JsonObject& boolean(const std::string& key, bool value);
    JsonObject& raw(const std::string& key, const std::string& json);
    JsonObject& null(const std::string& key);
    // Appends the fields of other.
    JsonObject& merge(const JsonObject& other);
    std::string text() const;

private:
    std::string body_;
};

std::string hexOpcode(int32_t id);  // 0x%08x
// "0x01010010=1800000", or "0x01010010 (no value)".
std::string resourceText(const QelClient::Resource& resource);
// {"opcode":"0x01010010","id":16842768,"value":"1800000"} (value null when absent).
std::string resourceJson(const QelClient::Resource& resource);

// Where results and messages go. Lines are written whole under a lock, because listening
// reports arrive on binder threads while commands run; once closed, late reports are dropped.
class Output {
public:
    Output(std::ostream& out, std::ostream& err) : out_(out), err_(err) {}
    void line(const std::string& text);
    // On err, after "qelctl: " unless prefixed is false.
    void error(const std::string& text, bool prefixed = true);
    void close();

private:
    std::mutex mutex_;
    bool closed_ = false;
    std::ostream& out_;
    std::ostream& err_;
};

// ---- waiting ----

// Waits for `seconds` (forever when absent) or until requestStop().
void waitOrStop(std::optional<double> seconds);
void clearStop();

// ---- session ----

// A listening registration that outlives its command (in a script or the demo).
struct Registration {
    int handle;
    bool thermal;
    std::string label;
    std::shared_ptr<void> callback;  // keeps the printer alive until unregistered
    std::function<int()> reportCount;
};

// State shared by the commands of one qelctl run.
class Session {
public:
    Session(std::ostream& out, std::ostream& err, std::istream& in);
    ~Session();

    bool json = false;               // the current command's output form
    bool keepListens = false;        // `listen` without --for returns and stays registered
    bool embeddedRequested = false;  // --embedded: start the example service before first use
    int lastHandle = -1;             // of the last successful acquire or listen
    std::istream& in;                // `script -` reads it

    Output& out() { return *output_; }
    const std::shared_ptr<Output>& sharedOut() { return output_; }

    // Registers a new example service under kInstance in this process (with its expiry thread).
    void startEmbedded();
    // startEmbedded() once, if --embedded asked for it.
    void ensureEmbedded();
    // Kills the embedded service's "process" (its clients see it die).
    void killEmbedded();
    const std::shared_ptr<::aidl::vendor::quarn::hardware::drel::DrelService>& embedded() const {
        return embedded_;
    }

    // True when the service is registered and running; otherwise prints why and returns false.
    // Never waits: the class API would wait forever for a declared service that is not up.
    bool serviceAvailable(const std::string& command);

    // The result of a command: text lines, or the JSON object (with "command" and "ok" first).
    int ok(const std::string& command, const std::vector<std::string>& lines,
           const JsonObject& fields);
    int fail(const std::string& command, const std::string& message,
             const JsonObject& fields = JsonObject());

    void keep(Registration registration);
    // Unregisters and prints how many reports it got (as JSON when asJson).
    void drop(const Registration& registration, bool asJson);
    // Drops every kept registration now.
    void dropKept();
    // Reports received so far by a kept registration (0 when there is none with this handle).
    int reportsOf(int handle) const;
    // Drops every kept registration (printing how many reports each got), then the embedded
    // service. Idempotent; the destructor calls it.
    void finish();

private:
    std::shared_ptr<Output> output_;
    std::shared_ptr<::aidl::vendor::quarn::hardware::drel::DrelService> embedded_;
    std::vector<std::pair<Registration, bool>> kept_;  // with the json flag of its command
    bool finished_ = false;
};

// ---- commands ----

using Action = std::function<int(Session&)>;

struct CommandSpec {
    std::string name;
    std::string synopsis;     // "acquire ACTION|ID [--pkg PKG] ..."
    std::string description;  // one or more lines
    bool needsService;
    bool scriptable;
    // Checks the arguments (after the command name) and returns what to run; throws UsageError.
    std::function<Action(const ParsedArgs&)> parse;
    std::vector<OptionSpec> options;
};

// The commands that use only the class and flat APIs.
void addCoreCommands(std::vector<CommandSpec>& table);
// The commands of the action wrapper: notify, actions, build; and the action look-up of acquire.
void addWrapperCommands(std::vector<CommandSpec>& table);
const std::vector<CommandSpec>& commandTable();
const CommandSpec* findCommand(const std::string& name);

// The first position of an action name in the catalogue ("PRAXEL_" prefix optional).
std::optional<int> findAction(const std::string& name);
// How many actions the catalogue holds: command ids 0 to catalogueSize() - 1 name one.
size_t catalogueSize();
// Acquires a named action through the wrapper entry point; the service's handle or -1.
int acquireActionByWrapper(const std::string& name, const std::string& pkg,
                           const std::string& identity, int duration);

// A parsed command ready to run.
struct Prepared {
    const CommandSpec* spec;
    Action action;
    bool json;
    std::string name;  // as results name it: "prop get", "thermal listen", "state"
};
// Parses one command line (words, command first); throws UsageError.
Prepared prepare(const std::vector<std::string>& words, bool inScript);
// Runs it: checks the service if needed, then the action.
int runPrepared(Session& session, const Prepared& prepared);

// The host demo against the embedded service.
int runDemo(Session& session);

// Usage text of one command, or of all.
std::string usageOf(const CommandSpec& spec);
std::string fullUsage();

}  // namespace qelctl
