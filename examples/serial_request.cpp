// A request to a serial device and its answer, with time-outs: the port's settings in
// their text form, a frame sent, and what comes back within the time-outs.
//   serial_request "device=ttyUSB0;baud=9600;data=8;parity=none;stop=1"
// (device=COM3 on Windows; an absolute path such as /dev/serial/by-id/... works too)
//! [task]
#include <ovo/io/serial_config.h>
#include <ovo/io/serial_io.h>

#include <cstdio>
#include <exception>

int main(int argc, char* argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: serial_request SETTINGS   (e.g. \"device=ttyUSB0;baud=9600;parity=none\")\n");
        return 2;
    }
    try {
        //! [open]
        ovo::io::SerialConfig config = ovo::io::SerialConfig::fromString(argv[1]);
        // A read ends 50 ms after the last byte that came, or 1 s after it began (plus
        // 10 ms a byte asked for), whichever comes first; a write may take 1 s.
        config.setCommTimeouts({50, 1000, 10, 1000, 0});
        config.setBuffersSize({4096, 4096});
        ovo::io::SerialIO port(config); // device=ttyUSB0: /dev/ttyUSB0; device=COM3 on Windows: \\.\COM3
        //! [open]

        //! [ask]
        const unsigned char request[] = {0x02, 'S', 'T', 'A', 'T', 'U', 'S', 0x03};
        if (port.send(request, sizeof request) != sizeof request) {
            std::fprintf(stderr, "the device took only part of the request\n");
            return 1;
        }
        unsigned char answer[64];
        const unsigned int got = port.recv(answer, sizeof answer); // fewer bytes: a time-out
        //! [ask]
        std::printf("answer of %u bytes:", got);
        for (unsigned int i = 0; i < got; ++i)
            std::printf(" %02X", answer[i]);
        std::printf("\n");
        return got > 0 ? 0 : 1;
    } catch (const std::exception& e) { // no such device, settings it refuses
        std::fprintf(stderr, "failed: %s\n", e.what());
        return 1;
    }
}
//! [task]
