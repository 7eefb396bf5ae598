#include "fakes/scripted_serial.h"

#include "platform/serial_calls.h"

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

BOOL called(const std::string& call, DWORD error = 0)
{
    script.calls.push_back(call);
    lastError = error;
    return error == 0 ? TRUE : FALSE;
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
}

} // namespace ovo_fake

namespace ovo::platform::serial {

using namespace ovo_fake;

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD disposition, DWORD attributes,
                   HANDLE)
{
    called(std::string("CreateFileA ") + name + " " + std::to_string(access) + " " + std::to_string(share) + " " +
           std::to_string(disposition) + " " + std::to_string(attributes));
    return fakeHandle;
}

BOOL CloseHandle(HANDLE file) { return called(file == fakeHandle ? "CloseHandle" : "CloseHandle(foreign)"); }

BOOL GetCommState(HANDLE, LPDCB dcb)
{
    std::memcpy(dcb, script.deviceDcb.data(), sizeof(DCB));
    return called("GetCommState", script.getStateError);
}

BOOL SetCommState(HANDLE, LPDCB dcb)
{
    script.dcbsSet.push_back(bytesOf(*dcb));
    return called("SetCommState");
}

// Transfers and the queues have real ports to show them.
BOOL SetCommTimeouts(HANDLE, LPCOMMTIMEOUTS) { return called("SetCommTimeouts"); }
BOOL SetupComm(HANDLE, DWORD, DWORD) { return called("SetupComm"); }
BOOL ReadFile(HANDLE, LPVOID, DWORD, LPDWORD, LPOVERLAPPED) { return called("ReadFile", ERROR_GEN_FAILURE); }
BOOL WriteFile(HANDLE, LPCVOID, DWORD, LPDWORD, LPOVERLAPPED) { return called("WriteFile", ERROR_GEN_FAILURE); }
BOOL ClearCommError(HANDLE, LPDWORD, LPCOMSTAT) { return called("ClearCommError", ERROR_GEN_FAILURE); }
BOOL PurgeComm(HANDLE, DWORD) { return called("PurgeComm"); }

DWORD GetLastError() { return lastError; }

} // namespace ovo::platform::serial
