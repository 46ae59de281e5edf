// qelctl's tests run the tool in-process, with captured output, against the example service
// registered by the fixture (as --embedded would, but owned by the test so that it can be
// looked at).
#pragma once

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <gtest/gtest.h>
#include <hostbinder/hostbinder.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "drel-service/DrelService.h"
#include "qelctl.h"
#include "support/service_fixture.h"

namespace qel_test {

struct QelctlRun {
    int status;
    std::string out;
    std::string err;
};

class QelctlTest : public ::testing::Test {
protected:
    void SetUp() override {
        ABinderProcess_startThreadPool();  // as qelctl's main does
        hostbinder::reset();
        clearRegistries();
        // Handles from 1, so that a script can name them.
        ::aidl::vendor::quarn::hardware::drel::DrelService::Options options;
        options.firstHandle = 1;
        service = ::ndk::SharedRefBase::make<::aidl::vendor::quarn::hardware::drel::DrelService>(
                options);
        ASSERT_EQ(EX_NONE, AServiceManager_addService(service->asBinder().get(), kInstance));
    }
    void TearDown() override {
        hostbinder::reset();
        hostbinder::waitIdle();
        clearRegistries();
    }

    static QelctlRun run(const std::vector<std::string>& args, const std::string& input = "") {
        std::ostringstream out, err;
        std::istringstream in(input);
        const int status = qelctl::runQelctl(args, out, err, in);
        return {status, out.str(), err.str()};
    }

    std::shared_ptr<::aidl::vendor::quarn::hardware::drel::DrelService> service;
};

// Reads the JSON value at text[i] and moves i past it, as strictly as a JSON parser (without
// blanks, which qelctl never writes); the fields of an object are added to `fields`, each as its
// JSON text. Throws std::invalid_argument on what a parser would refuse.
inline void readJson(const std::string& text, size_t& i,
                     std::map<std::string, std::string>* fields = nullptr) {
    const auto expect = [&](bool ok) {
        if (!ok) throw std::invalid_argument("not JSON at " + std::to_string(i) + ": " + text);
    };
    const auto next = [&](char c) { return i < text.size() && text[i] == c; };
    expect(i < text.size());
    if (next('"')) {
        for (++i; expect(i < text.size()), text[i] != '"'; ++i) {
            expect(static_cast<unsigned char>(text[i]) >= 0x20);
            if (text[i] == '\\') expect(++i < text.size() && std::strchr("\"\\/bfnrtu", text[i]));
        }
        ++i;
    } else if (next('{') || next('[')) {
        const char close = text[i++] == '{' ? '}' : ']';
        for (bool first = true; !next(close); first = false) {
            expect(first || (next(',') && ++i));
            const size_t key = i;
            if (close == '}') expect(next('"') && (readJson(text, i), next(':')) && ++i);
            const size_t value = i;
            readJson(text, i);
            if (close == '}' && fields)
                (*fields)[text.substr(key + 1, value - key - 3)] = text.substr(value, i - value);
        }
        ++i;
    } else {
        const std::string word = text.substr(i, text.find_first_of(",]}", i) - i);
        char* end = nullptr;
        std::strtod(word.c_str(), &end);
        expect(word == "true" || word == "false" || word == "null" ||
               (!word.empty() && *end == '\0' && word.find('x') == std::string::npos));
        i += word.size();
    }
}

inline std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) result.push_back(line);
    return result;
}

// The fields of a line that holds one JSON object and nothing else.
inline std::map<std::string, std::string> jsonObject(const std::string& line) {
    std::map<std::string, std::string> fields;
    size_t i = 0;
    if (line.empty() || line[0] != '{') throw std::invalid_argument("not an object: " + line);
    readJson(line, i, &fields);
    if (i != line.size()) throw std::invalid_argument("more than one value: " + line);
    return fields;
}

}  // namespace qel_test
