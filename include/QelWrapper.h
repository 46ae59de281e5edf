// Action wrapper of libquarn-qel-client.
//
// Lets callers name events by action names ("PRAXEL_" + an entry of gActionList) and report
// scenarios by small integers and texts; the wrapper turns them into flat-API calls. The action
// catalogue and the opcode tables are fixed at load time and only read afterwards, so every
// function here is thread-safe as far as the flat API is (unless a caller changes gActionList).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "qel.h"
#include "qel_export.h"

// The 199 action names; a name's position is its command id. Duplicates are kept on purpose.
// The library never changes it. A caller may (push_back, assignment to a name, ...), but not
// while another thread calls QelEventAcquireWrapper: from then on the look-up answers for the
// vector as it is now, the first position that holds the name, with one exception: a name
// copied into a position before the one it had at load time, while that position still holds
// it, is found at its load-time position.
QEL_EXPORT extern std::vector<std::string> gActionList;

// Opcode tables of the scenario builders. They lie back to back in this order, so an index past
// the end of one table reads the next.
QEL_EXPORT extern int32_t opCodeTargetLoad[3];
QEL_EXPORT extern int32_t opCodeAdpXpuCoreBoost[4];
QEL_EXPORT extern int32_t opCodeAdpXpuCoreLimit[4];
QEL_EXPORT extern int32_t opCodeAdpXpuFreqBoost[4];
QEL_EXPORT extern int32_t opCodeAdpXpuFreqLimit[4];

// A resource with resId = opcode and a present value.
QEL_EXPORT QelClient::Resource QelResourceInfo(int opcode, std::string value);
// Scenario texts to resource lists; malformed items are skipped.
QEL_EXPORT std::vector<QelClient::Resource> getTargetLoadList(std::string text);
QEL_EXPORT std::vector<QelClient::Resource> getColocationList(std::string text);
QEL_EXPORT std::vector<QelClient::Resource> getGameAdpList(std::string text);
// Only level and text are read.
QEL_EXPORT std::vector<QelClient::Resource> getGameUpgradeList(int, int, int level, int, int,
                                                               std::string text);
// Sends the fixed "clear upgrade" list with qelRuleCtl(ruleId, mode, ...).
QEL_EXPORT void clrGameUpgradeMode(int ruleId, int mode);

extern "C" {

// Acquires the action named by eventId ("PRAXEL_" + name) for scene and identity during
// timeout. The service's handle, or -1 when the name is unknown or the acquire fails.
QEL_EXPORT int QelEventAcquireWrapper(const std::string& eventId, const std::string& scene,
                                      const std::string& identity, int timeout);
// Releases handle through QelRelease. Returns 0.
QEL_EXPORT int QelReleaseWapper(int handle);
// Turns a scenario report into at most one qelRuleCtl call. Always returns 0.
QEL_EXPORT int QelNotifyWapper(const std::string& name, int src, int type, int param, int, int,
                               const std::string& text);

}  // extern "C"
