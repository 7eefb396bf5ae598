#include "system_words.h"

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

std::string systemWords(unsigned long code)
{
    // The codes the library's platform layer gives on Linux, and their Windows texts.
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

} // namespace ovo_tool
