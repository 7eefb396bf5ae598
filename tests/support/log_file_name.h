// The name of today's log file, as the file channel works it out.
#ifndef OVO_TESTS_SUPPORT_LOG_FILE_NAME_H
#define OVO_TESTS_SUPPORT_LOG_FILE_NAME_H

#include <cstdio>
#include <ctime>
#include <string>

namespace ovo_test {

inline std::string todaysLogFile(const std::string& suffix)
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
#if defined(_WIN32)
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    char date[48];
    std::snprintf(date, sizeof date, "%04d-%02d-%02d", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
    return std::string(date) + (suffix.empty() ? "" : "-" + suffix) + ".log";
}

} // namespace ovo_test

#endif
