// Host stand-in of <android/binder_to_string.h>: text forms of argument values for the
// transaction logs of the generated code.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace android {
namespace internal {

template <typename T, typename = void>
struct HasToString : std::false_type {};
template <typename T>
struct HasToString<T, std::void_t<decltype(std::declval<const T&>().toString())>> : std::true_type {
};

template <typename T>
std::string ToString(const T& t);

template <typename T>
std::string ToString(const std::optional<T>& t) {
    return t ? ToString(*t) : std::string("(null)");
}

template <typename T>
std::string ToString(const std::shared_ptr<T>& t) {
    if (!t) return "(null)";
    if constexpr (std::is_base_of_v<::ndk::ICInterface, T>) {
        return "";
    } else {
        return ToString(*t);
    }
}

template <typename T>
std::string ToString(const std::vector<T>& v) {
    std::ostringstream out;
    out << "[";
    bool first = true;
    for (const auto& item : v) {
        if (!first) out << ", ";
        out << ToString(item);
        first = false;
    }
    out << "]";
    return out.str();
}

template <typename T>
std::string ToString(const T& t) {
    if constexpr (std::is_same_v<T, bool>) {
        return t ? "true" : "false";
    } else if constexpr (std::is_arithmetic_v<T>) {
        return std::to_string(t);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return t;
    } else if constexpr (std::is_same_v<T, ::ndk::SpAIBinder>) {
        return t.get() == nullptr ? "(null)" : "";
    } else if constexpr (HasToString<T>::value) {
        return t.toString();
    } else {
        return "{no toString() implemented}";
    }
}

}  // namespace internal
}  // namespace android
