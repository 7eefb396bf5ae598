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

BOOL called(const std::string& call, DWORD error = 0)
{
    script.calls.push_back(call);
    lastError = error;
    return error == 0 ? TRUE : FALSE;
}

std::string numbers(std::initializer_list<unsigned long> values)
{
    std::string text;
    for (unsigned long value : values)
        text += (text.empty() ? "(" : ", ") + std::to_string(value);
    return text + ")";
}

BOOL transfer(const char* call, std::deque<Transfer>& transfers, void* buffer, DWORD size, LPDWORD done)
{
    if (transfers.empty())
        return called(call + numbers({size}), ERROR_GEN_FAILURE);
    const Transfer next = transfers.front();
    transfers.pop_front();
    if (buffer != nullptr) // no more is copied than both the buffer and the count allow
        std::memcpy(buffer, next.bytes.data(), std::min<std::size_t>({next.bytes.size(), size, next.count}));
    *done = next.count;
    return called(call + numbers({size}), next.ok ? 0 : ERROR_GEN_FAILURE);
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

namespace ovo {
namespace platform {
namespace serial {

using namespace ovo_fake;

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD disposition, DWORD attributes,
                   HANDLE)
{
    const std::string call =
        "CreateFileA(" + std::string(name) + ", " + numbers({access, share, disposition, attributes}).substr(1);
    return called(call, script.openError) ? fakeHandle : INVALID_HANDLE_VALUE;
}

BOOL CloseHandle(HANDLE file) { return called(file == fakeHandle ? "CloseHandle" : "CloseHandle(foreign)"); }

BOOL GetCommState(HANDLE, LPDCB dcb)
{
    if (script.getStateError == 0)
        std::memcpy(dcb, script.deviceDcb.data(), sizeof(DCB));
    return called("GetCommState", script.getStateError);
}

BOOL SetCommState(HANDLE, LPDCB dcb)
{
    script.dcbsSet.push_back(bytesOf(*dcb));
    return called("SetCommState");
}

BOOL SetCommTimeouts(HANDLE, LPCOMMTIMEOUTS t)
{
    return called("SetCommTimeouts" +
                  numbers({t->ReadIntervalTimeout, t->ReadTotalTimeoutMultiplier, t->ReadTotalTimeoutConstant,
                           t->WriteTotalTimeoutMultiplier, t->WriteTotalTimeoutConstant}));
}

BOOL SetupComm(HANDLE, DWORD in, DWORD out) { return called("SetupComm" + numbers({in, out})); }

BOOL ReadFile(HANDLE, LPVOID buffer, DWORD size, LPDWORD done, LPOVERLAPPED)
{
    return transfer("ReadFile", script.reads, buffer, size, done);
}

BOOL WriteFile(HANDLE, LPCVOID, DWORD size, LPDWORD done, LPOVERLAPPED)
{
    return transfer("WriteFile", script.writes, nullptr, size, done);
}

BOOL ClearCommError(HANDLE, LPDWORD, LPCOMSTAT status)
{
    if (!script.statusFails)
        status->cbInQue = script.inQueue;
    return called("ClearCommError", script.statusFails ? ERROR_INVALID_HANDLE : 0);
}

BOOL PurgeComm(HANDLE, DWORD flags) { return called("PurgeComm" + numbers({flags})); }

DWORD GetLastError() { return lastError; }

} // namespace serial
} // namespace platform
} // namespace ovo
