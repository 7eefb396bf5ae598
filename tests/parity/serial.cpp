// Serial ports: opening odd names, configuring a device that is no serial port.
#include "observe.h"

#include <ovo/io/serial_io.h>

int main()
{
#ifdef _WIN32
    const char* const nullDevice = "NUL";
#else
    const char* const nullDevice = "null";
#endif
    for (const char* name : {"", ".", "ovo-no-such-port", "a\\b", nullDevice})
        parity::show(std::string("device ") + (name == nullDevice ? "the null device" : parity::quoted(name)), [&] {
            ovo::io::SerialConfig config;
            config.setDeviceName(name);
            config.setBaudRate(9600);
            return ovo::io::SerialIO(config), "opened";
        });
}
