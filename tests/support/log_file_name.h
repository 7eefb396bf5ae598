// The name of today's log file, as the file channel works it out.
#ifndef OVO_TESTS_SUPPORT_LOG_FILE_NAME_H
#define OVO_TESTS_SUPPORT_LOG_FILE_NAME_H

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
    char date[16];
    std::strftime(date, sizeof date, "%Y-%m-%d", &local);
    return std::string(date) + (suffix.empty() ? "" : "-" + suffix) + ".log";
}

} // namespace ovo_test

#endif
