// What the example service has been told and keeps for its owner: init calls, properties, rules,
// related system information and kind-10 notifications.
//
// Not thread-safe: DrelService calls it under its own mutex.
#pragma once

#include <aidl/vendor/quarn/hardware/drel/DrelRequestData.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "drel-service/DrelService.h"

namespace aidl::vendor::quarn::hardware::drel::example {

class Records {
public:
    using RuleState = DrelService::RuleState;

    // Keeps at most `notificationCapacity` notifications, dropping the oldest.
    explicit Records(size_t notificationCapacity) : notificationCapacity_(notificationCapacity) {}

    void countInit() { ++initCount_; }
    int initCount() const { return initCount_; }

    // The value last set, or "".
    std::string property(const std::string& name) const;
    // False, and nothing kept, for an empty name.
    bool setProperty(const std::string& name, const std::string& value);

    void setRule(int32_t ruleId, int32_t status, const std::vector<DrelRequestData>& data);
    std::optional<RuleState> rule(int32_t ruleId) const;

    void setSysInfo(int32_t type, int64_t info) { sysInfo_[type] = info; }
    std::optional<int64_t> sysInfo(int32_t type) const;

    void notify(const std::vector<DrelRequestData>& records);
    std::vector<std::vector<DrelRequestData>> notifications() const {
        return {notifications_.begin(), notifications_.end()};
    }

    const std::map<std::string, std::string>& properties() const { return properties_; }
    const std::map<int32_t, RuleState>& rules() const { return rules_; }
    const std::map<int32_t, int64_t>& sysInfos() const { return sysInfo_; }

private:
    const size_t notificationCapacity_;
    int initCount_ = 0;
    std::map<std::string, std::string> properties_;
    std::map<int32_t, RuleState> rules_;
    std::map<int32_t, int64_t> sysInfo_;
    std::deque<std::vector<DrelRequestData>> notifications_;
};

}  // namespace aidl::vendor::quarn::hardware::drel::example
