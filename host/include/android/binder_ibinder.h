// Host stand-in of <android/binder_ibinder.h> (libbinder_ndk, API 31).
//
// What it promises, as on the device:
// - A binder obtained from the service manager by another process is a proxy (isRemote), never
//   the service's own object; transactions copy their arguments through a parcel.
// - Killing a service's process (hostbinder::killService) marks its proxies dead: transactions
//   fail with STATUS_DEAD_OBJECT and each linked death recipient is called once, with its cookie,
//   on a binder thread; the recipients of one proxy in link order, one after another, on one
//   thread.
// - AIBinder_transact on a proxy is synchronous. A transaction into a service runs on the calling
//   thread; one that a service makes into a process while it handles that process's own call
//   runs on the thread that made that call (a nested transaction); any other transaction into the
//   client process, and every death notice (unless hostbinder::deliverDeathsInFailingCalls has
//   them run inside the call that finds the service gone), runs on a thread of that process's
//   binder thread pool (<android/binder_process.h>) while the sender waits: until the process has a
//   pool, it waits for one. Flags other than FLAG_ONEWAY, FLAG_CLEAR_BUF (declared, as on a device,
//   in <android/binder_ibinder_platform.h>) and FLAG_PRIVATE_VENDOR (<android/binder_stability.h>)
//   are STATUS_BAD_VALUE.
// - AIBinder_linkToDeath gives STATUS_INVALID_OPERATION on a local binder, STATUS_DEAD_OBJECT on a
//   dead one, STATUS_UNEXPECTED_NULL on null arguments; deleting a recipient drops its links.
// - Reference counts: AIBinder_new, the service manager's look-ups and Weak_promote return +1.
//   What the device marks warn_unused_result (constructors, look-ups, promote) is marked so here.
// - AIBinder_dump runs the class's dump function in the binder's process (STATUS_OK without one).
// What it leaves out: oneway semantics (a oneway call is answered like any other), extensions,
// stability levels (AIBinder_markVintfStability is accepted and has no effect) and calling
// identity beyond this process's pid/uid.
#pragma once

#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <stdbool.h>
#include <stdint.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t binder_flags_t;
enum { FLAG_ONEWAY = 0x01 };

typedef uint32_t transaction_code_t;
enum {
    FIRST_CALL_TRANSACTION = 0x00000001,
    LAST_CALL_TRANSACTION = 0x00ffffff,
};

struct AIBinder_Class;
typedef struct AIBinder_Class AIBinder_Class;
struct AIBinder_Weak;
typedef struct AIBinder_Weak AIBinder_Weak;
struct AIBinder_DeathRecipient;
typedef struct AIBinder_DeathRecipient AIBinder_DeathRecipient;

typedef void* (*AIBinder_Class_onCreate)(void* args);
typedef void (*AIBinder_Class_onDestroy)(void* userData);
typedef binder_status_t (*AIBinder_Class_onTransact)(AIBinder* binder, transaction_code_t code,
                                                     const AParcel* in, AParcel* out);
typedef binder_status_t (*AIBinder_onDump)(AIBinder* binder, int fd, const char** args,
                                           uint32_t numArgs);
typedef void (*AIBinder_DeathRecipient_onBinderDied)(void* cookie);

AIBinder_Class* AIBinder_Class_define(const char* interfaceDescriptor,
                                      AIBinder_Class_onCreate onCreate,
                                      AIBinder_Class_onDestroy onDestroy,
                                      AIBinder_Class_onTransact onTransact)
        __attribute__((warn_unused_result));
void AIBinder_Class_setOnDump(AIBinder_Class* clazz, AIBinder_onDump onDump);
const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz);

AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args) __attribute__((warn_unused_result));
bool AIBinder_isRemote(const AIBinder* binder);
bool AIBinder_isAlive(const AIBinder* binder);
binder_status_t AIBinder_ping(AIBinder* binder);
binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs);
binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie);
binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie);
uid_t AIBinder_getCallingUid(void);
pid_t AIBinder_getCallingPid(void);
void AIBinder_incStrong(AIBinder* binder);
void AIBinder_decStrong(AIBinder* binder);
int32_t AIBinder_debugGetRefCount(AIBinder* binder);
bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz);
const AIBinder_Class* AIBinder_getClass(AIBinder* binder);
void* AIBinder_getUserData(AIBinder* binder);

binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in);
binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                  AParcel** out, binder_flags_t flags);

AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder) __attribute__((warn_unused_result));
void AIBinder_Weak_delete(AIBinder_Weak* weakBinder);
AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder) __attribute__((warn_unused_result));

AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(AIBinder_DeathRecipient_onBinderDied onDied)
        __attribute__((warn_unused_result));
void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient);

#ifdef __cplusplus
}
#endif
