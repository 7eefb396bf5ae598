/** @file
 * The C interface of smart cards over PC/SC: the readers with their state and ATR, a card
 * connection with its exchanges of command units, and the monitor of readers and cards.
 *
 * A failure of the PC/SC service is #OVO_ERROR_SYSTEM with the service's code in the text
 * ("::SCardConnect() failed: SCard error: 0x8010000C"). A card's status word is no
 * failure: it is the last two bytes of the response.
 */
#ifndef OVO_C_CARDS_H
#define OVO_C_CARDS_H

#include <ovo/c/base.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The readers as they were when the list was made. */
typedef struct ovo_reader_list ovo_reader_list;
/** One reader's card connection. One thread uses it at a time. */
typedef struct ovo_card ovo_card;
/** A monitor of the readers and their cards: one thread asks it for events, any thread
 * may stop it. */
typedef struct ovo_card_monitor ovo_card_monitor;

/** What a reader of the list holds. */
enum ovo_reader_state {
    /** No card. */
    OVO_READER_EMPTY = 0,
    /** A card, whose ATR the list gives. */
    OVO_READER_CARD = 1,
    /** A card that gave no answer to reset (mute): no ATR. */
    OVO_READER_CARD_UNREADABLE = 2,
    /** A card that another program holds exclusively, whose ATR the list gives; a
     * connection fails until that program lets go. */
    OVO_READER_CARD_EXCLUSIVE = 3,
    /** A reader that the service cannot use (it failed, or another driver holds it). */
    OVO_READER_UNAVAILABLE = 4
};

/** The readers of the PC/SC service in its order, each with its state and the ATR of its
 * card, from the service's report: what `ovo readers` shows. No card is connected, so a card
 * held by another program or a mute one neither fails nor waits. Empty when there are none
 * or no service answers.
 * @param list receives the list, to be freed with ovo_reader_list_free()
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_reader_list_make(ovo_reader_list** list);
/** The number of readers in a list (0 for NULL). */
OVO_API unsigned int OVO_CDECL ovo_reader_list_count(const ovo_reader_list* list);
/** The name of reader index, as ovo_card_open() takes it; NULL when index is past the end.
 * The text lives as long as the list. */
OVO_API const char* OVO_CDECL ovo_reader_list_name(const ovo_reader_list* list, unsigned int index);
/** The #ovo_reader_state of reader index; -1 when index is past the end. */
OVO_API int OVO_CDECL ovo_reader_list_state(const ovo_reader_list* list, unsigned int index);
/** The ATR of the card in reader index (empty without one), living as long as the list.
 * @param list the list
 * @param index the reader
 * @param size receives the number of bytes
 * @return the bytes; NULL when index is past the end. */
OVO_API const unsigned char* OVO_CDECL ovo_reader_list_atr(const ovo_reader_list* list, unsigned int index,
                                                           unsigned int* size);
/** Frees a list and its texts; NULL is allowed. */
OVO_API void OVO_CDECL ovo_reader_list_free(ovo_reader_list* list);

/** A service context for the reader of that name; no card connection yet.
 * @param reader the reader's name, as the list gives it
 * @param logger where exchanges are traced ("->" and "<-", at level 1); NULL for none
 * @param card receives the handle, to be closed with ovo_card_close()
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_card_open(const char* reader, ovo_logger* logger, ovo_card** card);
/** Connects to the card, shared, with T=0 or T=1; nothing happens when connected.
 * @return #OVO_OK, or a failure (no card, an unknown reader, ...). */
OVO_API ovo_status OVO_CDECL ovo_card_connect(ovo_card* card);
/** Sends a command unit to the card and gives its response (at most 261 bytes, the status
 * word last).
 * @param card the connected card
 * @param command the unit's bytes
 * @param size their number
 * @param response receives the response's bytes, which the handle keeps until its next call
 * @param responseSize receives their number
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_card_transmit(ovo_card* card, const unsigned char* command, unsigned int size,
                                               const unsigned char** response, unsigned int* responseSize);
/** The state of the connected card and its ATR.
 * @param card the connected card
 * @param state receives the state: 0 unknown, 1 absent, 2 present, 3 swallowed, 4 powered,
 *        5 negotiable, 6 specific (a protocol is set up)
 * @param atr receives the ATR's bytes, which the handle keeps until its next call
 * @param atrSize receives their number
 * @return #OVO_OK, or a failure ("not connected" among them). */
OVO_API ovo_status OVO_CDECL ovo_card_status(ovo_card* card, int* state, const unsigned char** atr,
                                             unsigned int* atrSize);
/** Ends the card connection, leaving the card as it is; nothing happens when not connected.
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_card_disconnect(ovo_card* card);
/** Ends the card connection, if any, and releases the service context. NULL is allowed. */
OVO_API void OVO_CDECL ovo_card_close(ovo_card* card);

/** What a card event tells. */
enum ovo_card_event_kind {
    /** A reader is there (at the start, or attached later). */
    OVO_READER_ADDED = 0,
    /** A reader was detached. */
    OVO_READER_REMOVED = 1,
    /** A card is in the reader (at the start, or inserted later), with its ATR. */
    OVO_CARD_INSERTED = 2,
    /** The card left the reader, or the reader went with it. */
    OVO_CARD_REMOVED = 3
};

/** One change of the readers or their cards. Its texts and bytes belong to the monitor and
 * hold until its next call of ovo_card_monitor_next(). */
typedef struct ovo_card_event {
    /** An #ovo_card_event_kind. */
    int kind;
    /** The reader's name. */
    const char* reader;
    /** The card's ATR with #OVO_CARD_INSERTED, otherwise no bytes. */
    const unsigned char* atr;
    /** The number of bytes of atr. */
    unsigned int atrSize;
} ovo_card_event;

/** A monitor with a service context of its own.
 * @param monitor receives the handle, to be closed with ovo_card_monitor_close()
 * @return #OVO_OK, or a failure (no service). */
OVO_API ovo_status OVO_CDECL ovo_card_monitor_open(ovo_card_monitor** monitor);
/** The next event, waiting up to timeoutMs milliseconds for one (0: only a look). The first
 * events tell what is there: each reader, then each card in one; then every change in order.
 * @param monitor the monitor
 * @param timeoutMs the longest wait
 * @param event receives the event
 * @return #OVO_OK with an event, #OVO_TIMEOUT when none came in time, #OVO_STOPPED once
 *         the monitor was stopped, or a failure of the service. */
OVO_API ovo_status OVO_CDECL ovo_card_monitor_next(ovo_card_monitor* monitor, unsigned int timeoutMs,
                                                   ovo_card_event* event);
/** From any thread: ends a wait of ovo_card_monitor_next(), and every later call answers
 * #OVO_STOPPED at once. Returns when no call waits any more.
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_card_monitor_stop(ovo_card_monitor* monitor);
/** Stops the monitor and releases it; no other thread may be using it. NULL is allowed. */
OVO_API void OVO_CDECL ovo_card_monitor_close(ovo_card_monitor* monitor);

#ifdef __cplusplus
}
#endif

#endif
