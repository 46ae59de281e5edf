// The commands over the action wrapper: notify, actions, build; and the action look-up that
// acquire uses.

#include "QelWrapper.h"
#include "qelctl_internal.h"

namespace qelctl {
namespace {

using Resources = std::vector<QelClient::Resource>;

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
    return [=](Session& session) {
        // The wrapper reports nothing back: it answers 0 whatever the rule control said.
        QelNotifyWapper(name, src, type, param, 0, 0, text);
        const std::optional<Resources> built = resourcesOfScenario(src, type, param, text);
        JsonObject fields;
        fields.num("src", src).num("type", type).num("param", param).str("text", text);
        if (built) fields.raw("resources", resourcesJson(*built));
        std::vector<std::string> lines = {"notified src " + std::to_string(src) + " type " +
                                          std::to_string(type) + " param " + std::to_string(param) +
                                          (text.empty() ? "" : " text \"" + text + "\"")};
        if (built) {
            lines.push_back(built->empty() ? "  the text made no resources"
                                           : "  resources made from it:");
            for (const auto& resource : *built) lines.push_back("    " + resourceText(resource));
        }
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

int acquireActionByWrapper(const std::string& name, const std::string& pkg,
                           const std::string& identity, int duration) {
    return QelEventAcquireWrapper(kEventPrefix + name, pkg, identity, duration);
}

void addWrapperCommands(std::vector<CommandSpec>& table) {
    table.push_back({"notify",
                     "notify SRC TYPE [--param N] [--text TEXT] [--name NAME]",
                     "Reports a scenario through the wrapper, which turns it into at most one\n"
                     "rule control; for the scenarios that carry a text (130 target load, 131\n"
                     "colocation, 9000 game adaptive, 14 game upgrade) prints the resources made.",
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
                     "Prints the resources a scenario builder makes from TEXT (no service).",
                     false,
                     true,
                     parseBuild,
                     {{"--level", true, false}}});
}

}  // namespace qelctl
