#include "serial_peer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

SerialPeer::SerialPeer()
{
    char name[256] = {};
    EXPECT_EQ(::openpty(&device_, &terminal_, name, nullptr, nullptr), 0);
    portName_ = name;
}

SerialPeer::~SerialPeer()
{
    goAway();
    ::close(terminal_);
}

void SerialPeer::send(const std::string& bytes)
{
    ASSERT_EQ(::write(device_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

std::string SerialPeer::receive(std::size_t size)
{
    std::string bytes(size, '\0');
    pollfd peer{device_, POLLIN, 0};
    const ssize_t count = ::poll(&peer, 1, 1000) == 1 ? ::read(peer.fd, &bytes[0], size) : 0;
    return bytes.substr(0, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
}

void SerialPeer::goAway()
{
    if (device_ >= 0)
        ::close(device_);
    device_ = -1;
}

bool SerialPeer::underWine() { return false; }
