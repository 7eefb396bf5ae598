// Logging to the console and to one file a day through one split channel; a logger for
// each part of the program, the traffic traced at level 1.
//   logging [DIRECTORY]     (the daily file goes to DIRECTORY, by default the current one)
#include <ovo/logger/channels.h>
#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatters.h>
#include <ovo/logger/logger.h>

#include <memory>
#include <string>

int main(int argc, char* argv[])
{
    namespace logger = ovo::logger;
    const std::string directory = argc > 1 ? argv[1] : ".";

    // The console gets the bare messages; the file gets them stamped with the time and
    // the logger's name, below a header that starts every new file.
    auto console = std::make_shared<logger::ConsoleLogChannel>();
    console->setFormatter(std::make_shared<logger::ConsoleFormatter>());
    auto daily = std::make_shared<logger::FileLogChannel>(directory, "example"); // YYYY-MM-DD-example.log
    daily->setFormatter(std::make_shared<logger::SimpleFormatter>());
    daily->setProperty(logger::FileLogChannel::PropertyRollingHeader, "the logging example's log\n");
    auto both = std::make_shared<logger::SplitLogChannel>();
    both->add(console);
    both->add(daily);

    // Loggers are set up once, before any thread uses them; "app.card" takes the channel
    // and the level of its ancestor "app".
    logger::ILogger& app = logger::add("app", both);
    app.setLevel(1); // 0: information only; 1: the traffic too
    logger::ILogger& card = logger::get("app.card");

    app.info("started");
    const unsigned char answerToReset[] = {0x3B, 0x8A, 0x80, 0x01, 0x80, 0x31};
    card.traceHex("ATR", answerToReset, sizeof answerToReset);
    card.traceDump("ATR as a dump", answerToReset, sizeof answerToReset);
    app.info("done");
    logger::shutdown();
    return 0;
}
