// The C interface of smart cards: the reader list, card connections, the card monitor.
#include "c/guard.h"
#include "c/logger_handle.h"

#include <ovo/c/cards.h>
#include <ovo/io/card_monitor.h>
#include <ovo/io/pcsc.h>
#include <ovo/io/reader_status.h>

#include <memory>
#include <string>
#include <vector>

using ovo_c::guarded;
using ovo_c::required;

struct ovo_reader_list {
    struct Reader {
        std::string name;
        int state;
        std::vector<unsigned char> atr;
    };
    std::vector<Reader> readers;
};

struct ovo_card {
    ovo_card(const char* reader, ovo_logger* logger) : card(reader, ovo_c::loggerOf(logger)) {}
    ovo::io::pcsc card;
    std::vector<unsigned char> kept; // the last response or ATR, until the next call
};

struct ovo_card_monitor {
    ovo::io::CardMonitor monitor;
    ovo::io::CardEvent event;
};

namespace {

// What a reader holds, from the service's own report: no card is connected, so a card held
// exclusively or a mute one neither fails nor waits.
ovo_reader_list::Reader readerOf(const ovo::io::ReaderStatus& status)
{
    int state = OVO_READER_CARD;
    if (status.unavailable)
        state = OVO_READER_UNAVAILABLE;
    else if (!status.cardPresent)
        state = OVO_READER_EMPTY;
    else if (status.mute)
        state = OVO_READER_CARD_UNREADABLE;
    else if (status.exclusive)
        state = OVO_READER_CARD_EXCLUSIVE;
    return {status.reader, state, status.atr};
}

const ovo_reader_list::Reader* readerAt(const ovo_reader_list* list, unsigned int index)
{
    return list != nullptr && index < list->readers.size() ? &list->readers[index] : nullptr;
}

} // namespace

extern "C" {

ovo_status ovo_reader_list_make(ovo_reader_list** list)
{
    return guarded(__func__, [&] {
        ovo_reader_list*& made = required(list, "list");
        auto readers = std::make_unique<ovo_reader_list>();
        for (const ovo::io::ReaderStatus& status : ovo::io::readerStatuses())
            readers->readers.push_back(readerOf(status));
        made = readers.release();
        return OVO_OK;
    });
}

unsigned int ovo_reader_list_count(const ovo_reader_list* list)
{
    return list != nullptr ? static_cast<unsigned int>(list->readers.size()) : 0;
}

const char* ovo_reader_list_name(const ovo_reader_list* list, unsigned int index)
{
    const ovo_reader_list::Reader* reader = readerAt(list, index);
    return reader != nullptr ? reader->name.c_str() : nullptr;
}

int ovo_reader_list_state(const ovo_reader_list* list, unsigned int index)
{
    const ovo_reader_list::Reader* reader = readerAt(list, index);
    return reader != nullptr ? reader->state : -1;
}

const unsigned char* ovo_reader_list_atr(const ovo_reader_list* list, unsigned int index, unsigned int* size)
{
    const ovo_reader_list::Reader* reader = readerAt(list, index);
    if (size != nullptr)
        *size = reader != nullptr ? static_cast<unsigned int>(reader->atr.size()) : 0;
    return reader != nullptr ? reader->atr.data() : nullptr;
}

void ovo_reader_list_free(ovo_reader_list* list) { delete list; }

ovo_status ovo_card_open(const char* reader, ovo_logger* logger, ovo_card** card)
{
    return guarded(__func__, [&] {
        ovo_card*& made = required(card, "card");
        made = new ovo_card(&required(reader, "reader"), logger);
        return OVO_OK;
    });
}

ovo_status ovo_card_connect(ovo_card* card)
{
    return guarded(__func__, [&] {
        required(card, "card").card.connect();
        return OVO_OK;
    });
}

ovo_status ovo_card_transmit(ovo_card* card, const unsigned char* command, unsigned int size,
                             const unsigned char** response, unsigned int* responseSize)
{
    return guarded(__func__, [&] {
        ovo_card& handle = required(card, "card");
        ovo_c::requireBytes(command, size, "command");
        required(response, "response");
        required(responseSize, "responseSize");
        const ovo::io::apdu answer = handle.card.exchange(ovo::io::apdu::fromBuffer(command, size));
        handle.kept.assign(answer.raw(), answer.raw() + answer.size());
        *response = handle.kept.data();
        *responseSize = answer.size();
        return OVO_OK;
    });
}

ovo_status ovo_card_status(ovo_card* card, int* state, const unsigned char** atr, unsigned int* atrSize)
{
    return guarded(__func__, [&] {
        ovo_card& handle = required(card, "card");
        required(state, "state");
        required(atr, "atr");
        required(atrSize, "atrSize");
        handle.kept.clear();
        *state = handle.card.cardStatus(handle.kept);
        *atr = handle.kept.data();
        *atrSize = static_cast<unsigned int>(handle.kept.size());
        return OVO_OK;
    });
}

ovo_status ovo_card_disconnect(ovo_card* card)
{
    return guarded(__func__, [&] {
        required(card, "card").card.disconnect();
        return OVO_OK;
    });
}

void ovo_card_close(ovo_card* card)
{
    if (card != nullptr)
        card->card.disconnect();
    delete card;
}

ovo_status ovo_card_monitor_open(ovo_card_monitor** monitor)
{
    return guarded(__func__, [&] {
        required(monitor, "monitor") = new ovo_card_monitor;
        return OVO_OK;
    });
}

ovo_status ovo_card_monitor_next(ovo_card_monitor* monitor, unsigned int timeoutMs, ovo_card_event* event)
{
    return guarded(__func__, [&]() -> ovo_status {
        ovo_card_monitor& handle = required(monitor, "monitor");
        ovo_card_event& given = required(event, "event");
        if (!handle.monitor.next(handle.event, timeoutMs))
            return handle.monitor.stopped() ? OVO_STOPPED : OVO_TIMEOUT;
        given.kind = handle.event.kind;
        given.reader = handle.event.reader.c_str();
        given.atr = handle.event.atr.data();
        given.atrSize = static_cast<unsigned int>(handle.event.atr.size());
        return OVO_OK;
    });
}

ovo_status ovo_card_monitor_stop(ovo_card_monitor* monitor)
{
    return guarded(__func__, [&] {
        ovo_card_monitor& handle = required(monitor, "monitor");
        handle.monitor.stop();
        return OVO_OK;
    });
}

void ovo_card_monitor_close(ovo_card_monitor* monitor) { delete monitor; }

} // extern "C"
