// Readers and cards as they come and go, until Enter (or the end of the input): the PC/SC
// service watched in one thread, the watch stopped from another.
//   card_monitor
#include <ovo/io/card_monitor.h>

#include <cstdio>
#include <exception>
#include <thread>

namespace {

void show(const ovo::io::CardEvent& event)
{
    static const char* const kinds[] = {"reader added", "reader removed", "card inserted", "card removed"};
    std::printf("%s: %s", kinds[event.kind], event.reader.c_str());
    for (const unsigned char byte : event.atr)
        std::printf(" %02X", byte);
    std::printf("\n");
    std::fflush(stdout);
}

} // namespace

int main(int argc, char*[])
{
    if (argc != 1) {
        std::fprintf(stderr, "usage: card_monitor   (Enter ends it)\n");
        return 2;
    }
    try {
        //! [watch]
        ovo::io::CardMonitor monitor;
        int status = 0;
        std::thread watcher([&] {
            try {
                ovo::io::CardEvent event;
                while (!monitor.stopped())         // next() gives false after a quiet second too
                    if (monitor.next(event, 1000)) // what is there first, then each change
                        show(event);
            } catch (const std::exception& e) { // the service failed the wait
                std::fprintf(stderr, "failed: %s\n", e.what());
                status = 1;
            }
        });
        for (int c = 0; c != '\n' && c != EOF;)
            c = std::getchar();
        monitor.stop(); // from any thread: ends the wait of next() at once
        watcher.join();
        //! [watch]
        return status;
    } catch (const std::exception& e) { // no service to ask
        std::fprintf(stderr, "failed: %s\n", e.what());
        return 1;
    }
}
