// Support for qelctl's tests: a fixture that runs the example service under the service's name
// (as --embedded would, but owned by the test so that it can be looked at), runs qelctl
// in-process with captured output, a stream that may be read while binder threads write to it,
// and a small JSON reader for checking --json output field by field.
#pragma once

#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <cctype>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "drel-service/DrelService.h"
#include "halclient/halclient_internal.h"
#include "qelctl.h"

namespace qel_test {

// A stringbuf whose writes and reads are serialised: listening reports are written from binder
// threads while a test reads what has arrived.
class LockedBuffer : public std::stringbuf {
public:
    std::string text() {
        std::lock_guard<std::recursive_mutex> lock(mutex_);
        return str();
    }

protected:
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        std::lock_guard<std::recursive_mutex> lock(mutex_);
        return std::stringbuf::xsputn(s, n);
    }
    int_type overflow(int_type c) override {
        std::lock_guard<std::recursive_mutex> lock(mutex_);
        return std::stringbuf::overflow(c);
    }

private:
    // Recursive: stringbuf's xsputn calls overflow.
    std::recursive_mutex mutex_;
};

struct QelctlRun {
    int status;
    std::string out;
    std::string err;
};

// Non-empty lines of a text.
inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

// ---- JSON ----

struct Json {
    enum class Kind { kNull, kBool, kNumber, kString, kArray, kObject } kind = Kind::kNull;
    bool boolean = false;
    double number = 0;
    std::string string;
    std::vector<Json> array;
    std::map<std::string, Json> object;

    const Json& operator[](const std::string& key) const {
        static const Json missing;
        auto it = object.find(key);
        return it == object.end() ? missing : it->second;
    }
    bool has(const std::string& key) const { return object.count(key) != 0; }
};

// Parses one JSON text strictly; a syntax error fails the current test and gives null.
class JsonReader {
public:
    static Json parse(const std::string& text) {
        JsonReader reader(text);
        Json value;
        if (!reader.value(value) || (reader.skip(), reader.pos_ != text.size())) {
            ADD_FAILURE() << "not valid JSON at byte " << reader.pos_ << ": " << text;
            return Json();
        }
        return value;
    }

private:
    explicit JsonReader(const std::string& text) : text_(text) {}

    void skip() {
        while (pos_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[pos_]))) {
            ++pos_;
        }
    }
    bool literal(const char* word) {
        const std::string w(word);
        if (text_.compare(pos_, w.size(), w) != 0) return false;
        pos_ += w.size();
        return true;
    }
    bool string(std::string& out) {
        if (pos_ >= text_.size() || text_[pos_] != '"') return false;
        for (++pos_; pos_ < text_.size(); ++pos_) {
            const char c = text_[pos_];
            if (c == '"') {
                ++pos_;
                return true;
            }
            if (static_cast<unsigned char>(c) < 0x20) return false;
            if (c != '\\') {
                out += c;
                continue;
            }
            if (++pos_ >= text_.size()) return false;
            switch (text_[pos_]) {
                case '"':
                    out += '"';
                    break;
                case '\\':
                    out += '\\';
                    break;
                case '/':
                    out += '/';
                    break;
                case 'b':
                    out += '\b';
                    break;
                case 'f':
                    out += '\f';
                    break;
                case 'n':
                    out += '\n';
                    break;
                case 'r':
                    out += '\r';
                    break;
                case 't':
                    out += '\t';
                    break;
                case 'u': {
                    if (pos_ + 4 >= text_.size()) return false;
                    const unsigned code = std::stoul(text_.substr(pos_ + 1, 4), nullptr, 16);
                    if (code >= 0x80) return false;  // the tool only escapes control bytes
                    out += static_cast<char>(code);
                    pos_ += 4;
                    break;
                }
                default:
                    return false;
            }
        }
        return false;
    }
    bool value(Json& out) {
        skip();
        if (pos_ >= text_.size()) return false;
        const char c = text_[pos_];
        if (c == '{') {
            out.kind = Json::Kind::kObject;
            ++pos_;
            skip();
            if (pos_ < text_.size() && text_[pos_] == '}') return ++pos_, true;
            while (true) {
                skip();
                std::string key;
                if (!string(key)) return false;
                skip();
                if (pos_ >= text_.size() || text_[pos_++] != ':') return false;
                if (out.object.count(key) != 0) return false;  // keys are unique
                if (!value(out.object[key])) return false;
                skip();
                if (pos_ >= text_.size()) return false;
                if (text_[pos_] == '}') return ++pos_, true;
                if (text_[pos_++] != ',') return false;
            }
        }
        if (c == '[') {
            out.kind = Json::Kind::kArray;
            ++pos_;
            skip();
            if (pos_ < text_.size() && text_[pos_] == ']') return ++pos_, true;
            while (true) {
                out.array.emplace_back();
                if (!value(out.array.back())) return false;
                skip();
                if (pos_ >= text_.size()) return false;
                if (text_[pos_] == ']') return ++pos_, true;
                if (text_[pos_++] != ',') return false;
            }
        }
        if (c == '"') {
            out.kind = Json::Kind::kString;
            return string(out.string);
        }
        if (literal("true")) return out.kind = Json::Kind::kBool, out.boolean = true, true;
        if (literal("false")) return out.kind = Json::Kind::kBool, out.boolean = false, true;
        if (literal("null")) return out.kind = Json::Kind::kNull, true;
        size_t used = 0;
        if (c != '-' && !std::isdigit(static_cast<unsigned char>(c))) return false;
        out.number = std::stod(text_.substr(pos_), &used);
        out.kind = Json::Kind::kNumber;
        pos_ += used;
        return true;
    }

    const std::string& text_;
    size_t pos_ = 0;
};

// Every non-empty line of --json output, parsed.
inline std::vector<Json> jsonLines(const std::string& text) {
    std::vector<Json> values;
    for (const std::string& line : linesOf(text)) values.push_back(JsonReader::parse(line));
    return values;
}

// ---- fixture ----

inline constexpr const char* kQelctlInstance = "vendor.quarn.hardware.drel.IDrel/default";

inline void dropListeningGroups() {
    std::vector<DrelCallbackGroup> groups;
    std::lock_guard<std::mutex> lock(callback_group_mutex);
    groups.swap(callback_groups);
}

class QelctlTest : public ::testing::Test {
protected:
    void SetUp() override {
        hostbinder::reset();
        dropListeningGroups();
        startService();
    }
    void TearDown() override {
        hostbinder::reset();
        hostbinder::waitIdle();
        // Thermal registrations stay in the class API's registry after unregistering; they
        // must not refuse a later test's registration of the same ids.
        dropListeningGroups();
    }

    void startService() {
        service = ::ndk::SharedRefBase::make<::aidl::vendor::quarn::hardware::drel::DrelService>();
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kQelctlInstance));
    }

    static QelctlRun run(const std::vector<std::string>& args, const std::string& input = "") {
        std::ostringstream out;
        std::ostringstream err;
        std::istringstream in(input);
        const int status = qelctl::runQelctl(args, out, err, in);
        return {status, out.str(), err.str()};
    }

    std::shared_ptr<::aidl::vendor::quarn::hardware::drel::DrelService> service;
};

}  // namespace qel_test
