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

BOOL called(const std::string& call, std::initializer_list<unsigned long> arguments = {}, DWORD error = 0)
{
    std::string text = call;
    for (unsigned long argument : arguments)
        text += (text == call ? "(" : ", ") + std::to_string(argument);
    script.calls.push_back(arguments.size() == 0 ? text : text + ")");
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

namespace ovo {
namespace platform {
namespace serial {

using namespace ovo_fake;

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD disposition, DWORD attributes,
                   HANDLE)
{
    called(std::string("CreateFileA ") + name, {access, share, disposition, attributes});
    return fakeHandle;
}

BOOL CloseHandle(HANDLE file) { return called(file == fakeHandle ? "CloseHandle" : "CloseHandle(foreign)"); }

BOOL GetCommState(HANDLE, LPDCB dcb)
{
    std::memcpy(dcb, script.deviceDcb.data(), sizeof(DCB));
    return called("GetCommState", {}, script.getStateError);
}

BOOL SetCommState(HANDLE, LPDCB dcb)
{
    script.dcbsSet.push_back(bytesOf(*dcb));
    return called("SetCommState");
}

BOOL SetCommTimeouts(HANDLE, LPCOMMTIMEOUTS t)
{
    return called("SetCommTimeouts",
                  {t->ReadIntervalTimeout, t->ReadTotalTimeoutMultiplier, t->ReadTotalTimeoutConstant,
                   t->WriteTotalTimeoutMultiplier, t->WriteTotalTimeoutConstant});
}

BOOL SetupComm(HANDLE, DWORD in, DWORD out) { return called("SetupComm", {in, out}); }

BOOL ReadFile(HANDLE, LPVOID, DWORD size, LPDWORD done, LPOVERLAPPED)
{
    *done = 0;
    return called("ReadFile", {size});
}

BOOL WriteFile(HANDLE, LPCVOID, DWORD size, LPDWORD done, LPOVERLAPPED)
{
    *done = std::min(size, script.sendsAtOnce);
    return called("WriteFile", {size}, *done == 0 ? ERROR_GEN_FAILURE : 0);
}

BOOL ClearCommError(HANDLE, LPDWORD, LPCOMSTAT) { return called("ClearCommError", {}, ERROR_INVALID_HANDLE); }

BOOL PurgeComm(HANDLE, DWORD flags) { return called("PurgeComm", {flags}); }

DWORD GetLastError() { return lastError; }

} // namespace serial
} // namespace platform
} // namespace ovo
