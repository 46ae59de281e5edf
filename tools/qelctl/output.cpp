// Output: JSON texts, resource formatting, and the locked line writer.

#include <cstdio>

#include "qelctl_internal.h"

namespace qelctl {

size_t utf8SequenceAt(const std::string& text, size_t i) {
    const auto byte = [&](size_t at) {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u;
    };
    const unsigned lead = byte(i);
    if (lead < 0x80) return 1;
    size_t length = 0;
    unsigned low = 0x80, high = 0xbf;  // the range of the second byte
    if (lead >= 0xc2 && lead <= 0xdf) {
        length = 2;
    } else if (lead >= 0xe0 && lead <= 0xef) {
        length = 3;
        if (lead == 0xe0) low = 0xa0;   // no overlong forms
        if (lead == 0xed) high = 0x9f;  // no surrogates
    } else if (lead >= 0xf0 && lead <= 0xf4) {
        length = 4;
        if (lead == 0xf0) low = 0x90;
        if (lead == 0xf4) high = 0x8f;  // nothing above U+10FFFF
    } else {
        return 0;
    }
    if (byte(i + 1) < low || byte(i + 1) > high) return 0;
    for (size_t k = 2; k < length; ++k) {
        if (byte(i + k) < 0x80 || byte(i + k) > 0xbf) return 0;
    }
    return length;
}

std::optional<size_t> firstInvalidUtf8(const std::string& text) {
    for (size_t i = 0; i < text.size();) {
        const size_t length = utf8SequenceAt(text, i);
        if (length == 0) return i;
        i += length;
    }
    return std::nullopt;
}

std::string jsonString(const std::string& text) {
    std::string quoted = "\"";
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (static_cast<unsigned char>(c) >= 0x80) {
            // JSON is UTF-8: a byte that starts no valid sequence becomes U+FFFD, as a decoder
            // that replaces errors shows it.
            const size_t length = utf8SequenceAt(text, i);
            if (length == 0) {
                quoted += "\\ufffd";
            } else {
                quoted.append(text, i, length);
                i += length - 1;
            }
            continue;
        }
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
