// The wrapper's entry points: action names to event acquires, and scenario reports to rule
// controls. They keep no state; the catalogue is only read.

#include <android/log.h>

#include <cstdint>
#include <string>
#include <vector>

#include "QelWrapper.h"
#include "wrapper/action_index.h"

using QelClient::Resource;

#define WRAPPER_LOGI(...) __android_log_print(ANDROID_LOG_INFO, kWrapperTag, __VA_ARGS__)

namespace {

constexpr const char* kWrapperTag = "[QEL_CLIENT_WRAPPER]";

// Resource opcodes of the scenario rules.
constexpr int32_t kRule8And111OpCode = 0x010103A0;
constexpr int32_t kRule9FirstOpCode = 0x010112F0;
constexpr int32_t kRule9SecondOpCode = 0x01011910;
constexpr int32_t kRule102OpCode = 0x01011070;
// Sources 2, 3, 5 and 6 share one rule and are told apart by its status.
constexpr int kSharedRule = 200;

const char* orNone(const std::string& text) {
    return text.empty() ? "none" : text.c_str();
}

// The rules that carry a scenario text: switched on with the builder's list of a non-empty
// text (even when the list comes out empty), switched off with an empty list.
void textRule(int rule, int type, const std::string& text,
              std::vector<Resource> (*build)(std::string)) {
    if (type == 1) {
        if (!text.empty()) qelRuleCtl(rule, 1, build(text));
    } else if (type == 0) {
        qelRuleCtl(rule, 0, {});
    }
}

}  // namespace

extern "C" {

int QelEventAcquireWrapper(const std::string& eventId, const std::string& scene,
                           const std::string& identity, int timeout) {
    WRAPPER_LOGI("[%s] eventId:%s, scene:%s, identity:%s, timeout:%d", "QelEventAcquireWrapper",
                 orNone(eventId), orNone(scene), orNone(identity), timeout);
    // The first position of the name, through the index made at load time.
    int cmdId = qel_wrapper::gActionIndex.commandIdOf(eventId);
    if (cmdId < 0) return -1;
    return QelEventAcquire(cmdId, scene, identity, timeout, {});
}

int QelReleaseWapper(int handle) {
    WRAPPER_LOGI("[%s] %d", "QelReleaseWapper", handle);
    // QelRelease reports nothing back, so neither does this: a release always "succeeds".
    QelRelease(handle);
    return 0;
}

int QelNotifyWapper(const std::string& name, int src, int type, int param, int, int,
                    const std::string& text) {
    WRAPPER_LOGI("[%s] %s, src:%d, type:%d", "QelNotifyWapper", orNone(name), src, type);
    // The rule control's answer is not passed on: a report is fire-and-forget for the caller.
    switch (src) {
        case 1:
        case 10:
        case 11:
        case 12:
        case 16:
        case 110:
        case 129:
        case 1000:
            qelRuleCtl(src, type, {});
            break;
        case 2:
        case 3:
        case 5:
        case 6:
            qelRuleCtl(kSharedRule, type == 1 ? src : 0, {});
            break;
        case 8:
            if (type == 1 || type == 2) {
                std::vector<Resource> list;
                if (param == 1) list.push_back(QelResourceInfo(kRule8And111OpCode, "0"));
                qelRuleCtl(8, type, list);
            } else if (type == 0) {
                qelRuleCtl(8, 0, {});
            }
            break;
        case 9:
            if (type == 1) {
                qelRuleCtl(9, 1,
                           {QelResourceInfo(kRule9FirstOpCode, "enable 0"),
                            QelResourceInfo(kRule9SecondOpCode, "0")});
            } else if (type == 0) {
                // Switching off sends an empty list. The (0x010112F0, "enable 1") counterpart of
                // the switch-on list is deliberately not sent; the service has always been
                // given the empty list here.
                qelRuleCtl(9, 0, {});
            }
            break;
        case 14:
            if (type == 1) {
                qelRuleCtl(14, 1, getGameUpgradeList(0, 0, param, 0, 0, text));
            } else if (type == 0) {
                clrGameUpgradeMode(14, 0);
            }
            break;
        case 15:
            if (type >= -1 && type <= 1) {
                // The low byte carries the switch, the bytes above it param. Packed unsigned so
                // that a negative param shifts without undefined behaviour.
                uint32_t packed =
                        (static_cast<uint32_t>(type) & 0xFFu) | (static_cast<uint32_t>(param) << 8);
                qelRuleCtl(15, static_cast<int>(packed), {});
            }
            break;
        case 102:
            if (type == 1) {
                // -1 and 0 select the default level, 3.
                std::string level = (param != -1 && param != 0) ? std::to_string(param) : "3";
                qelRuleCtl(102, 1, {QelResourceInfo(kRule102OpCode, level)});
            } else if (type == 0) {
                qelRuleCtl(102, 0, {QelResourceInfo(kRule102OpCode, "0")});
            }
            break;
        case 111:
            if (type >= -1 && type <= 1) {
                qelRuleCtl(111, type, {QelResourceInfo(kRule8And111OpCode, std::to_string(type))});
            }
            break;
        case 130:
            textRule(130, type, text, getTargetLoadList);
            break;
        case 131:
            textRule(131, type, text, getColocationList);
            break;
        case 9000:
            textRule(9000, type, text, getGameAdpList);
            break;
        default:
            // Every other source is not a scenario of this device: ignored.
            break;
    }
    return 0;
}

}  // extern "C"
