// Argument parsing: options, strict numbers, resources and script lines.

#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "qelctl_internal.h"

namespace qelctl {
namespace {

const std::vector<OptionSpec> kGlobalOptions = {
        {"--json", false, true},
        {"--embedded", false, true},
        {"--help", false, true},
};

const OptionSpec* findSpec(const std::vector<OptionSpec>& specs, const std::string& name) {
    for (const OptionSpec& spec : specs) {
        if (spec.name == name) return &spec;
    }
    for (const OptionSpec& spec : kGlobalOptions) {
        if (spec.name == name) return &spec;
    }
    return nullptr;
}

bool looksLikeNumber(const std::string& token) {
    return token.size() >= 2 && token[0] == '-' &&
           (std::isdigit(static_cast<unsigned char>(token[1])) || token[1] == '.');
}

// Reads the whole text as an integer of any base-10 or 0x-hex form; nullopt when it is not one.
std::optional<long long> readInteger(const std::string& text) {
    if (text.empty() || std::isspace(static_cast<unsigned char>(text[0]))) return std::nullopt;
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    errno = 0;
    char* end = nullptr;
    const long long value = std::strtoll(text.c_str(), &end, hex ? 16 : 10);
    if (errno != 0 || end == text.c_str() || *end != '\0') return std::nullopt;
    return value;
}

}  // namespace

std::optional<std::string> ParsedArgs::value(const std::string& name) const {
    auto it = options.find(name);
    if (it == options.end() || it->second.empty()) return std::nullopt;
    return it->second.back();
}

std::vector<std::string> ParsedArgs::values(const std::string& name) const {
    auto it = options.find(name);
    return it == options.end() ? std::vector<std::string>() : it->second;
}

ParsedArgs parseArgs(const std::vector<std::string>& args, const std::vector<OptionSpec>& specs) {
    ParsedArgs parsed;
    bool optionsEnded = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& token = args[i];
        if (optionsEnded || token.empty() || token[0] != '-' || looksLikeNumber(token) ||
            token == "-") {
            parsed.positionals.push_back(token);
            continue;
        }
        if (token == "--") {
            optionsEnded = true;
            continue;
        }
        std::string name = token;
        std::optional<std::string> inlineValue;
        const size_t equals = token.find('=');
        if (equals != std::string::npos) {
            name = token.substr(0, equals);
            inlineValue = token.substr(equals + 1);
        }
        if (name == "-h") name = "--help";
        const OptionSpec* spec = findSpec(specs, name);
        if (spec == nullptr) throw UsageError("unknown option '" + name + "'");
        if (!spec->repeatable && parsed.has(name)) {
            throw UsageError("option " + name + " given twice");
        }
        std::string value;
        if (spec->takesValue) {
            if (inlineValue) {
                value = *inlineValue;
            } else if (i + 1 < args.size() && args[i + 1].rfind("--", 0) == 0) {
                // More likely a forgotten value than a value: say so rather than take the next
                // option as the value and report a stray argument after it.
                throw UsageError("option " + name + " needs a value, not the option '" +
                                 args[i + 1] + "' (write " + name + "=VALUE for such a value)");
            } else if (i + 1 < args.size()) {
                value = args[++i];
            } else {
                throw UsageError("option " + name + " needs a value");
            }
        } else if (inlineValue) {
            throw UsageError("option " + name + " takes no value");
        }
        parsed.options[name].push_back(value);
    }
    return parsed;
}

int32_t parseInt32(const std::string& text, const std::string& what) {
    std::optional<long long> value = readInteger(text);
    if (!value || *value < INT32_MIN || *value > INT32_MAX) {
        throw UsageError("invalid " + what + " '" + text + "': expected a 32-bit integer");
    }
    return static_cast<int32_t>(*value);
}

int32_t parseOpcode(const std::string& text) {
    std::optional<long long> value = readInteger(text);
    if (!value || *value < INT32_MIN || *value > static_cast<long long>(UINT32_MAX)) {
        throw UsageError("invalid opcode '" + text + "': expected a number such as 0x01010010");
    }
    return static_cast<int32_t>(static_cast<uint32_t>(*value));
}

double parseSeconds(const std::string& text, const std::string& what) {
    errno = 0;
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || errno != 0 || *end != '\0' || !std::isfinite(value) || value < 0) {
        throw UsageError("invalid " + what + " '" + text + "': expected seconds, such as 2.5");
    }
    return value;
}

QelClient::Resource parseResource(const std::string& text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos) {
        throw UsageError("invalid resource '" + text + "': expected OPCODE=VALUE");
    }
    QelClient::Resource resource;
    resource.resId = parseOpcode(text.substr(0, equals));
    resource.resValue = text.substr(equals + 1);
    checkUtf8(*resource.resValue, "the value of --res " + hexOpcode(resource.resId));
    return resource;
}

void checkUtf8(const std::string& text, const std::string& what) {
    if (const std::optional<size_t> bad = firstInvalidUtf8(text)) {
        char byte[8];
        std::snprintf(byte, sizeof(byte), "0x%02x", static_cast<unsigned char>(text[*bad]));
        throw UsageError(what + " is not valid UTF-8 (byte " + byte + " at offset " +
                         std::to_string(*bad) + "); the service takes UTF-8 text only");
    }
}

std::vector<std::string> splitLine(const std::string& line) {
    std::vector<std::string> words;
    std::string word;
    bool inWord = false;
    for (size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (std::isspace(static_cast<unsigned char>(c))) {
            if (inWord) words.push_back(word);
            word.clear();
            inWord = false;
            continue;
        }
        if (c == '#' && !inWord) break;
        inWord = true;
        if (c == '\'' || c == '"') {
            const char quote = c;
            bool closed = false;
            for (++i; i < line.size(); ++i) {
                if (line[i] == quote) {
                    closed = true;
                    break;
                }
                if (quote == '"' && line[i] == '\\' && i + 1 < line.size() &&
                    (line[i + 1] == '"' || line[i + 1] == '\\')) {
                    ++i;
                }
                word += line[i];
            }
            if (!closed) throw UsageError(std::string("unterminated ") + quote + " quote");
            continue;
        }
        word += c;
    }
    if (inWord) words.push_back(word);
    return words;
}

}  // namespace qelctl
