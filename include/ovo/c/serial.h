/** @file
 * The C interface of serial ports: a port opened from the text form of its settings, its
 * time-outs, transfers and purge, and the machine's ports with their USB identity.
 *
 * Transfers never fail: a device that stops answering ends them short, within the
 * time-outs, with #OVO_TIMEOUT and the count of what moved.
 */
#ifndef OVO_C_SERIAL_H
#define OVO_C_SERIAL_H

#include <ovo/c/base.h>

#ifdef __cplusplus
extern "C" {
#endif

/** An open serial port. One thread uses it at a time. */
typedef struct ovo_serial ovo_serial;
/** The serial ports as they were when the list was made. */
typedef struct ovo_port_list ovo_port_list;

/** The time-outs of a port, in milliseconds. Total read time-out = readConstant +
 * readMultiplier x bytes; readInterval 0xFFFFFFFF with zero totals returns at once with
 * what is there; all zero waits until a transfer is complete. */
typedef struct ovo_serial_timeouts {
    /** The longest gap between two received bytes (0: none), timed from the first byte. */
    unsigned int readInterval;
    /** The constant part of the total read time-out. */
    unsigned int readConstant;
    /** The part of the total read time-out per byte asked for. */
    unsigned int readMultiplier;
    /** The constant part of the total write time-out. */
    unsigned int writeConstant;
    /** The part of the total write time-out per byte sent. */
    unsigned int writeMultiplier;
} ovo_serial_timeouts;

/** Opens and sets up the port that settings describe, in the text form
 * "device=ttyUSB0;baud=9600;data=8;parity=none;stop=1;flow=off" (on Windows device=COM7;
 * on Linux the device may be an absolute path). What the text leaves out stays as it is.
 * @param settings the text form
 * @param timeouts the time-outs to open with; NULL for none (transfers wait until complete)
 * @param logger where transfers are traced (at level 1); NULL for none
 * @param port receives the handle, to be closed with ovo_serial_close()
 * @return #OVO_OK; #OVO_ERROR_ARGUMENT for a baud or data value that is no number;
 *         #OVO_ERROR_SYSTEM when the device cannot be opened ("can't open 'NAME'. error = 2"). */
OVO_API ovo_status OVO_CDECL ovo_serial_open(const char* settings, const ovo_serial_timeouts* timeouts,
                                             ovo_logger* logger, ovo_serial** port);
/** Gives an open port new time-outs.
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_serial_set_timeouts(ovo_serial* port, const ovo_serial_timeouts* timeouts);
/** Writes bytes, within the write time-outs.
 * @param port the port
 * @param data the bytes (may be NULL when size is 0)
 * @param size their number
 * @param sent receives the number written
 * @return #OVO_OK when all were written, #OVO_TIMEOUT when fewer, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_serial_send(ovo_serial* port, const unsigned char* data, unsigned int size,
                                             unsigned int* sent);
/** Reads up to size bytes, within the read time-outs.
 * @param port the port
 * @param buffer receives the bytes (may be NULL when size is 0)
 * @param size the number wanted
 * @param received receives the number read
 * @return #OVO_OK when size bytes came, #OVO_TIMEOUT when fewer, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_serial_receive(ovo_serial* port, unsigned char* buffer, unsigned int size,
                                                unsigned int* received);
/** The number of received bytes that wait to be read (0 when the device cannot tell).
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_serial_available(ovo_serial* port, unsigned int* count);
/** Discards what waits in the receive and transmit queues.
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_serial_purge(ovo_serial* port);
/** Closes the port. NULL is allowed. */
OVO_API void OVO_CDECL ovo_serial_close(ovo_serial* port);

/** The text fields of a port of the list. */
enum ovo_port_field {
    /** As the settings' device takes it: ttyUSB0, COM3. */
    OVO_PORT_NAME = 0,
    /** The product's name, or what kind of port it is. */
    OVO_PORT_DESCRIPTION = 1,
    /** The USB vendor id, four lower-case hex digits: "0403". */
    OVO_PORT_VENDOR_ID = 2,
    /** The USB product id, four lower-case hex digits: "6001". */
    OVO_PORT_PRODUCT_ID = 3,
    /** The USB device's serial number. */
    OVO_PORT_SERIAL_NUMBER = 4,
    /** The USB device's maker, as the device names it. */
    OVO_PORT_MANUFACTURER = 5,
    /** The USB device's product name, as the device names it. */
    OVO_PORT_PRODUCT = 6,
    /** The USB interface, two hex digits: "00". */
    OVO_PORT_INTERFACE_NUMBER = 7,
    /** The USB interface's own name. */
    OVO_PORT_INTERFACE_NAME = 8
};

/** The serial ports that exist now, by name in natural order (ttyS2 before ttyS10); empty
 * when the system cannot be asked.
 * @param list receives the list, to be freed with ovo_port_list_free()
 * @return #OVO_OK, or a failure. */
OVO_API ovo_status OVO_CDECL ovo_port_list_make(ovo_port_list** list);
/** The number of ports in a list (0 for NULL). */
OVO_API unsigned int OVO_CDECL ovo_port_list_count(const ovo_port_list* list);
/** A text field (#ovo_port_field) of port index, "" where the system does not tell it;
 * NULL for an index past the end or an unknown field. The text lives as long as the list. */
OVO_API const char* OVO_CDECL ovo_port_list_field(const ovo_port_list* list, unsigned int index, int field);
/** The number of stable paths of port index: names that stay the same after re-plugging
 * (on Linux the links in /dev/serial/by-id, then by-path); 0 past the end. */
OVO_API unsigned int OVO_CDECL ovo_port_list_path_count(const ovo_port_list* list, unsigned int index);
/** Stable path number path of port index, usable as the settings' device; NULL past the end. */
OVO_API const char* OVO_CDECL ovo_port_list_path(const ovo_port_list* list, unsigned int index, unsigned int path);
/** Frees a list and its texts; NULL is allowed. */
OVO_API void OVO_CDECL ovo_port_list_free(ovo_port_list* list);

#ifdef __cplusplus
}
#endif

#endif
