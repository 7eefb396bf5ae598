/* A client of the MSVC ABI (built by clang for x86_64-pc-windows-msvc, linked by lld-link with
 * the package's ovosystem.lib): no C run-time at all, so it calls only the C interface and
 * three kernel32 functions. It sends a message through a channel and takes it back, logs
 * to a daily file in the current directory, and shows a failure's text. */
#include <ovo/c/ovosystem.h>

__declspec(dllimport) void* __stdcall GetStdHandle(unsigned long which);
__declspec(dllimport) int __stdcall WriteFile(void* file, const void* data, unsigned long size, unsigned long* written,
                                              void* overlapped);
__declspec(dllimport) void __stdcall ExitProcess(unsigned int status);

static void say(const char* text)
{
    unsigned long size = 0, written;
    while (text[size] != '\0')
        ++size;
    WriteFile(GetStdHandle((unsigned long)-11), text, size, &written, 0);
}

void start(void)
{
    ovo_channel* channel;
    ovo_logger* logger;
    ovo_serial* port;
    const void* message;
    unsigned int size, count = 1;
    int status = 1;

    say("library ");
    say(ovo_version());
    if (ovo_channel_open("msvc-client", 8192, &channel) == OVO_OK) {
        if (ovo_channel_send(channel, 5, "5", 1) == OVO_OK &&
            ovo_channel_receive(channel, 5, &message, &size) == OVO_OK && size == 1 && *(const char*)message == '5' &&
            ovo_channel_count(channel, &count) == OVO_OK && count == 0) {
            say(", channel: ok");
            status = 0;
        }
        ovo_channel_close(channel);
    }
    if (ovo_log_setup(0, ".", "msvc-client", OVO_LOG_INFO) == OVO_OK && ovo_logger_get("msvc", &logger) == OVO_OK &&
        ovo_log_message(logger, OVO_LOG_INFO, "from the MSVC client") == OVO_OK)
        say(", log: ok");
    else
        status = 1;
    if (ovo_serial_open("device=COM99", 0, 0, &port) == OVO_ERROR_SYSTEM) {
        say(", failure: ");
        say(ovo_last_error());
    }
    say("\r\n");
    ExitProcess(status);
}
