/// @file
/// How a serial port is to be set up, with a one-line text form.
#ifndef OVO_IO_SERIAL_CONFIG_H
#define OVO_IO_SERIAL_CONFIG_H

#include <ovo/export.h>

#include <string>

namespace ovo {
namespace io {

/// Bits per character (key "data" of the text form).
///
/// A fixed underlying type makes every int a valid value: one outside the table (set
/// through a cast) is kept and simply sets no key in the text form.
enum DataSize : int { dataSizeUnset = 0, dataSize5 = 1, dataSize6 = 2, dataSize7 = 3, dataSize8 = 4 };
/// @var dataSizeUnset
/// Not given: the port keeps its own.
/// @var dataSize5
/// 5 bits, "5".
/// @var dataSize6
/// 6 bits, "6".
/// @var dataSize7
/// 7 bits, "7".
/// @var dataSize8
/// 8 bits, "8".

/// The parity of each character (key "parity"); any int is kept, as for DataSize.
enum Parity : int { parityUnset = 0, parityEven = 1, parityOdd = 2, parityNone = 3 };
/// @var parityUnset
/// Not given: the port keeps its own.
/// @var parityEven
/// Even parity, "even".
/// @var parityOdd
/// Odd parity, "odd".
/// @var parityNone
/// No parity bit, "none" (unlike parityUnset, which leaves the port's parity alone).

/// The stop bits of each character (key "stop"); any int is kept, as for DataSize.
enum StopBits : int { stopBitsUnset = 0, stopBits1 = 1, stopBits1_5 = 2, stopBits2 = 3 };
/// @var stopBitsUnset
/// Not given: the port keeps its own.
/// @var stopBits1
/// One stop bit, "1".
/// @var stopBits1_5
/// One and a half stop bits, "1.5".
/// @var stopBits2
/// Two stop bits, "2".

/// Flow control (key "flow"); any int is kept, as for DataSize.
enum FlowControl : int { flowUnset = 0, flowOff = 1, flowSoftware = 2, flowHardware = 3 };
/// @var flowUnset
/// Not given: the port keeps its own.
/// @var flowOff
/// No flow control, "off" (unlike flowUnset, which leaves the port's setting alone).
/// @var flowSoftware
/// XON/XOFF in both directions, "software".
/// @var flowHardware
/// Output waits for CTS; RTS is raised while sending, "hardware".

/// The time-outs of a serial port, in milliseconds.
///
/// Total read time-out = readConstant + readMultiplier x bytes. Interval MAXDWORD with
/// zero totals returns at once with what is there; all zero waits until a read is met.
struct SerialTimeouts {
    /// The longest gap between two received bytes (0: none); its clock starts at the first byte.
    unsigned int readInterval;
    /// The constant part of the total read time-out.
    unsigned int readConstant;
    /// The part of the total read time-out per byte asked for.
    unsigned int readMultiplier;
    /// The constant part of the total write time-out.
    unsigned int writeConstant;
    /// The part of the total write time-out per byte sent.
    unsigned int writeMultiplier;
};

/// The driver's receive and transmit queues, in bytes.
struct SerialBuffersSize {
    /// The receive queue.
    unsigned int inputSize;
    /// The transmit queue.
    unsigned int outputSize;
};

/// How a serial port is to be set up, with a one-line text form such as
/// "baud=9600;data=8;device=COM1;flow=off;parity=none;stop=1".
///
/// The text form is pairs `key=value` separated by `;`, in any order:
///
/// | Key | Value | Setter |
/// |---|---|---|
/// | device | ttyUSB0 (opens /dev/ttyUSB0), COM3 (`\\.\COM3`), or on Linux an absolute path | setDeviceName() |
/// | baud | bits per second, a decimal number: 9600, 115200 | setBaudRate() |
/// | data | bits per character: 5, 6, 7, 8 | setDataSize() |
/// | parity | none, even, odd | setParity() |
/// | stop | stop bits: 1, 1.5, 2 | setStopBits() |
/// | flow | off, software (XON/XOFF), hardware (RTS/CTS) | setFlowControl() |
///
/// Words are read in any case. An unknown key is ignored and an unknown word (or a data
/// size outside 5 to 8) reads as "not given"; only a baud or data value that is no
/// 32-bit decimal number throws. toString() writes the keys that are given, in name
/// order. A port from its settings, with its time-outs (from serial_request.cpp):
/// @snippet serial_request.cpp open
///
/// Every line setting has a value 0 that means "not given": it is left out of the text
/// and the port keeps its current value. Setters validate nothing. Time-outs and queue
/// sizes have no text form. A configuration is a plain value; one thread uses one object
/// at a time.
class OVO_API SerialConfig {
public:
    /// Empty name, line settings 0. Time-outs and queue sizes start at all zeros (the
    /// platform's own defaults: reads wait until they are met); set both before opening.
    SerialConfig();
    /// A copy of every member.
    SerialConfig(const SerialConfig& other);
    /// Takes the name; the source keeps its numeric members.
    SerialConfig(SerialConfig&& other) noexcept;
    /// Copies every member.
    SerialConfig& operator=(const SerialConfig& other);
    /// Takes the name and copies the rest; the source keeps its numeric members.
    SerialConfig& operator=(SerialConfig&& other) noexcept;
    /// Frees the name.
    ~SerialConfig();

    /// The port's name without a path prefix (COM3, ttyUSB0), or on Linux an absolute path.
    const std::string& deviceName() const;
    /// Sets the port's name, as deviceName() gives it (key "device").
    void setDeviceName(const std::string& name);
    /// Bits per second; 0 when not given.
    unsigned int baudRate() const;
    /// Sets the bits per second (key "baud"); 0 for not given.
    void setBaudRate(unsigned int rate);
    /// Bits per character.
    DataSize dataSize() const;
    /// Sets the bits per character.
    void setDataSize(DataSize size);
    /// The parity.
    Parity parity() const;
    /// Sets the parity.
    void setParity(Parity parity);
    /// The stop bits.
    StopBits stopBits() const;
    /// Sets the stop bits.
    void setStopBits(StopBits bits);
    /// Flow control.
    FlowControl flowControl() const;
    /// Sets flow control.
    void setFlowControl(FlowControl flow);
    /// The time-outs.
    const SerialTimeouts& commTimeouts() const;
    /// Sets the time-outs.
    void setCommTimeouts(const SerialTimeouts& timeouts);
    /// The sizes of the driver's queues.
    const SerialBuffersSize& buffersSize() const;
    /// Sets the sizes of the driver's queues.
    void setBuffersSize(const SerialBuffersSize& sizes);

    /// The settings that are given, keys in name order; "" for a default configuration.
    std::string toString() const;
    /// The configuration that text describes; what text leaves out stays unset.
    ///
    /// Unknown keys are ignored and unknown words read as 0.
    /// @throws the exception of NumberParser::parseInt for a `baud` or `data` value that
    ///         is no 32-bit decimal number.
    static SerialConfig fromString(const std::string& text);

private:
    std::string deviceName_;
    unsigned int baudRate_;
    DataSize dataSize_;
    Parity parity_;
    StopBits stopBits_;
    FlowControl flowControl_;
    SerialTimeouts commTimeouts_;
    SerialBuffersSize buffersSize_;
};

} // namespace io
} // namespace ovo

#endif
