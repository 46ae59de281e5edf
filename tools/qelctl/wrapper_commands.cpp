// The commands over the action wrapper: notify, actions, build; and the action look-up that
// acquire uses.

#include <aidl/vendor/quarn/hardware/drel/BpDrel.h>

#include <cstdlib>

#include "QelWrapper.h"
#include "qelctl_internal.h"

namespace qelctl {
namespace {

using ::aidl::vendor::quarn::hardware::drel::BpDrel;
using Resources = std::vector<QelClient::Resource>;

// The rule controls this process sends while it lives, as the proxy's transaction log sees
// them: the wrapper reports nothing back (it answers 0 whether it sent one or not), so this is
// how qelctl learns what a notify did. Commands run one at a time on one thread, which is the
// only one that calls the service's proxy meanwhile.
class RuleControlWatch {
public:
    struct Sent {
        std::string rule, status;
        std::optional<std::string> answer;  // absent when the call failed
        std::string failure;
    };

    RuleControlWatch() : previous_(BpDrel::logFunc) {
        BpDrel::logFunc = [this](const BpDrel::TransactionLog& log) {
            if (previous_) previous_(log);
            if (log.method_name != "ruleCtl") return;
            Sent sent;
            for (const auto& [name, value] : log.input_args) {
                if (name == "in_ruleId") sent.rule = value;
                if (name == "in_status") sent.status = value;
            }
            if (log.exception_code == 0 && log.transaction_error == 0) {
                sent.answer = log.result;
            } else {
                sent.failure = "exception " + std::to_string(log.exception_code) +
                               ", transaction error " + std::to_string(log.transaction_error);
            }
            this->sent.push_back(std::move(sent));
        };
    }
    ~RuleControlWatch() { BpDrel::logFunc = previous_; }
    RuleControlWatch(const RuleControlWatch&) = delete;
    RuleControlWatch& operator=(const RuleControlWatch&) = delete;

    std::vector<Sent> sent;

private:
    const std::function<void(const BpDrel::TransactionLog&)> previous_;
};

constexpr const char* kEventPrefix = "PRAXEL_";

std::string resourcesJson(const Resources& resources) {
    std::vector<std::string> items;
    for (const QelClient::Resource& resource : resources) items.push_back(resourceJson(resource));
    return jsonArray(items);
}

// The scenarios whose text the wrapper turns into resources (with type 1), and how.
std::optional<Resources> resourcesOfScenario(int src, int type, int param,
                                             const std::string& text) {
    if (type != 1) return std::nullopt;
    if (src == 14) return getGameUpgradeList(0, 0, param, 0, 0, text);
    if (text.empty()) return std::nullopt;
    if (src == 130) return getTargetLoadList(text);
    if (src == 131) return getColocationList(text);
    if (src == 9000) return getGameAdpList(text);
    return std::nullopt;
}

Action parseNotify(const ParsedArgs& args) {
    if (args.positionals.size() < 2) throw UsageError("missing SRC and TYPE");
    if (args.positionals.size() > 2) {
        throw UsageError("unexpected argument '" + args.positionals[2] + "'");
    }
    const int32_t src = parseInt32(args.positionals[0], "src");
    const int32_t type = parseInt32(args.positionals[1], "type");
    const int32_t param = args.has("--param") ? parseInt32(*args.value("--param"), "param") : 0;
    const std::string text = args.value("--text").value_or("");
    const std::string name = args.value("--name").value_or("qelctl");
    checkUtf8(text, "--text");
    checkUtf8(name, "--name");
    return [=](Session& session) {
        std::vector<RuleControlWatch::Sent> sent;
        {
            RuleControlWatch watch;
            QelNotifyWapper(name, src, type, param, 0, 0, text);
            sent = std::move(watch.sent);
        }
        const std::optional<Resources> built = resourcesOfScenario(src, type, param, text);
        JsonObject fields;
        fields.num("src", src).num("type", type).num("param", param).str("text", text);
        if (built) fields.raw("resources", resourcesJson(*built));
        std::vector<std::string> lines = {"notified src " + std::to_string(src) + " type " +
                                          std::to_string(type) + " param " + std::to_string(param) +
                                          (text.empty() ? "" : " text \"" + text + "\"")};
        if (sent.empty()) {
            lines.push_back("  nothing sent: the wrapper makes no rule control of this scenario");
            fields.null("sent");
            return session.ok("notify", lines, fields);
        }
        // The wrapper makes at most one rule control per scenario.
        const RuleControlWatch::Sent& rule = sent.front();
        JsonObject what;
        what.num("rule", std::atoll(rule.rule.c_str()))
                .num("status", std::atoll(rule.status.c_str()));
        std::string line = "  sent rule control " + rule.rule + " with status " + rule.status;
        if (built) line += built->empty() ? " and no resources" : " and the resources:";
        lines.push_back(line);
        if (built) {
            for (const auto& resource : *built) lines.push_back("    " + resourceText(resource));
        }
        if (!rule.answer) {
            fields.raw("sent", what.str("failure", rule.failure).text());
            return session.fail("notify", "the rule control failed (" + rule.failure + ")", fields);
        }
        const long long answer = std::atoll(rule.answer->c_str());
        fields.raw("sent", what.num("answer", answer).text());
        if (answer < 0) {
            return session.fail("notify", "the rule control was answered " + *rule.answer, fields);
        }
        lines.push_back("  the service answered " + *rule.answer);
        return session.ok("notify", lines, fields);
    };
}

Action parseActions(const ParsedArgs& args) {
    if (args.positionals.size() > 1) {
        throw UsageError("unexpected argument '" + args.positionals[1] + "'");
    }
    const std::string filter = args.positionals.empty() ? "" : args.positionals[0];
    return [=](Session& session) {
        std::vector<std::string> lines;
        std::vector<std::string> items;
        for (size_t id = 0; id < gActionList.size(); ++id) {
            const std::string& name = gActionList[id];
            if (name.find(filter) == std::string::npos) continue;
            const std::optional<int> first = findAction(name);
            JsonObject item;
            item.num("id", static_cast<long long>(id)).str("name", name);
            std::string line = std::to_string(id) + "\t" + name;
            if (first && *first != static_cast<int>(id)) {
                item.num("sameAs", *first);
                line += "\t(a repeat of " + std::to_string(*first) +
                        ", which is what the name acquires)";
            }
            lines.push_back(line);
            items.push_back(item.text());
        }
        // Like a search that finds nothing, no match is a failure a script can test.
        if (lines.empty()) return session.fail("actions", "no action name holds '" + filter + "'");
        return session.ok("actions", lines, JsonObject().raw("actions", jsonArray(items)));
    };
}

Action parseBuild(const ParsedArgs& args) {
    if (args.positionals.size() < 2) {
        throw UsageError("missing builder and TEXT (targetload, colocation, gameadp, gameupgrade)");
    }
    if (args.positionals.size() > 2) {
        throw UsageError("unexpected argument '" + args.positionals[2] +
                         "' (quote a TEXT that holds blanks)");
    }
    const std::string kind = args.positionals[0];
    const std::string text = args.positionals[1];
    if (kind != "targetload" && kind != "colocation" && kind != "gameadp" &&
        kind != "gameupgrade") {
        throw UsageError("unknown builder '" + kind +
                         "': one of targetload, colocation, gameadp, gameupgrade");
    }
    if (args.has("--level") && kind != "gameupgrade") {
        throw UsageError("--level belongs to gameupgrade");
    }
    const int32_t level = args.has("--level") ? parseInt32(*args.value("--level"), "level") : 0;
    return [=](Session& session) {
        Resources resources;
        if (kind == "targetload") resources = getTargetLoadList(text);
        if (kind == "colocation") resources = getColocationList(text);
        if (kind == "gameadp") resources = getGameAdpList(text);
        if (kind == "gameupgrade") resources = getGameUpgradeList(0, 0, level, 0, 0, text);
        std::vector<std::string> lines;
        for (const auto& resource : resources) lines.push_back(resourceText(resource));
        if (resources.empty()) lines.push_back("no resources (the text holds no usable item)");
        JsonObject fields;
        fields.str("builder", kind).str("text", text);
        if (kind == "gameupgrade") fields.num("level", level);
        fields.raw("resources", resourcesJson(resources));
        return session.ok("build", lines, fields);
    };
}

}  // namespace

std::optional<int> findAction(const std::string& name) {
    const std::string bare = name.rfind(kEventPrefix, 0) == 0 ? name.substr(7) : name;
    for (size_t i = 0; i < gActionList.size(); ++i) {
        // The first equal name wins, as in the wrapper: repeated names keep their first id.
        if (gActionList[i] == bare) return static_cast<int>(i);
    }
    return std::nullopt;
}

size_t catalogueSize() {
    return gActionList.size();
}

int acquireActionByWrapper(const std::string& name, const std::string& pkg,
                           const std::string& identity, int duration) {
    return QelEventAcquireWrapper(kEventPrefix + name, pkg, identity, duration);
}

void addWrapperCommands(std::vector<CommandSpec>& table) {
    table.push_back({"notify",
                     "notify SRC TYPE [--param N] [--text TEXT] [--name NAME]",
                     "Reports a scenario through the wrapper, which turns it into at most one\n"
                     "rule control, and prints the rule control it sent with the service's\n"
                     "answer, or that it sent nothing (unknown SRC or TYPE; an empty TEXT for\n"
                     "130, 131 and 9000). For the scenarios that carry a TEXT (130 target load,\n"
                     "131 colocation, 9000 game adaptive, 14 game upgrade; see build --help for\n"
                     "their formats) it prints the resources made. Exits 1 when the rule control\n"
                     "failed, although the wrapper itself always answers 0.",
                     true,
                     true,
                     parseNotify,
                     {{"--param", true, false}, {"--text", true, false}, {"--name", true, false}}});
    table.push_back({"actions",
                     "actions [FILTER]",
                     "Lists the action catalogue: command id and name (names holding FILTER;\n"
                     "exits 1 when no name holds it).",
                     false,
                     true,
                     parseActions,
                     {}});
    table.push_back({"build",
                     "build targetload|colocation|gameadp|gameupgrade TEXT [--level N]",
                     "Prints the resources a scenario builder makes from TEXT (no service).\n"
                     "Each value is passed on as text, as the builder cut it.\n"
                     "  targetload   loads by position, separated by ',': 85,90,95 sets the\n"
                     "               first three target loads; -1 skips a position. In a TEXT\n"
                     "               holding any '-', each item is N-VALUE: 0-50,1-60.\n"
                     "  colocation   KEY:VALUE items separated by ',': colocation:VALUE and\n"
                     "               groupmigrate:A-B (decimal, A greater than B); other keys\n"
                     "               are skipped: colocation:2,groupmigrate:6-3.\n"
                     "  gameadp      up to four groups separated by ';' (core boost, core limit,\n"
                     "               frequency boost, frequency limit), each one value per\n"
                     "               cluster separated by ','; a group without ',' is skipped,\n"
                     "               so write one value as 5,: 0,1,2,1;-1,-1,4,-1.\n"
                     "  gameupgrade  TEXT is one value (a package name), and --level N (1 or\n"
                     "               more) adds the upgrade level: com.example.game --level 2.",
                     false,
                     true,
                     parseBuild,
                     {{"--level", true, false}}});
}

}  // namespace qelctl
