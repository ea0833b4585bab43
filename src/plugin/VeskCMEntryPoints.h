// The agent's entry points. The host reaches the vesk_cm_* functions through the records of
// VeskCMComponent and looks up only orlLCMinit and orlLCMterminate by name; all of them are
// exported as C names, so that their names are the library's interface. Each entry point
// traces, forwards to VeskMoImpl::instance() and returns its answer. A null dn or attribute
// name where the operation takes strings throws std::logic_error into the host; nothing is
// caught here.
#pragma once

#include <cstdint>

#include "platform/AgentEntries.h"
#include "platform/orl/OrlMgmtSpi.h"
#include "platform/orl/OrlOamSpi.h"

extern "C" {
// Keeps the portal and registers "VESKCMSAcomponent"; the host's refusal is returned.
VESK_AGENT_EXPORT OrlReturnT orlLCMinit(OrlMgmtSpiInterfacePortalAccessor* accessor,
                                        const char* unused);
// Unregisters the component and gives evQuit to the software and backup machines, if made.
VESK_AGENT_EXPORT void orlLCMterminate();

VESK_AGENT_EXPORT OrlReturnT vesk_cm_componentStart(OrlStateChangeReason reason);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_componentStop(OrlStateChangeReason reason);

// "OrlOamSpiManagedObject" version "3", in slot order.
VESK_AGENT_EXPORT OrlReturnT vesk_cm_SetMoAttribute_3(OrlTxHandleT txHandle, const char* dn,
                                                      const char* attrName,
                                                      const OrlMoAttributeValueContainer_3* value);
VESK_AGENT_EXPORT OrlReturnT vsek_cm_GetMoAttribute_3(OrlTxHandleT txHandle, const char* dn,
                                                      const char* attrName,
                                                      OrlMoAttributeValueResult_3* result);
VESK_AGENT_EXPORT OrlReturnT vsek_cm_GetMoAttributes_3(OrlTxHandleT txHandle, const char* dn,
                                                       const char* const* attrNames,
                                                       OrlMoAttributeValuesResult_3* result);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_NewMoIterator_3(OrlTxHandleT txHandle, const char* dn,
                                                     const char* className, uint64_t* itHandle);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_NextMo_3(uint64_t itHandle, char** result);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_CreateMo_3(OrlTxHandleT txHandle, const char* parentDn,
                                                const char* className, const char* keyAttrName,
                                                const char* keyAttrValue,
                                                OrlMoNamedAttributeValueContainer_3** attributes);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_DeleteMo_3(OrlTxHandleT txHandle, const char* dn);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_Action_3(OrlTxHandleT txHandle, const char* dn,
                                              const char* actionName,
                                              OrlMoNamedAttributeValueContainer_3** parameters,
                                              OrlMoAttributeValueResult_3* result);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_FinalizeIterator_3(uint64_t itHandle);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_existsMo_3(OrlTxHandleT txHandle, const char* dn,
                                                bool* result);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_countMoChildren_3(OrlTxHandleT txHandle, const char* dn,
                                                       const char* className, uint64_t* result);

// "OrlOamSpiTransactionalResource" version "2", in slot order.
VESK_AGENT_EXPORT OrlReturnT vesk_cm_Join_2(OrlTxHandleT txHandle);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_Prepare_2(OrlTxHandleT txHandle);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_Commit_2(OrlTxHandleT txHandle);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_Abort_2(OrlTxHandleT txHandle);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_Finish_2(OrlTxHandleT txHandle);
// Only traces; OrlOk.
VESK_AGENT_EXPORT OrlReturnT vesk_cm_Validate_2(OrlTxHandleT txHandle);

// "OrlOamSpiRegisterObjectImplementer" version "2", in slot order.
VESK_AGENT_EXPORT OrlReturnT vesk_cm_RegisterClass_2(OrlMgmtSpiInterface_1 moIf,
                                                     OrlMgmtSpiInterface_1 txIf, const char* path);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_RegisterDn_2(OrlMgmtSpiInterface_1 moIf,
                                                  OrlMgmtSpiInterface_1 txIf, const char* dn);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_UnRegisterClass_2(OrlMgmtSpiInterface_1 moIf,
                                                       OrlMgmtSpiInterface_1 txIf,
                                                       const char* path);
VESK_AGENT_EXPORT OrlReturnT vesk_cm_UnRegisterDn_2(OrlMgmtSpiInterface_1 moIf,
                                                    OrlMgmtSpiInterface_1 txIf, const char* dn);

// Session callbacks registered at start; on the host's threads.
VESK_AGENT_EXPORT void vesk_cm_sessionCreatedCallback(uint64_t sessionHandle);
VESK_AGENT_EXPORT void vesk_cm_sessionDestroyedCallback(uint64_t sessionHandle);

// Default frequency MOs of a new cell in the database transaction `handle`; see
// VeskDBTransactionHelper::createDefaultFrequencyMOs. Not called by the agent itself.
VESK_AGENT_EXPORT int vesk_cm_createDefaultFrequencyMOs(const char* cellDn, int frequency,
                                                        int handle);
}
