#include "Records.h"

namespace aidl::vendor::quarn::hardware::drel::example {

std::string Records::property(const std::string& name) const {
    auto found = properties_.find(name);
    return found == properties_.end() ? std::string() : found->second;
}

bool Records::setProperty(const std::string& name, const std::string& value) {
    if (name.empty()) return false;
    properties_[name] = value;
    return true;
}

void Records::setRule(int32_t ruleId, int32_t status, const std::vector<DrelRequestData>& data) {
    rules_[ruleId] = RuleState{status, data};
}

std::optional<Records::RuleState> Records::rule(int32_t ruleId) const {
    auto found = rules_.find(ruleId);
    if (found == rules_.end()) return std::nullopt;
    return found->second;
}

std::optional<int64_t> Records::sysInfo(int32_t type) const {
    auto found = sysInfo_.find(type);
    if (found == sysInfo_.end()) return std::nullopt;
    return found->second;
}

void Records::notify(const std::vector<DrelRequestData>& records) {
    if (notificationCapacity_ == 0) return;
    notifications_.push_back(records);
    while (notifications_.size() > notificationCapacity_) notifications_.pop_front();
}

}  // namespace aidl::vendor::quarn::hardware::drel::example
