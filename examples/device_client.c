/* A C client of the library: one command unit to a card, a question and its answer between
 * two processes through a message channel, a request to a serial device. Everything is
 * logged to the console and to a daily file in the current directory
 * (YYYY-MM-DD-device-client.log), the traffic traced.
 *   device_client card ["READER NAME"]     SELECT of the master file, the status word
 *   device_client answer CHANNEL &         waits for a question, answers it
 *   device_client ask CHANNEL              asks, prints the answer
 *   device_client serial SETTINGS          sends 02 41 03, prints the device's answer
 * Plain C89; it needs no C++ run-time of its own. */
#define _POSIX_C_SOURCE 199309L /* nanosleep */
#include <ovo/c/ovosystem.h>

#include <stdio.h>
#include <string.h>
#ifdef _WIN32
#include <windows.h>
#else
#include <time.h>
#endif

#define CHANNEL_SIZE 8192 /* the same in every process that joins */
#define QUESTION 1
#define ANSWER 2

static ovo_logger* logger;

/* Prints the library's text of a failure and answers 1, the exit status. */
static int failed(const char* what)
{
    printf("%s failed: %s\n", what, ovo_last_error());
    return 1;
}

static void pause_briefly(void)
{
#ifdef _WIN32
    Sleep(5);
#else
    struct timespec fiveMilliseconds = {0, 5000000};
    nanosleep(&fiveMilliseconds, NULL);
#endif
}

/* A receive does not wait: poll for a message of that identifier for up to ten seconds. */
static ovo_status receive(ovo_channel* channel, unsigned int id, const void** data, unsigned int* size)
{
    int round;
    ovo_status status = OVO_EMPTY;
    for (round = 0; round < 2000 && status == OVO_EMPTY; ++round) {
        status = ovo_channel_receive(channel, id, data, size);
        if (status == OVO_EMPTY)
            pause_briefly();
    }
    return status;
}

static int card(const char* name)
{
    static const unsigned char selectMasterFile[] = {0x00, 0xA4, 0x00, 0x0C, 0x02, 0x3F, 0x00};
    ovo_reader_list* readers;
    ovo_card* reader;
    const unsigned char* response;
    unsigned int size;
    int status = 1;

    if (ovo_reader_list_make(&readers) != OVO_OK)
        return failed("the reader list");
    if (name == NULL)
        name = ovo_reader_list_name(readers, 0);
    if (name == NULL)
        printf("no reader: is the PC/SC service running?\n");
    else if (ovo_card_open(name, logger, &reader) != OVO_OK)
        status = failed("the reader");
    else {
        if (ovo_card_connect(reader) != OVO_OK)
            status = failed("connect");
        else if (ovo_card_transmit(reader, selectMasterFile, sizeof selectMasterFile, &response, &size) != OVO_OK)
            status = failed("transmit");
        else {
            /* A status word other than 9000 is the card's answer, not a failure of the call. */
            printf("status word %02X%02X\n", response[size - 2], response[size - 1]);
            status = response[size - 2] == 0x90 && response[size - 1] == 0x00 ? 0 : 1;
        }
        ovo_card_close(reader);
    }
    ovo_reader_list_free(readers);
    return status;
}

static int converse(const char* role, const char* name)
{
    static const char question[] = "what time is it?";
    static const char answer[] = "time to answer";
    ovo_channel* channel;
    const void* message;
    unsigned int size, waiting = 1;
    int asking = strcmp(role, "ask") == 0;

    /* The first process makes the channel, the second joins it; it lives while either
     * holds it, so each stays until the other has taken its message. */
    if (ovo_channel_open(name, CHANNEL_SIZE, &channel) != OVO_OK)
        return failed("the channel");
    if (asking && ovo_channel_send(channel, QUESTION, question, sizeof question - 1) != OVO_OK)
        return failed("the question");
    if (receive(channel, asking ? ANSWER : QUESTION, &message, &size) != OVO_OK) {
        printf("no %s\n", asking ? "answer" : "question");
        return 1;
    }
    printf("%s: %.*s\n", asking ? "answer" : "question", (int)size, (const char*)message);
    ovo_log_bytes(logger, OVO_LOG_TRACE, asking ? "answer" : "question", message, size);
    if (!asking) {
        ovo_channel_send(channel, ANSWER, answer, sizeof answer - 1);
        while (waiting != 0 && ovo_channel_count(channel, &waiting) == OVO_OK)
            pause_briefly();
    }
    ovo_channel_close(channel);
    return 0;
}

static int serial(const char* settings)
{
    static const unsigned char request[] = {0x02, 0x41, 0x03};
    /* The answer ends with a gap of 50 ms, or half a second without a byte. */
    ovo_serial_timeouts timeouts = {50, 500, 0, 1000, 0};
    ovo_serial* port;
    unsigned char answer[16];
    unsigned int count, i;

    if (ovo_serial_open(settings, &timeouts, logger, &port) != OVO_OK)
        return failed("the port");
    if (ovo_serial_send(port, request, sizeof request, &count) != OVO_OK) {
        ovo_serial_close(port);
        return failed("the request");
    }
    ovo_serial_receive(port, answer, sizeof answer, &count); /* short: the time-outs ended it */
    printf("answer of %u bytes:", count);
    for (i = 0; i < count; ++i)
        printf(" %02X", answer[i]);
    printf("\n");
    ovo_serial_close(port);
    return count > 0 ? 0 : 1;
}

int main(int argc, char* argv[])
{
    const char* mode = argc > 1 ? argv[1] : "";
    int status;

    /* Set up first: loggers taken later copy the root's channels and level. */
    if (ovo_log_setup(1, ".", "device-client", OVO_LOG_TRACE) != OVO_OK ||
        ovo_logger_get("device-client", &logger) != OVO_OK)
        return failed("the log");
    ovo_log_message(logger, OVO_LOG_INFO, "the C client starts");
    if (strcmp(mode, "card") == 0 && argc <= 3)
        status = card(argc == 3 ? argv[2] : NULL);
    else if ((strcmp(mode, "ask") == 0 || strcmp(mode, "answer") == 0) && argc == 3)
        status = converse(mode, argv[2]);
    else if (strcmp(mode, "serial") == 0 && argc == 3)
        status = serial(argv[2]);
    else {
        printf("usage: device_client card [READER] | answer CHANNEL | ask CHANNEL | serial SETTINGS\n");
        return 2;
    }
    ovo_log_message(logger, OVO_LOG_INFO, status == 0 ? "done" : "failed");
    return status;
}
