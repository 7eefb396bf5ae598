// What the C interface promises every caller, careless or hostile: a null handle or buffer
// is refused with the function's name, each thread keeps its own failure text, and the card
// monitor tells a stop from a time-out, also under the sanitizers, which the Python
// package's tests (they cover the rest) do not run under.
#include <ovo/c/ovosystem.h>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>

TEST(CInterface, NullHandlesAndBuffersAreRefusedWithTheFunctionsName)
{
    ovo_channel* channel = nullptr;
    ovo_logger* logger = nullptr;
    ASSERT_EQ(ovo_channel_open("c-interface-null", 8192, &channel), OVO_OK);
    ASSERT_EQ(ovo_logger_get("c.interface", &logger), OVO_OK);
    unsigned int count = 0;
    const void* data = nullptr;
    ovo_card_event event;
    const std::pair<std::function<ovo_status()>, std::string> cases[] = {
        {[&] { return ovo_card_connect(nullptr); }, "ovo_card_connect: card is null"},
        {[&] { return ovo_card_transmit(nullptr, nullptr, 0, nullptr, &count); }, "ovo_card_transmit: card is null"},
        {[&] { return ovo_card_monitor_next(nullptr, 0, &event); }, "ovo_card_monitor_next: monitor is null"},
        {[&] { return ovo_serial_receive(nullptr, nullptr, 0, &count); }, "ovo_serial_receive: port is null"},
        {[&] { return ovo_serial_open(nullptr, nullptr, nullptr, nullptr); }, "ovo_serial_open: port is null"},
        {[&] { return ovo_channel_send(channel, 1, nullptr, 5); }, "ovo_channel_send: data is null"},
        {[&] { return ovo_channel_receive(channel, 0, &data, nullptr); }, "ovo_channel_receive: size is null"},
        {[&] { return ovo_mutex_try_lock(nullptr, 0); }, "ovo_mutex_try_lock: mutex is null"},
        {[&] { return ovo_log_bytes(logger, OVO_LOG_INFO, "title", nullptr, 1); }, "ovo_log_bytes: data is null"},
        {[&] { return ovo_log_message(logger, 2, "text"); }, "no family of messages 2: 0 is info, 1 trace"},
    };
    for (const auto& [call, text] : cases) {
        EXPECT_EQ(call(), OVO_ERROR_ARGUMENT) << text;
        EXPECT_EQ(ovo_last_error(), text);
    }
    EXPECT_EQ(ovo_channel_send(channel, 1, nullptr, 0), OVO_OK); // nothing needs no bytes
    EXPECT_EQ(ovo_channel_count(channel, &count), OVO_OK);
    EXPECT_EQ(count, 1u);
    ovo_channel_close(channel);
    ovo_card_close(nullptr), ovo_card_monitor_close(nullptr), ovo_serial_close(nullptr), ovo_channel_close(nullptr);
    ovo_mutex_close(nullptr), ovo_event_close(nullptr), ovo_reader_list_free(nullptr), ovo_port_list_free(nullptr);
}

TEST(CInterface, EachThreadKeepsTheTextOfItsOwnLastFailure)
{
    ovo_channel* channel = nullptr;
    ASSERT_EQ(ovo_channel_open("c-interface-a", 10, &channel), OVO_ERROR_SYSTEM);
    const std::string mine = ovo_last_error();
    std::string theirs;
    std::thread([&] {
        ovo_channel_open("c-interface-b", 20, &channel);
        theirs = ovo_last_error();
    }).join();
    EXPECT_NE(mine.find("'c-interface-a' ): a size of 10 bytes"), std::string::npos) << mine;
    EXPECT_NE(theirs.find("'c-interface-b' ): a size of 20 bytes"), std::string::npos) << theirs;
    ASSERT_EQ(ovo_channel_open("c-interface-a", 8192, &channel), OVO_OK);
    ovo_channel_close(channel);
    EXPECT_EQ(ovo_last_error(), mine); // a success leaves it
}

TEST(CInterface, TheCardMonitorTellsAStopFromATimeOut)
{
    ovo_card_monitor* monitor = nullptr;
    if (ovo_card_monitor_open(&monitor) != OVO_OK)
        GTEST_SKIP() << "needs a PC/SC service: " << ovo_last_error();
    ovo_card_event event;
    while (ovo_card_monitor_next(monitor, 500, &event) == OVO_OK) // what is there
        ;
    EXPECT_EQ(ovo_card_monitor_next(monitor, 0, &event), OVO_TIMEOUT);
    std::thread stopper([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        ovo_card_monitor_stop(monitor);
    });
    EXPECT_EQ(ovo_card_monitor_next(monitor, 60000, &event), OVO_STOPPED);
    stopper.join();
    EXPECT_EQ(ovo_card_monitor_next(monitor, 60000, &event), OVO_STOPPED);
    ovo_card_monitor_close(monitor);
}
