// Properties: fromString of any text fails only with the number parser's exceptions; and
// any configuration that the text form can carry survives toString and fromString.
#include <ovo/io/serial_config.h>

#include "fuzz_check.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

using namespace ovo::io;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const SerialConfig parsed = SerialConfig::fromString(text);
        if (parsed.baudRate() <= INT32_MAX && parsed.deviceName().find('\0') == std::string::npos)
            FUZZ_CHECK(SerialConfig::fromString(parsed.toString()).toString() == parsed.toString());
    } catch (const std::logic_error&) {
    } catch (const std::range_error&) {
    }

    if (size < 8)
        return 0;
    std::uint32_t baud;
    std::memcpy(&baud, data, sizeof baud);
    SerialConfig config;
    config.setBaudRate(baud & 0x7FFFFFFFu);
    config.setDataSize(static_cast<DataSize>(data[4] % 7));
    config.setParity(static_cast<Parity>(data[5] % 5));
    config.setStopBits(static_cast<StopBits>(data[6] % 5));
    config.setFlowControl(static_cast<FlowControl>(data[7] % 5));
    std::string device(reinterpret_cast<const char*>(data + 8), size - 8);
    for (char& c : device)
        if (c == ';' || c == '\0')
            c = '_'; // the text form cannot hold a name with the pair separator or a zero byte
    config.setDeviceName(device);
    const std::string once = config.toString();
    FUZZ_CHECK(SerialConfig::fromString(once).toString() == once);
    return 0;
}
