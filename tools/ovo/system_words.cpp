#include "system_words.h"

#include "tool_platform.h"

#include <ovo/strings.h>

#include <cctype>
#include <cstdlib>

namespace ovo_tool {

unsigned long errorCode(const std::string& failure)
{
    std::size_t start = failure.size();
    while (start > 0 && std::isdigit(static_cast<unsigned char>(failure[start - 1])))
        --start;
    return std::strtoul(failure.c_str() + start, nullptr, 10);
}

std::string windowsWords(unsigned long code)
{
    // The codes the library's platform layer gives on Linux, and Windows' texts for them.
    static const struct {
        unsigned long code;
        const char* words;
    } known[] = {
        {1, "Incorrect function"},
        {2, "The system cannot find the file specified"},
        {3, "The system cannot find the path specified"},
        {4, "The system cannot open the file"},
        {5, "Access is denied"},
        {6, "The handle is invalid"},
        {8, "Not enough memory resources are available to process this command"},
        {29, "The system cannot write to the specified device"},
        {31, "A device attached to the system is not functioning"},
        {32, "The process cannot access the file because it is being used by another process"},
        {39, "The disk is full"},
        {80, "The file exists"},
        {87, "The parameter is incorrect"},
        {112, "There is not enough space on the disk"},
        {123, "The filename, directory name, or volume label syntax is incorrect"},
        {161, "The specified path is invalid"},
        {183, "Cannot create a file when that file already exists"},
        {206, "The filename or extension is too long"},
        {288, "Attempt to release mutex not owned by caller"},
        {487, "Attempt to access invalid address"},
        {1132, "The base address or the file offset specified does not have the proper alignment"},
        {1167, "The device is not connected"},
    };
    for (const auto& entry : known)
        if (entry.code == code)
            return entry.words;
    return ovo::format("system error %lu", code);
}

std::string pcscWords(const std::string& failure)
{
    const std::string marker = "SCard error: 0x";
    const std::size_t at = failure.find(marker);
    if (at == std::string::npos)
        return std::string();
    const unsigned long code = std::strtoul(failure.c_str() + at + marker.size(), nullptr, 16);
    // The service's codes (SCARD_E_, _F_ and _W_) that a user of the tool meets.
    static const struct {
        unsigned long code;
        const char* words; // %s: the service
    } known[] = {
        {0x80100001, "%s failed inside; is it running?"},
        {0x80100002, "the wait for %s was cancelled"},
        {0x80100006, "%s ran out of memory"},
        {0x80100008, "the card's answer was longer than the room for it"},
        {0x80100009, "%s knows no such reader; see ovo readers"},
        {0x8010000A, "%s did not answer in time"},
        {0x8010000B, "another program holds the card exclusively; end it or wait for it"},
        {0x8010000C, "no card in the reader"},
        {0x8010000F, "the card speaks neither T=0 nor T=1"},
        {0x80100013, "the connection to %s broke; did it stop?"},
        {0x80100016, "the reader could not pass the command to the card"},
        {0x80100017, "the reader is not available; is it plugged in?"},
        {0x8010001D, "%s is not running; start it"},
        {0x8010001E, "%s stopped; start it again"},
        {0x8010002E, "%s knows no reader; plug one in"},
        {0x80100065, "the reader cannot use this card"},
        {0x80100066, "the card does not answer (mute); take it out and put it in again"},
        {0x80100067, "the card has no power; take it out and put it in again"},
        {0x80100068, "another program reset the card; try again"},
        {0x80100069, "the card was removed"},
    };
    std::string words = "%s failed";
    for (const auto& entry : known)
        if (entry.code == code)
            words = entry.words;
    return ovo::format(words.c_str(), pcscService) + ovo::format(" (SCard error 0x%08lX)", code);
}

} // namespace ovo_tool
