#include <ovo/io/enumeration.h>

#include "platform/pcsc_calls.h"

namespace scard = ovo::platform::scard;

namespace ovo {
namespace io {

std::vector<std::string> enumeratePCSCDevices()
{
    std::vector<std::string> readers;
    scard::Context context = 0;
    if (scard::SCardEstablishContext(scard::scopeUser, context) != 0)
        return readers;
    char* list = nullptr;
    std::uint32_t length = scard::autoAllocate;
    if (scard::SCardListReadersA(context, list, length) == 0) {
        // A multi-string: names ended by NUL, the list by an empty name. The length that
        // came back is not needed.
        for (const char* name = list; name != nullptr && *name != '\0';) {
            readers.emplace_back(name);
            name += readers.back().size() + 1;
        }
        scard::SCardFreeMemory(context, list);
    }
    scard::SCardReleaseContext(context);
    return readers;
}

std::vector<SerialDeviceData> enumerateSerialDevices() { return {}; }

} // namespace io
} // namespace ovo
