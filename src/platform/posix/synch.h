// Named mutexes and events of the POSIX layer.
//
// Mutex: a robust, recursive, process-shared pthread mutex in the object's file. It is
// owned by a thread; a holder that dies leaves it abandoned and the next waiter gets it
// with WAIT_ABANDONED. Event: one 32-bit word and a futex, auto-reset: SetEvent lets one
// waiter through, or stays set for the next wait.
#ifndef OVO_SRC_PLATFORM_POSIX_SYNCH_H
#define OVO_SRC_PLATFORM_POSIX_SYNCH_H

#include "platform/posix/security.h"

const DWORD MUTEX_MODIFY_STATE = 0x0001u;
const DWORD MUTEX_ALL_ACCESS = STANDARD_RIGHTS_REQUIRED | SYNCHRONIZE | MUTEX_MODIFY_STATE;
const DWORD EVENT_MODIFY_STATE = 0x0002u;
const DWORD EVENT_ALL_ACCESS = STANDARD_RIGHTS_REQUIRED | SYNCHRONIZE | 0x0003u;

const DWORD INFINITE = 0xFFFFFFFFu;
const DWORD WAIT_OBJECT_0 = 0x00000000u;
const DWORD WAIT_ABANDONED = 0x00000080u;
const DWORD WAIT_TIMEOUT = 0x00000102u;
const DWORD WAIT_FAILED = 0xFFFFFFFFu;

// Creating a name that exists asks for all rights on it: granted, the call joins the
// object (ERROR_ALREADY_EXISTS); otherwise it fails with ERROR_ACCESS_DENIED.
HANDLE CreateMutexA(LPSECURITY_ATTRIBUTES security, BOOL initialOwner, LPCSTR name);
HANDLE OpenMutexA(DWORD desiredAccess, BOOL inheritHandle, LPCSTR name);
BOOL ReleaseMutex(HANDLE mutex);
// Manual-reset events are not needed by the library: ERROR_INVALID_PARAMETER.
HANDLE CreateEventA(LPSECURITY_ATTRIBUTES security, BOOL manualReset, BOOL initialState, LPCSTR name);
BOOL SetEvent(HANDLE event);
DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);

#endif
