// The C interface of serial ports: a port from its text form, transfers, the port list.
#include "c/guard.h"
#include "c/logger_handle.h"

#include <ovo/c/serial.h>
#include <ovo/io/serial_io.h>
#include <ovo/io/serial_ports.h>

#include <vector>

using ovo_c::guarded;
using ovo_c::required;

struct ovo_serial {
    ovo_serial(const ovo::io::SerialConfig& config, ovo_logger* logger) : port(config, ovo_c::loggerOf(logger)) {}
    ovo::io::SerialIO port;
};

struct ovo_port_list {
    std::vector<ovo::io::SerialPortInfo> ports;
};

namespace {

ovo::io::SerialTimeouts timeoutsOf(const ovo_serial_timeouts& given)
{
    return {given.readInterval, given.readConstant, given.readMultiplier, given.writeConstant, given.writeMultiplier};
}

const ovo::io::SerialPortInfo* portAt(const ovo_port_list* list, unsigned int index)
{
    return list != nullptr && index < list->ports.size() ? &list->ports[index] : nullptr;
}

// A transfer that moved less than asked was ended by the time-outs (or the device went).
ovo_status transferred(unsigned int moved, unsigned int wanted) { return moved == wanted ? OVO_OK : OVO_TIMEOUT; }

} // namespace

extern "C" {

ovo_status ovo_serial_open(const char* settings, const ovo_serial_timeouts* timeouts, ovo_logger* logger,
                           ovo_serial** port)
{
    return guarded(__func__, [&] {
        ovo_serial*& made = required(port, "port");
        ovo::io::SerialConfig config = ovo::io::SerialConfig::fromString(&required(settings, "settings"));
        if (timeouts != nullptr)
            config.setCommTimeouts(timeoutsOf(*timeouts));
        made = new ovo_serial(config, logger);
        return OVO_OK;
    });
}

ovo_status ovo_serial_set_timeouts(ovo_serial* port, const ovo_serial_timeouts* timeouts)
{
    return guarded(__func__, [&] {
        ovo::io::SerialIO& serial = required(port, "port").port;
        serial.config().setCommTimeouts(timeoutsOf(required(timeouts, "timeouts")));
        serial.configure();
        return OVO_OK;
    });
}

ovo_status ovo_serial_send(ovo_serial* port, const unsigned char* data, unsigned int size, unsigned int* sent)
{
    return guarded(__func__, [&] {
        ovo::io::SerialIO& serial = required(port, "port").port;
        ovo_c::requireBytes(data, size, "data");
        unsigned int& count = required(sent, "sent");
        count = size == 0 ? 0 : serial.send(data, size);
        return transferred(count, size);
    });
}

ovo_status ovo_serial_receive(ovo_serial* port, unsigned char* buffer, unsigned int size, unsigned int* received)
{
    return guarded(__func__, [&] {
        ovo::io::SerialIO& serial = required(port, "port").port;
        ovo_c::requireBytes(buffer, size, "buffer");
        unsigned int& count = required(received, "received");
        count = size == 0 ? 0 : serial.recv(buffer, size);
        return transferred(count, size);
    });
}

ovo_status ovo_serial_available(ovo_serial* port, unsigned int* count)
{
    return guarded(__func__, [&] {
        required(count, "count") = required(port, "port").port.available();
        return OVO_OK;
    });
}

ovo_status ovo_serial_purge(ovo_serial* port)
{
    return guarded(__func__, [&] {
        required(port, "port").port.purge();
        return OVO_OK;
    });
}

void ovo_serial_close(ovo_serial* port) { delete port; }

ovo_status ovo_port_list_make(ovo_port_list** list)
{
    return guarded(__func__, [&] {
        ovo_port_list*& made = required(list, "list");
        made = new ovo_port_list{ovo::io::listSerialPorts()};
        return OVO_OK;
    });
}

unsigned int ovo_port_list_count(const ovo_port_list* list)
{
    return list != nullptr ? static_cast<unsigned int>(list->ports.size()) : 0;
}

const char* ovo_port_list_field(const ovo_port_list* list, unsigned int index, int field)
{
    const ovo::io::SerialPortInfo* port = portAt(list, index);
    if (port == nullptr)
        return nullptr;
    switch (field) {
    case OVO_PORT_NAME:
        return port->deviceName.c_str();
    case OVO_PORT_DESCRIPTION:
        return port->description.c_str();
    case OVO_PORT_VENDOR_ID:
        return port->vendorId.c_str();
    case OVO_PORT_PRODUCT_ID:
        return port->productId.c_str();
    case OVO_PORT_SERIAL_NUMBER:
        return port->serialNumber.c_str();
    case OVO_PORT_MANUFACTURER:
        return port->manufacturer.c_str();
    case OVO_PORT_PRODUCT:
        return port->product.c_str();
    case OVO_PORT_INTERFACE_NUMBER:
        return port->interfaceNumber.c_str();
    case OVO_PORT_INTERFACE_NAME:
        return port->interfaceName.c_str();
    default:
        return nullptr;
    }
}

unsigned int ovo_port_list_path_count(const ovo_port_list* list, unsigned int index)
{
    const ovo::io::SerialPortInfo* port = portAt(list, index);
    return port != nullptr ? static_cast<unsigned int>(port->stablePaths.size()) : 0;
}

const char* ovo_port_list_path(const ovo_port_list* list, unsigned int index, unsigned int path)
{
    const ovo::io::SerialPortInfo* port = portAt(list, index);
    return port != nullptr && path < port->stablePaths.size() ? port->stablePaths[path].c_str() : nullptr;
}

void ovo_port_list_free(ovo_port_list* list) { delete list; }

} // extern "C"
