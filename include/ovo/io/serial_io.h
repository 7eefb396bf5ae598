/// @file
/// An open serial port.
#ifndef OVO_IO_SERIAL_IO_H
#define OVO_IO_SERIAL_IO_H

#include <ovo/export.h>
#include <ovo/io/serial_config.h>
#include <ovo/logger/logger.h>

#include <memory>

namespace ovo {
namespace io {

class SerialIOImpl;

/// An open serial port: constructing it opens the device of a SerialConfig and applies
/// the configuration; the object always stands for an open device.
///
/// Transfers throw nothing: a device that stops answering shows as a short count, within
/// the configured time-outs. Only opening and reading the device's state throw
/// std::runtime_error ("can't open 'NAME'. error = CODE", "::GetCommState( 'NAME' )
/// failed. error = CODE"). The device name is a port name (COM3, ttyUSB0) or, on Linux,
/// an absolute path.
///
/// The operations are const but share the device; one object is used by one thread at a
/// time unless the caller arranges otherwise. Calls block for as long as the time-outs allow.
///
/// The settings come from SerialConfig, usually from its text form,
/// "device=ttyUSB0;baud=9600;data=8;parity=none;stop=1;flow=off" (keys device, baud,
/// data, parity, stop, flow: the table of SerialConfig). A port from its settings, a
/// request and its answer (from serial_request.cpp):
/// @snippet serial_request.cpp open
/// @snippet serial_request.cpp ask
class OVO_API SerialIO {
public:
    /// Opens and configures the device of config, logging to the null logger.
    /// @throws std::runtime_error "can't open 'NAME'. error = CODE" or
    ///         "::GetCommState( 'NAME' ) failed. error = CODE".
    explicit SerialIO(const SerialConfig& config);
    /// Opens and configures the device of config, logging to logger.
    ///
    /// The logger is not owned and must outlive the object: openDevice reports through
    /// info, every transfer attempt through traceDump.
    /// @throws std::runtime_error as the one-argument constructor.
    SerialIO(const SerialConfig& config, ovo::logger::ILogger& logger);
    /// Closes the device.
    ~SerialIO();
    /// Not copyable: the object owns its open device.
    ///@{
    SerialIO(const SerialIO&) = delete;
    SerialIO& operator=(const SerialIO&) = delete;
    ///@}

    /// The object's own copy; changes reach the device at the next configure().
    SerialConfig& config();
    /// Applies config() to the device: the line settings that are given, the time-outs and
    /// the queue sizes. A setting the device refuses is not reported.
    /// @throws std::runtime_error "::GetCommState( 'NAME' ) failed. error = CODE".
    void configure() const;
    /// Discards what waits in the receive and transmit queues. Reports nothing.
    void purge() const;
    /// The number of received bytes that wait to be read; 0 when the device cannot tell.
    unsigned int available() const;
    /// Reads up to size bytes into buffer, within the read time-outs.
    /// @return the number of bytes read: fewer than size when the time-outs end the read
    ///         or the device fails.
    unsigned int recv(unsigned char* buffer, unsigned int size) const;
    /// Writes the size bytes at buffer, within the write time-outs.
    /// @return the number of bytes written: fewer than size when the time-outs end the
    ///         write or the device fails.
    unsigned int send(const unsigned char* buffer, unsigned int size) const;

private:
    std::unique_ptr<SerialIOImpl> impl_;
};

} // namespace io
} // namespace ovo

#endif
