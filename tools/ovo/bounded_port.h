// A serial port whose transfers all end by one deadline, however the bytes trickle.
//
// The port's own transfers retry after a partial one with the whole time-out again, so
// the port is only asked for what moves at once, and, when nothing does, for one byte
// within the time left.
#ifndef OVO_TOOLS_OVO_BOUNDED_PORT_H
#define OVO_TOOLS_OVO_BOUNDED_PORT_H

#include <ovo/io/serial_io.h>

#include <chrono>
#include <cstddef>
#include <functional>

namespace ovo_tool {

class BoundedPort {
public:
    // A budget of 0 moves only what moves at once.
    BoundedPort(ovo::io::SerialIO& port, std::chrono::milliseconds budget);

    // Up to `size` bytes, handed to `take` piece by piece as they come; the count.
    unsigned long long receive(unsigned long long size,
                               const std::function<void(const unsigned char*, std::size_t)>& take);
    // The count of the bytes sent.
    std::size_t send(const unsigned char* data, std::size_t size);

private:
    // Moves `size` bytes through `move(offset, count)`, a piece at a time.
    unsigned long long transfer(unsigned long long size,
                                const std::function<unsigned int(unsigned long long, unsigned int)>& move);
    // Sets the port's time-outs: 0 for what moves at once, else up to ms for one byte.
    void waitUpTo(unsigned int ms);
    // Whole milliseconds to the deadline, rounded up; 0 once it passed.
    unsigned int left() const;

    ovo::io::SerialIO& port_;
    std::chrono::steady_clock::time_point deadline_;
    unsigned int waitMs_ = 0xFFFFFFFF; // none set yet
};

} // namespace ovo_tool

#endif
