// The command table, usage texts, scripts, and runQelctl itself.

#include "qelctl.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "qelctl_internal.h"

namespace qelctl {
namespace {

// What a usage error prints on stderr under --json, instead of its text: a script reading JSON
// sees the failure and its exit status too, and nothing else.
std::string usageJson(const std::string& message) {
    return JsonObject().boolean("ok", false).str("error", message).num("exit", kExitUsage).text();
}

// A script: every line is parsed before the first one runs, so a usage error anywhere stops it
// before the service is reached.
Action parseScript(const ParsedArgs& args) {
    if (args.positionals.size() != 1) throw UsageError("script takes one FILE, or - for stdin");
    const std::string source = args.positionals[0];
    std::shared_ptr<std::vector<std::string>> fileLines;
    if (source != "-") {
        errno = 0;
        std::ifstream file(source);
        fileLines = std::make_shared<std::vector<std::string>>();
        for (std::string line; file && std::getline(file, line);) fileLines->push_back(line);
        // Opening a directory succeeds; reading it is what fails (EISDIR).
        if (!file.is_open() || file.bad()) {
            throw UsageError("cannot read script '" + source +
                             "': " + (errno != 0 ? std::strerror(errno) : "read error"));
        }
    }
    return [=](Session& session) {
        // --json given to the script applies to every line.
        const bool json = session.json;
        std::vector<std::string> lines;
        if (fileLines) {
            lines = *fileLines;
        } else {
            for (std::string line; std::getline(session.in, line);) lines.push_back(line);
        }
        std::vector<std::pair<size_t, Prepared>> steps;
        for (size_t i = 0; i < lines.size(); ++i) {
            try {
                std::vector<std::string> words = splitLine(lines[i]);
                if (words.empty()) continue;
                Prepared prepared = prepare(words, true);
                prepared.json = prepared.json || json;
                steps.emplace_back(i + 1, std::move(prepared));
            } catch (const UsageError& e) {
                const std::string message =
                        "script line " + std::to_string(i + 1) + ": " + e.what();
                if (json) {
                    session.out().error(usageJson(message), false);
                } else {
                    session.out().error(message);
                }
                return kExitUsage;
            }
        }
        session.keepListens = true;
        for (const auto& [number, prepared] : steps) {
            const int status = runPrepared(session, prepared);
            if (status != kExitOk) {
                session.out().error("script stopped at line " + std::to_string(number));
                return status;
            }
        }
        session.finish();
        return kExitOk;
    };
}

Action parseDemo(const ParsedArgs& args) {
    if (!args.positionals.empty()) throw UsageError("demo takes no arguments");
    return [](Session& session) { return runDemo(session); };
}

std::vector<CommandSpec> buildTable() {
    std::vector<CommandSpec> table;
    addCoreCommands(table);
    addWrapperCommands(table);
    table.push_back({"script",
                     "script FILE|-",
                     "Runs one command per line (from stdin for -) in this process, so that\n"
                     "acquire, listen and release can follow one another; # starts a comment,\n"
                     "quotes group words. Every line is checked first; the script stops at the\n"
                     "first failing line and exits with its status.",
                     false,
                     false,
                     parseScript,
                     {}});
    table.push_back({"demo",
                     "demo",
                     "Runs a short demonstration against the example service in this process.",
                     false,
                     false,
                     parseDemo,
                     {}});
    return table;
}

// Commands with a verb are named with it in results and messages.
std::string nameOf(const CommandSpec& spec, const ParsedArgs& args) {
    if ((spec.name == "prop" || spec.name == "thermal") && !args.positionals.empty()) {
        return spec.name + " " + args.positionals[0];
    }
    return spec.name;
}

}  // namespace

const std::vector<CommandSpec>& commandTable() {
    static const std::vector<CommandSpec> table = buildTable();
    return table;
}

const CommandSpec* findCommand(const std::string& name) {
    for (const CommandSpec& spec : commandTable()) {
        if (spec.name == name) return &spec;
    }
    return nullptr;
}

std::string usageOf(const CommandSpec& spec) {
    std::string text = "  " + spec.synopsis + "\n";
    std::istringstream description(spec.description);
    for (std::string line; std::getline(description, line);) text += "      " + line + "\n";
    return text;
}

std::string fullUsage() {
    std::string text =
            "usage: qelctl [--json] [--embedded] COMMAND [ARGS...]\n"
            "\n"
            "Talks to the resource-control service vendor.quarn.hardware.drel.IDrel/default\n"
            "through libquarn-qel-client.\n"
            "\n"
            "options (anywhere on the line):\n"
            "  --json       print one JSON object per result or report, one per line; a\n"
            "               usage error also prints {\"ok\":false,\"error\":...,\"exit\":2}\n"
            "               on stderr\n"
            "  --embedded   run the example service inside this process (on a host)\n"
            "  --help, -h   this text (also: qelctl help); COMMAND --help or\n"
            "               qelctl help COMMAND describes one command\n"
            "\n"
            "commands:\n";
    for (const CommandSpec& spec : commandTable()) text += usageOf(spec);
    text += "\n"
            "Numbers (ids, opcodes, handles, durations) are decimal or 0x-hex; opcodes go up\n"
            "to 0xffffffff. A VALUE (after OPCODE=, a LEVEL, a property VALUE, a TEXT) is free\n"
            "text, sent as written and never read as a number here: =0x10 sends the text\n"
            "\"0x10\", = sends an empty text; what it means is the service's affair. Texts\n"
            "sent to the service must be valid UTF-8. An option's value may not start with\n"
            "--, except as --OPTION=VALUE.\n"
            "Exit status: 0 success, 1 the service answered a failure or is not available,\n"
            "2 usage error (arguments are checked before the service is reached).\n";
    return text;
}

Prepared prepare(const std::vector<std::string>& words, bool inScript) {
    if (words.empty()) throw UsageError("missing command");
    const CommandSpec* spec = findCommand(words[0]);
    if (spec == nullptr) throw UsageError("unknown command '" + words[0] + "'");
    if (inScript && !spec->scriptable) throw UsageError(spec->name + " cannot run in a script");
    const ParsedArgs args =
            parseArgs(std::vector<std::string>(words.begin() + 1, words.end()), spec->options);
    if (inScript && (args.has("--embedded") || args.has("--help"))) {
        throw UsageError("--embedded and --help go on qelctl's own command line");
    }
    return {spec, spec->parse(args), args.has("--json"), nameOf(*spec, args)};
}

int runPrepared(Session& session, const Prepared& prepared) {
    session.json = prepared.json;
    if (prepared.spec->needsService) {
        session.ensureEmbedded();
        if (!session.serviceAvailable(prepared.name)) return kExitFailure;
    }
    return prepared.action(session);
}

int runQelctl(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
              std::istream& in) {
    clearStop();
    Session session(out, err, in);
    try {
        size_t first = 0;
        bool help = false;
        bool json = false;
        for (; first < args.size() && !args[first].empty() && args[first][0] == '-'; ++first) {
            const std::string& flag = args[first];
            if (flag == "--help" || flag == "-h") {
                help = true;
            } else if (flag == "--json") {
                json = true;
            } else if (flag == "--embedded") {
                session.embeddedRequested = true;
            } else {
                throw UsageError("unknown option '" + flag + "'");
            }
        }
        if (first == args.size()) {
            if (help) {
                out << fullUsage();
                return kExitOk;
            }
            throw UsageError("missing command");
        }
        const std::vector<std::string> words(args.begin() + first, args.end());
        if (words[0] == "help") {
            if (words.size() == 1) {
                out << fullUsage();
                return kExitOk;
            }
            const CommandSpec* spec = words.size() == 2 ? findCommand(words[1]) : nullptr;
            if (spec == nullptr)
                throw UsageError("help takes one command name, not '" + words[1] + "'");
            out << "usage:\n" << usageOf(*spec);
            return kExitOk;
        }
        const CommandSpec* spec = findCommand(words[0]);
        if (spec == nullptr) throw UsageError("unknown command '" + words[0] + "'");
        const ParsedArgs parsed =
                parseArgs(std::vector<std::string>(words.begin() + 1, words.end()), spec->options);
        if (help || parsed.has("--help")) {
            out << "usage:\n" << usageOf(*spec);
            return kExitOk;
        }
        if (parsed.has("--embedded")) session.embeddedRequested = true;
        json = json || parsed.has("--json");
        if (json && spec->name == "demo") {
            throw UsageError("demo prints a narrated text only; run it without --json");
        }
        Prepared prepared{spec, spec->parse(parsed), json, nameOf(*spec, parsed)};
        const int status = runPrepared(session, prepared);
        session.finish();
        return status;
    } catch (const UsageError& e) {
        if (std::find(args.begin(), args.end(), "--json") != args.end()) {
            err << usageJson(e.what()) << "\n";
        } else {
            err << "qelctl: " << e.what() << "\nTry 'qelctl --help'.\n";
        }
        return kExitUsage;
    } catch (const std::exception& e) {
        err << "qelctl: " << e.what() << "\n";
        return kExitFailure;
    }
}

}  // namespace qelctl
