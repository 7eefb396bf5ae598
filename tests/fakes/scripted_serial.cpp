#include "fakes/scripted_serial.h"

#include "platform/serial_calls.h"

#include <algorithm>
#include <cstring>

namespace ovo_fake {

namespace {

SerialScript script;
DWORD lastError = 0;
HANDLE const fakeHandle = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(0x5E41));

std::vector<unsigned char> bytesOf(const DCB& dcb)
{
    const auto* raw = reinterpret_cast<const unsigned char*>(&dcb);
    return std::vector<unsigned char>(raw, raw + sizeof dcb);
}

BOOL fail(DWORD code)
{
    lastError = code;
    return FALSE;
}

} // namespace

SerialScript& serialScript() { return script; }

void resetSerialScript()
{
    script = SerialScript();
    DCB dcb = {};
    dcb.DCBlength = sizeof dcb;
    dcb.BaudRate = 9600;
    dcb.ByteSize = 8;
    script.deviceDcb = bytesOf(dcb);
    lastError = 0;
}

} // namespace ovo_fake

namespace ovo {
namespace platform {
namespace serial {

using ovo_fake::script;

HANDLE CreateFileA(LPCSTR fileName, DWORD desiredAccess, DWORD shareMode, LPSECURITY_ATTRIBUTES, DWORD disposition,
                   DWORD attributes, HANDLE)
{
    script.calls.push_back("CreateFileA");
    script.openedPath = fileName;
    script.openedAccess = desiredAccess;
    script.openedShare = shareMode;
    script.openedDisposition = disposition;
    script.openedAttributes = attributes;
    if (script.openError != 0) {
        ovo_fake::lastError = script.openError;
        return INVALID_HANDLE_VALUE;
    }
    return ovo_fake::fakeHandle;
}

BOOL CloseHandle(HANDLE file)
{
    script.calls.push_back("CloseHandle");
    script.closes += file == ovo_fake::fakeHandle ? 1 : 0;
    return TRUE;
}

BOOL GetCommState(HANDLE, LPDCB dcb)
{
    script.calls.push_back("GetCommState");
    if (script.getStateError != 0)
        return ovo_fake::fail(script.getStateError);
    std::memcpy(dcb, script.deviceDcb.data(), sizeof(DCB));
    return TRUE;
}

BOOL SetCommState(HANDLE, LPDCB dcb)
{
    script.calls.push_back("SetCommState");
    script.dcbsSet.push_back(ovo_fake::bytesOf(*dcb));
    return TRUE;
}

BOOL SetCommTimeouts(HANDLE, LPCOMMTIMEOUTS t)
{
    script.calls.push_back("SetCommTimeouts");
    script.timeoutsSet.push_back({t->ReadIntervalTimeout, t->ReadTotalTimeoutMultiplier, t->ReadTotalTimeoutConstant,
                                  t->WriteTotalTimeoutMultiplier, t->WriteTotalTimeoutConstant});
    return TRUE;
}

BOOL SetupComm(HANDLE, DWORD inQueue, DWORD outQueue)
{
    script.calls.push_back("SetupComm");
    script.queueSizes.emplace_back(inQueue, outQueue);
    return TRUE;
}

BOOL ReadFile(HANDLE, LPVOID buffer, DWORD bytesToRead, LPDWORD bytesRead, LPOVERLAPPED)
{
    script.readSizes.push_back(bytesToRead);
    if (script.reads.empty())
        return ovo_fake::fail(ERROR_GEN_FAILURE);
    const ovo_fake::Transfer next = script.reads.front();
    script.reads.pop_front();
    // The count is what the device reports, however long the buffer: no more is copied
    // than both allow.
    std::memcpy(buffer, next.bytes.data(), std::min<std::size_t>({next.bytes.size(), bytesToRead, next.count}));
    *bytesRead = next.count;
    return next.ok ? TRUE : ovo_fake::fail(ERROR_GEN_FAILURE);
}

BOOL WriteFile(HANDLE, LPCVOID, DWORD bytesToWrite, LPDWORD bytesWritten, LPOVERLAPPED)
{
    script.writeSizes.push_back(bytesToWrite);
    if (script.writes.empty())
        return ovo_fake::fail(ERROR_GEN_FAILURE);
    const ovo_fake::Transfer next = script.writes.front();
    script.writes.pop_front();
    *bytesWritten = next.count;
    return next.ok ? TRUE : ovo_fake::fail(ERROR_GEN_FAILURE);
}

BOOL ClearCommError(HANDLE, LPDWORD, LPCOMSTAT status)
{
    if (script.statusFails)
        return ovo_fake::fail(ERROR_INVALID_HANDLE);
    status->cbInQue = script.inQueue;
    return TRUE;
}

BOOL PurgeComm(HANDLE, DWORD flags)
{
    script.purges.push_back(flags);
    return TRUE;
}

DWORD GetLastError() { return ovo_fake::lastError; }

} // namespace serial
} // namespace platform
} // namespace ovo
