// The system's message for a failed load on Windows.
#include "platform/load_failure.h"

namespace ovo {
namespace platform {

std::string loadFailureText(DWORD code)
{
    char* text = nullptr;
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                            FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr, code, 0, reinterpret_cast<LPSTR>(&text), 0, nullptr);
    std::string message(text != nullptr ? text : "", length);
    LocalFree(text);
    while (!message.empty() && (message.back() == '\n' || message.back() == '\r'))
        message.pop_back();
    return message;
}

} // namespace platform
} // namespace ovo
