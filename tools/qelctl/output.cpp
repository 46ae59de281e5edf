// Output: JSON texts, resource formatting, and the locked line writer.

#include <cstdio>

#include "qelctl_internal.h"

namespace qelctl {

std::string jsonString(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        switch (c) {
            case '"':
                quoted += "\\\"";
                break;
            case '\\':
                quoted += "\\\\";
                break;
            case '\n':
                quoted += "\\n";
                break;
            case '\r':
                quoted += "\\r";
                break;
            case '\t':
                quoted += "\\t";
                break;
            case '\b':
                quoted += "\\b";
                break;
            case '\f':
                quoted += "\\f";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof(escaped), "\\u%04x",
                                  static_cast<unsigned>(static_cast<unsigned char>(c)));
                    quoted += escaped;
                } else {
                    quoted += c;
                }
        }
    }
    return quoted + "\"";
}

std::string jsonArray(const std::vector<std::string>& rawItems) {
    std::string array = "[";
    for (size_t i = 0; i < rawItems.size(); ++i) {
        if (i != 0) array += ",";
        array += rawItems[i];
    }
    return array + "]";
}

JsonObject& JsonObject::raw(const std::string& key, const std::string& json) {
    if (!body_.empty()) body_ += ",";
    body_ += jsonString(key) + ":" + json;
    return *this;
}

JsonObject& JsonObject::str(const std::string& key, const std::string& value) {
    return raw(key, jsonString(value));
}

JsonObject& JsonObject::num(const std::string& key, long long value) {
    return raw(key, std::to_string(value));
}

JsonObject& JsonObject::boolean(const std::string& key, bool value) {
    return raw(key, value ? "true" : "false");
}

JsonObject& JsonObject::null(const std::string& key) {
    return raw(key, "null");
}

JsonObject& JsonObject::merge(const JsonObject& other) {
    if (!body_.empty() && !other.body_.empty()) body_ += ",";
    body_ += other.body_;
    return *this;
}

std::string JsonObject::text() const {
    return "{" + body_ + "}";
}

std::string hexOpcode(int32_t id) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08x", static_cast<uint32_t>(id));
    return text;
}

std::string resourceText(const QelClient::Resource& resource) {
    if (!resource.resValue) return hexOpcode(resource.resId) + " (no value)";
    return hexOpcode(resource.resId) + "=" + *resource.resValue;
}

std::string resourceJson(const QelClient::Resource& resource) {
    JsonObject object;
    object.str("opcode", hexOpcode(resource.resId)).num("id", resource.resId);
    if (resource.resValue) {
        object.str("value", *resource.resValue);
    } else {
        object.null("value");
    }
    return object.text();
}

void Output::line(const std::string& text) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (closed_) return;
    out_ << text << '\n';
    out_.flush();
}

void Output::error(const std::string& text, bool prefixed) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (closed_) return;
    err_ << (prefixed ? "qelctl: " : "") << text << '\n';
    err_.flush();
}

void Output::close() {
    std::lock_guard<std::mutex> lock(mutex_);
    closed_ = true;
}

}  // namespace qelctl
