// The commands over the class and flat APIs: acquire, release, rule, state, history, pm, dump,
// prop, listen, thermal, sleep.

#include <atomic>
#include <exception>
#include <list>

#include "IClientCallback.h"
#include "halclient.h"
#include "qel.h"
#include "qelctl_internal.h"

namespace qelctl {
namespace {

using Resources = std::vector<QelClient::Resource>;

std::string joined(const std::vector<std::string>& items, const std::string& separator = " ") {
    std::string text;
    for (size_t i = 0; i < items.size(); ++i) {
        if (i != 0) text += separator;
        text += items[i];
    }
    return text;
}

std::vector<std::string> quotedAll(const std::vector<std::string>& items) {
    std::vector<std::string> quoted;
    for (const std::string& item : items) quoted.push_back(jsonString(item));
    return quoted;
}

std::string resourcesJson(const std::vector<QelClient::Resource>& resources) {
    std::vector<std::string> items;
    for (const QelClient::Resource& resource : resources) items.push_back(resourceJson(resource));
    return jsonArray(items);
}

void expectPositionals(const ParsedArgs& args, size_t min, size_t max, const std::string& what) {
    if (args.positionals.size() < min) throw UsageError("missing " + what);
    if (args.positionals.size() > max) {
        throw UsageError("unexpected argument '" + args.positionals[max] + "'");
    }
}

Resources parseResources(const ParsedArgs& args) {
    Resources resources;
    for (const std::string& text : args.values("--res")) resources.push_back(parseResource(text));
    return resources;
}

std::string answerText(int answer) {
    return "the service answered " + std::to_string(answer);
}

// ---- acquire / release / rule ----

Action parseAcquire(const ParsedArgs& args) {
    expectPositionals(args, 1, 1, "ACTION or command id");
    const std::string target = args.positionals[0];
    std::optional<std::string> action;
    int32_t cmdId = 0;
    const bool numeric = std::isdigit(static_cast<unsigned char>(target[0])) || target[0] == '-';
    if (numeric) {
        cmdId = parseInt32(target, "command id");
    } else {
        std::optional<int> position = findAction(target);
        if (!position) {
            throw UsageError("unknown action '" + target + "' (qelctl actions lists them)");
        }
        cmdId = *position;
        action = target.rfind("PRAXEL_", 0) == 0 ? target.substr(7) : target;
    }
    const std::string pkg = args.value("--pkg").value_or("");
    const std::string identity = args.value("--identity").value_or("");
    checkUtf8(pkg, "--pkg");
    checkUtf8(identity, "--identity");
    const int32_t duration =
            args.has("--duration") ? parseInt32(*args.value("--duration"), "duration") : 0;
    const Resources resources = parseResources(args);
    // -2 and -3 are the resource kinds of the flat API; any other id outside the catalogue is
    // sent as it is, and what the service makes of it is its own affair.
    const bool unknownId = !action && cmdId != -2 && cmdId != -3 &&
                           (cmdId < 0 || static_cast<size_t>(cmdId) >= catalogueSize());

    return [=](Session& session) {
        if (unknownId) {
            session.out().error("warning: command id " + std::to_string(cmdId) +
                                " names no action in the catalogue (0 to " +
                                std::to_string(catalogueSize() - 1) +
                                ", or -2 and -3 for resources); sent as it is");
        }
        // The wrapper is how callers acquire by name; it takes no extra resources.
        const int handle = action && resources.empty()
                                   ? acquireActionByWrapper(*action, pkg, identity, duration)
                                   : QelEventAcquire(cmdId, pkg, identity, duration, resources);
        JsonObject fields;
        if (action) fields.str("action", *action);
        fields.num("cmdId", cmdId)
                .str("pkg", pkg)
                .str("identity", identity)
                .num("duration", duration)
                .raw("resources", resourcesJson(resources));
        if (handle < 0) return session.fail("acquire", answerText(handle), fields);
        fields.num("handle", handle);
        session.lastHandle = handle;
        std::string what = action ? *action + " (command " + std::to_string(cmdId) + ")"
                                  : "command " + std::to_string(cmdId);
        if (!action && cmdId == -2) what = "resources";
        if (!action && cmdId == -3) what = "platform resources";
        std::vector<std::string> lines = {"acquired " + what + ": handle " +
                                          std::to_string(handle)};
        for (const auto& resource : resources) lines.push_back("  " + resourceText(resource));
        lines.push_back(duration > 0 ? "  expires after " + std::to_string(duration) + " ms"
                                     : "  held until released");
        return session.ok("acquire", lines, fields);
    };
}

Action parseRelease(const ParsedArgs& args) {
    expectPositionals(args, 1, 1, "HANDLE");
    const int32_t handle = parseInt32(args.positionals[0], "handle");
    return [=](Session& session) {
        const int answer = drelHalclient::drelResCtlRelease(handle);
        JsonObject fields;
        fields.num("handle", handle).num("answer", answer);
        if (answer < 0) {
            return session.fail("release",
                                answerText(answer) + " (no live request has handle " +
                                        std::to_string(handle) + ")",
                                fields);
        }
        return session.ok("release", {"released handle " + std::to_string(handle)}, fields);
    };
}

Action parseRule(const ParsedArgs& args) {
    expectPositionals(args, 2, 2, "RULE and STATUS");
    const int32_t rule = parseInt32(args.positionals[0], "rule id");
    const int32_t status = parseInt32(args.positionals[1], "status");
    const Resources resources = parseResources(args);
    return [=](Session& session) {
        const int answer = qelRuleCtl(rule, status, resources);
        JsonObject fields;
        fields.num("rule", rule)
                .num("status", status)
                .raw("resources", resourcesJson(resources))
                .num("answer", answer);
        if (answer < 0) return session.fail("rule", answerText(answer), fields);
        std::vector<std::string> lines = {"rule " + std::to_string(rule) + " set to status " +
                                          std::to_string(status) + " (" + answerText(answer) + ")"};
        for (const auto& resource : resources) lines.push_back("  " + resourceText(resource));
        return session.ok("rule", lines, fields);
    };
}

// ---- queries ----

Action parseState(const ParsedArgs& args) {
    const bool byPath = args.has("--path");
    expectPositionals(args, 1, SIZE_MAX, byPath ? "PATH" : "OPCODE");
    if (byPath) {
        const std::vector<std::string> paths = args.positionals;
        for (const std::string& path : paths) checkUtf8(path, "PATH");
        return [=](Session& session) {
            std::vector<std::string> states;
            const int size = drelHalclient::drel_res_state_request_by_path(paths, {}, 0, states);
            if (size < 0) return session.fail("state", answerText(size));
            std::vector<std::string> lines;
            std::vector<std::string> items;
            // The reply is matched by position.
            for (size_t i = 0; i < paths.size() && i < states.size(); ++i) {
                lines.push_back(paths[i] + "=" + states[i]);
                items.push_back(JsonObject().str("path", paths[i]).str("value", states[i]).text());
            }
            return session.ok("state", lines, JsonObject().raw("paths", jsonArray(items)));
        };
    }
    Resources query;
    for (const std::string& text : args.positionals) {
        QelClient::Resource resource;
        resource.resId = parseOpcode(text);
        query.push_back(resource);
    }
    return [=](Session& session) {
        Resources resources = query;
        const int answered = QelMutiResStateRequest(resources);
        if (answered < 0) return session.fail("state", answerText(answered));
        std::vector<std::string> lines;
        for (const auto& resource : resources) lines.push_back(resourceText(resource));
        return session.ok(
                "state", lines,
                JsonObject().raw("resources", resourcesJson(resources)).num("answered", answered));
    };
}

Action parseHistory(const ParsedArgs& args) {
    expectPositionals(args, 0, 0, "");
    return [](Session& session) {
        std::string text;
        if (QelGetHistory(text) != 0) {
            // The flat API answers -1 for an empty history as for a failed call; a service still
            // running after it had nothing to tell, which is an empty list, not a failure.
            if (!session.serviceAvailable("history")) return kExitFailure;
            return session.ok("history", {"history: 0 entries"},
                              JsonObject().raw("entries", "[]").str("text", ""));
        }
        // "start:<a>;<b>;end"
        std::vector<std::string> entries;
        std::string body = text;
        if (body.rfind("start:", 0) == 0) body = body.substr(6);
        if (body.size() >= 4 && body.compare(body.size() - 4, 4, ";end") == 0) {
            body.resize(body.size() - 4);
        }
        size_t start = 0;
        while (true) {
            const size_t end = body.find(';', start);
            entries.push_back(body.substr(start, end - start));
            if (end == std::string::npos) break;
            start = end + 1;
        }
        std::vector<std::string> lines = {"history: " + std::to_string(entries.size()) +
                                          (entries.size() == 1 ? " entry" : " entries")};
        for (const std::string& entry : entries) lines.push_back("  " + entry);
        return session.ok(
                "history", lines,
                JsonObject().raw("entries", jsonArray(quotedAll(entries))).str("text", text));
    };
}

Action parsePowerMode(const ParsedArgs& args) {
    expectPositionals(args, 1, 1, "MODE");
    const int32_t mode = parseInt32(args.positionals[0], "mode");
    return [=](Session& session) {
        int status = -1;
        try {
            status = QelGetPMStatus(mode);
        } catch (const std::exception& e) {
            return session.fail("pm",
                                std::string("the service's reply had no value (") + e.what() + ")");
        }
        JsonObject fields;
        fields.num("mode", mode).num("status", status);
        if (status < 0) return session.fail("pm", answerText(status), fields);
        return session.ok(
                "pm", {"power mode " + std::to_string(mode) + ": status " + std::to_string(status)},
                fields);
    };
}

struct Diagnostic {
    const char* name;
    int (*call)();
    const char* what;
};

const std::vector<Diagnostic>& diagnostics() {
    static const std::vector<Diagnostic> table = {
            {"todoqueue", drelHalclient::drelDumpToDoQueue, "pending expiries"},
            {"runmap", drelHalclient::drelDumpRunMap, "live requests"},
            {"activeresmap", drelHalclient::drelDumpActiveResMap, "held resources"},
            {"resrequest", drelHalclient::drelDumpResRequest, "every holder of each resource"},
            {"resinfo", drelHalclient::drelDumpResInfo, "what the service was told"},
            {"sainfo", drelHalclient::drelDumpSAInfo, "live scene requests"},
            {"pidfdlist", drelHalclient::drelDumpPidFdList, "listening registrations"},
            {"pidfdmonitormap", drelHalclient::drelDumpPidfdMonitorMap,
             "thermal listening registrations"},
            {"resrecordlist", drelHalclient::drelDumpResRecordList, "request history"},
            {"history-on", drelHalclient::drelHistoryRequestRecordOn,
             "switches history recording on"},
            {"history-off", drelHalclient::drelHistoryRequestRecordOff,
             "switches history recording off"},
    };
    return table;
}

Action parseDump(const ParsedArgs& args) {
    expectPositionals(args, 1, 1, "NAME (one of: todoqueue runmap ...)");
    const std::string name = args.positionals[0];
    const Diagnostic* found = nullptr;
    std::vector<std::string> names;
    for (const Diagnostic& diagnostic : diagnostics()) {
        names.push_back(diagnostic.name);
        if (name == diagnostic.name) found = &diagnostic;
    }
    if (found == nullptr) {
        throw UsageError("unknown dump '" + name + "'; one of: " + joined(names));
    }
    const Diagnostic diagnostic = *found;
    return [=](Session& session) {
        const int answer = diagnostic.call();
        JsonObject fields;
        fields.str("name", diagnostic.name).num("answer", answer);
        if (answer != 0) return session.fail("dump", answerText(answer), fields);
        const bool isSwitch = name.rfind("history-", 0) == 0;
        return session.ok("dump",
                          {std::string("dump ") + diagnostic.name + ": done (" +
                           (isSwitch ? std::string(diagnostic.what)
                                     : std::string("the service logged its ") + diagnostic.what) +
                           ")"},
                          fields);
    };
}

// The class API gives property values in a 256-byte buffer and ends the process on a longer one.
constexpr size_t kMaxPropertyValue = 255;

Action parseProperty(const ParsedArgs& args) {
    expectPositionals(args, 1, 3, "get NAME or set NAME VALUE");
    const std::string verb = args.positionals[0];
    if (verb == "get") {
        expectPositionals(args, 2, 2, "NAME");
        const std::string name = args.positionals[1];
        checkUtf8(name, "the property NAME");
        return [=](Session& session) {
            char* buffer = drelHalclient::drelPropertyGet(name);
            const std::string value = buffer;
            delete[] buffer;
            return session.ok("prop get", {name + "=" + value},
                              JsonObject().str("name", name).str("value", value));
        };
    }
    if (verb == "set") {
        expectPositionals(args, 3, 3, "NAME and VALUE");
        const std::string name = args.positionals[1];
        const std::string value = args.positionals[2];
        if (name.empty()) throw UsageError("empty property name");
        checkUtf8(name, "the property NAME");
        checkUtf8(value, "the property VALUE");
        if (value.size() > kMaxPropertyValue) {
            throw UsageError(
                    "property values are at most 255 bytes (prop get could not read "
                    "a longer one back)");
        }
        return [=](Session& session) {
            const int answer = drelHalclient::drelPropertySet(name, value);
            JsonObject fields;
            fields.str("name", name).str("value", value).num("answer", answer);
            if (answer < 0) return session.fail("prop set", answerText(answer), fields);
            return session.ok("prop set", {"set " + name + "=" + value}, fields);
        };
    }
    throw UsageError("prop takes get or set, not '" + verb + "'");
}

// ---- listening ----

// Prints each report by id as it arrives (on a binder thread).
class IdReportPrinter : public IClientCallback {
public:
    IdReportPrinter(std::shared_ptr<Output> output, bool json, bool thermal)
        : output_(std::move(output)), json_(json), thermal_(thermal) {}

    void onCallback(std::list<QelClient::Resource> resources) override {
        ++count;
        const int handle = this->handle.load();
        if (json_) {
            std::vector<std::string> items;
            for (const auto& resource : resources) {
                items.push_back(thermal_ ? JsonObject()
                                                   .num("id", resource.resId)
                                                   .str("level", resource.resValue.value_or(""))
                                                   .text()
                                         : resourceJson(resource));
            }
            output_->line(JsonObject()
                                  .str("command", thermal_ ? "thermal listen" : "listen")
                                  .str("event", "report")
                                  .num("handle", handle)
                                  .raw(thermal_ ? "levels" : "resources", jsonArray(items))
                                  .text());
            return;
        }
        std::vector<std::string> items;
        for (const auto& resource : resources) {
            items.push_back(thermal_ ? std::to_string(resource.resId) + "=" +
                                               resource.resValue.value_or("")
                                     : resourceText(resource));
        }
        output_->line(std::string(thermal_ ? "thermal report" : "report") + " (handle " +
                      std::to_string(handle) + "): " + joined(items));
    }

    std::atomic<int> handle{-1};
    std::atomic<int> count{0};

private:
    const std::shared_ptr<Output> output_;
    const bool json_;
    const bool thermal_;
};

class PathReportPrinter : public IClientCallbackByPath {
public:
    PathReportPrinter(std::shared_ptr<Output> output, bool json)
        : output_(std::move(output)), json_(json) {}

    void onCallback(std::vector<std::string> paths, std::vector<std::string> values) override {
        ++count;
        const int handle = this->handle.load();
        std::vector<std::string> items;
        for (size_t i = 0; i < paths.size(); ++i) {
            const std::string value = i < values.size() ? values[i] : "";
            items.push_back(json_ ? JsonObject().str("path", paths[i]).str("value", value).text()
                                  : paths[i] + "=" + value);
        }
        if (json_) {
            output_->line(JsonObject()
                                  .str("command", "listen")
                                  .str("event", "report")
                                  .num("handle", handle)
                                  .raw("paths", jsonArray(items))
                                  .text());
        } else {
            output_->line("report (handle " + std::to_string(handle) + "): " + joined(items));
        }
    }

    std::atomic<int> handle{-1};
    std::atomic<int> count{0};

private:
    const std::shared_ptr<Output> output_;
    const bool json_;
};

// After a registration: announce it, then wait and drop it, or keep it for the rest of the
// script.
int afterRegistering(Session& session, const std::string& command, Registration registration,
                     const JsonObject& what, std::optional<double> forSeconds) {
    JsonObject fields;
    fields.num("handle", registration.handle).merge(what);
    const bool untilStopped = !forSeconds && !session.keepListens;
    session.lastHandle = registration.handle;
    session.ok(command,
               {"listening to " + registration.label + " (handle " +
                std::to_string(registration.handle) + ")" + (untilStopped ? "; Ctrl-C stops" : "")},
               fields);
    if (!forSeconds && session.keepListens) {
        session.keep(std::move(registration));
        return kExitOk;
    }
    waitOrStop(forSeconds);
    session.drop(registration, session.json);
    return kExitOk;
}

std::optional<double> forOption(const ParsedArgs& args) {
    if (!args.has("--for")) return std::nullopt;
    return parseSeconds(*args.value("--for"), "--for");
}

Action parseListen(const ParsedArgs& args) {
    const bool byPath = args.has("--path");
    expectPositionals(args, 1, SIZE_MAX, byPath ? "PATH" : "OPCODE");
    const std::optional<double> forSeconds = forOption(args);
    if (byPath) {
        const std::vector<std::string> paths = args.positionals;
        for (const std::string& path : paths) checkUtf8(path, "PATH");
        return [=](Session& session) {
            auto printer = std::make_shared<PathReportPrinter>(session.sharedOut(), session.json);
            const int handle =
                    drelHalclient::drel_res_listening_register_by_path(paths, 0, printer);
            if (handle < 0) {
                return session.fail("listen", answerText(handle) +
                                                      " (the same paths may be registered "
                                                      "already)");
            }
            printer->handle = handle;
            Registration registration{handle, false, joined(paths), printer,
                                      [printer] { return printer->count.load(); }};
            return afterRegistering(session, "listen", std::move(registration),
                                    JsonObject().raw("paths", jsonArray(quotedAll(paths))),
                                    forSeconds);
        };
    }
    std::list<QelClient::Resource> query;
    std::vector<std::string> labels;
    for (const std::string& text : args.positionals) {
        QelClient::Resource resource;
        resource.resId = parseOpcode(text);
        query.push_back(resource);
        labels.push_back(hexOpcode(resource.resId));
    }
    return [=](Session& session) {
        auto printer = std::make_shared<IdReportPrinter>(session.sharedOut(), session.json, false);
        std::list<QelClient::Resource> resources = query;
        const int handle = drelHalclient::drelResListeningRegister(resources, 0, printer);
        if (handle < 0) {
            return session.fail(
                    "listen", answerText(handle) + " (the same opcodes may be registered already)");
        }
        printer->handle = handle;
        Registration registration{handle, false, joined(labels), printer,
                                  [printer] { return printer->count.load(); }};
        return afterRegistering(session, "listen", std::move(registration),
                                JsonObject().raw("opcodes", jsonArray(quotedAll(labels))),
                                forSeconds);
    };
}

Action parseThermal(const ParsedArgs& args) {
    expectPositionals(args, 1, SIZE_MAX, "notify or listen");
    const std::string verb = args.positionals[0];
    const std::vector<std::string> rest(args.positionals.begin() + 1, args.positionals.end());
    if (verb == "notify") {
        if (rest.empty()) throw UsageError("missing ID=LEVEL");
        if (args.has("--for")) throw UsageError("--for belongs to thermal listen");
        std::list<QelClient::Resource> levels;
        for (const std::string& text : rest) {
            const size_t equals = text.find('=');
            if (equals == std::string::npos) {
                throw UsageError("invalid thermal level '" + text + "': expected ID=LEVEL");
            }
            QelClient::Resource level;
            level.resId = parseInt32(text.substr(0, equals), "thermal id");
            level.resValue = text.substr(equals + 1);
            // The class API sends ids and levels only in pairs: a non-zero id with a level.
            if (level.resId == 0) throw UsageError("thermal id 0 cannot carry a level");
            if (level.resValue->empty()) throw UsageError("empty level in '" + text + "'");
            checkUtf8(*level.resValue, "the level of thermal id " + std::to_string(level.resId));
            levels.push_back(level);
        }
        return [=](Session& session) {
            std::list<QelClient::Resource> sent = levels;
            const int answer = drelHalclient::drelThermalNotify(sent, 0);
            std::vector<std::string> items;
            std::vector<std::string> texts;
            for (const auto& level : levels) {
                items.push_back(
                        JsonObject().num("id", level.resId).str("level", *level.resValue).text());
                texts.push_back(std::to_string(level.resId) + "=" + *level.resValue);
            }
            JsonObject fields;
            fields.raw("levels", jsonArray(items)).num("answer", answer);
            if (answer < 0) return session.fail("thermal notify", answerText(answer), fields);
            return session.ok(
                    "thermal notify",
                    {"thermal levels sent: " + joined(texts) + " (" + answerText(answer) + ")"},
                    fields);
        };
    }
    if (verb == "listen") {
        if (rest.empty()) throw UsageError("missing thermal ID");
        std::vector<int> ids;
        std::vector<std::string> labels;
        for (const std::string& text : rest) {
            ids.push_back(parseInt32(text, "thermal id"));
            labels.push_back(std::to_string(ids.back()));
        }
        const std::optional<double> forSeconds = forOption(args);
        return [=](Session& session) {
            auto printer =
                    std::make_shared<IdReportPrinter>(session.sharedOut(), session.json, true);
            const int handle = drelHalclient::drelThermalListeningRegister(ids, printer);
            if (handle < 0) return session.fail("thermal listen", answerText(handle));
            printer->handle = handle;
            std::vector<std::string> numbers;
            for (int id : ids) numbers.push_back(std::to_string(id));
            Registration registration{handle, true, "thermal " + joined(labels), printer,
                                      [printer] { return printer->count.load(); }};
            return afterRegistering(session, "thermal listen", std::move(registration),
                                    JsonObject().raw("ids", jsonArray(numbers)), forSeconds);
        };
    }
    throw UsageError("thermal takes notify or listen, not '" + verb + "'");
}

Action parseSleep(const ParsedArgs& args) {
    expectPositionals(args, 1, 1, "SECONDS");
    const double seconds = parseSeconds(args.positionals[0], "seconds");
    return [=](Session&) {
        waitOrStop(seconds);
        return kExitOk;
    };
}

}  // namespace

void addCoreCommands(std::vector<CommandSpec>& table) {
    const OptionSpec res{"--res", true, true};
    const OptionSpec path{"--path", false, false};
    const OptionSpec forSeconds{"--for", true, false};
    table.push_back({"acquire",
                     "acquire ACTION|ID [--pkg PKG] [--identity ID] [--duration MS] "
                     "[--res OPCODE=VALUE]...",
                     "Acquires an action by name (ACTION_COLD_LAUNCH; `actions` lists them) or a\n"
                     "command id, for --duration milliseconds; 0 (the default) or a negative\n"
                     "duration means held until released.\n"
                     "Ids -2 and -3 acquire just the --res resources (resource, platform kinds);\n"
                     "any other id outside the catalogue is sent as it is, with a warning.\n"
                     "Prints the handle.",
                     true,
                     true,
                     parseAcquire,
                     {{"--pkg", true, false},
                      {"--identity", true, false},
                      {"--duration", true, false},
                      res}});
    table.push_back({"release",
                     "release HANDLE",
                     "Gives a handle from acquire back.",
                     true,
                     true,
                     parseRelease,
                     {}});
    table.push_back({"rule",
                     "rule RULE STATUS [--res OPCODE=VALUE]...",
                     "Switches a service rule to STATUS with the resources it concerns.",
                     true,
                     true,
                     parseRule,
                     {res}});
    table.push_back({"state",
                     "state OPCODE... | state --path PATH...",
                     "Prints the value in force of each resource.",
                     true,
                     true,
                     parseState,
                     {path}});
    table.push_back({"history",
                     "history",
                     "Prints the service's recent requests. The flat API returns them as one\n"
                     "text, start:ENTRY;ENTRY;...;end, and each ENTRY is free text in the\n"
                     "service's own format, which a client cannot rely on; so --json gives\n"
                     "\"entries\", the entries' texts in order, and \"text\", the whole reply as\n"
                     "it came, rather than fields (an entry holding ';' would be cut in two).",
                     true,
                     true,
                     parseHistory,
                     {}});
    table.push_back({"pm",
                     "pm MODE",
                     "Prints the status of a power mode.",
                     true,
                     true,
                     parsePowerMode,
                     {}});
    table.push_back({"dump",
                     "dump NAME",
                     "Asks the service to log a table: todoqueue runmap activeresmap resrequest\n"
                     "resinfo sainfo pidfdlist pidfdmonitormap resrecordlist; history-on and\n"
                     "history-off switch request recording. On a host the embedded service's\n"
                     "log shows with ANDROID_LOG_TAGS=DrelService:i.",
                     true,
                     true,
                     parseDump,
                     {}});
    table.push_back({"prop",
                     "prop get NAME | prop set NAME VALUE",
                     "Reads or writes a service property; VALUE is free text. The service\n"
                     "answers a property it does not hold with an empty text, so prop get\n"
                     "cannot tell it from a property set to an empty value.",
                     true,
                     true,
                     parseProperty,
                     {}});
    table.push_back({"listen",
                     "listen OPCODE... | listen --path PATH... [--for SECONDS]",
                     "Prints each change of the resources as the service reports it, for\n"
                     "SECONDS or until Ctrl-C; in a script, without --for, until the script ends.",
                     true,
                     true,
                     parseListen,
                     {path, forSeconds}});
    table.push_back({"thermal",
                     "thermal notify ID=LEVEL... | thermal listen ID... [--for SECONDS]",
                     "notify tells the service thermal levels and prints its answer (the example\n"
                     "service answers how many thermal listeners the levels reached; -1 is a\n"
                     "failure). listen prints the levels reported for ids (like listen).",
                     true,
                     true,
                     parseThermal,
                     {forSeconds}});
    table.push_back({"sleep",
                     "sleep SECONDS",
                     "Waits (in scripts; Ctrl-C ends it early).",
                     false,
                     true,
                     parseSleep,
                     {}});
}

}  // namespace qelctl
