// Local time and its zone, and the name of today's log file as the file channel works it out.
#ifndef OVO_TESTS_SUPPORT_LOG_FILE_NAME_H
#define OVO_TESTS_SUPPORT_LOG_FILE_NAME_H

#include <cstdlib>
#include <ctime>
#include <string>

namespace ovo_test {

// The local time of an instant, as the library's stamps and file names read it.
inline std::tm localTime(std::time_t instant)
{
    std::tm local{};
#if defined(_WIN32)
    localtime_s(&local, &instant);
#else
    localtime_r(&instant, &local);
#endif
    return local;
}

// Sets TZ, or removes it for a null zone, and tells the C library.
inline void setTimeZone(const char* zone)
{
#if defined(_WIN32)
    _putenv_s("TZ", zone ? zone : "");
    _tzset();
#else
    zone ? setenv("TZ", zone, 1) : unsetenv("TZ");
    tzset();
#endif
}

inline std::string todaysLogFile(const std::string& suffix)
{
    const std::tm local = localTime(std::time(nullptr));
    char date[16];
    std::strftime(date, sizeof date, "%Y-%m-%d", &local);
    return std::string(date) + (suffix.empty() ? "" : "-" + suffix) + ".log";
}

} // namespace ovo_test

#endif
