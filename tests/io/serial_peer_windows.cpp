#include "serial_peer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <winsock2.h>
#include <windows.h>

namespace {

// One connection for the whole program: the relay serves one, and its terminal with it.
SOCKET relay()
{
    static const SOCKET connection = [] {
        WSADATA data;
        WSAStartup(MAKEWORD(2, 2), &data);
        const SOCKET s = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<u_short>(std::atoi(std::getenv("OVO_SERIAL_RELAY_PORT"))));
        EXPECT_EQ(connect(s, reinterpret_cast<sockaddr*>(&address), sizeof address), 0) << "no relay";
        return s;
    }();
    return connection;
}

} // namespace

SerialPeer::SerialPeer() : portName_(std::getenv("OVO_SERIAL_PORT")) { relay(); }

SerialPeer::~SerialPeer() {}

void SerialPeer::send(const std::string& bytes)
{
    ASSERT_EQ(::send(relay(), bytes.data(), static_cast<int>(bytes.size()), 0), static_cast<int>(bytes.size()));
}

std::string SerialPeer::receive(std::size_t size)
{
    std::string bytes(size, '\0');
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(relay(), &readable);
    timeval second = {1, 0};
    const int count =
        select(0, &readable, nullptr, nullptr, &second) == 1 ? recv(relay(), &bytes[0], static_cast<int>(size), 0) : 0;
    return bytes.substr(0, count > 0 ? static_cast<std::size_t>(count) : 0);
}

// The relay ends, and with it the terminal's master, when the connection closes.
void SerialPeer::goAway() { closesocket(relay()); }

bool SerialPeer::underWine() { return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr; }
