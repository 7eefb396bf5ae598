// Logging to the console and to one file a day through one split channel; a logger for
// each part of the program, the traffic traced at level 1.
//   logging [DIRECTORY]     (the daily file goes to DIRECTORY, by default the current one)
//! [task]
#include <ovo/logger/channels.h>
#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatters.h>
#include <ovo/logger/logger.h>

#include <cstdio>
#include <memory>
#include <string>

int main(int argc, char* argv[])
{
    if (argc > 2) {
        std::fprintf(stderr, "usage: logging [DIRECTORY]\n");
        return 2;
    }
    const std::string directory = argc > 1 ? argv[1] : ".";

    //! [channels]
    // The console gets the bare messages; the file gets them stamped with the time and
    // the logger's name, below a header that starts every new file.
    auto console = std::make_shared<ovo::logger::ConsoleLogChannel>();
    console->setFormatter(std::make_shared<ovo::logger::ConsoleFormatter>());
    auto daily = std::make_shared<ovo::logger::FileLogChannel>(directory, "example"); // YYYY-MM-DD-example.log
    daily->setFormatter(std::make_shared<ovo::logger::SimpleFormatter>());
    daily->setProperty(ovo::logger::FileLogChannel::PropertyRollingHeader, "the logging example's log\n");
    auto both = std::make_shared<ovo::logger::SplitLogChannel>();
    both->add(console);
    both->add(daily);
    //! [channels]

    //! [loggers]
    // Loggers are set up once, before any thread uses them; "app.card" takes the channel
    // and the level of its ancestor "app".
    ovo::logger::ILogger& app = ovo::logger::add("app", both);
    app.setLevel(1); // 0: information only; 1: the traffic too
    ovo::logger::ILogger& card = ovo::logger::get("app.card");

    app.info("started");
    const unsigned char answerToReset[] = {0x3B, 0x8A, 0x80, 0x01, 0x80, 0x31};
    card.traceHex("ATR", answerToReset, sizeof answerToReset); // "ATR 3B 8A 80 01 80 31 "
    card.traceDump("ATR as a dump", answerToReset, sizeof answerToReset);
    app.info("done");
    //! [loggers]
    ovo::logger::shutdown();
    return 0;
}
//! [task]
