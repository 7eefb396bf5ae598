#include "bounded_port.h"

#include <algorithm>
#include <vector>

namespace ovo_tool {
namespace {

const unsigned int whatIsThere = 0xFFFFFFFF; // as a read interval, with zero totals
const unsigned int pieceSize = 4096;

} // namespace

BoundedPort::BoundedPort(ovo::io::SerialIO& port, std::chrono::milliseconds budget)
    : port_(port), deadline_(std::chrono::steady_clock::now() + budget)
{
}

unsigned long long BoundedPort::receive(unsigned long long size,
                                        const std::function<void(const unsigned char*, std::size_t)>& take)
{
    std::vector<unsigned char> piece(pieceSize);
    return transfer(size, [&](unsigned long long, unsigned int count) {
        const unsigned int got = port_.recv(piece.data(), count);
        if (got > 0)
            take(piece.data(), got);
        return got;
    });
}

std::size_t BoundedPort::send(const unsigned char* data, std::size_t size)
{
    return static_cast<std::size_t>(transfer(
        size, [&](unsigned long long offset, unsigned int count) { return port_.send(data + offset, count); }));
}

unsigned long long BoundedPort::transfer(unsigned long long size,
                                         const std::function<unsigned int(unsigned long long, unsigned int)>& move)
{
    unsigned long long done = 0;
    while (done < size) {
        waitUpTo(0);
        unsigned int count =
            move(done, static_cast<unsigned int>(std::min<unsigned long long>(size - done, pieceSize)));
        if (count == 0) {
            const unsigned int ms = left();
            if (ms == 0)
                break;
            waitUpTo(ms);
            count = move(done, 1);
            if (count == 0)
                break; // the deadline, or a device that went away
        }
        done += count;
    }
    return done;
}

void BoundedPort::waitUpTo(unsigned int ms)
{
    if (ms == waitMs_)
        return;
    waitMs_ = ms;
    // 0: reading takes what is there, writing what the driver takes within a millisecond
    // (all-zero write time-outs would wait for ever). Otherwise one byte within ms.
    port_.config().setCommTimeouts(ms == 0 ? ovo::io::SerialTimeouts{whatIsThere, 0, 0, 1, 0}
                                           : ovo::io::SerialTimeouts{0, ms, 0, ms, 0});
    port_.configure();
}

unsigned int BoundedPort::left() const
{
    const auto rest = deadline_ - std::chrono::steady_clock::now();
    if (rest <= rest.zero())
        return 0;
    return static_cast<unsigned int>(std::chrono::ceil<std::chrono::milliseconds>(rest).count());
}

} // namespace ovo_tool
