// An open serial port: constructing it opens the device of a SerialConfig and applies
// the configuration; the object always stands for an open device.
//
// Transfers throw nothing: a device that stops answering shows as a short count, within
// the configured time-outs. Only opening and reading the device's state throw
// std::runtime_error ("can't open 'NAME'. error = CODE", "::GetCommState( 'NAME' )
// failed. error = CODE"). The device name is a port name (COM3, ttyUSB0) or, on Linux,
// an absolute path.
#ifndef OVO_IO_SERIAL_IO_H
#define OVO_IO_SERIAL_IO_H

#include <ovo/export.h>
#include <ovo/io/serial_config.h>
#include <ovo/logger/logger.h>

#include <memory>

namespace ovo {
namespace io {

class SerialIOImpl;

class OVO_API SerialIO {
public:
    explicit SerialIO(const SerialConfig& config);
    // The logger is not owned and must outlive the object: openDevice reports through
    // info, every transfer attempt through traceDump.
    SerialIO(const SerialConfig& config, ovo::logger::ILogger& logger);
    ~SerialIO();
    SerialIO(const SerialIO&) = delete;
    SerialIO& operator=(const SerialIO&) = delete;

    // The object's own copy; changes reach the device at the next configure().
    SerialConfig& config();
    void configure() const;
    void purge() const;
    unsigned int available() const;
    unsigned int recv(unsigned char* buffer, unsigned int size) const;
    unsigned int send(const unsigned char* buffer, unsigned int size) const;

private:
    std::unique_ptr<SerialIOImpl> impl_;
};

} // namespace io
} // namespace ovo

#endif
