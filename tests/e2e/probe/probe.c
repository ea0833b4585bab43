/* A small plug-in that exercises the host the way the agent does: its init registers
 * "PROBEcomponent"; its start fetches the host interfaces in the agent's order, registers
 * session callbacks, registers "PROBEOIcomponent" from inside the start and then registers that
 * component as a class object implementer through its own register record, which fetches the
 * implementer's records back from the portal by component name. Every call it receives is
 * written to a journal that tests read through probe_journal(); probe_set() chooses answers.
 * Plain C with static storage only, so that unloading the library forgets everything. */
#include <ctype.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "platform/orl/OrlEventRouter.h"
#include "platform/orl/OrlMgmtSpi.h"
#include "platform/orl/OrlOamSpi.h"

#define PROBE_EXPORT __attribute__((visibility("default")))

static pthread_mutex_t g_mutex = PTHREAD_MUTEX_INITIALIZER;
static char g_journal[16384];
static size_t g_length;

static OrlMgmtSpiInterfacePortal_1* g_portal;
static OrlOamSpiTransaction_2* g_transactions;
static OrlMgmtSpiSession_1* g_sessions;
static OrlMgmtSpiThreadContext_2* g_context;
static uint64_t g_registration;
static int g_started;

/* Answers chosen by tests, by name. */
enum { kInit, kStart, kJoin, kValidate, kPrepare, kCommit, kAbort, kFinish, kSet, kAnswers };
static const char* const kAnswerNames[kAnswers] = {
    "init", "start", "join", "validate", "prepare", "commit", "abort", "finish", "set"};
static int g_answers[kAnswers];

static void note(const char* format, ...) __attribute__((format(printf, 1, 2)));
static void note(const char* format, ...) {
    char line[512];
    va_list args;
    va_start(args, format);
    vsnprintf(line, sizeof line, format, args);
    va_end(args);
    pthread_mutex_lock(&g_mutex);
    size_t n = strlen(line);
    if (g_length + n + 2 < sizeof g_journal) {
        memcpy(g_journal + g_length, line, n);
        g_length += n;
        g_journal[g_length++] = ';';
        g_journal[g_length] = '\0';
    }
    pthread_mutex_unlock(&g_mutex);
}

PROBE_EXPORT const char* probe_journal(void) {
    return g_journal;
}

PROBE_EXPORT void probe_clear(void) {
    pthread_mutex_lock(&g_mutex);
    g_length = 0;
    g_journal[0] = '\0';
    pthread_mutex_unlock(&g_mutex);
}

/* Makes the operation `name` answer `value` from now on. */
PROBE_EXPORT void probe_set(const char* name, int value) {
    for (int i = 0; i < kAnswers; ++i) {
        if (strcmp(kAnswerNames[i], name) == 0) {
            g_answers[i] = value;
        }
    }
}

/* ---- the object implementer component ---- */

static OrlReturnT oi_join(OrlTxHandleT tx) {
    note("oi.join %lu", tx);
    return OrlOk;
}
static OrlReturnT oi_commit(OrlTxHandleT tx) {
    note("oi.commit %lu", tx);
    return OrlOk;
}
static OrlReturnT oi_abort(OrlTxHandleT tx) {
    note("oi.abort %lu", tx);
    return OrlOk;
}
static OrlReturnT oi_set(OrlTxHandleT tx, const char* dn, const char* name,
                         const OrlMoAttributeValueContainer_3* value) {
    (void)value;
    note("oi.set %lu %s %s", tx, dn, name);
    return OrlOk;
}
static OrlReturnT oi_start(OrlStateChangeReason reason) {
    note("oi.start %d", reason);
    return OrlOk;
}
static OrlReturnT oi_stop(OrlStateChangeReason reason) {
    note("oi.stop %d", reason);
    return OrlOk;
}

/* Prepare, finish and validate stay null: the host must not call them. */
static OrlOamSpiTransactionalResource_2 g_oiTx = {
    {"PROBEOIcomponent", "OrlOamSpiTransactionalResource", "2"},
    oi_join,
    NULL,
    oi_commit,
    oi_abort,
    NULL,
    NULL};
static OrlOamSpiManagedObject_3 g_oiMo = {
    .header = {"PROBEOIcomponent", "OrlOamSpiManagedObject", "3"}, .setMoAttribute = oi_set};
static OrlMgmtSpiInterface_1* g_oiProvided[] = {&g_oiMo.header, &g_oiTx.header, NULL};
static OrlMgmtSpiInterface_1* g_oiNone[] = {NULL};
static OrlMgmtSpiComponent g_oiComponent = {"PROBEOIcomponent",
                                            "OrlMgmtSpiComponent",
                                            "1",
                                            g_oiProvided,
                                            g_oiNone,
                                            oi_start,
                                            oi_stop,
                                            g_oiNone};

/* ---- the main component's transactional resource ---- */

static OrlOamSpiTransactionalResource_2 g_tx;

static OrlReturnT tx_join(OrlTxHandleT tx) {
    note("join %lu", tx);
    if (g_transactions == NULL) {
        return OrlFailure;
    }
    OrlReturnT rc = g_transactions->registerParticipant(tx, &g_tx);
    if (rc == OrlOk) {
        rc = g_transactions->registerParticipant(tx, &g_oiTx);
    }
    return rc != OrlOk ? rc : g_answers[kJoin];
}
#define PROBE_PHASE(fn, label, answer)      \
    static OrlReturnT fn(OrlTxHandleT tx) { \
        note(label " %lu", tx);             \
        return g_answers[answer];           \
    }
PROBE_PHASE(tx_validate, "validate", kValidate)
PROBE_PHASE(tx_prepare, "prepare", kPrepare)
PROBE_PHASE(tx_commit, "commit", kCommit)
PROBE_PHASE(tx_abort, "abort", kAbort)
PROBE_PHASE(tx_finish, "finish", kFinish)

static OrlOamSpiTransactionalResource_2 g_tx = {
    {"PROBEcomponent", "OrlOamSpiTransactionalResource", "2"},
    tx_join,
    tx_prepare,
    tx_commit,
    tx_abort,
    tx_finish,
    tx_validate};

/* ---- the main component's managed object record ---- */

/* Notes who is asking (the session bound to the calling thread) and leaves an operator
 * message. */
static OrlReturnT mo_set(OrlTxHandleT tx, const char* dn, const char* name,
                         const OrlMoAttributeValueContainer_3* value) {
    uint64_t session = 0;
    int32_t protocol = -1;
    const char* user = "-";
    (void)value;
    if (g_sessions != NULL && g_sessions->getBoundSession(&session) == OrlOk) {
        g_sessions->getVariable(session, "TibSessionVariableProtocol_1", &protocol);
        g_sessions->getVariable(session, "TibSessionVariableUsername_1", &user);
    }
    note("set %lu %s %s by %s/%d", tx, dn, name, user, protocol);
    if (g_context != NULL) {
        char text[160];
        snprintf(text, sizeof text, "probe saw %s", name);
        g_context->addMessage(1, text);
    }
    return g_answers[kSet];
}

static OrlReturnT mo_exists(OrlTxHandleT tx, const char* dn, bool* result) {
    note("exists %lu %s", tx, dn);
    *result = strcmp(dn, "Probe=1") == 0;
    return OrlOk;
}

static OrlOamSpiManagedObject_3 g_mo = {.header = {"PROBEcomponent", "OrlOamSpiManagedObject", "3"},
                                        .setMoAttribute = mo_set,
                                        .existsMo = mo_exists};

/* ---- the main component's register object implementer record ---- */

static OrlReturnT fetchBack(OrlMgmtSpiInterface_1 triple) {
    void* record = NULL;
    return g_portal->getInterface(triple.componentName, triple.interfaceName,
                                  triple.interfaceVersion, &record);
}

static OrlReturnT reg_class(OrlMgmtSpiInterface_1 moIf, OrlMgmtSpiInterface_1 txIf,
                            const char* path) {
    OrlReturnT rc = fetchBack(txIf);
    if (rc == OrlOk) {
        rc = fetchBack(moIf);
    }
    note("register-class %s %d", path, rc);
    return rc;
}

static OrlOamSpiRegisterObjectImplementer_2 g_register = {
    .header = {"PROBEcomponent", "OrlOamSpiRegisterObjectImplementer", "2"},
    .registerClass = reg_class};

/* ---- the main component ---- */

static void session_created(uint64_t session) {
    int32_t protocol = -1;
    const char* user = "-";
    g_sessions->getVariable(session, "TibSessionVariableProtocol_1", &protocol);
    g_sessions->getVariable(session, "TibSessionVariableUsername_1", &user);
    note("created %llu %d %s", (unsigned long long)session, protocol, user);
}

static void session_destroyed(uint64_t session) {
    note("destroyed %llu", (unsigned long long)session);
}

struct Required {
    const char* service;
    const char* name;
    const char* version;
};
static const struct Required kRequired[] = {
    {"OrlOamSpiTransactionService", "OrlOamSpiTransaction", "1"},
    {"OrlOamSpiTransactionService", "OrlOamSpiTransaction", "2"},
    {"OrlOamSpiModelRepositoryService", "OrlOamSpiModelRepository", "1"},
    {"OrlOamSpiModelRepositoryService", "OrlOamSpiModelRepository", "2"},
    {"OrlOamSpiModelRepositoryService", "OrlOamSpiModelRepository", "3"},
    {"OrlMgmtSpiThreadContextService", "OrlMgmtSpiThreadContext", "2"},
    {"OrlMgmtSpiSessionManagementService", "OrlMgmtSpiSession", "1"}};

/* Fetches the seven host interfaces in order; the failing step (1-based) into *step. */
static OrlReturnT fetchRequired(void** records, int* step) {
    for (int i = 0; i < 7; ++i) {
        OrlReturnT rc = g_portal->getInterface(kRequired[i].service, kRequired[i].name,
                                               kRequired[i].version, &records[i]);
        if (rc != OrlOk) {
            *step = i + 1;
            return rc;
        }
    }
    return OrlOk;
}

/* Brings up the object implementer component from inside this start. */
static void startImplementer(void) {
    note("oi-registered %d", g_portal->registerComponent(&g_oiComponent));
    void** array = NULL;
    OrlReturnT rc = g_portal->getInterfaceArray("OrlOamSpiRegisterObjectImplementer", "2", &array);
    if (rc != OrlOk || array == NULL || array[0] == NULL) {
        note("no-register-interface %d", rc);
        return;
    }
    OrlOamSpiRegisterObjectImplementer_2* reg = array[0];
    reg->registerClass(g_oiMo.header, g_oiTx.header, "/Probe/Thing");
}

static OrlReturnT probe_start(OrlStateChangeReason reason) {
    note("start %d", reason);
    if (g_started) {
        note("already-started");
        return OrlOk;
    }
    void* records[7];
    int step = 0;
    OrlReturnT rc = fetchRequired(records, &step);
    if (rc != OrlOk) {
        note("start-failed %d %d", step, rc);
        return rc;
    }
    g_transactions = records[1];
    g_context = records[5];
    g_sessions = records[6];
    note("callbacks %d",
         g_sessions->registerSessionCallbacks(session_created, session_destroyed, &g_registration));
    OrlOamSpiEventRouter_1* router = NULL;
    rc = g_portal->getInterface("OrlOamSpiEventService", "OrlOamSpiEventRouter", "1",
                                (void**)&router);
    note("router %d", rc);
    startImplementer();
    g_started = 1;
    return g_answers[kStart];
}

static OrlReturnT probe_stop(OrlStateChangeReason reason) {
    note("stop %d", reason);
    if (g_sessions != NULL) {
        note("uncallbacks %d", g_sessions->unregisterSessionCallbacks(g_registration));
    }
    return OrlOk;
}

static OrlMgmtSpiInterface_1* g_provided[] = {&g_mo.header, &g_register.header, &g_tx.header, NULL};
static OrlMgmtSpiInterface_1 g_needs[] = {
    {"OrlOamSpiModelRepositoryService", "OrlOamSpiModelRepository", "1"},
    {"OrlOamSpiTransactionService", "OrlOamSpiTransaction", "2"},
    {"OrlMgmtSpiSessionManagementService", "OrlMgmtSpiSession", "1"}};
static OrlMgmtSpiInterface_1* g_dependencies[] = {&g_needs[0], &g_needs[1], &g_needs[2], NULL};
static OrlMgmtSpiComponent g_component = {
    "PROBEcomponent", "OrlMgmtSpiComponent", "1",        g_provided,
    g_dependencies,   probe_start,           probe_stop, NULL};

/* Answers may also be chosen before loading: VESK_PROBE_INIT, VESK_PROBE_START, ... */
static void presetAnswers(void) {
    for (int i = 0; i < kAnswers; ++i) {
        char name[64] = "VESK_PROBE_";
        size_t at = strlen(name);
        for (const char* c = kAnswerNames[i]; *c != '\0' && at + 1 < sizeof name; ++c) {
            name[at++] = (char)toupper((unsigned char)*c);
        }
        name[at] = '\0';
        const char* value = getenv(name);
        if (value != NULL) {
            g_answers[i] = atoi(value);
        }
    }
}

PROBE_EXPORT OrlReturnT orlLCMinit(OrlMgmtSpiInterfacePortalAccessor* accessor,
                                   const char* unused) {
    (void)unused;
    note("init");
    presetAnswers();
    g_portal = accessor->getPortal("1");
    if (g_portal == NULL) {
        note("no-portal");
        return OrlFailure;
    }
    if (g_answers[kInit] != OrlOk) {
        return g_answers[kInit];
    }
    return g_portal->registerComponent(&g_component);
}

PROBE_EXPORT void orlLCMterminate(void) {
    note("terminate");
    if (g_portal != NULL) {
        note("unregistered %d", g_portal->unregisterComponent(&g_component));
    }
}
