/// @file
/// Everything the library exports.
#ifndef OVO_OVOSYSTEM_H
#define OVO_OVOSYSTEM_H

/// @namespace ovo
/// System support for applications and services that talk to devices: text and number
/// helpers, the name-value collection, platform services, and the areas below.
///
/// @namespace ovo::logger
/// Named loggers in a process-wide registry, the channels that deliver their text and the
/// formatters that shape it.
///
/// @namespace ovo::io
/// Smart cards over PC/SC, serial ports, and the enumeration of both.
///
/// @namespace ovo::ipc
/// Objects that processes of one login session share under a name: mutex, event, shared
/// memory and a message channel.
///
/// @namespace ovo::win32
/// The registry, security attributes, and the Win32 types that public signatures name.

#include <ovo/environment.h>
#include <ovo/io/apdu.h>
#include <ovo/io/card_monitor.h>
#include <ovo/io/enumeration.h>
#include <ovo/io/pcsc.h>
#include <ovo/io/reader_status.h>
#include <ovo/io/serial_config.h>
#include <ovo/io/serial_io.h>
#include <ovo/io/serial_ports.h>
#include <ovo/ipc/message_channel.h>
#include <ovo/ipc/named_objects.h>
#include <ovo/ipc/shared_memory.h>
#include <ovo/ipc/system_event.h>
#include <ovo/ipc/system_mutex.h>
#include <ovo/logger/channel.h>
#include <ovo/logger/channels.h>
#include <ovo/logger/file_log_channel.h>
#include <ovo/logger/formatter.h>
#include <ovo/logger/formatters.h>
#include <ovo/logger/logger.h>
#include <ovo/number_formatter.h>
#include <ovo/number_parser.h>
#include <ovo/nv_collection.h>
#include <ovo/options/options_processor.h>
#include <ovo/shared_library.h>
#include <ovo/strings.h>
#include <ovo/version.h>
#include <ovo/win32/registry.h>
#include <ovo/win32/security_attributes.h>
#include <ovo/win32/types.h>

#endif
