#include "serial_peer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <winsock2.h>
#include <windows.h>

namespace {

SOCKET connectToRelay()
{
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    const SOCKET relay = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const char* port = std::getenv("OVO_SERIAL_RELAY_PORT");
    address.sin_port = htons(static_cast<u_short>(port != nullptr ? std::atoi(port) : 0));
    EXPECT_EQ(connect(relay, reinterpret_cast<sockaddr*>(&address), sizeof address), 0)
        << "no relay on OVO_SERIAL_RELAY_PORT";
    return relay;
}

} // namespace

// The relay links its fresh terminal after the connection, and an older link may still
// stand: the port is ours once a byte written to it arrives here.
SerialPeer::SerialPeer() : portName_(std::getenv("OVO_SERIAL_PORT") ? std::getenv("OVO_SERIAL_PORT") : "")
{
    device_ = static_cast<long long>(connectToRelay());
    for (int attempt = 0; attempt < 50; ++attempt) {
        const HANDLE port = CreateFileA(("\\\\.\\" + portName_).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
        DWORD written = 0;
        const bool probed = port != INVALID_HANDLE_VALUE && WriteFile(port, "?", 1, &written, nullptr) && written == 1;
        if (port != INVALID_HANDLE_VALUE)
            CloseHandle(port);
        if (probed && receive(1) == "?")
            return;
        Sleep(20);
    }
    ADD_FAILURE() << "the relay's terminal never reached " << portName_;
}

SerialPeer::~SerialPeer() { goAway(); }

void SerialPeer::send(const std::string& bytes)
{
    ASSERT_EQ(::send(static_cast<SOCKET>(device_), bytes.data(), static_cast<int>(bytes.size()), 0),
              static_cast<int>(bytes.size()));
}

std::string SerialPeer::receive(std::size_t size)
{
    std::string bytes(size, '\0');
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(static_cast<SOCKET>(device_), &readable);
    timeval second = {1, 0};
    const int count = select(0, &readable, nullptr, nullptr, &second) == 1
                          ? recv(static_cast<SOCKET>(device_), &bytes[0], static_cast<int>(size), 0)
                          : 0;
    return bytes.substr(0, count > 0 ? static_cast<std::size_t>(count) : 0);
}

// The relay ends its side, and so the terminal's master, when the connection closes.
void SerialPeer::goAway()
{
    if (device_ != -1)
        closesocket(static_cast<SOCKET>(device_));
    device_ = -1;
}

bool SerialPeer::underWine() { return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr; }
